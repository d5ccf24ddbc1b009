// Keys and their filter rows, the search for tables sharing them, the target list and its menu,
// and the value picker, on a real embedded instance.
#include "BrowserFixture.h"
#include "filter/RowFilter.h"
#include "viewers/FDBSWEEP_DT.h"
#include "widgets/PopPop.h"

#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPointer>
#include <QPushButton>
#include <QScrollBar>
#include <QTimer>

using Answer = MessageBoxes::Answer;

namespace {

const QStringList ShopSchema = {
    "create table TBTBLM (TBL_ID varchar2(30), TBL_NM varchar2(60))",
    "insert into TBTBLM values ('JUCHU', '受注')",
    "create table KOKYAKU (KOKYAKU_NO number(8), KOKYAKU_NM varchar2(20), KINGAKU number(7,2), TOROKU_YMD date, "
    "POINT number, BIKO clob, GAZO raw(16))",
    "comment on table KOKYAKU is '顧客'",
    "insert into KOKYAKU (KOKYAKU_NO, KOKYAKU_NM) values (1, 'a')",
    "insert into KOKYAKU (KOKYAKU_NO, KOKYAKU_NM) values (2, 'a')",
    "insert into KOKYAKU (KOKYAKU_NO, KOKYAKU_NM) values (3, 'b')",
    "insert into KOKYAKU (KOKYAKU_NO) values (4)",
    "create table JUCHU (JUCHU_NO number(10), KOKYAKU_NO number(8))",
    "create table MEISAI (JUCHU_NO number(10), GYO_NO number(3), KOKYAKU_NO number(8))",
    "create view V_JUCHU as select KOKYAKU_NO from JUCHU",
    "create table WIDE (K1 number, K2 number, K3 number, K4 number, K5 number, K6 number, K7 number, K8 number, "
    "K9 number, K10 number, K11 number)",
};

} // namespace

class TestKeySearch final : public QObject {
  Q_OBJECT

  Machine m;

  struct Shop : Browser {
    explicit Shop(Machine& m) : Browser(m, "SHOP", "pw") {
      start.window->LoadTableCatalogue();
      list = start.find<QListWidget>("lstTable");
    }
    // Shows the columns of table ID.
    void open(const QString& id) {
      clickTable(int(start.state.gTables.upper() >= 1 ? rowOfId(id) : 0));
      QCOMPARE(start.state.gCurTableID, id);
    }
    int rowOfId(const QString& id) {
      for (int r = 1; r <= start.state.gTables.upper(); ++r)
        if (start.state.gTables.at(0, r) == id)
          return r;
      return 0;
    }
    void addKey(int fieldRow) {
      QTest::mouseDClick(fields->viewport(), Qt::LeftButton, {}, cellCenter(*fields, fieldRow, 1));
    }
    QLabel* mode(int i) { return start.find<QLabel>(QString("lblX_%1").arg(i)); }
    QLineEdit* box(int n, int i) { return start.find<QLineEdit>(QString("txt%1_%2").arg(n).arg(i)); }
    // Whether the five table jobs are all on (or all off).
    bool jobs(bool on) {
      for (int i = 0; i <= 4; ++i)
        if (start.find<QPushButton>(QString("cmdJOB_%1").arg(i))->isEnabled() != on)
          return false;
      return true;
    }
    QListWidget* list = nullptr;
  };

private Q_SLOTS:
  void initTestCase() {
    m.setSetting("PATH", m.env.db.programFolder);
    auto system = LocalEngine::connect(Browser::folder(m), "system", "manager");
    for (const QString& user : {QString("shop"), QString("other")}) {
      system->execute("CREATE USER " + user + " IDENTIFIED BY pw");
      system->execute("GRANT CONNECT, RESOURCE, CREATE VIEW TO " + user);
    }
    auto shop = LocalEngine::connect(Browser::folder(m), "SHOP", "pw");
    for (const QString& sql : ShopSchema)
      shop->execute(sql);
    LocalEngine::connect(Browser::folder(m), "OTHER", "pw")->execute("create table ZAIKO (KOKYAKU_NO number(8))");
    QVERIFY(QDir().mkpath(m.env.db.programFolder));
    writeFile(m.env.db.programFolder + "/TBTBLM.dat", "MEISAI,明細\n");
  }

