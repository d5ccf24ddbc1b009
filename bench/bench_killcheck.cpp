// What a session pays at the start of every call to see whether another session has killed it,
// while no session of the instance has been killed since its last call (the usual case: it then
// reads no row), against the cheapest calls it guards.
//   bench_killcheck [calls] [repeats]
#include "BenchInstance.h"
#include "MedianTime.h"
#include "db/local/LocalConnection.h"

#include <QCoreApplication>

#include <cstdio>
#include <functional>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int calls = argc > 1 ? std::atoi(argv[1]) : 20000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 11;
  const BenchInstance instance;
  OraDatabase db = instance.logOn(QStringLiteral("system"));
  db.ExecuteSQL(QStringLiteral("create table T (ID number primary key, NAME varchar2(20))"));
  db.ExecuteSQL(QStringLiteral("insert into T values (1, 'one')"));
  auto& session = dynamic_cast<LocalConnection&>(db.connection());

  const auto perCallNs = [&](const auto& call) {
    return medianMs(repeats,
                    [&] {
                      for (int i = 0; i < calls; ++i)
                        call();
                    }) *
           1e6 / calls;
  };
  const double check = perCallNs([&] { session.startCall(); });
  std::printf("median of %d runs of %d calls            per call   kill check's share\n", repeats, calls);
  std::printf("%-40s %9.1f ns\n", "kill check alone", check);
  const struct {
    const char* name;
    std::function<void()> call;
  } cases[] = {
      {"commit() with nothing pending", [&] { db.connection().commit(); }},
      {"update T set NAME = NAME where ID = 1",
       [&] { db.ExecuteSQL(QStringLiteral("update T set NAME = NAME where ID = 1")); }},
      {"select NAME from T where ID = 1, read",
       [&] { db.CreateDynaset(QStringLiteral("select NAME from T where ID = 1"), OraDynaset::ReadOnly)->Fields(0); }},
  };
  for (const auto& c : cases) {
    const double ns = perCallNs(c.call);
    std::printf("%-40s %9.1f ns   %5.3fx\n", c.name, ns, check / ns);
  }
  return 0;
}
