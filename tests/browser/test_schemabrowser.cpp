// The schema browser on a real embedded instance: the table list, the column grid, the display
// names from their four sources, the ID/name switches, and the mouse and drops between grids.
#include "BrowserFixture.h"
#include "app/ColumnInfo.h"
#include "browser/BrowserGrids.h"
#include "browser/Catalogues.h"
#include "widgets/PopPop.h"

#include <QHeaderView>
#include <QLineEdit>
#include <QListWidget>
#include <QMenu>
#include <QPushButton>

using Answer = MessageBoxes::Answer;

namespace {

const QStringList SalesSchema = {
    "create table TBTBLM (TBL_ID varchar2(30), TBL_NM varchar2(60))",
    "create table TBCLMM (CLM_ID varchar2(30), CLM_NM varchar2(60))",
    "create table KOKYAKU (KOKYAKU_NO number(8), KOKYAKU_NM varchar2(20), RANK number, KINGAKU number(10,2), "
    "TOROKU_YMD date, BIKO varchar2(200))",
    "comment on table KOKYAKU is '顧客（コメント）'",
    "comment on column KOKYAKU.KOKYAKU_NO is '顧客番号（コメント）'",
    "comment on column KOKYAKU.KOKYAKU_NM is '顧客名'",
    "comment on column KOKYAKU.KINGAKU is 'KINGAKU'",
    "insert into TBTBLM values ('KOKYAKU', '顧客マスタ')",
    "insert into TBCLMM values ('KOKYAKU_NO', '顧客番号')",
    "create table SEIKYU (SEIKYU_NO number(10))",
    "comment on table SEIKYU is '請求'",
    "create table NYUKIN (NYUKIN_NO number(10))",
    "create table SHUKKA (SHUKKA_NO number(10))",
    "comment on table SHUKKA is 'SHUKKA'",
    "create table ACCESS_LOG (LOG_ID number)",
    "create view V_KOKYAKU as select KOKYAKU_NO from KOKYAKU",
};

const QStringList Ids = {"ACCESS_LOG", "KOKYAKU", "NYUKIN", "SEIKYU", "SHUKKA", "TBCLMM", "TBTBLM", "V_KOKYAKU"};
// Master beats comment beats file beats ID; a comment that repeats the ID counts as none.
const QStringList Names = {"ACCESS_LOG", "顧客マスタ", "入金", "請求", "出荷", "TBCLMM", "TBTBLM", "顧客ビュー"};

} // namespace

class TestSchemaBrowser final : public QObject {
  Q_OBJECT

  Machine m;

private Q_SLOTS:
  void initTestCase() {
    m.setSetting("PATH", m.env.db.programFolder); // not a first start
    auto system = LocalEngine::connect(Browser::folder(m), "system", "manager");
    for (const QString& user : {QString("sales"), QString("empty"), QString("other")}) {
      system->execute("CREATE USER " + user + " IDENTIFIED BY pw");
      system->execute("GRANT CONNECT, RESOURCE, CREATE VIEW TO " + user);
    }
    auto sales = LocalEngine::connect(Browser::folder(m), "SALES", "pw");
    for (const QString& sql : SalesSchema)
      sales->execute(sql);
    // Another owner's table holds the same columns and must never show.
    LocalEngine::connect(Browser::folder(m), "OTHER", "pw")->execute("create table KOKYAKU (KOKYAKU_NO number(8))");
    QVERIFY(QDir().mkpath(m.env.db.programFolder));
    writeFile(
        m.env.db.programFolder + "/TBTBLM.dat",
        "NYUKIN,入金\r\nSHUKKA,出荷\r\nV_KOKYAKU,顧客ビュー\r\nSEIKYU,請求（ファイル）\r\nKOKYAKU,顧客（ファイル）");
    writeFile(m.env.db.programFolder + "/TBCLMM.dat", "RANK,ランク\nKINGAKU,金額\nKOKYAKU_NM,顧客名（ファイル）\n");
  }

