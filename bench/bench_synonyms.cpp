// Single-row queries by key through a private synonym, and through a chain of three synonyms
// (private, public, private), against the same queries naming the table itself: what resolving
// synonyms adds to a statement.
//   bench_synonyms [queries] [repeats]
#include "BenchInstance.h"
#include "MedianTime.h"

#include "db/OraDynaset.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int queries = argc > 1 ? std::atoi(argv[1]) : 2000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 5;

  const BenchInstance instance;
  OraDatabase db = instance.logOn(QStringLiteral("system"));
  db.ExecuteSQL(QStringLiteral("create table T (ID number primary key, NAME varchar2(30))"));
  db.ExecuteSQL(QStringLiteral("insert into T select level, 'name ' || level from dual connect by level <= 1000"));
  db.ExecuteSQL(QStringLiteral("create public synonym PT for T2"));
  db.ExecuteSQL(QStringLiteral("create synonym T2 for T"));
  db.ExecuteSQL(QStringLiteral("create synonym S for PT"));
  const auto run = [&](const QString& name) {
    return msOf([&] {
      for (int i = 0; i < queries; ++i) {
        auto row = db.CreateDynaset(QStringLiteral("select NAME from %1 where ID = %2").arg(name).arg(i % 1000 + 1),
                                    OraDynaset::ReadOnly);
        if (row->IsEOF())
          std::abort();
      }
    });
  };
  std::vector<double> one, chain, direct;
  for (int r = 0; r < repeats; ++r) {
    one.push_back(run(QStringLiteral("T2")));
    chain.push_back(run(QStringLiteral("S")));
    direct.push_back(run(QStringLiteral("T")));
  }
  const double a = median(one), c = median(chain), b = median(direct);
  std::printf("%d queries, median of %d runs          ms   ratio\n", queries, repeats);
  std::printf("through synonym T2 -> T             %8.1f %6.2f×\n", a, a / b);
  std::printf("through synonyms S -> PT -> T2 -> T %8.1f %6.2f×\n", c, c / b);
  std::printf("naming the table T                  %8.1f\n", b);
  return 0;
}
