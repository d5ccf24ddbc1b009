// The index browser opened from the main window by a dropped table, on an embedded instance with
// primary, unique, foreign and check constraints, composite and descending indexes: its grids,
// keys and index search, its display switches and geometry, its jobs on the indexes' tables, and
// the one job at a time that both windows keep to.
#include "../jobs/ShopWindow.h"
#include "browser/FDBSWEEP_Idx.h"
#include "db/OraSession.h"
#include "widgets/PopPop.h"
#include "widgets/Twips.h"

#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QToolButton>

using Answer = MessageBoxes::Answer;

namespace {

const QStringList Schema = {
    "create table CUST (CUST_NO number(8) constraint PK_CUST primary key, CUST_NM varchar2(20))",
    "create table ORDERS (ORDER_NO number(8) constraint PK_ORDERS primary key, "
    "CUST_NO number(8) constraint FK_ORDERS_CUST references CUST (CUST_NO), ORDER_DAY date, SHOP_CD char(3), "
    "QTY number(5) constraint CK_ORDERS_QTY check (QTY > 0), "
    "constraint UK_ORDERS_SLIP unique (SHOP_CD, ORDER_DAY, CUST_NO))",
    "comment on table ORDERS is '受注'",
    "comment on column ORDERS.CUST_NO is '顧客番号'",
    "create index IX_ORDERS_CUST on ORDERS (CUST_NO, ORDER_DAY DESC)",
    "create table RETURNS (RETURN_NO number(8) constraint PK_RETURNS primary key, CUST_NO number(8), "
    "ORDER_DAY date, SHOP_CD char(3))",
    "create index IX_RETURNS_SLIP on RETURNS (SHOP_CD, ORDER_DAY, CUST_NO)",
    "create table NOTES (NOTE varchar2(10) constraint CK_NOTE check (NOTE is not null))",
    "create table WIDE (K1 number, K2 number, K3 number, K4 number, K5 number, K6 number, K7 number, K8 number, "
    "K9 number, K10 number, K11 number, constraint UK_WIDE unique (K1, K2, K3, K4, K5, K6, K7, K8, K9, K10, K11))",
    "insert into CUST values (1, 'a')",
    "insert into CUST values (2, 'b')",
    "insert into ORDERS values (1, 1, date '2026-11-01', 'S01', 1)",
    "insert into ORDERS values (2, 1, date '2026-11-02', 'S01', 2)",
    "insert into ORDERS values (3, 2, date '2026-11-02', 'S02', 1)",
    "insert into RETURNS values (1, 1, date '2026-11-01', 'S01')",
    "insert into RETURNS values (2, 2, date '2026-11-02', 'S02')",
};

QWidget* indexWindow() {
  for (QWidget* w : QApplication::topLevelWidgets())
    if (w->objectName() == u"FDBSWEEP_Idx" && w->isVisible())
      return w;
  return nullptr;
}

int indexWindows() {
  int n = 0;
  for (QWidget* w : QApplication::topLevelWidgets())
    n += w->objectName() == u"FDBSWEEP_Idx";
  return n;
}

// The row whose first cell reads text; 0 for none.
int rowWith(FlexGrid* grid, const QString& text) {
  for (int r = 1; r < grid->Rows(); ++r)
    if (grid->TextMatrix(r, 0) == text)
      return r;
  return 0;
}

// The main window on the IDX user, with the index browser a drop away.
struct Indexes : Browser {
  explicit Indexes(Machine& m, bool loggedOn = false) : Browser(m, "IDX", "pw") {
    if (loggedOn) {
      start.state.gSession = std::make_shared<OraSession>(DbEnvironment{});
      start.state.gDatabase = start.state.gSession->OpenDatabase("local:" + folder(m), "IDX/pw", 0);
    }
    start.window->LoadTableCatalogue();
  }
  // Drags the row of table ID in the main window's table list onto the index label.
  void dropTable(const QString& id, const QString& kind = "Table") {
    tables->setRow(rowWith(tables, id));
    dropOn(start.find<QLabel>("lblIdxDrop"), tables, kind);
  }
  template <typename T> T* at(const QString& name) { return indexWindow()->findChild<T*>(name); }
  FlexGrid* grid(const QString& name) { return at<FlexGrid>(name); }
  QListWidget* hits() { return at<QListWidget>("lstIndex"); }
  QPushButton* job(int i) { return at<QPushButton>(QString("cmdJOB_%1").arg(i)); }
  void clickIndex(const QString& name) {
    FlexGrid* g = grid("grdIndex");
    QTest::mouseClick(g->viewport(), Qt::LeftButton, {}, cellCenter(*g, rowWith(g, name), 0));
  }
  void dblClick(const QString& gridName, int row) {
    FlexGrid* g = grid(gridName);
    QTest::mouseDClick(g->viewport(), Qt::LeftButton, {}, cellCenter(*g, row, 1));
  }
  void selectHits(const QStringList& names) {
    for (int i = 0; i < hits()->count(); ++i)
      hits()->item(i)->setSelected(names.contains(hits()->item(i)->text()));
  }
  // The index browser on ORDERS, with its slip columns SHOP_CD, ORDER_DAY and CUST_NO shown.
  void openSlip() {
    dropTable("ORDERS");
    QVERIFY(indexWindow());
    clickIndex("UK_ORDERS_SLIP");
  }
};

} // namespace