  void keysGetFilterRowsThatBuildTheWhereClause() {
    Shop s(m);
    s.open("KOKYAKU");
    // Large objects and raw bytes cannot be keys.
    for (const auto& [row, type] : {std::pair{6, QString("CLOB")}, std::pair{7, QString("RAW")}}) {
      m.boxes.expect(Answer::Ok);
      s.addKey(row);
      QCOMPARE(m.boxes.shown().last().text, type + "は選択出来ません");
      QCOMPARE(m.boxes.shown().last().title, QString("DBSWEEP"));
      QCOMPARE(m.boxes.shown().last().icon, MessageBoxes::Icon::Exclamation);
    }
    QCOMPARE(s.keys->Rows(), 1);
    for (int r = 1; r <= 5; ++r)
      s.addKey(r);
    s.addKey(1); // already a key: ignored
    QCOMPARE(column(*s.keys, 0), QStringList({"1", "2", "3", "4", "5"}));
    QCOMPARE(rowOf(*s.keys, 3), QStringList({"3", "KINGAKU", "NUMBER", "7", "2", "", "", "", ""}));
    QCOMPARE(s.fields->CellBackColor(3, 1), QColor(0, 255, 0));
    // Input lengths follow the type: NUMBER(8), VARCHAR2(20), NUMBER(7,2) with its point, DATE
    // and a NUMBER without precision unlimited.
    const int unlimited = QLineEdit().maxLength();
    const QList<int> lengths = {8, 20, 8, unlimited, unlimited};
    for (int i = 0; i < 5; ++i) {
      QCOMPARE(s.box(1, i)->maxLength(), lengths[i]);
      QCOMPARE(s.box(2, i)->maxLength(), lengths[i]);
      QVERIFY(!s.mode(i)->isHidden());
      QCOMPARE(s.mode(i)->text(), QString("全て"));
      QVERIFY(s.box(1, i)->isHidden());
    }
    QVERIFY(s.mode(5)->isHidden());
    QCOMPARE(s.start.window->fWhere(), QString());

    // The label cycles the modes and shows the boxes each needs.
    const auto click = [&s](int i, int times) {
      for (int n = 0; n < times; ++n)
        QTest::mouseClick(s.mode(i), Qt::LeftButton);
    };
    click(0, 1);
    QCOMPARE(s.mode(0)->text(), QString("のみ"));
    QVERIFY(!s.box(1, 0)->isHidden());
    QVERIFY(s.box(2, 0)->isHidden());
    QTest::keyClicks(s.box(1, 0), "1%");
    click(1, 2);
    QCOMPARE(s.mode(1)->text(), QString("と"));
    QVERIFY(!s.box(2, 1)->isHidden());
    s.box(1, 1)->setText("a");
    s.box(2, 1)->setText("b");
    click(2, 3);
    QCOMPARE(s.mode(2)->text(), QString("～"));
    s.box(1, 2)->setText("10");
    s.box(2, 2)->setText("20");
    click(3, 4); // all the way round
    QCOMPARE(s.mode(3)->text(), QString("全て"));
    QVERIFY(s.box(1, 3)->isHidden());
    const QString where = " where (KOKYAKU_NO like '1%') and (KOKYAKU_NM like 'a' or KOKYAKU_NM like 'b') and "
                          "(KINGAKU between '10' and '20')";
    QCOMPARE(s.start.window->fWhere(), where);
    QCOMPARE(s.start.window->FullFilter(), where);
    s.start.find<QPushButton>("cmdAND_1")->click();
    QTest::keyClicks(s.start.find<QLineEdit>("txtAddWhere"), "POINT > 0");
    QCOMPARE(s.start.window->FullFilter(), where + "  AND POINT > 0");
    s.start.find<QPushButton>("cmdAND_0")->click();
    s.start.find<QPushButton>("cmdAND_2")->click();
    QCOMPARE(s.start.find<QLineEdit>("txtAddWhere")->text(), QString(" OR "));
    // The filter runs on the real table: keys 1 and 2 named 'a' match only customer 1.
    s.start.find<QLineEdit>("txtAddWhere")->clear();
    s.box(1, 2)->setText("0");
    s.box(2, 2)->setText("0");
    click(2, 1); // back to "全て"
    QCOMPARE(rowsOf(*s.start.state.gDatabase, "select KOKYAKU_NO from KOKYAKU" + s.start.window->FullFilter()),
             QStringList({"1"}));

    // Removing the first key moves the others up with their modes, values and lengths.
    s.keys->setRow(1);
    s.start.find<QPushButton>("cmdBack")->click();
    QCOMPARE(column(*s.keys, 0), QStringList({"2", "3", "4", "5"}));
    QVERIFY(!s.fields->CellBackColor(1, 1).isValid());
    QCOMPARE(s.mode(0)->text(), QString("と"));
    QCOMPARE(s.box(2, 0)->text(), QString("b"));
    QCOMPARE(s.box(1, 1)->maxLength(), 8);
    QCOMPARE(s.mode(1)->text(), QString("全て"));
    QVERIFY(s.mode(4)->isHidden());
    QCOMPARE(s.start.window->fWhere(), QString(" where (KOKYAKU_NM like 'a' or KOKYAKU_NM like 'b')"));
    // The walk over the keys leaves the grid on the last key, column 0.
    QCOMPARE(s.keys->Row(), 4);
    QCOMPARE(s.keys->Col(), 0);
    // Another table drops every key and filter row.
    s.open("JUCHU");
    QCOMPARE(s.keys->Rows(), 1);
    QVERIFY(s.mode(0)->isHidden());
  }

