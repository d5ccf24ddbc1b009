// The job buttons of the main window pressed as a user presses them, on an embedded instance:
// the count over the targets, the result list and its colours, the data button, the SQL text
// window, and a window that stays alive while a statement runs.
#include "ShopWindow.h"
#include "widgets/PopPop.h"

#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTimer>

namespace {

// Holds every query until the test lets it go, so a test can act while a statement runs.
class HeldConnection final : public PassThroughConnection {
public:
  using PassThroughConnection::PassThroughConnection;
  std::unique_ptr<OraDynaset> query(const QString& sql, int options) override {
    if (held && !release.tryAcquire(1, 10000))
      throw OraError(1013, QStringLiteral("user requested cancel of current operation"));
    return PassThroughConnection::query(sql, options);
  }

  std::atomic<bool> held = false;
  QSemaphore release;
};

} // namespace

class TestJobButtons final : public QObject {
  Q_OBJECT

  Machine m;

private Q_SLOTS:
  void init() { FillShop(m); }
  void initTestCase() { CreateShop(m); }

  void countsEveryTargetAndReportsInColour() {
    Shop s(m);
    QCOMPARE(s.targets(), QStringList({"JUCHU", "KOKYAKU", "MEISAI", "ZAIKO_RIREKI_2026_NOVEMBER"}));
    // Dropped behind the program's back after the list was made.
    LocalEngine::connect(Browser::folder(m), "SHOP", "pw")->execute("drop table MEISAI");
    s.recorder->forget();
    m.clock.setNow(QDateTime(QDate(2026, 11, 24), QTime(14, 3, 9)));
    QTest::mouseClick(s.job(0), Qt::LeftButton);

    const QStringList expected = {
        line("＝＝＝件数カウント開始＝＝＝", Green, Red),
        line("開始: 2026/11/24 14:03:09", Blue, Yellow),
        line(""),
        line("JUCHU           :        3件:JUCHU", Cyan, Black),
        line("KOKYAKU         :        4件:顧客", Cyan, Black),
        line("MEISAI          :Err  942:MEISAI", Red, Black),
        line("ORA-00942: table or view does not exist", Red, Black),
        line("ZAIKO_RIREKI_202:        0件:ZAIKO_RIREKI_2026_NOVEMBER", Cyan, Black),
        line(""),
        line("終了: 2026/11/24 14:03:09", Blue, Yellow),
        line("所要時間(Sec)        0"),
        line("＝＝＝件数カウント終了＝＝＝", Green, Red),
    };
    QCOMPARE(linesOf(*s.count), expected);
    QCOMPARE(s.count->TextMatrix(0, 0), QString("処理結果"));
    QCOMPARE(s.recorder->sent(),
             QStringList({"select KOKYAKU_NO from JUCHU", "select KOKYAKU_NO from KOKYAKU",
                          "select KOKYAKU_NO from MEISAI", "select KOKYAKU_NO from ZAIKO_RIREKI_2026_NOVEMBER"}));
    QCOMPARE(s.start.state.gLastSql, QString("select KOKYAKU_NO from ZAIKO_RIREKI_2026_NOVEMBER"));
    QCOMPARE(QApplication::overrideCursor(), nullptr);

    // A click on a line shows it whole in the status bar; a right-click offers the menu with
    // its selection entries off.
    QTest::mouseClick(s.count->viewport(), Qt::LeftButton, {}, cellCenter(*s.count, 7, 0));
    QCOMPARE(s.start.panel(4), QString("ORA-00942: table or view does not exist"));
    auto* menu = s.start.find<PopPop>("PopPop");
    QTest::mousePress(s.count->viewport(), Qt::RightButton, {}, cellCenter(*s.count, 4, 0));
    QTRY_VERIFY(menu->isVisible());
    QCOMPARE(menu->target(), s.count);
    QVERIFY(!menu->popMenu(0)->isEnabled());
    QVERIFY(!menu->popMenu(1)->isEnabled());
    QVERIFY(menu->popScroll(0)->isEnabled());
    menu->close();
  }

  void filterAndExtraConditionReachTheCount() {
    Shop s(m);
    QTest::mouseClick(s.start.find<QLabel>("lblX_0"), Qt::LeftButton);
    QTest::keyClicks(s.start.find<QLineEdit>("txt1_0"), "%");
    QTest::keyClicks(s.start.find<QLineEdit>("txtAddWhere"), "AND KOKYAKU_NO > 1");
    s.list->clearSelection();
    s.list->item(1)->setSelected(true);
    QTest::mouseClick(s.job(0), Qt::LeftButton);
    QCOMPARE(s.count->TextMatrix(4, 0), QString("KOKYAKU         :        3件:顧客"));
    QCOMPARE(s.start.state.gLastSql, QString("select KOKYAKU_NO from KOKYAKU where (KOKYAKU_NO like '%') AND KOKYAKU_NO > 1"));
    QCOMPARE(s.start.state.gLastWhere, QString(" where (KOKYAKU_NO like '%')"));

    // A double-click on the status bar's SQL panel shows the last SQL afresh in its window.
    s.start.state.gLastSql = "select KOKYAKU_NO from KOKYAKU";
    bool shown = false;
    QTimer::singleShot(0, this, [&] {
      QWidget* window = QApplication::activeModalWidget();
      QVERIFY(window);
      shown = true;
      QCOMPARE(window->findChild<QPlainTextEdit*>("txtSql")->toPlainText(), QString("select KOKYAKU_NO from KOKYAKU"));
      QTest::mouseClick(window->findChild<QPushButton*>("cmdEnd"), Qt::LeftButton);
    });
    QTest::mouseDClick(s.start.find<StatusPanel>("stsBar_4"), Qt::LeftButton);
    QVERIFY(shown);
  }