class TestIndexBrowser final : public QObject {
  Q_OBJECT

  Machine m;

private Q_SLOTS:
  void initTestCase() {
    m.setSetting("PATH", m.env.db.programFolder);
    auto system = LocalEngine::connect(Browser::folder(m), "system", "manager");
    system->execute("CREATE USER idx IDENTIFIED BY pw");
    system->execute("GRANT CONNECT, RESOURCE TO idx");
    auto idx = LocalEngine::connect(Browser::folder(m), "IDX", "pw");
    for (const QString& sql : Schema)
      idx->execute(sql);
  }

  void aDroppedTableShowsItsConstraintsAndTheirColumns() {
    Indexes s(m);
    // Anything but a table row on the label does nothing.
    s.dropTable("ORDERS", "field");
    QVERIFY(!indexWindow());

    s.clickTable(rowWith(s.tables, "CUST"));
    s.recorder->forget();
    s.dropTable("ORDERS");
    QVERIFY(indexWindow());
    QCOMPARE(s.start.find<QLabel>("lblIdxDrop")->toolTip(),
             QString("テーブルをここにドロップすると、インデックス情報を表示します"));
    QCOMPARE(s.start.find<QLabel>("Label1")->text(), QString("ﾃｰﾌﾞﾙﾄﾞﾛｯﾌﾟでIndex表示"));
    QCOMPARE(s.recorder->sent(),
             QStringList{"select A.CONSTRAINT_NAME IDXNM,A.CONSTRAINT_TYPE IDXTYPE  from ALL_CONSTRAINTS A  WHERE "
                         "upper(A.OWNER) = upper('IDX')  AND A.TABLE_NAME = 'ORDERS' AND NOT A.CONSTRAINT_TYPE = 'C' "});
    FlexGrid* indexes = s.grid("grdIndex");
    QCOMPARE(indexes->TextMatrix(0, 0) + indexes->TextMatrix(0, 1) + indexes->TextMatrix(0, 2), QString("INDEXTYPEUNIQ"));
    QStringList rows;
    for (int r = 1; r < indexes->Rows(); ++r)
      rows << rowOf(*indexes, r).join(u'|');
    rows.sort();
    QCOMPARE(rows, (QStringList{"FK_ORDERS_CUST|R|", "PK_ORDERS|P|", "UK_ORDERS_SLIP|U|"}));
    // The main window keeps its own table.
    QCOMPARE(s.start.state.gCurTableID, QString("CUST"));
    QCOMPARE(s.start.window->windowTitle(), QString("CUST「CUST」:DBSWEEP"));

    // A second drop only brings the open window forward, still on the table it shows.
    s.dropTable("RETURNS");
    QCOMPARE(indexWindows(), 1);
    QCOMPARE(s.grid("grdIndex")->Rows(), 4);

    FlexGrid* fields = s.grid("grdIdxFld");
    s.recorder->forget();
    s.clickIndex("UK_ORDERS_SLIP");
    QCOMPARE(indexWindow()->windowTitle(), QString("UK_ORDERS_SLIP「UK_ORDERS_SLIP」:DBSWEEP"));
    QCOMPARE(s.recorder->sent().last(),
             QString("select A.COLUMN_NAME,A.COLUMN_POSITION ,A.COLUMN_LENGTH,A.DESCEND ,NVL(C.COMMENTS,A.COLUMN_NAME) "
                     "COLNM_K ,C.COMMENTS  from ALL_IND_COLUMNS A,ALL_COL_COMMENTS C  WHERE upper(A.TABLE_OWNER) = "
                     "upper('IDX') AND A.INDEX_NAME = 'UK_ORDERS_SLIP' AND A.TABLE_NAME = C.TABLE_NAME AND "
                     "A.COLUMN_NAME = C.COLUMN_NAME "));
    QCOMPARE(rowOf(*fields, 0), (QStringList{"", "項目名", "位置", "長さ", "昇順"}));
    QCOMPARE(rowOf(*fields, 1), (QStringList{"1", "SHOP_CD", "1", "3", "ASC"}));
    QCOMPARE(rowOf(*fields, 2), (QStringList{"2", "ORDER_DAY", "2", "7", "ASC"}));
    QCOMPARE(rowOf(*fields, 3), (QStringList{"3", "CUST_NO", "3", "22", "ASC"}));
    s.clickIndex("PK_ORDERS");
    QCOMPARE(column(*fields, 1), QStringList{"ORDER_NO"});
    // A foreign key has no index of its name.
    s.clickIndex("FK_ORDERS_CUST");
    QCOMPARE(fields->Rows(), 1);
    QCOMPARE(m.boxes.shown().size(), 0);

    // The descending column of an index is told apart as Oracle tells it.
    auto idx = LocalEngine::connect(Browser::folder(m), "IDX", "pw");
    OraDatabase db(idx);
    auto d = db.CreateDynaset("select COLUMN_NAME, DESCEND from ALL_IND_COLUMNS where INDEX_NAME = 'IX_ORDERS_CUST' "
                              "order by COLUMN_POSITION", OraDynaset::ReadOnly);
    QCOMPARE(d->Fields("DESCEND").toString(), QString("ASC"));
    d->MoveNext();
    QCOMPARE(d->Fields("DESCEND").toString(), QString("DESC"));

    // A table with check constraints alone lists nothing.
    indexWindow()->close();
    s.dropTable("NOTES");
    QCOMPARE(s.grid("grdIndex")->Rows(), 1);
  }

