// A schema of many tables in the browser: how long the table list takes from the query to a
// filled grdTable, and one table's columns to grdFIELD, with display names from every source.
//   bench_catalogue [tables] [repeats]
#include "BenchInstance.h"
#include "MedianTime.h"
#include "browser/BrowserGrids.h"
#include "browser/CatalogueSql.h"
#include "browser/Catalogues.h"
#include "browser/TextTable.h"
#include "widgets/FlexGrid.h"

#include <QApplication>
#include <QFile>

#include <cstdio>

int main(int argc, char* argv[]) {
  QApplication app(argc, argv);
  const int tables = argc > 1 ? std::atoi(argv[1]) : 5000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 11;
  const BenchInstance instance;
  instance.logOn(QStringLiteral("system")).ExecuteSQL(QStringLiteral("create user bench identified by pw"));
  OraDatabase db = instance.logOn(QStringLiteral("BENCH"));

  // A quarter each named by the master table, by a comment, by the name-master file, by nothing.
  QElapsedTimer t;
  t.start();
  db.ExecuteSQL(QStringLiteral("create table TBTBLM (TBL_ID varchar2(30), TBL_NM varchar2(60))"));
  db.ExecuteSQL(QStringLiteral("create table TBCLMM (CLM_ID varchar2(30), CLM_NM varchar2(60))"));
  NameMasters names;
  QString file;
  for (int i = 0; i < tables; ++i) {
    const QString id = QStringLiteral("T%1").arg(i, 5, 10, QChar(u'0'));
    db.ExecuteSQL(QStringLiteral("create table %1 (KOKYAKU_NO number(8), JUCHU_NO number(10), NM varchar2(40), "
                                 "KINGAKU number(12,2), TOROKU_YMD date)")
                      .arg(id));
    switch (i % 4) {
    case 0: db.ExecuteSQL(QStringLiteral("insert into TBTBLM values ('%1', 'マスタ名%1')").arg(id)); break;
    case 1: db.ExecuteSQL(QStringLiteral("comment on table %1 is 'コメント%1'").arg(id)); break;
    case 2: file += id + QStringLiteral(",ファイル名") + id + QStringLiteral("\n"); break;
    default: break;
    }
  }
  const QString datFile = instance.dir.path() + QStringLiteral("/TBTBLM.dat");
  QFile out(datFile);
  if (!out.open(QIODevice::WriteOnly))
    return 1;
  out.write(file.toUtf8());
  out.close();
  names.tables.load(datFile);
  const double create = double(t.elapsed());

  const MasterTable tableMaster{QStringLiteral("TBTBLM"), QStringLiteral("TBL_NM"), QStringLiteral("TBL_ID")};
  const MasterTable columnMaster{QStringLiteral("TBCLMM"), QStringLiteral("CLM_NM"), QStringLiteral("CLM_ID")};
  FlexGrid grid;
  grid.setCols(1);
  grid.resize(300, 600);
  grid.show();
  int rows = 0;
  TextTable read;
  const double query = medianMs(repeats, [&] {
    read = *ReadTableCatalogue(&db, QStringLiteral("bench"), tableMaster, names);
    rows = read.upper();
  });
  // As the window does it: the query and its rows, the grid filled, then painted.
  const double load = medianMs(repeats, [&] {
    const TextTable list = *ReadTableCatalogue(&db, QStringLiteral("bench"), tableMaster, names);
    grid.setRows(list.upper() + 1);
    ShowIdsOrNames(grid, 0, list, false);
    QApplication::processEvents();
  });
  const double toggle = medianMs(repeats, [&] {
    ShowIdsOrNames(grid, 0, read, true);
    QApplication::processEvents();
  });
  const double columns = medianMs(repeats, [&] {
    ReadColumnCatalogue(&db, QStringLiteral("bench"), QStringLiteral("T02500"), columnMaster, names);
  });

  std::printf("Schema of %d tables x 5 columns (created in %.1f s); median of %d runs\n", tables, create / 1000.0,
              repeats);
  std::printf("table catalogue query + %d rows read       %8.1f ms\n", rows, query);
  std::printf("LoadTableCatalogue: query, rows, grid, paint %8.1f ms\n", load);
  std::printf("ID/name switch over the whole grid           %8.1f ms\n", toggle);
  std::printf("column catalogue of one table               %8.1f ms\n", columns);
  std::printf("check: row 1 = %s, row 2 = %s, row 3 = %s, row 4 = %s\n", qPrintable(read.at(1, 1)),
              qPrintable(read.at(1, 2)), qPrintable(read.at(1, 3)), qPrintable(read.at(1, 4)));
  return 0;
}