  void cleanup() {
    m.setSetting("TBLNM", "TBL_NM");
    m.setSetting("CLMNM", "CLM_NM");
  }

  void listsTablesAndViewsUnderTheirDisplayNames() {
    const int boxes = m.boxes.shown().size();
    Browser b(m, "Sales", "pw"); // typed in mixed case: the owner test upper-cases both sides
    b.check("chkTabNM")->setChecked(false);
    b.start.window->LoadTableCatalogue();
    QCOMPARE(b.recorder->sent().size(), 1);
    QCOMPARE(b.recorder->sent()[0],
             QString("select A.TABLE_NAME TBLNM_A,A.NUM_ROWS NUMROWS,NVL(B.TBL_NM,NVL(C.COMMENTS,A.TABLE_NAME)) "
                     "TBLNM_K from ALL_TABLES A,TBTBLM B,ALL_TAB_COMMENTS C  WHERE upper(A.OWNER) = upper('Sales') "
                     "AND B.TBL_ID (+) = A.TABLE_NAME  AND A.TABLE_NAME = C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+) "
                     "UNION select A.VIEW_NAME TBLNM_A,-1 NUMROWS,NVL(B.TBL_NM,NVL(C.COMMENTS,A.VIEW_NAME)) TBLNM_K "
                     "from ALL_VIEWS A,TBTBLM B,ALL_TAB_COMMENTS C  WHERE upper(A.OWNER) = upper('Sales') AND "
                     "B.TBL_ID (+) = A.VIEW_NAME  AND A.VIEW_NAME = C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+)  "
                     "order by 1"));
    QCOMPARE(b.tables->TextMatrix(0, 0), QString("ﾃｰﾌﾞﾙ"));
    QCOMPARE(column(*b.tables, 0), Names);
    QCOMPARE(b.start.state.gTables.at(0, 2), QString("KOKYAKU"));
    QCOMPARE(b.start.state.gTables.at(1, 8), QString("顧客ビュー"));
    QVERIFY(b.start.find<QPushButton>("cmdSearch")->isEnabled());
    QCOMPARE(m.boxes.shown().size(), boxes);

    // The switch rewrites the texts from memory, keeping the current row.
    b.tables->setRow(4);
    b.check("chkTabNM")->click();
    QCOMPARE(column(*b.tables, 0), Ids);
    QCOMPARE(b.tables->Row(), 4);
    b.check("chkTabNM")->click();
    QCOMPARE(column(*b.tables, 0), Names);
    QCOMPARE(b.recorder->sent().size(), 1);
  }

  void masterWithoutTheConfiguredColumnFallsBack() {
    m.setSetting("TBLNM", "NO_SUCH_COLUMN");
    Browser b(m, "SALES", "pw");
    b.check("chkTabNM")->setChecked(false);
    b.start.window->LoadTableCatalogue();
    QCOMPARE(b.recorder->sent().size(), 2);
    QVERIFY(b.recorder->sent()[0].contains("NVL(B.NO_SUCH_COLUMN,"));
    QCOMPARE(b.recorder->sent()[1],
             QString("select A.TABLE_NAME TBLNM_A,A.NUM_ROWS NUMROWS,NVL(C.COMMENTS,A.TABLE_NAME) TBLNM_K from "
                     "ALL_TABLES A,ALL_TAB_COMMENTS C  WHERE upper(A.OWNER) = upper('SALES')  AND A.TABLE_NAME = "
                     "C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+) UNION select A.VIEW_NAME TBLNM_A,-1 NUMROWS,"
                     "NVL(C.COMMENTS,A.VIEW_NAME) TBLNM_K from ALL_VIEWS A,ALL_TAB_COMMENTS C  WHERE "
                     "upper(A.OWNER) = upper('SALES')  AND A.VIEW_NAME = C.TABLE_NAME(+) AND A.OWNER = C.OWNER(+)  "
                     "order by 1"));
    QStringList names = Names;
    names[1] = "顧客（コメント）"; // the comment and the file still apply, the master does not
    QCOMPARE(column(*b.tables, 0), names);
  }