  void theDataButtonShowsTheFirstSelectedTableInTheViewer() {
    Shop s(m);
    s.list->clearSelection();
    s.list->item(3)->setSelected(true);
    s.list->item(1)->setSelected(true);
    QTest::mouseClick(s.job(0), Qt::LeftButton);
    QVERIFY(s.count->Rows() > 1);
    int opened = 0;
    bool normalPointer = false;
    QTimer::singleShot(0, this, [&] {
      auto* viewer = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      QVERIFY(viewer);
      const auto close = qScopeGuard([viewer] { viewer->reject(); }); // even when a check fails
      QCOMPARE(viewer->objectName(), QString("FDBSWEEP_ED"));
      ++opened;
      normalPointer = QApplication::overrideCursor() == nullptr;
      QTRY_COMPARE(viewer->findChild<QLabel*>("lblTotal")->text(), QString("TOTAL 4件"));
      QCOMPARE(viewer->findChild<QLabel*>("lblTable")->text(), QString("テーブル名：KOKYAKU「顧客」"));
    });
    QTest::mouseClick(s.job(2), Qt::LeftButton);
    QCOMPARE(opened, 1);
    QVERIFY(normalPointer);
    QCOMPARE(s.start.state.gInfoTable, QString("KOKYAKU"));
    QCOMPARE(s.start.state.gInfoTableName, QString("顧客"));
    QCOMPARE(s.start.state.gLastSql, QString("select * from KOKYAKU"));
    QCOMPARE(s.count->Rows(), 1);

    // Without a selection the button is off; pressed all the same, it only clears the list.
    s.list->clearSelection();
    QVERIFY(!s.job(2)->isEnabled());
    s.start.state.gInfoTable = "UNCHANGED";
    s.start.window->cmdJOB_Click(2);
    QCOMPARE(opened, 1);
    QCOMPARE(s.start.state.gInfoTable, QString("UNCHANGED"));
  }

  void theWindowLivesWhileAStatementRuns() {
    Shop s(m);
    auto held = std::make_shared<HeldConnection>(s.recorder);
    s.start.state.gDatabase = std::make_shared<OraDatabase>(held);
    s.list->clearSelection();
    s.list->item(1)->setSelected(true);
    held->held = true;
    int ticks = 0;
    bool busyPointer = false;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [&] {
      if (++ticks != 3)
        return;
      busyPointer = QApplication::overrideCursor() && QApplication::overrideCursor()->shape() == Qt::WaitCursor;
      // Presses during the job do nothing: no second count, no other table.
      QTest::mouseClick(s.job(0), Qt::LeftButton);
      s.clickTable(1);
      held->release.release();
    });
    timer.start(5);
    s.recorder->forget();
    QTest::mouseClick(s.job(0), Qt::LeftButton);
    QVERIFY(ticks >= 3);
    QVERIFY(busyPointer);
    QCOMPARE(s.recorder->sent(), QStringList{"select KOKYAKU_NO from KOKYAKU"});
    QCOMPARE(s.start.state.gCurTableID, QString("KOKYAKU"));
    QCOMPARE(s.count->TextMatrix(4, 0), QString("KOKYAKU         :        4件:顧客"));
  }

  void aKilledSessionFailsEveryTargetAndTheJobCloses() {
    Shop s(m);
    killSession(*s.start.state.gDatabase, Browser::folder(m));
    QTest::mouseClick(s.job(0), Qt::LeftButton);
    const QStringList lines = linesOf(*s.count);
    QCOMPARE(lines.size(), 3 + 2 * 4 + 4);

    for (int i = 0; i < 4; ++i)
      QVERIFY2(lines[3 + 2 * i].contains(QRegularExpression(":Err *\\d+:.* \\[#ff0000/#000000\\]$")),
               qPrintable(lines[3 + 2 * i]));
    QCOMPARE(lines[4], line("ORA-00028: your session has been killed", Red, Black));
    QCOMPARE(lines.last(), line("＝＝＝件数カウント終了＝＝＝", Green, Red));
  }
};

QTEST_MAIN(TestJobButtons)
#include "test_jobbuttons.moc"
