// A PL/SQL loop that inserts generated rows one by one, as a DBA's test-data script does, against
// the single INSERT ... SELECT that writes the same rows on the same engine.
//   bench_plsql [rows] [repeats]
#include "BenchInstance.h"
#include "MedianTime.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 10000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 5;

  const BenchInstance instance;
  OraDatabase db = instance.logOn(QStringLiteral("system"));
  db.ExecuteSQL(QStringLiteral("create table T (ID number primary key, NAME varchar2(30), AMOUNT number(10,2), "
                               "CREATED date)"));
  const auto fresh = [&] { db.ExecuteSQL(QStringLiteral("truncate table T")); };
  std::vector<double> loop, set;
  for (int r = 0; r < repeats; ++r) {
    fresh();
    loop.push_back(msOf([&] {
      db.ExecuteSQL(QStringLiteral("begin for i in 1..%1 loop insert into T values (i, 'name ' || i, mod(i, 97) * "
                                   "1.5, sysdate - mod(i, 30)); end loop; end;")
                        .arg(rows));
    }));
    fresh();
    set.push_back(msOf([&] {
      db.ExecuteSQL(QStringLiteral("insert into T select level, 'name ' || level, mod(level, 97) * 1.5, sysdate - "
                                   "mod(level, 30) from dual connect by level <= %1")
                        .arg(rows));
    }));
  }
  const double a = median(loop), b = median(set);
  std::printf("%d rows, median of %d runs       ms\n", rows, repeats);
  std::printf("PL/SQL FOR loop of INSERTs  %8.1f\n", a);
  std::printf("INSERT ... SELECT           %8.1f\n", b);
  std::printf("ratio                       %7.2f×\n", a / b);
  return 0;
}