  void reloadClearsTheSelectionAndAFailureKeepsTheList() {
    Browser b(m, "SALES", "pw");
    b.start.window->LoadTableCatalogue();
    b.clickTable(2);
    QCOMPARE(b.fields->Rows(), 7);
    // What later work leaves behind: a key, a filter row, a target, a result, a job button.
    b.keys->setRows(2);
    b.start.find<QLineEdit>("txt1_0")->show();
    b.start.find<QListWidget>("lstTable")->addItem("KOKYAKU");
    b.start.find<FlexGrid>("grdCount")->setRows(3);
    b.start.find<QPushButton>("cmdJOB_0")->setEnabled(true);

    // A failed load says so and keeps the list, but the rest is reset all the same.
    const auto database = b.start.state.gDatabase;
    b.start.state.gDatabase.reset();
    const int boxes = m.boxes.shown().size();
    m.boxes.expect(Answer::Ok);
    b.start.window->LoadTableCatalogue();
    QCOMPARE(m.boxes.shown().size(), boxes + 1);
    QCOMPARE(m.boxes.shown().last().text, QString("テーブル情報が取得できません。"));
    QCOMPARE(m.boxes.shown().last().title, QString("エラー"));
    QCOMPARE(m.boxes.shown().last().icon, MessageBoxes::Icon::Critical);
    QCOMPARE(b.tables->Rows(), 9);
    QVERIFY(!b.start.find<QPushButton>("cmdSearch")->isEnabled());
    QCOMPARE(b.keys->Rows(), 1);
    QVERIFY(!b.fields->isEnabled());
    QVERIFY(!b.keys->isEnabled());
    QVERIFY(b.start.find<QLineEdit>("txt1_0")->isHidden());

    // A user who owns nothing: only the heading, and nothing chosen anywhere.
    b.start.state.gUser = "empty";
    b.start.state.gDatabase = std::make_shared<OraDatabase>(LocalEngine::connect(Browser::folder(m), "EMPTY", "pw"));
    b.start.find<QLineEdit>("txt1_0")->show();
    b.start.window->LoadTableCatalogue();
    QCOMPARE(m.boxes.shown().size(), boxes + 1);
    QCOMPARE(b.tables->Rows(), 1);
    QCOMPARE(b.tables->TextMatrix(0, 0), QString("ﾃｰﾌﾞﾙ"));
    QCOMPARE(b.fields->Rows(), 1);
    QCOMPARE(b.keys->Rows(), 1);
    QCOMPARE(b.start.find<QListWidget>("lstTable")->count(), 0);
    QCOMPARE(b.start.find<FlexGrid>("grdCount")->Rows(), 1);
    QCOMPARE(b.start.find<FlexGrid>("grdCount")->TextMatrix(0, 0), QString("処理結果"));
    QVERIFY(!b.start.find<QPushButton>("cmdJOB_0")->isEnabled());
    QVERIFY(b.start.find<QLineEdit>("txt1_0")->isHidden());
    QVERIFY(b.start.find<QPushButton>("cmdSearch")->isEnabled());
    // The title still names the table last shown: a reload never resets it.
    QCOMPARE(b.start.window->windowTitle(), QString("KOKYAKU「顧客マスタ」:DBSWEEP"));
    Q_UNUSED(database);
  }

  void commandLineLogonLoadsTheCatalogue() {
    Start s(m, "sales pw " + m.instance());
    s.load();
    QCOMPARE(s.find<FlexGrid>("grdTable")->Rows(), 9);
    QCOMPARE(s.find<FlexGrid>("grdTable")->TextMatrix(1, 0), QString("ACCESS_LOG"));
  }

