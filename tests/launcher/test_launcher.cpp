// The launcher buttons, their toolbar mirror, the hand-over forms and the clone, on the main
// window; and the clone's password travelling on standard input of a real process.
#include "MainWindowFixture.h"
#include "launcher/LaunchCommand.h"
#include "platform/DetachedProcessLauncher.h"

#include <QBuffer>
#include <QImage>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QToolButton>

namespace {

// A password no shell would pass through unquoted.
const QString Password = QStringLiteral("p w\"d'x");

QAction* launcherMenuEntry(Start& s, int i) {
  return s.find<QToolButton>("tbar_4")->menu()->actions().at(i);
}

} // namespace

class TestLauncher final : public QObject {
  Q_OBJECT

  QTemporaryDir m_data;
  QString tool() const { return m_data.path() + "/tool"; }

private Q_SLOTS:
  void initTestCase() {
    // A desktop entry of our own, whose icon is plain red: the button must show it rather than
    // the icon of the file's type.
    const QString apps = m_data.path() + "/applications";
    QDir().mkpath(apps);
    QImage red(32, 32, QImage::Format_ARGB32);
    red.fill(Qt::red);
    red.save(m_data.path() + "/red.png");
    QFile entry(apps + "/tool.desktop");
    QVERIFY(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nName=Tool\nExec=\"" + QFile::encodeName(tool()) + "\" %U\nIcon=" +
                QFile::encodeName(m_data.path()) + "/red.png\n[Desktop Action x]\nIcon=other\n");
    entry.close();
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_data.path()));
    QFile::copy("/bin/true", tool());
  }

  void buttonsMenuAndEachHandOverForm() {
    Machine m;
    m.setSetting("PATH", "x");
    for (int i = 0; i < 5; ++i) {
      m.setSetting(QString("CHILDID%1").arg(i), QString("F%1").arg(i));
      m.setSetting(QString("CHILDNAME%1").arg(i), tool());
      m.setSetting(QString("CHILDPARA%1").arg(i), QString::number(i));
    }
    m.setSetting("CHILDID5", "   "); // blanks are a caption
    m.setSetting("CHILDNAME6", tool()); // a program without a caption stays hidden
    m.setSetting("CHILDID7", "X");
    m.setSetting("CHILDPARA7", "9"); // no such form, and no program: nothing starts
    Start s(m, "system manager " + m.instance());
    s.load();
    s.state.gPassword = Password;
    for (int i = 0; i < 10; ++i) {
      const bool shown = i <= 5 || i == 7;
      QCOMPARE(s.find<QPushButton>(QString("cmdChild_%1").arg(i))->isVisible(), shown);
      QCOMPARE(launcherMenuEntry(s, i)->isVisible(), shown);
    }
    QCOMPARE(s.find<QPushButton>("cmdChild_5")->text(), QString("   "));
    QCOMPARE(launcherMenuEntry(s, 3)->text(), QString("F3"));
    const QImage icon = s.find<QPushButton>("cmdChild_0")->icon().pixmap(16).toImage();
    QCOMPARE(icon.pixelColor(8, 8), QColor(Qt::red));

    const QString host = s.state.gHost;
    const QList<QStringList> expected = {{},
                                         {"system", Password, host},
                                         {"system," + Password + "," + host},
                                         {"system/" + Password + "@" + host},
                                         {"/u=system/" + Password + "@" + host}};
    for (int i = 0; i < 5; ++i) {
      QTest::mouseClick(s.find<QPushButton>(QString("cmdChild_%1").arg(i)), Qt::LeftButton);
      QCOMPARE(m.launcher.launches().last().program, tool());
      QCOMPARE(m.launcher.launches().last().arguments, expected[i]);
    }
    // The menu entry starts the same program as its button; a failing start says nothing.
    m.launcher.setSucceeds(false);
    launcherMenuEntry(s, 3)->trigger();
    QCOMPARE(m.launcher.launches().size(), 6);
    QCOMPARE(m.launcher.launches().last().arguments, expected[3]);
    QTest::mouseClick(s.find<QPushButton>("cmdChild_7"), Qt::LeftButton);
    QCOMPARE(m.launcher.launches().size(), 6);
    QVERIFY(m.boxes.shown().isEmpty());

    // Emptying a caption in the options dialog hides the button, and the menu follows on the
    // next tick.
    QTimer::singleShot(0, [] {
      QWidget* dialog = QApplication::activeModalWidget();
      dialog->findChild<QLineEdit*>("txtTitle_3")->clear();
      QTest::mouseClick(dialog->findChild<QPushButton*>("OKButton"), Qt::LeftButton);
    });
    QTest::mouseClick(s.find<QPushButton>("cmdOpt"), Qt::LeftButton);
    QVERIFY(s.find<QPushButton>("cmdChild_3")->isHidden());
    QVERIFY(launcherMenuEntry(s, 3)->isVisible());
    s.window->timerTick();
    QVERIFY(!launcherMenuEntry(s, 3)->isVisible());
    // Another copy's change shows when the window is activated again.
    m.setSetting("CHILDID9", "NEW");
    QApplication::sendEvent(s.window.get(), new QEvent(QEvent::WindowActivate));
    QVERIFY(s.find<QPushButton>("cmdChild_9")->isVisible());
  }

  void theClonesPasswordStaysOffItsCommandLine() {
    Machine m;
    m.setSetting("PATH", "x");
    Start s(m, "system manager " + m.instance());
    s.load();
    s.state.gPassword = Password;
    QCOMPARE(s.find<QPushButton>("cmdClone")->toolTip(), QString("現在と同じ接続情報でDBSWEEPを起動します"));
    QTest::mouseClick(s.find<QPushButton>("cmdClone"), Qt::LeftButton);
    s.find<QToolButton>("tbar_1")->menu()->actions().at(1)->trigger();
    QTest::mouseDClick(s.find<StatusPanel>("stsBar_1"), Qt::LeftButton);
    QCOMPARE(m.launcher.launches().size(), 3);
    for (const RecordingLauncher::Launch& clone : m.launcher.launches()) {
      QCOMPARE(clone.program, m.env.db.programFolder + "/dbsweep");
      QCOMPARE(clone.arguments, QStringList({"--password-stdin", "system", s.state.gHost}));
      QCOMPARE(clone.standardInput, (Password + "\n").toUtf8());
    }

    // The copy reads what the clone handed over; a user's own three words still log on.
    QBuffer input;
    input.setData(m.launcher.launches()[0].standardInput + "ignored\n");
    input.open(QIODevice::ReadOnly);
    const CommandArgs args = ProgramCommandArgs(m.launcher.launches()[0].arguments, input);
    QCOMPARE(args.count(), 3);
    QCOMPARE(args.word(2), Password);
    QCOMPARE(args.word(3), s.state.gHost);
    const CommandArgs typed = ProgramCommandArgs({"scott", "tiger", "orcl"}, input);
    QCOMPARE(typed.word(2), QString("tiger"));
  }

  void aRealProcessReadsThePasswordFromItsInput() {
    QTemporaryDir dir;
    const QString out = dir.path() + "/got";
    DetachedProcessLauncher launcher;
    QVERIFY(launcher.start("/bin/sh", {"-c", "cat > \"$0\"", out}, ProcessLauncher::WindowState::Normal,
                           (Password + "\n").toUtf8()));
    QTRY_COMPARE(QFileInfo(out).size(), qint64(Password.toUtf8().size() + 1));
    QFile got(out);
    QVERIFY(got.open(QIODevice::ReadOnly));
    QCOMPARE(got.readAll(), (Password + "\n").toUtf8());
  }
};

QTEST_MAIN(TestLauncher)
#include "test_launcher.moc"