  void keysFindTheIndexesHoldingThemAll() {
    Indexes s(m);
    s.openSlip();
    FlexGrid* keys = s.grid("grdKey");
    QCOMPARE(rowOf(*keys, 0), (QStringList{"", "項目名", "位置", "長さ", "昇順", "", "値１", "", "値２"}));
    s.recorder->forget();
    s.dblClick("grdIdxFld", 3);
    QCOMPARE(rowOf(*keys, 1), (QStringList{"3", "CUST_NO", "3", "22", "ASC", "", "", "", ""}));
    QCOMPARE(s.grid("grdIdxFld")->CellBackColor(3, 1), QColor(0, 255, 0));
    QCOMPARE(s.recorder->sent().filter("IDXNM_K"),
             QStringList{"select INDEX_name,INDEX_NAME IDXNM_K from ALL_IND_COLUMNS where COLUMN_NAME = 'CUST_NO' "
                         "and upper(TABLE_owner) = upper('IDX') "});
    // Not only the dropped table's indexes: every index of the user on the column.
    QCOMPARE(sortedItems(s.hits()), (QStringList{"IX_ORDERS_CUST", "IX_RETURNS_SLIP", "PK_CUST", "UK_ORDERS_SLIP"}));
    // A key chosen already stays one.
    s.dblClick("grdIdxFld", 3);
    QCOMPARE(keys->Rows(), 2);

    s.dblClick("grdIdxFld", 1);
    s.recorder->forget();
    s.dblClick("grdIdxFld", 2);
    QCOMPARE(s.recorder->sent().filter("IDXNM_K"),
             QStringList{"select INDEX_name,INDEX_NAME IDXNM_K from ALL_IND_COLUMNS WHERE INDEX_NAME in (select "
                         "INDEX_name from ALL_IND_COLUMNS WHERE INDEX_NAME in (select INDEX_name from ALL_IND_COLUMNS "
                         "where COLUMN_NAME = 'CUST_NO' and upper(TABLE_owner) = upper('IDX') ) and COLUMN_NAME = "
                         "'SHOP_CD' and upper(TABLE_owner) = upper('IDX')) and COLUMN_NAME = 'ORDER_DAY' and "
                         "upper(TABLE_owner) = upper('IDX') "});
    QCOMPARE(sortedItems(s.hits()), (QStringList{"IX_RETURNS_SLIP", "UK_ORDERS_SLIP"}));

    // The menu selects every hit, and with keys and hits the table jobs come on.
    s.hits()->customContextMenuRequested(QPoint(5, 5));
    indexWindow()->findChild<PopPop*>()->popMenu(0)->trigger();
    QCOMPARE(s.hits()->selectedItems().size(), 2);
    QVERIFY(s.job(0)->isEnabled());

    // Names instead of IDs: the comment names CUST_NO in the columns and the keys.
    QTest::mouseClick(s.at<QCheckBox>("chkFldNM"), Qt::LeftButton);
    QCOMPARE(column(*s.grid("grdIdxFld"), 1), (QStringList{"SHOP_CD", "ORDER_DAY", "顧客番号"}));
    QCOMPARE(column(*keys, 1), (QStringList{"顧客番号", "SHOP_CD", "ORDER_DAY"}));
    QTest::mouseClick(s.at<QCheckBox>("chkTabNM"), Qt::LeftButton);
    QCOMPARE(sortedItems(s.hits()), (QStringList{"IX_RETURNS_SLIP", "UK_ORDERS_SLIP"}));
    QCOMPARE(column(*s.grid("grdIndex"), 0).size(), 3);

    // Removing keys searches again; with none left the jobs are off.
    for (int k = 3; k >= 1; --k)
      QTest::mouseDClick(keys->viewport(), Qt::LeftButton, {}, cellCenter(*keys, 1, 1));
    QCOMPARE(keys->Rows(), 1);
    QVERIFY(!s.job(0)->isEnabled());
    QCOMPARE(s.hits()->count(), 0);

    // A column typed in the search dialog only empties the hits here.
    s.dblClick("grdIdxFld", 3);
    QCOMPARE(s.hits()->count(), 4);
    whenModal([](QWidget* dialog) {
      QTest::keyClicks(dialog->findChild<QLineEdit*>("txtColNm"), "cust_no");
      QTest::mouseClick(dialog->findChild<QPushButton*>("cmdGo"), Qt::LeftButton);
    });
    QTest::mouseClick(s.at<QPushButton>("cmdSearch"), Qt::LeftButton);
    QCOMPARE(s.hits()->count(), 0);

    // Ten keys at the most, and no refusal for the columns' types.
    indexWindow()->close();
    s.dropTable("WIDE");
    s.clickIndex("UK_WIDE");
    for (int r = 1; r <= 10; ++r)
      s.dblClick("grdIdxFld", r);
    QCOMPARE(s.grid("grdKey")->Rows(), 11);
    m.boxes.expect(Answer::Ok);
    s.dblClick("grdIdxFld", 11);
    QCOMPARE(m.boxes.shown().last().text, QString("選択は最大10項目までです"));
    QCOMPARE(s.grid("grdKey")->Rows(), 11);
  }