  void columnsOfTheClickedTable() {
    Browser b(m, "SALES", "pw");
    b.check("chkFldNM")->setChecked(false);
    // An empty grid and its heading ignore clicks.
    QTest::mouseClick(b.tables->viewport(), Qt::LeftButton, {}, QPoint(10, 10));
    QVERIFY(b.recorder->sent().isEmpty());
    b.start.window->LoadTableCatalogue();
    b.recorder->forget();
    QTest::mouseClick(b.tables->horizontalHeader()->viewport(), Qt::LeftButton, {}, QPoint(10, 5));
    QVERIFY(b.recorder->sent().isEmpty());

    b.clickTable(2);
    QCOMPARE(b.start.window->windowTitle(), QString("KOKYAKU「顧客マスタ」:DBSWEEP"));
    QCOMPARE(b.recorder->sent(),
             QStringList({"select A.COLUMN_NAME,A.DATA_TYPE ,A.DATA_PRECISION ,A.DATA_SCALE ,A.DATA_LENGTH "
                          ",NVL(B.CLM_NM,NVL(C.COMMENTS,A.COLUMN_NAME)) COLNM_K  from ALL_TAB_COLUMNS A,TBCLMM "
                          "B,ALL_COL_COMMENTS C  WHERE upper(A.OWNER) = upper('SALES') AND A.TABLE_NAME = 'KOKYAKU' "
                          " AND B.CLM_ID (+) = A.COLUMN_NAME AND A.TABLE_NAME = C.TABLE_NAME AND A.COLUMN_NAME = "
                          "C.COLUMN_NAME AND A.OWNER = C.OWNER  ORDER BY A.COLUMN_ID"}));
    QCOMPARE(rowOf(*b.fields, 0), QStringList({"", "項目名", "属性", "桁数", "小数"}));
    QCOMPARE(rowOf(*b.fields, 1), QStringList({"1", "顧客番号", "NUMBER", "8", "0"})); // master over comment
    QCOMPARE(rowOf(*b.fields, 2), QStringList({"2", "顧客名", "VARCHAR2", "20", ""})); // comment over file
    QCOMPARE(rowOf(*b.fields, 3), QStringList({"3", "ランク", "NUMBER", "", ""}));     // no precision
    QCOMPARE(rowOf(*b.fields, 4), QStringList({"4", "金額", "NUMBER", "10", "2"}));    // comment = ID
    QCOMPARE(rowOf(*b.fields, 5), QStringList({"5", "TOROKU_YMD", "DATE", "7", ""}));
    QCOMPARE(rowOf(*b.fields, 6), QStringList({"6", "BIKO", "VARCHAR2", "200", ""}));
    QCOMPARE(b.start.state.gColumns.at(0, 4), QString("KINGAKU"));
    QCOMPARE(b.start.state.gCurTableName, QString("顧客マスタ"));
    QVERIFY(b.fields->isEnabled());
    QVERIFY(b.keys->isEnabled());
    QCOMPARE(rowOf(*b.keys, 0), QStringList({"", "項目名", "属性", "桁数", "小数", "", "値１", "", "値２"}));

    // The table already shown is not read again.
    b.clickTable(2);
    QCOMPARE(b.recorder->sent().size(), 1);

    // The column switch rewrites fields and keys from memory.
    b.keys->setRows(2);
    b.keys->setTextMatrix(1, 0, "4");
    b.check("chkFldNM")->click();
    QCOMPARE(column(*b.fields, 1), QStringList({"KOKYAKU_NO", "KOKYAKU_NM", "RANK", "KINGAKU", "TOROKU_YMD", "BIKO"}));
    QCOMPARE(b.keys->TextMatrix(1, 1), QString("KINGAKU"));
    b.check("chkFldNM")->click();
    QCOMPARE(b.keys->TextMatrix(1, 1), QString("金額"));
    QCOMPARE(b.recorder->sent().size(), 1);

    // Another table drops the keys and the key marker.
    b.fields->setCellBackColor(1, 1, QColor(0, 255, 0));
    b.clickTable(3);
    QCOMPARE(b.start.window->windowTitle(), QString("NYUKIN「入金」:DBSWEEP"));
    QCOMPARE(b.keys->Rows(), 1);
    QCOMPARE(rowOf(*b.fields, 1), QStringList({"1", "NYUKIN_NO", "NUMBER", "10", "0"}));
    QVERIFY(!b.fields->CellBackColor(1, 1).isValid());

    // After a reload the same table shows again at the first click.
    b.start.window->LoadTableCatalogue();
    QCOMPARE(b.fields->Rows(), 1);
    b.recorder->forget();
    b.clickTable(3);
    QCOMPARE(b.recorder->sent().size(), 1);
    QCOMPARE(b.fields->Rows(), 2);
  }