  void tenKeysNestNineLevelsAndAnEleventhIsRefused() {
    Shop s(m);
    s.open("WIDE");
    for (int r = 1; r <= 10; ++r)
      s.addKey(r);
    QCOMPARE(s.keys->Rows(), 11);
    const QString last = s.recorder->sent().last();
    QCOMPARE(last.count("TABLE_NAME in ("), 9);
    QVERIFY(
        last.startsWith("select distinct table_name,NVL(B.TBL_NM,TABLE_NAME) TBLNM_K from ALL_TAB_COLUMNS,TBTBLM B "
                        "WHERE TABLE_NAME in (select distinct table_name from ALL_TAB_COLUMNS WHERE TABLE_NAME in "));
    QCOMPARE(sortedItems(s.list), QStringList({"WIDE"}));
    m.boxes.expect(Answer::Ok);
    s.addKey(11);
    QCOMPARE(m.boxes.shown().last().text, QString("選択は最大10項目までです"));
    QCOMPARE(s.keys->Rows(), 11);
  }

  void keysFindEveryTableThatHoldsThem() {
    Shop s(m);
    // Searching is on from the start; switched off, a key only empties the list.
    QVERIFY(s.start.find<QCheckBox>("chkLstTable")->isChecked());
    QTest::mouseClick(s.start.find<QCheckBox>("chkLstTable"), Qt::LeftButton);
    s.open("JUCHU");
    s.addKey(2);
    QCOMPARE(s.list->count(), 0);
    QCOMPARE(s.recorder->sent().last(),
             QString("select TABLE_NAME from ALL_TABLES WHERE upper(OWNER) = upper('SHOP') AND TABLE_NAME = 'TBTBLM'"));
    s.recorder->forget();
    QTest::mouseClick(s.start.find<QCheckBox>("chkLstTable"), Qt::LeftButton);
    QCOMPARE(s.recorder->sent(),
             QStringList({"select TABLE_NAME from ALL_TABLES WHERE upper(OWNER) = upper('SHOP') AND TABLE_NAME = "
                          "'TBTBLM'",
                          "select distinct table_name,NVL(B.TBL_NM,TABLE_NAME) TBLNM_K from ALL_TAB_COLUMNS,TBTBLM B "
                          "where COLUMN_NAME = 'KOKYAKU_NO' and upper(owner) = upper('SHOP') AND B.TBL_ID (+) = "
                          "TABLE_NAME "}));
    // Views count; the other owner's table does not.
    QCOMPARE(sortedItems(s.list), QStringList({"JUCHU", "KOKYAKU", "MEISAI", "V_JUCHU"}));
    for (int i = 0; i < s.list->count(); ++i)
      QCOMPARE(s.start.state.gTargets.at(0, s.list->item(i)->data(Qt::UserRole).toInt()), s.list->item(i)->text());

    // Display names: the master, else the file, else the ID; never the comment.
    s.list->item(0)->setSelected(true);
    const QString selected = s.list->item(0)->text();
    QTest::mouseClick(s.start.find<QCheckBox>("chkTabNM"), Qt::LeftButton);
    QCOMPARE(sortedItems(s.list), QStringList({"KOKYAKU", "V_JUCHU", "受注", "明細"}));
    QCOMPARE(s.start.state.gTargets.at(0, s.list->item(0)->data(Qt::UserRole).toInt()), selected);
    QVERIFY(s.list->item(0)->isSelected());
    QVERIFY(s.jobs(true));

    // Two keys: the tables holding both.
    s.addKey(1);
    QCOMPARE(sortedItems(s.list), QStringList({"受注", "明細"}));
    QVERIFY(s.jobs(false));
    // Removing the keys leaves the job buttons off whatever is selected.
    s.keys->setRow(2);
    s.start.find<QPushButton>("cmdBack")->click();
    s.list->selectAll();
    QVERIFY(s.jobs(true));
    s.keys->setRow(1);
    s.start.find<QPushButton>("cmdBack")->click();
    QCOMPARE(s.keys->Rows(), 1);
    QVERIFY(s.jobs(false));
    QVERIFY(s.box(1, 0)->isHidden());

    // The column search: typed in lower case, found upper-cased; no key, so no jobs.
    whenModal([](QWidget* dialog) {
      QCOMPARE(dialog->windowTitle(), QString("項目ＩＤ検索"));
      auto* name = dialog->findChild<QLineEdit*>("txtColNm");
      QTest::keyClicks(name, "gyo_no");
      QTest::keyClick(name, Qt::Key_Return);
      QCOMPARE(dialog->focusWidget(), dialog->findChild<QPushButton*>("cmdGo"));
      QTest::keyClick(dialog->focusWidget(), Qt::Key_Return);
    });
    s.start.find<QPushButton>("cmdSearch")->click();
    QCOMPARE(s.start.state.gColSearchName, QString("gyo_no"));
    QCOMPARE(sortedItems(s.list), QStringList({"明細"}));
    s.list->selectAll();
    QVERIFY(s.jobs(false));
    // Escape: nothing searched, the list stays.
    whenModal([](QWidget* dialog) {
      QTest::keyClicks(dialog->findChild<QLineEdit*>("txtColNm"), "juchu_no");
      QTest::keyClick(dialog->findChild<QLineEdit*>("txtColNm"), Qt::Key_Escape);
    });
    s.start.find<QPushButton>("cmdSearch")->click();
    QCOMPARE(s.start.state.gColSearchName, QString());
    QCOMPARE(sortedItems(s.list), QStringList({"明細"}));
  }

