// The export of one table of a million rows and eight mixed columns to a CP932 file, as the
// export dialog writes it (a no-cache result set counted first, then streamed through the
// writer), against the sqlite3 command-line shell writing the same rows as CSV from the same
// schema file. One run each; the figure is DBSWEEP's rows per second over sqlite3's.
//   bench_export [rows]
#include "BenchInstance.h"
#include "MedianTime.h"
#include "db/local/Catalogue.h"
#include "export/CsvWriter.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <cstdio>
#include <cstdlib>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 1000000;
  const QString shell = QStandardPaths::findExecutable(QStringLiteral("sqlite3"));
  if (shell.isEmpty()) {
    std::fprintf(stderr, "the reference needs the sqlite3 shell (Debian package sqlite3)\n");
    return 1;
  }

  const BenchInstance instance;
  OraDatabase database = instance.logOn(QStringLiteral("system"));
  database.ExecuteSQL(QStringLiteral("create table DIGITS (D number(1))"));
  for (int d = 0; d < 10; ++d)
    database.ExecuteSQL(QStringLiteral("insert into DIGITS values (%1)").arg(d));
  database.ExecuteSQL(QStringLiteral(
      "create table ORDERS (ORDER_NO number(10), CUSTOMER varchar2(40), ITEM varchar2(20), QTY number(5), "
      "PRICE number(10,2), ORDERED date, NOTE varchar2(100), STATUS char(1))"));
  database.ExecuteSQL(
      QStringLiteral("insert into ORDERS select N, '顧客' || mod(N, 997) || '様', 'P' || mod(N, 5003), mod(N, 17), "
                     "mod(N, 9973) / 4, to_date('2024/01/01 09:30:00', 'YYYY/MM/DD HH24:MI:SS') + mod(N, 400), "
                     "decode(mod(N, 5), 0, null, 'いつもの配送先、午前中指定 ' || N), decode(mod(N, 3), 0, 'A', 'B') "
                     "from (select a.D * 100000 + b.D * 10000 + c.D * 1000 + e.D * 100 + f.D * 10 + g.D + 1 N "
                     "from DIGITS a, DIGITS b, DIGITS c, DIGITS e, DIGITS f, DIGITS g) where N <= %1")
          .arg(rows));
  database.ExecuteSQL(QStringLiteral("commit"));

  const QTemporaryDir out;
  const QString schema = Catalogue::schemaFile(instance.folder, QStringLiteral("SYSTEM"));
  QProcess reference;
  reference.setStandardOutputFile(out.path() + QStringLiteral("/sqlite3.csv"));
  const double shellMs = msOf([&] {
    reference.start(shell, {QStringLiteral("-readonly"), QStringLiteral("-csv"), schema,
                            QStringLiteral("select * from ORDERS")});
    reference.waitForFinished(-1);
  });
  if (reference.exitCode() != 0) {
    std::fprintf(stderr, "sqlite3 failed: %s\n", reference.readAllStandardError().constData());
    return 1;
  }

  const QList<CsvColumn> columns = {
      {QStringLiteral("ORDER_NO"), QStringLiteral("NUMBER"), CsvField::Bare},
      {QStringLiteral("CUSTOMER"), QStringLiteral("VARCHAR2"), CsvField::Quoted},
      {QStringLiteral("ITEM"), QStringLiteral("VARCHAR2"), CsvField::Quoted},
      {QStringLiteral("QTY"), QStringLiteral("NUMBER"), CsvField::Bare},
      {QStringLiteral("PRICE"), QStringLiteral("NUMBER"), CsvField::Bare},
      {QStringLiteral("ORDERED"), QStringLiteral("DATE"), CsvField::Bare},
      {QStringLiteral("NOTE"), QStringLiteral("VARCHAR2"), CsvField::Quoted},
      {QStringLiteral("STATUS"), QStringLiteral("CHAR"), CsvField::Quoted}};
  CsvWriter writer(columns, {});
  CsvTableResult result;
  const QString file = out.path() + QStringLiteral("/ORDERS.dat");
  const double exportMs = msOf([&] {
    auto table = database.CreateDynaset(QStringLiteral("select * from ORDERS"), OraDynaset::NoCache);
    if (table->RecordCount() != rows)
      std::exit(1);
    result = writer.writeFile(*table, file, CsvEncoding::Cp932);
  });
  if (result.outcome != CsvTableResult::Outcome::Written || result.rows != rows) {
    std::fprintf(stderr, "the export failed: %s\n", qPrintable(result.detail));
    return 1;
  }

  const auto perSecond = [rows](double ms) { return rows / (ms / 1000.0); };
  std::printf("%d rows of 8 columns, one run each          time        rows/s        file\n", rows);
  std::printf("DBSWEEP export (CP932)              %9.0f ms  %11.0f  %8.1f MB\n", exportMs, perSecond(exportMs),
              QFileInfo(file).size() / 1e6);
  std::printf("sqlite3 -csv (UTF-8)                %9.0f ms  %11.0f  %8.1f MB\n", shellMs, perSecond(shellMs),
              QFileInfo(out.path() + QStringLiteral("/sqlite3.csv")).size() / 1e6);
  std::printf("DBSWEEP rows/s over sqlite3's: %.2f×\n", perSecond(exportMs) / perSecond(shellMs));
  return 0;
}