  void geometryAndSwitchesAreSavedAndRestored() {
    Indexes s(m);
    m.setSetting("TableID", "1");
    s.dropTable("ORDERS");
    QWidget* idx = indexWindow();
    QCOMPARE(idx->width(), twipsToPixelsX(idx, 11115));
    QCOMPARE(idx->height(), twipsToPixelsY(idx, 9840));
    QVERIFY(s.at<QCheckBox>("chkTabNM")->isChecked());
    idx->move(40, 60);
    idx->resize(700, 600);
    QTest::mouseClick(s.at<QCheckBox>("chkTabNM"), Qt::LeftButton);
    idx->close();
    QCOMPARE(m.setting("FormLeftI"), QString::number(pixelsToTwipsX(s.tables, 40)));
    QCOMPARE(m.setting("FormTopI"), QString::number(pixelsToTwipsY(s.tables, 60)));
    QCOMPARE(m.setting("FormWidthI"), QString::number(pixelsToTwipsX(s.tables, 700)));
    QCOMPARE(m.setting("FormHeightI"), QString::number(pixelsToTwipsY(s.tables, 600)));
    QCOMPARE(m.setting("TableID"), QString("0"));
    // The main window's own geometry stays where it was.
    QCOMPARE(m.setting("FormWidth"), QString("<none>"));

    s.dropTable("ORDERS");
    idx = indexWindow();
    QCOMPARE(idx->pos(), QPoint(40, 60));
    QCOMPARE(idx->size(), QSize(700, 600));
    QVERIFY(!s.at<QCheckBox>("chkTabNM")->isChecked());
    idx->close();
    m.setSetting("TableID", "1");
  }