  void columnQueriesFallBackOrFail() {
    m.setSetting("CLMNM", "NO_SUCH_COLUMN");
    Browser b(m, "SALES", "pw");
    b.check("chkFldNM")->setChecked(false);
    b.start.window->LoadTableCatalogue();
    b.recorder->forget();
    b.clickTable(2);
    QCOMPARE(b.recorder->sent().size(), 2);
    QCOMPARE(b.recorder->sent()[1],
             QString("select A.COLUMN_NAME,A.DATA_TYPE ,A.DATA_PRECISION ,A.DATA_SCALE ,A.DATA_LENGTH "
                     ",NVL(C.COMMENTS,A.COLUMN_NAME) COLNM_K  from ALL_TAB_COLUMNS A,ALL_COL_COMMENTS C  WHERE "
                     "upper(A.OWNER) = upper('SALES') AND A.TABLE_NAME = 'KOKYAKU' AND A.TABLE_NAME = C.TABLE_NAME "
                     "AND A.COLUMN_NAME = C.COLUMN_NAME AND A.OWNER = C.OWNER  ORDER BY A.COLUMN_ID"));
    QCOMPARE(column(*b.fields, 1),
             QStringList({"顧客番号（コメント）", "顧客名", "ランク", "金額", "TOROKU_YMD", "BIKO"}));

    // Both fail: the message, the new title, and the old columns stay in view.
    b.start.state.gDatabase.reset();
    const int boxes = m.boxes.shown().size();
    m.boxes.expect(Answer::Ok);
    b.clickTable(3);
    QCOMPARE(m.boxes.shown().size(), boxes + 1);
    QCOMPARE(m.boxes.shown().last().text, QString("サーバーの接続に失敗しました。"));
    QCOMPARE(m.boxes.shown().last().title, QString("エラー"));
    QCOMPARE(b.start.window->windowTitle(), QString("NYUKIN「入金」:DBSWEEP"));
    QCOMPARE(b.fields->Rows(), 7);
  }

  void columnFactsForTheViewerIgnoreComments() {
    Browser b(m, "SALES", "pw");
    b.start.state.gInfoTable = "KOKYAKU";
    QCOMPARE(LoadColumnInfo(b.start.state, m.boxes), 6);
    const TextTable& info = b.start.state.gColumnInfo;
    const auto row = [&info](int r) {
      QStringList fields;
      for (int f = 0; f < 5; ++f)
        fields << info.at(f, r);
      return fields;
    };
    QCOMPARE(row(1), QStringList({"KOKYAKU_NO", "顧客番号", "NUMBER", "8", "0"}));
    QCOMPARE(row(2), QStringList({"KOKYAKU_NM", "顧客名（ファイル）", "VARCHAR2", "20", ""}));
    QCOMPARE(row(4), QStringList({"KINGAKU", "金額", "NUMBER", "10", "2"}));
    QCOMPARE(row(5), QStringList({"TOROKU_YMD", "TOROKU_YMD", "DATE", "7", ""}));
    QVERIFY(b.recorder->sent()[0].startsWith("select A.COLUMN_NAME,A.DATA_TYPE ,A.DATA_PRECISION ,A.DATA_SCALE "
                                             ",A.DATA_LENGTH ,NVL(B.CLM_NM,A.COLUMN_NAME) COLNM_K from "
                                             "ALL_TAB_COLUMNS A,TBCLMM B WHERE upper(OWNER) = upper('SALES')"));

    b.start.state.gDatabase.reset();
    const int boxes = m.boxes.shown().size();
    m.boxes.expect(Answer::Ok);
    QCOMPARE(LoadColumnInfo(b.start.state, m.boxes), 0);
    QCOMPARE(m.boxes.shown().size(), boxes + 1);
    QCOMPARE(m.boxes.shown().last().text, QString("サーバーの接続に失敗しました。"));
  }