  void theMenuSelectsTargetsAndScrolls() {
    Shop s(m);
    auto* menu = s.start.window->findChild<QMenu*>("PopPop");
    s.open("KOKYAKU");
    // An empty list has no menu.
    s.list->customContextMenuRequested(QPoint(5, 5));
    QVERIFY(!menu->isVisible());
    s.addKey(1);
    QCOMPARE(s.list->count(), 4);
    s.list->customContextMenuRequested(QPoint(5, 5));
    QVERIFY(menu->isVisible());
    QVERIFY(menu->findChild<QAction*>("popMenu_0")->isEnabled());
    menu->findChild<QAction*>("popMenu_0")->trigger();
    QCOMPARE(s.list->selectedItems().size(), 4);
    QVERIFY(s.jobs(true));
    menu->findChild<QAction*>("popMenu_1")->trigger();
    QVERIFY(s.list->selectedItems().isEmpty());
    QVERIFY(s.jobs(false));
    menu->close();

    // Opened on the field grid, the selection entries do nothing and the scrolls move that grid.
    s.open("WIDE");
    s.fields->resize(s.fields->width(), 80);
    QTest::mousePress(s.fields->viewport(), Qt::RightButton, {}, cellCenter(*s.fields, 1, 1));
    QVERIFY(!menu->findChild<QAction*>("popMenu_0")->isEnabled());
    menu->findChild<QAction*>("popScroll_3")->trigger();
    QCOMPARE(s.fields->verticalScrollBar()->value(), s.fields->verticalScrollBar()->maximum());
    QVERIFY(s.fields->verticalScrollBar()->maximum() > 0);
    menu->findChild<QAction*>("popScroll_2")->trigger();
    QCOMPARE(s.fields->verticalScrollBar()->value(), 0);
    menu->close();
  }

