#include "../db/EngineFixture.h"
#include "FakeServices.h"
#include "GridText.h"
#include "common/BDBSWEEP.h"
#include "jobs/StatementRunner.h"
#include "platform/PlatformRegistry.h"
#include "viewers/FDBSWEEP_ED.h"
#include "widgets/FlexGrid.h"
#include "widgets/Twips.h"

#include <QApplication>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>

using Box = MessageBoxes::Box;

// The viewer on a table of 1,200 numbered rows with a date, a text with a display name, a CLOB
// and a LONG RAW column, in a fresh instance.
class TestDataViewer final : public QObject {
  Q_OBJECT

  QTemporaryDir m_dir;
  std::unique_ptr<EngineFixture> m_fx;
  std::unique_ptr<PlatformRegistry> m_registry;
  ScriptedMessageBoxes m_boxes;
  OffThreadStatements m_statements;
  BDBSWEEP m_state;

  // A viewer shown and loaded on sql, with headings by ID or by display name.
  std::unique_ptr<FDBSWEEP_ED> open(const QString& sql, bool showIds = true) {
    m_state.gLastSql = sql;
    auto viewer = std::make_unique<FDBSWEEP_ED>(m_state, m_boxes, m_statements, showIds);
    viewer->show();
    QLabel* total = viewer->findChild<QLabel*>("lblTotal");
    if (!QTest::qWaitFor([&] { return !total->text().isEmpty(); }, 10000))
      qWarning("the viewer never finished loading");
    return viewer;
  }
  static FlexGrid& grid(FDBSWEEP_ED& v) { return *v.findChild<FlexGrid*>("grdED"); }
  static QString total(FDBSWEEP_ED& v) { return v.findChild<QLabel*>("lblTotal")->text(); }
  static QString question(int rows) {
    return QStringLiteral("抽出件数が %1 を超えました、続けますか？").arg(rows);
  }

private Q_SLOTS:
  void initTestCase() {
    m_fx = std::make_unique<EngineFixture>();
    auto db = m_fx->sales();
    db->ExecuteSQL("create table ITEMS (ID NUMBER(6), NAME VARCHAR2(5), BOUGHT DATE, MEMO CLOB, PIC LONG RAW)");
    db->ExecuteSQL("create table TBCLMM (CLM_ID VARCHAR2(30), CLM_NM VARCHAR2(60))");
    db->ExecuteSQL("insert into TBCLMM values ('NAME', '品名称の長い表示名')");
    db->ExecuteSQL("create table DIGITS (D NUMBER(1))");
    for (int d = 0; d < 10; ++d)
      db->ExecuteSQL(QString("insert into DIGITS values (%1)").arg(d));
    db->ExecuteSQL("insert into ITEMS (ID, NAME, BOUGHT, MEMO) select N, 'n' || N, "
                   "to_date('2024/01/01', 'YYYY/MM/DD') + N, 'memo' from (select a.D * 1000 + b.D * 100 + c.D * 10 + "
                   "e.D + 1 N from DIGITS a, DIGITS b, DIGITS c, DIGITS e) where N <= 1200");
    db->ExecuteSQL("update ITEMS set NAME = null where ID = 3");
    db->ExecuteSQL("commit");
    m_registry = std::make_unique<PlatformRegistry>(
        PlatformRegistry::Folders{m_dir.path() + "/config", m_dir.path() + "/autostart"}, QProcessEnvironment{});
    m_state.gRegistry = std::make_unique<clsREG>(*m_registry, m_boxes);
    m_state.gDatabase = db;
    m_state.gUser = "SALES";
    m_state.gInfoTable = "ITEMS";
    m_state.gInfoTableName = "品目";
  }

  void rowsComeFiveHundredAtATimeAndTheTotalCountsThemAll() {
    m_boxes.expect(MessageBoxes::Answer::Yes);
    m_boxes.expect(MessageBoxes::Answer::No);
    auto viewer = open("select * from ITEMS order by ID");
    FlexGrid& g = grid(*viewer);
    QCOMPARE(m_boxes.shown().size(), 2);
    for (int i = 0; i < 2; ++i) {
      const Box& box = m_boxes.shown()[i];
      QCOMPARE(box.text, question(500 * (i + 1)));
      QCOMPARE(box.title, QString("DBSWEEP"));
      QCOMPARE(box.buttons, MessageBoxes::Buttons::YesNo);
      QCOMPARE(box.icon, MessageBoxes::Icon::Question);
    }
    // No at 1,000 keeps exactly 1,000 rows; the total still counts all 1,200.
    QCOMPARE(g.Rows(), 1001);
    QCOMPARE(g.TextMatrix(1000, 0), QString("1000"));
    QCOMPARE(g.TextMatrix(1000, 1), QString("1000"));
    QCOMPARE(total(*viewer), QString("TOTAL 1,200件"));
    QCOMPARE(viewer->findChild<QLabel*>("lblTable")->text(), QString("テーブル名：ITEMS「品目」"));

    // Exactly 500 rows ask nothing; a 501st asks about 500 once.
    m_boxes.expect(MessageBoxes::Answer::Yes);
    viewer = open("select * from ITEMS where ID <= 501");
    QCOMPARE(grid(*viewer).Rows(), 502);
    QCOMPARE(m_boxes.shown().size(), 3);
    viewer = open("select * from ITEMS where ID <= 500");
    QCOMPARE(grid(*viewer).Rows(), 501);
    QCOMPARE(m_boxes.shown().size(), 3);
  }

