// Analytic functions over 1,000,000 rows on the embedded engine, against the window-function
// query a developer would write for SQLite on the same file, with Oracle's order of NULLs
// spelled out as the engine must keep it.
//   bench_analytic [rows] [repeats]
#include "BenchInstance.h"
#include "QueryComparison.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 3;

  const BenchInstance instance;
  OraDatabase db = instance.logOn(QStringLiteral("system"));
  db.ExecuteSQL(QStringLiteral("create table SALES (ID number(10), REGION varchar2(4), AMOUNT number(10))"));
  db.ExecuteSQL(QStringLiteral("insert into SALES select level, 'R' || mod(level, 50), case when mod(level, 97) > 0 "
                               "then mod(level * 7919, 10007) end from dual connect by level <= %1")
                    .arg(rows));

  QueryComparison compare(db, instance.folder, QStringLiteral("SYSTEM"));
  std::printf("%d rows, median of %d runs               engine      SQLite direct   ratio\n", rows, repeats);
  compare.run("ROW_NUMBER, RANK by region",
              QStringLiteral("select ID, row_number() over (partition by REGION order by ID), rank() over (partition "
                             "by REGION order by AMOUNT desc) from SALES"),
              QStringLiteral("SELECT ID, row_number() OVER (PARTITION BY REGION ORDER BY ID NULLS LAST), rank() OVER "
                             "(PARTITION BY REGION ORDER BY AMOUNT DESC NULLS FIRST) FROM SALES"),
              repeats);
  compare.run("running COUNT, LAG",
              QStringLiteral("select ID, count(AMOUNT) over (partition by REGION order by ID), lag(AMOUNT) over "
                             "(order by ID) from SALES"),
              QStringLiteral("SELECT ID, count(AMOUNT) OVER (PARTITION BY REGION ORDER BY ID NULLS LAST), lag(AMOUNT) "
                             "OVER (ORDER BY ID NULLS LAST) FROM SALES"),
              repeats);
  return 0;
}