  void thePickerHandsBackAValue() {
    Shop s(m);
    s.open("KOKYAKU");
    s.addKey(2);
    QTest::mouseClick(s.mode(0), Qt::LeftButton);
    s.box(1, 0)->setText("z");
    // Three groups, one of them null; the pick of "a" comes back to the box.
    whenModal([](QWidget* dialog) {
      auto* grid = dialog->findChild<FlexGrid*>("grdData");
      QCOMPARE(dialog->windowTitle(), QString("データ照会"));
      QCOMPARE(grid->Rows(), 4);
      QCOMPARE(grid->TextMatrix(0, 1), QString("KOKYAKU_NM : KOKYAKU_NM"));
      QCOMPARE(grid->TextMatrix(0, 2), QString("件数"));
      QCOMPARE(dialog->findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 4件"));
      QCOMPARE(dialog->findChild<QLabel*>("lblTable")->text(), QString("テーブル名：KOKYAKU「顧客」"));
      auto* seconds = dialog->findChild<QLineEdit*>("txtTimer");
      seconds->selectAll();
      QTest::keyClicks(seconds, "90");
      QCOMPARE(seconds->text(), QString("65"));
      int row = 1;
      while (grid->TextMatrix(row, 1) != "a")
        ++row;
      QCOMPARE(grid->TextMatrix(row, 2), QString("2"));
      QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, cellCenter(*grid, row, 1));
    });
    QTest::mouseDClick(s.box(1, 0), Qt::LeftButton);
    QCOMPARE(s.box(1, 0)->text(), QString("a"));
    // Closed without a pick: the box keeps its text.
    whenModal([](QWidget* dialog) { dialog->close(); });
    QTest::mouseDClick(s.box(1, 0), Qt::LeftButton);
    QCOMPARE(s.box(1, 0)->text(), QString("a"));
    // The null group hands back empty text.
    whenModal([](QWidget* dialog) {
      auto* grid = dialog->findChild<FlexGrid*>("grdData");
      int row = 1;
      while (!grid->TextMatrix(row, 1).isEmpty())
        ++row;
      QTest::mouseDClick(grid->viewport(), Qt::LeftButton, {}, cellCenter(*grid, row, 1));
    });
    QTest::mouseDClick(s.box(1, 0), Qt::LeftButton);
    QCOMPARE(s.box(1, 0)->text(), QString());

    // A column the table does not have: the message, and a total of nothing.
    s.start.state.gPickColumnID = "NO_SUCH";
    m.boxes.expect(Answer::Ok);
    FDBSWEEP_DT viewer(s.start.state, m.boxes, 800, nullptr);
    QCOMPARE(m.boxes.shown().last().text, QString("データがありません"));
    QCOMPARE(m.boxes.shown().last().title, QString("エラー"));
    QCOMPARE(viewer.findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 0件"));
  }

  void thePickerRefreshesWhileTickedAndMenusTheRowPointedAt() {
    Shop s(m);
    s.open("KOKYAKU");
    s.start.state.gPickColumnID = "KOKYAKU_NM";
    PopPop menu(nullptr);
    FDBSWEEP_DT viewer(s.start.state, m.boxes, 800, &menu);
    viewer.show();
    auto* timer = viewer.findChild<QTimer*>("timTimer");
    auto* seconds = viewer.findChild<QLineEdit*>("txtTimer");
    QTest::mouseClick(viewer.findChild<QCheckBox*>("chkTimer"), Qt::LeftButton);
    QVERIFY(timer->isActive());
    // An interval that passes through 0 while the user types stops the reloads only meanwhile.
    seconds->selectAll();
    QTest::keyClick(seconds, Qt::Key_Backspace);
    QVERIFY(!timer->isActive());
    QTest::keyClicks(seconds, "3");
    QVERIFY(timer->isActive());
    QCOMPARE(timer->interval(), 3000);
    QTest::mouseClick(viewer.findChild<QCheckBox*>("chkTimer"), Qt::LeftButton);
    seconds->setText("4");
    QVERIFY(!timer->isActive());

    // A right-click acts on the row under the pointer, not on the one selected before.
    auto* grid = viewer.findChild<FlexGrid*>("grdData");
    grid->setRow(1);
    QTest::mousePress(grid->viewport(), Qt::RightButton, {}, cellCenter(*grid, 3, 1));
    QCOMPARE(grid->Row(), 3);
    QVERIFY(menu.isVisible());
    QCOMPARE(menu.target(), grid);
    menu.close();
  }
};

QTEST_MAIN(TestKeySearch)
#include "test_keysearch.moc"
