// A CONNECT BY walk of a 100,000-row tree (ten children a node) on the embedded engine, against
// the recursive query a developer would write for SQLite on the same file: the same rows, LEVEL
// and path, depth first as Oracle returns them. Neither hand-written query looks for loops in the
// data, which the engine must, to raise ORA-01436: that check is part of the engine's time.
//   bench_hierarchy [rows] [repeats]
#include "BenchInstance.h"
#include "QueryComparison.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 100000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 5;

  const BenchInstance instance;
  OraDatabase db = instance.logOn(QStringLiteral("system"));
  db.ExecuteSQL(
      QStringLiteral("create table NODES (ID number(10) primary key, PARENT_ID number(10), NAME varchar2(12))"));
  db.ExecuteSQL(QStringLiteral("insert into NODES select level, case when level > 1 then trunc((level - 2) / 10) + 1 "
                               "end, 'N' || level from dual connect by level <= %1")
                    .arg(rows));
  db.ExecuteSQL(QStringLiteral("create index NODES_PARENT on NODES (PARENT_ID)"));

  QueryComparison compare(db, instance.folder, QStringLiteral("SYSTEM"));
  std::printf("%d rows, median of %d runs               engine      SQLite direct   ratio\n", rows, repeats);
  compare.run("walk with LEVEL and path",
              QStringLiteral("select ID, LEVEL, SYS_CONNECT_BY_PATH(NAME, '/') from NODES start with PARENT_ID is null "
                             "connect by prior ID = PARENT_ID"),
              QStringLiteral("WITH RECURSIVE h(id, lvl, path, k) AS (SELECT ID, 1, '/' || NAME, printf('/%012d/', "
                             "rowid) FROM NODES WHERE PARENT_ID IS NULL UNION ALL SELECT n.ID, h.lvl + 1, h.path || "
                             "'/' || n.NAME, h.k || printf('%012d/', n.rowid) FROM h JOIN NODES n ON n.PARENT_ID = "
                             "h.id) SELECT id, lvl, path FROM h ORDER BY k"),
              repeats);
  compare.run("one subtree",
              QStringLiteral("select ID, LEVEL from NODES start with ID = 2 connect by prior ID = PARENT_ID"),
              QStringLiteral("WITH RECURSIVE h(id, lvl, k) AS (SELECT ID, 1, printf('/%012d/', rowid) FROM NODES WHERE "
                             "ID = 2 UNION ALL SELECT n.ID, h.lvl + 1, h.k || printf('%012d/', n.rowid) FROM h JOIN "
                             "NODES n ON n.PARENT_ID = h.id) SELECT id, lvl FROM h ORDER BY k"),
              repeats);
  return 0;
}