  void rowsAreDraggedBetweenTheGrids() {
    Browser b(m, "SALES", "pw");
    auto* grids = b.start.window->findChild<BrowserGrids*>();
    b.start.window->LoadTableCatalogue();
    QVERIFY(!b.fields->isEnabled());

    // Pressing a table begins its drag and opens the field grid to the drop.
    QTest::mousePress(b.tables->viewport(), Qt::LeftButton, {}, cellCenter(*b.tables, 4, 0));
    QCOMPARE(grids->DragSource(), QString("Table"));
    QVERIFY(b.fields->isEnabled());
    QVERIFY(b.recorder->sent().size() == 1);
    // A row of another window means nothing here.
    QWidget elsewhere;
    drop(b.fields, &elsewhere, "Table");
    QCOMPARE(b.start.state.gCurTableID, QString());
    drop(b.fields, b.tables, "Table");
    QCOMPARE(b.start.state.gCurTableID, QString("SEIKYU"));
    QTest::mouseRelease(b.tables->viewport(), Qt::LeftButton, {}, cellCenter(*b.tables, 4, 0));
    // Let go on its own grid: the table shows as after a click.
    QTest::mousePress(b.tables->viewport(), Qt::LeftButton, {}, cellCenter(*b.tables, 2, 0));
    drop(b.tables, b.tables, "Table");
    QCOMPARE(b.start.state.gCurTableID, QString("KOKYAKU"));
    QTest::mouseRelease(b.tables->viewport(), Qt::LeftButton, {}, cellCenter(*b.tables, 2, 0));

    // A field onto the keys adds it; a field dropped back on its own grid does nothing.
    QTest::mousePress(b.fields->viewport(), Qt::LeftButton, {}, cellCenter(*b.fields, 3, 1));
    QCOMPARE(grids->DragSource(), QString("field"));
    QCOMPARE(b.fields->Col(), 0);
    drop(b.fields, b.fields, "field");
    QCOMPARE(b.keys->Rows(), 1);
    drop(b.keys, b.fields, "field");
    QTest::mouseRelease(b.fields->viewport(), Qt::LeftButton, {}, cellCenter(*b.fields, 3, 1));
    QCOMPARE(column(*b.keys, 0), QStringList({"3"}));
    QTest::mouseDClick(b.fields->viewport(), Qt::LeftButton, {}, cellCenter(*b.fields, 2, 1));
    QCOMPARE(column(*b.keys, 0), QStringList({"3", "2"}));

    // A key onto the fields, or a double-click on it, takes it out.
    QTest::mousePress(b.keys->viewport(), Qt::LeftButton, {}, cellCenter(*b.keys, 1, 1));
    QCOMPARE(grids->DragSource(), QString("key"));
    drop(b.fields, b.keys, "key");
    QTest::mouseRelease(b.keys->viewport(), Qt::LeftButton, {}, cellCenter(*b.keys, 1, 1));
    QCOMPARE(column(*b.keys, 0), QStringList({"2"}));
    QTest::mouseDClick(b.keys->viewport(), Qt::LeftButton, {}, cellCenter(*b.keys, 1, 1));
    QCOMPARE(b.keys->Rows(), 1);

    // The right button on the field grid opens the menu without its selection entries.
    QTest::mousePress(b.fields->viewport(), Qt::RightButton, {}, cellCenter(*b.fields, 1, 1));
    auto* menu = b.start.window->findChild<PopPop*>("PopPop");
    QVERIFY(menu->isVisible());
    QVERIFY(!menu->findChild<QAction*>("popMenu_0")->isEnabled());
    QCOMPARE(menu->target(), b.fields);
    menu->close();
  }
};

QTEST_MAIN(TestSchemaBrowser)
#include "test_schemabrowser.moc"
