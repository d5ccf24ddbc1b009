// The delete, drop, rollback and commit buttons of the main window pressed as a user presses
// them, with the progress window and its stop button, on an embedded instance.
#include "ShopWindow.h"
#include "db/OraSession.h"

#include <QApplication>
#include <QPointer>
#include <QTimer>

using Answer = MessageBoxes::Answer;

namespace {

QWidget* progressWindow() {
  for (QWidget* w : QApplication::topLevelWidgets())
    if (w->objectName() == u"FDBSWEEP_Ani" && w->isVisible())
      return w;
  return nullptr;
}

// Presses 中断 in the progress window once its caption reads caption.
struct StopAt {
  explicit StopAt(const QString& caption) {
    QObject::connect(&timer, &QTimer::timeout, [this, caption] {
      QWidget* progress = progressWindow();
      if (!progress || progress->windowTitle() != caption)
        return;
      timer.stop();
      QTest::mouseClick(progress->findChild<QPushButton*>("cmdDelCan"), Qt::LeftButton);
    });
    timer.start(0);
  }
  QTimer timer;
};

// The shop window logged on as the program logs on: one session whose transaction the jobs
// begin and the buttons end.
struct LoggedOnShop : Shop {
  explicit LoggedOnShop(Machine& m) : Shop(m) {
    start.state.gSession = std::make_shared<OraSession>(DbEnvironment{});
    start.state.gDatabase = start.state.gSession->OpenDatabase("local:" + folder(m), "SHOP/pw", 0);
  }
};

} // namespace

class TestDeleteButtons final : public QObject {
  Q_OBJECT

  Machine m;

private Q_SLOTS:
  void initTestCase() { CreateShop(m); }
  void init() { FillShop(m); }

  void rowByRowThenRollBack() {
    LoggedOnShop s(m);
    bool windowDisabled = false;
    bool progressShown = false;
    m.boxes.whileShown([&](const MessageBoxes::Box&) {
      windowDisabled = !s.start.window->isEnabled();
      progressShown = progressWindow() != nullptr;
    });
    m.boxes.expect(Answer::No);
    m.boxes.expect(Answer::Yes);
    QTest::mouseClick(s.job(1), Qt::LeftButton);
    QVERIFY(windowDisabled);
    QVERIFY(progressShown);
    QVERIFY(s.start.window->isEnabled());
    QVERIFY(!progressWindow());
    QCOMPARE(linesOf(*s.count).mid(3, 4),
             (QStringList{line("JUCHU           :        3件:JUCHU", Cyan, Black),
                          line("KOKYAKU         :        4件:顧客", Cyan, Black),
                          line("MEISAI          :        0件:MEISAI", Cyan, Black),
                          line("ZAIKO_RIREKI_202:        0件:ZAIKO_RIREKI_2026_NOVEMBER", Cyan, Black)}));
    QCOMPARE(linesOf(*s.count).first(), line("＝＝＝＝＝削除開始＝＝＝＝＝", Green, Red));
    QCOMPARE(s.start.state.gLastSql, QString("select * from ZAIKO_RIREKI_2026_NOVEMBER"));
    QVERIFY(s.job(5)->isEnabled());
    QVERIFY(s.job(6)->isEnabled());
    QCOMPARE(ShopRows(m, "KOKYAKU"), 4); // nothing committed yet

    // Cancel at the question changes nothing; OK rolls back.
    m.boxes.whileShown({});
    m.boxes.expect(Answer::Cancel);
    QTest::mouseClick(s.job(5), Qt::LeftButton);
    QVERIFY(s.job(5)->isEnabled());
    QCOMPARE(s.count->Rows(), 12);
    m.boxes.expect(Answer::Ok);
    QTest::mouseClick(s.job(5), Qt::LeftButton);
    QCOMPARE(m.boxes.shown().last().text, QString("ロールバックしますか"));
    QCOMPARE(linesOf(*s.count), QStringList{line("＝＝＝ロールバック完了＝＝＝", QColor(255, 0, 255), Black)});
    QVERIFY(!s.job(5)->isEnabled());
    QVERIFY(!s.job(6)->isEnabled());
    QCOMPARE(s.start.state.gDatabase->CreateDynaset("select * from KOKYAKU", 4)->RecordCount(), 4);
  }