  void cellsWidthsAndHeadingsFollowTheColumns() {
    auto viewer = open("select * from ITEMS where ID <= 3 order by ID");
    FlexGrid& g = grid(*viewer);
    QCOMPARE(rowOf(g, 0), (QStringList{"", "ID", "NAME", "BOUGHT", "MEMO", "PIC"}));
    QCOMPARE(rowOf(g, 1), (QStringList{"1", "1", "n1", "2024/01/02", "CLOB", "LONG RAW"}));
    QCOMPARE(rowOf(g, 3), (QStringList{"3", "3", "Null", "2024/01/04", "CLOB", "LONG RAW"}));
    const QFontMetrics metrics = g.fontMetrics();
    const auto letters = [&](int n) { return pixelsToTwipsX(&g, metrics.horizontalAdvance(QString(n, u'H'))) + 60; };
    // A date is 20 letters wide whatever its heading; NAME holds 5 characters but its display
    // name takes 18 bytes in the ANSI code page; ID is six digits and one more.
    QCOMPARE(g.ColWidth(3), letters(20));
    QCOMPARE(g.ColWidth(2), letters(18));
    QCOMPARE(g.ColWidth(1), letters(7));

    viewer = open("select * from ITEMS where ID <= 3", false);
    QCOMPARE(grid(*viewer).TextMatrix(0, 2), QString("品名称の長い表示名"));
    QCOMPARE(grid(*viewer).TextMatrix(0, 1), QString("ID"));
  }

  void sortingNeedsARangeAndRestoreGoesBackToTheReadOrder() {
    auto viewer = open("select * from ITEMS where ID in (5, 12, 7, 30) order by NAME");
    FlexGrid& g = grid(*viewer);
    const QStringList read = column(g, 1);
    QCOMPARE(read, (QStringList{"12", "30", "5", "7"}));
    auto* ascending = viewer->findChild<QPushButton*>("cmdSort_0");
    auto* descending = viewer->findChild<QPushButton*>("cmdSort_1");
    // One cell selected: nothing moves.
    g.setRow(2);
    g.setCol(1);
    QTest::mouseClick(descending, Qt::LeftButton);
    QCOMPARE(column(g, 1), read);
    // A click on the heading selects the column: the rows sort by it, as numbers.
    QTest::mouseClick(g.horizontalHeader()->viewport(), Qt::LeftButton, {},
                      QPoint(g.horizontalHeader()->sectionViewportPosition(1) + 5, 5));
    QTest::mouseClick(ascending, Qt::LeftButton);
    QCOMPARE(column(g, 1), (QStringList{"5", "7", "12", "30"}));
    QTest::mouseClick(descending, Qt::LeftButton);
    QCOMPARE(column(g, 1), (QStringList{"30", "12", "7", "5"}));
    QTest::mouseClick(viewer->findChild<QPushButton*>("cmdSort_2"), Qt::LeftButton);
    QCOMPARE(column(g, 1), read);
    QCOMPARE(column(g, 0), (QStringList{"1", "2", "3", "4"}));
  }

  void numbersReadAsOraclePrintsThemAndSortAsNumbers() {
    m_state.gDatabase->ExecuteSQL("create table PRICES (ID NUMBER(6), P NUMBER(8,2))");
    m_state.gDatabase->ExecuteSQL("insert into PRICES select ID, ID / 4 - 0.5 from ITEMS where ID <= 4");
    m_state.gInfoTable = "PRICES";
    auto viewer = open("select * from PRICES order by ID");
    FlexGrid& g = grid(*viewer);
    QCOMPARE(column(g, 2), (QStringList{"-.25", "0", ".25", ".5"}));
    QTest::mouseClick(g.horizontalHeader()->viewport(), Qt::LeftButton, {},
                      QPoint(g.horizontalHeader()->sectionViewportPosition(2) + 5, 5));
    QTest::mouseClick(viewer->findChild<QPushButton*>("cmdSort_1"), Qt::LeftButton);
    QCOMPARE(column(g, 2), (QStringList{".5", ".25", "0", "-.25"}));
    m_state.gInfoTable = "ITEMS";
    m_state.gDatabase->ExecuteSQL("drop table PRICES");
  }

  void aFailingQuerySaysSoAndAnEmptyOneDoesNot() {
    m_boxes.expect(MessageBoxes::Answer::Ok);
    auto viewer = open("select * from MISSING");
    QCOMPARE(m_boxes.shown().last().text, QString("データがありません"));
    QCOMPARE(m_boxes.shown().last().title, QString("エラー"));
    QCOMPARE(m_boxes.shown().last().icon, MessageBoxes::Icon::Exclamation);
    QCOMPARE(grid(*viewer).Rows(), 1);
    QCOMPARE(grid(*viewer).TextMatrix(0, 1), QString());
    QCOMPARE(total(*viewer), QString("TOTAL 0件"));

    const int boxes = int(m_boxes.shown().size());
    viewer = open("select * from ITEMS where 1 = 0");
    QCOMPARE(m_boxes.shown().size(), boxes);
    QCOMPARE(grid(*viewer).Rows(), 1);
    QCOMPARE(grid(*viewer).TextMatrix(0, 1), QString("ID"));
    QCOMPARE(total(*viewer), QString("TOTAL 0件"));
  }

  void theGridFollowsTheWindowsSize() {
    auto viewer = open("select * from ITEMS where ID = 1");
    FlexGrid& g = grid(*viewer);
    const QSize window = viewer->size();
    const QSize at = g.size();
    viewer->resize(window + QSize(120, 80));
    QCOMPARE(g.size(), at + QSize(120, 80));
    viewer->resize(window - at - QSize(10, 10));
    QCOMPARE(g.size(), QSize(0, 0));
  }

  void cleanupTestCase() {
    m_state.gDatabase.reset();
    m_fx.reset();
  }

};

QTEST_MAIN(TestDataViewer)
#include "test_dataviewer.moc"
