// A schema of many tables: how fast the dictionary views answer the catalogue's queries,
// against the same queries on a plain table holding the same rows.
//   bench_dictionary [tables] [columns] [repeats]
#include "BenchInstance.h"
#include "MedianTime.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

// Runs the query as the catalogue loaders do: open, count, read every field of every row.
qint64 readAll(OraDatabase& db, const QString& sql) {
  auto d = db.CreateDynaset(sql, 4);
  const qint64 n = d->RecordCount();
  for (qint64 r = 0; r < n; ++r, d->MoveNext())
    for (int c = 0; c < d->FieldCount(); ++c)
      d->Fields(c);
  return n;
}

// TABLE_NAME in (select ... where COLUMN_NAME = 'C2' and TABLE_NAME in (...)), ten deep, as the
// search for tables sharing ten key columns builds it.
QString nested(const QString& from, int levels) {
  QString sql = QStringLiteral("select TABLE_NAME from %1 where COLUMN_NAME = 'C%2'").arg(from).arg(levels);
  for (int k = levels - 1; k >= 1; --k)
    sql = QStringLiteral("select TABLE_NAME from %1 where COLUMN_NAME = 'C%2' and TABLE_NAME in (%3)")
              .arg(from)
              .arg(k)
              .arg(sql);
  return sql;
}

} // namespace

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int tables = argc > 1 ? std::atoi(argv[1]) : 5000;
  const int columns = argc > 2 ? std::atoi(argv[2]) : 20;
  const int repeats = argc > 3 ? std::atoi(argv[3]) : 21;
  const BenchInstance instance;
  OraDatabase db = instance.logOn(QStringLiteral("system"));

  QElapsedTimer t;
  t.start();
  for (int i = 0; i < tables; ++i) {
    QStringList cols;
    for (int c = 1; c <= columns; ++c)
      cols << QStringLiteral("C%1 %2").arg(c).arg(c % 3 == 0   ? QStringLiteral("DATE")
                                                  : c % 3 == 1 ? QStringLiteral("NUMBER(10)")
                                                               : QStringLiteral("VARCHAR2(40)"));
    db.ExecuteSQL(
        QStringLiteral("create table T%1 (%2, constraint T%1_PK primary key (C1))").arg(i).arg(cols.join(u',')));
  }
  const double create = double(t.elapsed());

  // The same rows in an ordinary table, indexed the way a DBA would index them.
  db.ExecuteSQL(QStringLiteral(
      "create table PLAIN_COLS (OWNER varchar2(128), TABLE_NAME varchar2(128), COLUMN_NAME varchar2(128), "
      "DATA_TYPE varchar2(128), DATA_LENGTH number, DATA_PRECISION number, DATA_SCALE number, "
      "NULLABLE char(1), COLUMN_ID number)"));
  db.ExecuteSQL(QStringLiteral("insert into PLAIN_COLS select OWNER, TABLE_NAME, COLUMN_NAME, DATA_TYPE, DATA_LENGTH, "
                               "DATA_PRECISION, DATA_SCALE, NULLABLE, COLUMN_ID from ALL_TAB_COLUMNS"));
  db.ExecuteSQL(QStringLiteral("create index PLAIN_TABLE_IX on PLAIN_COLS (TABLE_NAME, COLUMN_ID)"));
  db.ExecuteSQL(QStringLiteral("create index PLAIN_COLUMN_IX on PLAIN_COLS (COLUMN_NAME, TABLE_NAME)"));

  const QString one =
      QStringLiteral("select COLUMN_NAME, DATA_TYPE, DATA_LENGTH, DATA_PRECISION, DATA_SCALE, NULLABLE, COLUMN_ID "
                     "from %1 where TABLE_NAME = 'T1234' order by COLUMN_ID");
  std::printf("Dictionary of %d tables x %d columns (created in %.1f s)\n", tables, columns, create / 1000.0);
  std::printf("median of %d runs                       view        plain table   ratio   rows\n", repeats);
  struct Case {
    const char* name;
    QString view, plain;
  } cases[] = {
      {"columns of one table (TABLE_NAME =)", one.arg(QStringLiteral("ALL_TAB_COLUMNS")),
       one.arg(QStringLiteral("PLAIN_COLS"))},
      {"10-level nested TABLE_NAME in (...)", nested(QStringLiteral("ALL_TAB_COLUMNS"), 10),
       nested(QStringLiteral("PLAIN_COLS"), 10)},
  };
  for (const Case& c : cases) {
    qint64 rowsView = 0, rowsPlain = 0;
    const double v = medianMs(repeats, [&] { rowsView = readAll(db, c.view); });
    const double p = medianMs(repeats, [&] { rowsPlain = readAll(db, c.plain); });
    std::printf("%-38s %8.3f ms  %8.3f ms   %5.2fx  %lld%s\n", c.name, v, p, v / p, rowsView,
                rowsView == rowsPlain ? "" : "  (row counts differ!)");
  }
  return 0;
}
