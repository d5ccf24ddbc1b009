// The progress window of the delete job as a user meets it: its picture moves while it is shown,
// 中断 and the window's close button both ask before the job is told to stop, and it answers
// while the main window is shut off for the job.
#include "ScriptedMessageBoxes.h"
#include "jobs/FDBSWEEP_Ani.h"
#include "jobs/JobInputGate.h"
#include "widgets/QtMessageBoxes.h"

#include <QApplication>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QWindow>

using Answer = MessageBoxes::Answer;

class TestProgressWindow final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void movesWhileShownAndAsksBeforeStopping() {
    ScriptedMessageBoxes boxes;
    std::atomic<bool> stop = false;
    FDBSWEEP_Ani window(boxes, stop);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QCOMPARE(window.windowTitle(), QString("削除中..."));
    auto* picture = window.findChild<DeleteAnimation*>("Animation1");
    auto* cancel = window.findChild<QPushButton*>("cmdDelCan");
    QVERIFY(picture && cancel);
    QCOMPARE(cancel->text(), QString("中断"));
    QVERIFY(cancel->width() >= cancel->sizeHint().width());

    const int first = picture->frame();
    const QImage before = picture->grab().toImage();
    QTRY_VERIFY(picture->frame() != first);
    QVERIFY(picture->grab().toImage() != before);

    boxes.expect(Answer::No);
    QTest::mouseClick(cancel, Qt::LeftButton);
    QVERIFY(!stop);
    boxes.expect(Answer::Yes);
    QTest::mouseClick(cancel, Qt::LeftButton);
    QVERIFY(stop);

    // The window manager's close button, answered No and then Yes: the window stays for the job.
    stop = false;
    boxes.expect(Answer::No);
    window.windowHandle()->close();
    QVERIFY(!stop);
    QVERIFY(window.isVisible());
    boxes.expect(Answer::Yes);
    window.windowHandle()->close();
    QVERIFY(stop);
    QVERIFY(window.isVisible());

    QCOMPARE(boxes.shown().size(), 4);
    for (const MessageBoxes::Box& box : boxes.shown()) {
      QCOMPARE(box.text, QString("削除処理を中断しますか\r\nここまでのデータは削除されています。"));
      QCOMPARE(box.title, QString("DBSWEEP"));
      QVERIFY(box.buttons == MessageBoxes::Buttons::YesNo);
      QVERIFY(box.icon == MessageBoxes::Icon::Exclamation);
      QCOMPARE(box.defaultButton, 1);
    }

    window.hide();
    const int hidden = picture->frame();
    QTest::qWait(200);
    QCOMPARE(picture->frame(), hidden);
  }

  void answersWhileTheMainWindowIsShutOff() {
    QMainWindow main;
    main.show();
    QVERIFY(QTest::qWaitForWindowExposed(&main));
    // A job takes the input of the windows already open, opens its progress window, and shuts
    // the main window off; a window the main window owned would go dead with it.
    JobInputGate gate;
    ScriptedMessageBoxes boxes;
    std::atomic<bool> stop = false;
    FDBSWEEP_Ani window(boxes, stop);
    main.setEnabled(false);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    boxes.expect(Answer::Yes);
    QTest::mouseClick(window.findChild<QPushButton*>("cmdDelCan"), Qt::LeftButton);
    QVERIFY(stop);

    // The job's own questions too, though the shut-off main window is still the active one.
    QApplication::setActiveWindow(&main);
    QTRY_COMPARE(QApplication::activeWindow(), &main);
    bool answerable = false;
    QTimer::singleShot(0, [&] {
      QWidget* box = QApplication::activeModalWidget();
      QVERIFY(box);
      answerable = box->isEnabled();
      box->findChild<QPushButton*>()->click();
    });
    QtMessageBoxes real;
    real.show(QStringLiteral("一件ずつ削除しますか？"), QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::YesNoCancel,
              MessageBoxes::Icon::Question, 3);
    QVERIFY(answerable);
  }
};

QTEST_MAIN(TestProgressWindow)
#include "test_progresswindow.moc"