  void countAndRowByRowDeleteOnTheIndexesTables() {
    Indexes s(m, true);
    s.openSlip();
    s.dblClick("grdIdxFld", 3);
    s.selectHits({"PK_CUST", "UK_ORDERS_SLIP", "IX_ORDERS_CUST", "IX_RETURNS_SLIP"});
    FlexGrid* count = s.grid("grdCount");
    QTest::mouseClick(s.job(0), Qt::LeftButton);
    // One line a table, however many of its indexes were selected.
    QStringList tableLines = linesOf(*count).mid(3, 3);
    tableLines.sort();
    QCOMPARE(tableLines, (QStringList{line("CUST            :        2件:CUST", Cyan, Black),
                                      line("ORDERS          :        3件:受注", Cyan, Black),
                                      line("RETURNS         :        2件:RETURNS", Cyan, Black)}));
    QCOMPARE(count->Rows(), 11);
    QCOMPARE(s.start.state.gLastWhere, QString());
    QVERIFY(s.start.state.gLastSql.startsWith("select CUST_NO from "));
    // The main window's result list is its own.
    QCOMPARE(s.start.find<FlexGrid>("grdCount")->Rows(), 1);

    // No truncating here: the only question is whether row by row.
    s.selectHits({"UK_ORDERS_SLIP", "IX_RETURNS_SLIP"});
    const qsizetype boxesBefore = m.boxes.shown().size();
    m.boxes.expect(Answer::Yes);
    QTest::mouseClick(s.job(1), Qt::LeftButton);
    QCOMPARE(m.boxes.shown().size(), boxesBefore + 1);
    QCOMPARE(m.boxes.shown().last().text, QString("一件ずつ削除しますか？\r\n（時間は掛かりますが、削除件数が表示されます）"));
    tableLines = linesOf(*count).mid(3, 2);
    tableLines.sort();
    QCOMPARE(tableLines, (QStringList{line("ORDERS          :        3件:受注", Cyan, Black),
                                      line("RETURNS         :        2件:RETURNS", Cyan, Black)}));
    QVERIFY(s.job(5)->isEnabled());
    QVERIFY(!s.start.find<QPushButton>("cmdJOB_5")->isEnabled());
    QCOMPARE(s.start.state.gDatabase->CreateDynaset("select * from ORDERS", 4)->RecordCount(), 0);

    m.boxes.expect(Answer::Ok);
    QTest::mouseClick(s.job(5), Qt::LeftButton);
    QCOMPARE(m.boxes.shown().last().text, QString("ロールバックしますか"));
    QCOMPARE(linesOf(*count), QStringList{line("＝＝＝ロールバック完了＝＝＝", QColor(255, 0, 255), Black)});
    QVERIFY(!s.job(5)->isEnabled());
    QCOMPARE(s.start.state.gDatabase->CreateDynaset("select * from ORDERS", 4)->RecordCount(), 3);
    QCOMPARE(s.start.state.gDatabase->CreateDynaset("select * from RETURNS", 4)->RecordCount(), 2);
  }

