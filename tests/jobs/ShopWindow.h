#pragma once

// The main window on a small shop schema, for the tests that press the job buttons: KOKYAKU
// opened with KOKYAKU_NO as the key, and four target tables sharing it, all selected.
#include "../browser/BrowserFixture.h"

#include <QListWidget>
#include <QPushButton>

inline const QColor Black(0, 0, 0), Red(255, 0, 0), Green(0, 255, 0), Blue(0, 0, 255), Yellow(255, 255, 0),
    Cyan(0, 255, 255);

inline QString colour(const QColor& c) { return c.isValid() ? c.name() : QStringLiteral("default"); }

// A line of the result list as "text [background/text colour]".
inline QString line(const QString& text, const QColor& back = {}, const QColor& fore = {}) {
  return text + QStringLiteral(" [") + colour(back) + u'/' + colour(fore) + u']';
}

inline QStringList linesOf(FlexGrid& g) {
  QStringList lines;
  for (int r = 1; r < g.Rows(); ++r)
    lines << line(g.TextMatrix(r, 0), g.CellBackColor(r, 0), g.CellForeColor(r, 0));
  return lines;
}

// JUCHU (3 rows), KOKYAKU (4), MEISAI and ZAIKO_RIREKI_2026_NOVEMBER (none); only KOKYAKU has a
// display name, 顧客.
struct Shop : Browser {
  explicit Shop(Machine& m) : Browser(m, "SHOP", "pw") {
    start.window->LoadTableCatalogue();
    list = start.find<QListWidget>("lstTable");
    count = start.find<FlexGrid>("grdCount");
    clickTable(2); // KOKYAKU
    QTest::mouseDClick(fields->viewport(), Qt::LeftButton, {}, cellCenter(*fields, 1, 1));
    list->selectAll();
    QCOMPARE(list->count(), 4);
  }
  QPushButton* job(int i) { return start.find<QPushButton>(QString("cmdJOB_%1").arg(i)); }
  QStringList targets() {
    QStringList ids;
    for (int i = 0; i < list->count(); ++i)
      ids << list->item(i)->text();
    return ids;
  }
  QListWidget* list;
  FlexGrid* count;
};

// Creates the shop user on the machine's instance; once per test program.
inline void CreateShop(Machine& m) {
  m.setSetting("PATH", m.env.db.programFolder); // not a first start
  auto system = LocalEngine::connect(Browser::folder(m), "system", "manager");
  system->execute("CREATE USER shop IDENTIFIED BY pw");
  system->execute("GRANT CONNECT, RESOURCE TO shop");
}

// Gives the shop its tables and rows afresh, whatever an earlier test deleted or dropped.
inline void FillShop(Machine& m) {
  auto shop = LocalEngine::connect(Browser::folder(m), "SHOP", "pw");
  for (const char* table : {"JUCHU", "KOKYAKU", "TBTBLM", "MEISAI", "ZAIKO_RIREKI_2026_NOVEMBER"})
    errorOf([&] { shop->execute(QString("drop table ") + table); });
  for (const char* sql :
       {"create table JUCHU (JUCHU_NO number(10), KOKYAKU_NO number(8))",
        "create table KOKYAKU (KOKYAKU_NO number(8), KOKYAKU_NM varchar2(20))",
        "create table TBTBLM (TBL_ID varchar2(30), TBL_NM varchar2(60))", "insert into TBTBLM values ('KOKYAKU', '顧客')",
        "create table MEISAI (JUCHU_NO number(10), KOKYAKU_NO number(8))",
        "create table ZAIKO_RIREKI_2026_NOVEMBER (KOKYAKU_NO number(8))"})
    shop->execute(sql);
  for (int i = 1; i <= 4; ++i)
    shop->execute(QString("insert into KOKYAKU values (%1, 'k%1')").arg(i));
  for (int i = 1; i <= 3; ++i)
    shop->execute(QString("insert into JUCHU values (%1, %2)").arg(i).arg(i % 2 + 1));
}

// The rows of table as another session sees them: committed work only.
inline int ShopRows(Machine& m, const QString& table) {
  OraDatabase shop(LocalEngine::connect(Browser::folder(m), "SHOP", "pw"));
  return int(shop.CreateDynaset("select * from " + table, OraDynaset::ReadOnly)->RecordCount());
}