  void stoppedDuringTheSecondTableThenCommitted() {
    LoggedOnShop s(m);
    m.boxes.expect(Answer::No);
    m.boxes.expect(Answer::Yes);
    m.boxes.expect(Answer::Yes); // 中断 confirmed
    StopAt stop("削除中[顧客:KOKYAKU](2/4)");
    QTest::mouseClick(s.job(1), Qt::LeftButton);
    QCOMPARE(m.boxes.shown().last().text, QString("削除処理を中断しますか\r\nここまでのデータは削除されています。"));
    const QStringList lines = linesOf(*s.count);
    QCOMPARE(lines.mid(3, 3), (QStringList{line("JUCHU           :        3件:JUCHU", Cyan, Black),
                                          line("KOKYAKU         :        2件:顧客", Cyan, Black), line("")}));
    QCOMPARE(lines.last(), line("＝＝＝＝＝削除終了＝＝＝＝＝", Green, Red));
    QVERIFY(s.job(5)->isEnabled());

    m.boxes.expect(Answer::Ok);
    QTest::mouseClick(s.job(6), Qt::LeftButton);
    QCOMPARE(m.boxes.shown().last().text, QString("コミットしますか"));
    QCOMPARE(linesOf(*s.count), QStringList{line("＝＝＝＝コミット完了＝＝＝＝", Green, Black)});
    QVERIFY(!s.job(6)->isEnabled());
    QCOMPARE(ShopRows(m, "JUCHU"), 0);
    QCOMPARE(ShopRows(m, "KOKYAKU"), 2);
  }

  void stoppedBeforeTheFirstTruncateAndDropped() {
    LoggedOnShop s(m);
    m.boxes.expect(Answer::Yes);
    m.boxes.expect(Answer::Yes);
    StopAt stop("削除中...");
    QTest::mouseClick(s.job(1), Qt::LeftButton);
    QCOMPARE(s.count->Rows(), 1 + 3 + 4);
    QVERIFY(!s.job(5)->isEnabled());
    QCOMPARE(ShopRows(m, "JUCHU"), 3);

    // Drop answered No, then Yes: the tables go, the lists stay until the catalogue reloads.
    m.boxes.expect(Answer::No);
    QTest::mouseClick(s.job(3), Qt::LeftButton);
    QCOMPARE(ShopRows(m, "JUCHU"), 3);
    s.list->clearSelection();
    s.list->item(0)->setSelected(true);
    m.boxes.expect(Answer::Yes);
    QTest::mouseClick(s.job(3), Qt::LeftButton);
    QCOMPARE(linesOf(*s.count)[3], line("JUCHU           :      OK:", Cyan, Black));
    QCOMPARE(s.start.state.gLastWhere, QString("DROP"));
    QCOMPARE(s.list->count(), 4);
    QCOMPARE(errorOf([&] { ShopRows(m, "JUCHU"); }), 942);
  }

  void aFailingCommitKeepsTheDeletesPending() {
    LoggedOnShop s(m);
    m.boxes.expect(Answer::No);
    m.boxes.expect(Answer::No); // one DELETE per table
    QTest::mouseClick(s.job(1), Qt::LeftButton);
    QCOMPARE(linesOf(*s.count)[4], line("KOKYAKU         :      OK:顧客", Cyan, Black));
    killSession(*s.start.state.gDatabase, Browser::folder(m));
    const QStringList before = linesOf(*s.count);
    m.boxes.expect(Answer::Ok);
    m.boxes.expect(Answer::Ok);
    QTest::mouseClick(s.job(6), Qt::LeftButton);
    QCOMPARE(m.boxes.shown().last().text, QString("ORA-00028: your session has been killed"));
    QVERIFY(s.job(5)->isEnabled());
    QVERIFY(s.job(6)->isEnabled());
    QCOMPARE(linesOf(*s.count), before);
    QCOMPARE(ShopRows(m, "KOKYAKU"), 4);
  }
};

QTEST_MAIN(TestDeleteButtons)
#include "test_deletebuttons.moc"