  void theMainWindowsLauncherServesBothWindows() {
    m.setSetting("CHILDID0", "SQL");
    m.setSetting("CHILDNAME0", "/bin/true");
    m.setSetting("CHILDPARA0", "3");
    Indexes s(m);
    s.dropTable("ORDERS");
    s.start.window->timerTick();
    QMenu* launcher = s.at<QToolButton>("tbar_4")->menu();
    QCOMPARE(launcher->actions().at(0)->text(), QString("SQL"));
    QVERIFY(launcher->actions().at(0)->isVisible() && !launcher->actions().at(1)->isVisible());
    const BDBSWEEP& state = s.start.state;
    launcher->actions().at(0)->trigger();
    QCOMPARE(m.launcher.launches().last().arguments,
             QStringList(state.gUser + "/" + state.gPassword + "@" + state.gHost));
    s.at<QToolButton>("tbar_1")->menu()->actions().at(1)->trigger(); // クローン
    QCOMPARE(m.launcher.launches().last().arguments, QStringList({"--password-stdin", state.gUser, state.gHost}));
    // The index window's options dialog changes the main window's buttons too.
    QTimer::singleShot(0, [] {
      QWidget* dialog = QApplication::activeModalWidget();
      dialog->findChild<QLineEdit*>("txtTitle_0")->clear();
      QTest::mouseClick(dialog->findChild<QPushButton*>("OKButton"), Qt::LeftButton);
    });
    s.at<QToolButton>("tbar_5")->menu()->actions().at(0)->trigger();
    QVERIFY(s.start.find<QPushButton>("cmdChild_0")->isHidden());
    s.start.window->timerTick();
    QVERIFY(!launcher->actions().at(0)->isVisible());
  }

  void aJobOfEitherWindowKeepsTheOtherFromStartingOne() {
    Indexes s(m, true);
    s.openSlip();
    s.dblClick("grdIdxFld", 3);
    s.selectHits({"UK_ORDERS_SLIP"});
    QVERIFY(s.job(0)->isEnabled());
    // The main window with ORDERS's customer as its key and every target selected.
    s.clickTable(rowWith(s.tables, "ORDERS"));
    QTest::mouseDClick(s.fields->viewport(), Qt::LeftButton, {}, cellCenter(*s.fields, 2, 1));
    s.start.find<QListWidget>("lstTable")->selectAll();
    FlexGrid* mainCount = s.start.find<FlexGrid>("grdCount");
    FlexGrid* idxCount = s.grid("grdCount");
    QPushButton* mainCountButton = s.start.find<QPushButton>("cmdJOB_0");

    // While the main window deletes, the index window's count does not start, even pressed from
    // code past the input gate.
    m.boxes.whileShown([&](const MessageBoxes::Box&) { s.job(0)->click(); });
    m.boxes.expect(Answer::Cancel);
    QTest::mouseClick(s.start.find<QPushButton>("cmdJOB_1"), Qt::LeftButton);
    QCOMPARE(idxCount->Rows(), 1);

    // While the index window deletes, the main window's count does not start either.
    m.boxes.whileShown([&](const MessageBoxes::Box&) { mainCountButton->click(); });
    m.boxes.expect(Answer::Cancel);
    QTest::mouseClick(s.job(1), Qt::LeftButton);
    m.boxes.whileShown({});
    QCOMPARE(linesOf(*mainCount).first(), line("＝＝＝＝＝削除開始＝＝＝＝＝", Green, Red));
    QVERIFY(!linesOf(*mainCount).join(u'\n').contains("件数"));
    QCOMPARE(linesOf(*idxCount).first(), line("＝＝＝＝＝削除開始＝＝＝＝＝", Green, Red));

    // Once the jobs have ended, both windows' counts run.
    s.job(0)->click();
    QCOMPARE(linesOf(*idxCount).first(), line("＝＝＝件数カウント開始＝＝＝", Green, Red));
    mainCountButton->click();
    QCOMPARE(linesOf(*mainCount).first(), line("＝＝＝件数カウント開始＝＝＝", Green, Red));
  }
};

QTEST_MAIN(TestIndexBrowser)
#include "test_indexbrowser.moc"
