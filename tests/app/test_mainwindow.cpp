#include "MainWindowFixture.h"
#include "ScriptedMessageBoxes.h"
#include "app/FDBSWEEP.h"
#include "app/FORA_Logon.h"
#include "common/BDBSWEEP.h"
#include "common/JVK_Cmn.h"
#include "db/OraSession.h"
#include "db/local/LocalEngine.h"
#include "launcher/TrayAutoStart.h"
#include "platform/PlatformRegistry.h"
#include "printing/clsPrinter.h"
#include "services/AppEnvironment.h"
#include "services/Services.h"
#include "settings/RegSetting.h"
#include "widgets/FlexGrid.h"
#include "widgets/StatusPanel.h"
#include "widgets/Twips.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QProgressDialog>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>

#include <functional>
#include <stdexcept>

using Answer = MessageBoxes::Answer;

namespace {

// Work left pending as a delete leaves it: a row inserted in an open transaction, the rollback
// and commit buttons enabled.
void leavePendingWork(Start& s, const QString& table) {
  s.state.gDatabase->ExecuteSQL("create table " + table + " (n number)");
  s.state.gSession->BeginTrans();
  s.state.gDatabase->ExecuteSQL("insert into " + table + " values (1)");
  s.find<QPushButton>("cmdJOB_5")->setEnabled(true);
  s.find<QPushButton>("cmdJOB_6")->setEnabled(true);
}

// Kills the window's session from another connection, as a DBA would.
void killSession(Machine& m, Start& s) {
  const QString own = s.state.gDatabase
                          ->CreateDynaset("select sid || ',' || serial# from v$session "
                                          "where status = 'ACTIVE'",
                                          4)
                          ->Fields(0)
                          .toString();
  OraDatabase system(LocalEngine::connect(m.dir.path() + "/inst", "system", "manager"));
  system.ExecuteSQL("alter system kill session '" + own + "'");
}

// Clicks 接続 and lets act answer the logon dialog it opens; false when no dialog came.
bool logOnThroughDialog(QObject* context, Start& s, const std::function<void(FORA_Logon&)>& act) {
  bool shown = false;
  QTimer::singleShot(0, context, [&] {
    if (auto* dialog = qobject_cast<FORA_Logon*>(QApplication::activeModalWidget())) {
      shown = true;
      act(*dialog);
    }
  });
  QTest::mouseClick(s.find<QPushButton>("CmdLogon"), Qt::LeftButton);
  return shown;
}

// A settings store whose every call fails in a way nobody planned for.
class FailingRegistry final : public RegistryBackend {
public:
  std::optional<RegValue> read(quint32, const QString&, const QString&) override { fail(); }
  void write(quint32, const QString&, const QString&, const QString&) override { fail(); }
  void remove(quint32, const QString&, const QString&) override { fail(); }

private:
  [[noreturn]] static void fail() { throw std::logic_error("broken"); }
};

QAction* menuEntry(FDBSWEEP& w, int button, int entry) {
  return w.findChild<QToolButton*>(QString("tbar_%1").arg(button))->menu()->actions().at(entry);
}

} // namespace

class TestMainWindow final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void firstStartAsksOnceAndTheSecondRestoresWhereItWas() {
    Machine m;
    {
      Start first(m);
      m.boxes.expect(Answer::Yes);
      first.load();
      QCOMPARE(m.boxes.shown().size(), 1);
      QCOMPARE(m.boxes.shown()[0].text, QString("常駐DBSWEEPを使用しますか"));
      QCOMPARE(m.boxes.shown()[0].buttons, MessageBoxes::Buttons::YesNo);
      QCOMPARE(m.launcher.launches().size(), 1);
      QCOMPARE(m.launcher.launches()[0].program, m.env.db.programFolder + "/dbsweep-tray");
      QCOMPARE(m.setting("PATH"), m.env.db.programFolder);
      // The frame before any logon.
      QVERIFY(first.panel(1).startsWith("Ver."));
      QCOMPARE(first.panel(2), QString("ｵﾗｸﾙVer"));
      QCOMPARE(first.panel(3), QString("ｾｯｼｮﾝ"));
      QCOMPARE(first.find<QLabel>("lblOra")->text(), QString("User:\nHost:"));
      QVERIFY(!first.find<QPushButton>("cmdSearch")->isEnabled());
      for (int i = 0; i < 7; ++i)
        QVERIFY(!first.find<QPushButton>(QString("cmdJOB_%1").arg(i))->isEnabled());
      QCOMPARE(first.window->printer().Font().pointSize(), 9);
      QCOMPARE(first.state.gOracleHome, QString("ERROR")); // no Oracle client on this machine
      QCOMPARE(first.window->size(),
               QSize(twipsToPixelsX(first.window.get(), 12015), twipsToPixelsY(first.window.get(), 9840)));
      // The companion is registered now: the menu offers to cancel that.
      QVERIFY(!menuEntry(*first.window, 5, 3)->isVisible());
      QVERIFY(menuEntry(*first.window, 5, 4)->isVisible());
      first.find<QCheckBox>("chkFldNM")->setChecked(false);
      first.window->move(150, 90);
      first.window->resize(900, 700);
      first.window->close();
    }
    QCOMPARE(m.setting("FieldID"), QString("0"));
    QCOMPARE(m.setting("TableID"), QString("1"));

    Start second(m);
    second.load();
    QCOMPARE(m.boxes.shown().size(), 1); // not asked again
    QCOMPARE(second.window->size(), QSize(900, 700));
    QCOMPARE(second.window->pos(), QPoint(150, 90));
    QVERIFY(!second.find<QCheckBox>("chkFldNM")->isChecked());
    QVERIFY(second.find<QCheckBox>("chkTabNM")->isChecked());
    // Closing maximised keeps what the last normal close saved.
    second.window->showMaximized();
    second.window->close();
    QCOMPARE(m.setting("FormWidth"), QString::number(pixelsToTwipsX(second.window.get(), 900)));
  }

  void firstStartWithoutTheCompanionRegistersNothing() {
    Machine m;
    m.launcher.setSucceeds(false);
    Start s(m);
    m.boxes.expect(Answer::Yes);
    m.boxes.expect(Answer::Ok);
    s.load();
    QCOMPARE(m.boxes.shown().size(), 2);
    QCOMPARE(m.boxes.shown()[1].text,
             "常駐DBSWEEPが" + m.env.db.programFolder + "に見つからないため、常駐設定出来ません");
    clsREG reg(m.registry, m.boxes);
    QVERIFY(!TrayAutoStartRegistered(reg));
    QVERIFY(menuEntry(*s.window, 5, 3)->isVisible());
    QCOMPARE(m.setting("PATH"), m.env.db.programFolder);
  }

  void commandLineLogsOnWithThreeWords() {
    Machine m;
    m.setSetting("PATH", "x"); // not a first start
    const QString host = m.instance();
    {
      Start two(m, "system manager");
      two.load();
      QVERIFY(!two.state.gDatabase);
      QVERIFY(m.boxes.shown().isEmpty());
    }
    {
      Start three(m, "system\tmanager " + host + " extra words");
      three.load();
      QVERIFY(three.state.gDatabase);
      QCOMPARE(three.state.gUser, QString("system"));
      QCOMPARE(three.find<QLabel>("lblOra")->text(), "User:system\nHost:" + host);
      // The command line captures no version texts; only the logon dialog does.
      m.boxes.expect(Answer::Ok);
      QTest::mouseClick(three.find<StatusPanel>("stsBar_2"), Qt::LeftButton);
      QCOMPARE(m.boxes.shown().last().text, QString("\r\nオラクルに接続していません。"));
      QCOMPARE(m.boxes.shown().last().title, QString("オラクルバージョン"));
      QCOMPARE(m.boxes.shown().last().icon, MessageBoxes::Icon::Information);
    }
    Start wrong(m, "system nope " + host);
    m.boxes.expect(Answer::Ok);
    m.boxes.expect(Answer::Ok);
    wrong.load();
    QVERIFY(!wrong.state.gDatabase);
    // The table list is still asked for, and says for itself that it has nothing.
    QCOMPARE(m.boxes.shown().size(), 3);
    QCOMPARE(m.boxes.shown()[1].text, QString("オラクルセッションが確立できません。"));
    QCOMPARE(m.boxes.shown()[2].text, QString("テーブル情報が取得できません。"));
    QCOMPARE(wrong.find<QLabel>("lblOra")->text(), "User:system\nHost:" + host);
  }

  void clockTickShowsTimeUptimeAndMirrorsTheJobButtons() {
    Machine m;
    m.setSetting("PATH", "x");
    Start s(m);
    s.load();
    m.clock.setNow(QDateTime(QDate(2004, 12, 28), QTime(9, 5, 7)));
    m.clock.setUptime(((26 * 60 + 3) * 60 + 4) * 1000);
    auto* rollback = s.find<QPushButton>("cmdJOB_5");
    rollback->setEnabled(true);
    s.find<QPushButton>("cmdJOB_2")->hide();
    s.find<QPushButton>("cmdJOB_0")->setText("件数!");
    s.window->timerTick();
    QCOMPARE(s.panel(5), QString(" 2004年12月28日(火) 09:05:07"));
    QCOMPARE(s.find<QLabel>("Label3")->text(), "  ﾛｸﾞｵﾝ   :" + s.state.gWindowsUser + "\n  PC起動時間:1日 2:3:4");
    QVERIFY(menuEntry(*s.window, 2, 5)->isEnabled());
    QVERIFY(!menuEntry(*s.window, 2, 6)->isEnabled());
    QVERIFY(!menuEntry(*s.window, 2, 2)->isVisible());
    QCOMPARE(menuEntry(*s.window, 2, 0)->text(), QString("件数!"));
    m.clock.setUptime(-1000);
    s.window->timerTick();
    QCOMPARE(s.find<QLabel>("Label3")->text(), "  ﾛｸﾞｵﾝ   :" + s.state.gWindowsUser + "\n  そろそろPC再起動してね");
  }

  void statusPanelsActOnAClick() {
    Machine m;
    m.setSetting("PATH", "x");
    Start s(m);
    s.load();
    // The SQL panel shows the last statement on a click; the clock panel opens the settings.
    s.state.gLastSql = "select * from KOKYAKU";
    QTest::mouseClick(s.find<StatusPanel>("stsBar_4"), Qt::LeftButton);
    QCOMPARE(s.panel(4), QString("select * from KOKYAKU"));
    QTest::mouseClick(s.find<StatusPanel>("stsBar_5"), Qt::LeftButton);
    QCOMPARE(m.launcher.launches().last().program, QString("gnome-control-center"));
  }

  void pendingWorkIsSettledBeforeClosingOrLoggingOnAgain() {
    Machine m;
    m.setSetting("PATH", "x");
    Start s(m, "system manager " + m.instance());
    s.load();
    s.state.gDatabase->ExecuteSQL("create table t (n number)");
    s.state.gSession->BeginTrans();
    s.state.gDatabase->ExecuteSQL("insert into t values (1)");
    auto* rollback = s.find<QPushButton>("cmdJOB_5");
    auto* commit = s.find<QPushButton>("cmdJOB_6");
    rollback->setEnabled(true);
    commit->setEnabled(true);

    m.boxes.expect(Answer::Cancel);
    QTest::mouseClick(s.find<QPushButton>("CmdLogon"), Qt::LeftButton);
    QVERIFY(s.state.gSession); // nothing released, no dialog
    m.boxes.expect(Answer::Cancel);
    QVERIFY(!s.window->close());
    QVERIFY(s.window->isVisible());
    QVERIFY(rollback->isEnabled());
    QCOMPARE(m.setting("FormWidth"), QString("<none>"));

    // No commits, then the logon dialog opens on a released session; cancelling it keeps the host.
    m.boxes.expect(Answer::No);
    QVERIFY(logOnThroughDialog(this, s, [](FORA_Logon& dialog) { dialog.reject(); }));
    QVERIFY(!s.state.gSession);
    QVERIFY(!rollback->isEnabled() && !commit->isEnabled());
    QCOMPARE(s.state.gHost, m.instance());
    auto d = s.state.gDatabase->CreateDynaset("select count(*) from t", 4);
    QCOMPARE(d->Fields(0).toInt(), 1);

    // Nothing pending: closing asks nothing and saves the geometry.
    const int shown = int(m.boxes.shown().size());
    QVERIFY(s.window->close());
    QCOMPARE(int(m.boxes.shown().size()), shown);
    QVERIFY(m.setting("FormWidth") != "<none>");
  }

  void aKilledSessionNeitherEndsTheProgramNorKeepsItOpen() {
    Machine m;
    m.setSetting("PATH", "x");
    const QString host = m.instance();
    const QString killed = "ORA-00028: your session has been killed";
    {
      // Logging on again: the rollback fails, the user reads why, and the logon dialog comes.
      Start s(m, "system manager " + host);
      s.load();
      leavePendingWork(s, "T1");
      killSession(m, s);
      m.boxes.expect(Answer::Yes);
      m.boxes.expect(Answer::Ok);
      m.boxes.expect(Answer::Ok); // the catalogue of the dead session cannot be read
      QVERIFY(logOnThroughDialog(this, s, [](FORA_Logon& dialog) { dialog.reject(); }));
      QCOMPARE(m.boxes.shown().size(), 3);
      QCOMPARE(m.boxes.shown()[1].text, killed);
      QCOMPARE(m.boxes.shown()[1].title, QString("エラー"));
      QCOMPARE(m.boxes.shown()[2].text, QString("テーブル情報が取得できません。"));
      QVERIFY(!s.find<QPushButton>("cmdJOB_5")->isEnabled());
      QVERIFY(!s.state.gSession);
    }
    {
      // Closing: the same message, then the window closes and keeps its geometry.
      Start s(m, "system manager " + host);
      s.load();
      leavePendingWork(s, "T2");
      killSession(m, s);
      m.boxes.expect(Answer::No);
      m.boxes.expect(Answer::Ok);
      QVERIFY(s.window->close());
      QCOMPARE(m.boxes.shown().last().text, killed);
      QVERIFY(m.setting("FormWidth") != "<none>");
    }
    // The work of the killed sessions is gone, none of it committed.
    OraDatabase system(LocalEngine::connect(m.dir.path() + "/inst", "system", "manager"));
    QCOMPARE(system.CreateDynaset("select (select count(*) from t1) + (select count(*) from t2) from dual", 4)
                 ->Fields(0)
                 .toInt(),
             0);
  }

  void aRemovedInstanceFolderNeitherEndsTheProgramNorKeepsItOpen() {
    Machine m;
    m.setSetting("PATH", "x");
    Start s(m, "system manager " + m.instance());
    s.load();
    leavePendingWork(s, "T");
    QVERIFY(QDir(m.dir.path() + "/inst").removeRecursively());
    // Whatever the rollback meets, the dialog still comes, and the failed logon is reported.
    m.boxes.expect(Answer::Yes);
    int shownBefore = -1;
    m.boxes.whileShown([&](const MessageBoxes::Box& box) {
      if (box.text != "ﾄﾗﾝｻﾞｸｼｮﾝが完了していません\r\nロールバックしますか？\r\nはい：ﾛｰﾙﾊﾞｯｸ､いいえ：ｺﾐｯﾄ")
        m.boxes.expect(Answer::Ok);
      else
        shownBefore = int(m.boxes.shown().size());
    });
    logOnThroughDialog(this, s, [](FORA_Logon& dialog) { dialog.findChild<QPushButton*>("cmdOK")->click(); });
    QVERIFY(shownBefore > 0);
    QVERIFY(m.boxes.shown().size() > shownBefore);
    QCOMPARE(m.boxes.shown()[shownBefore].text, QString("オラクルセッションが確立できません。"));
    QVERIFY(!s.find<QPushButton>("cmdJOB_5")->isEnabled());
    m.boxes.whileShown({});
    QVERIFY(s.window->close());
  }

  void theAttemptedLogonIsOnScreenWhileItsFailureIsReported() {
    Machine m;
    m.setSetting("PATH", "x");
    const QString host = m.instance();
    Start s(m, "system nope " + host);
    QStringList behind;
    m.boxes.whileShown([&](const MessageBoxes::Box&) { behind << s.find<QLabel>("lblOra")->text(); });
    m.boxes.expect(Answer::Ok);
    m.boxes.expect(Answer::Ok);
    s.load();
    QCOMPARE(behind.value(0), "User:system\nHost:" + host);
    // And through the logon dialog, with another user and a host that does not exist.
    behind.clear();
    m.boxes.expect(Answer::Ok);
    m.boxes.expect(Answer::Ok);
    m.boxes.expect(Answer::Ok);
    logOnThroughDialog(this, s, [](FORA_Logon& dialog) {
      dialog.findChild<QLineEdit*>("txtUID")->setText("scott");
      dialog.findChild<QComboBox*>("cmbHost")->setEditText("local:nowhere");
      dialog.findChild<QPushButton*>("cmdOK")->click();
    });
    QCOMPARE(behind.value(0), QString("User:scott\nHost:local:nowhere"));
    m.boxes.whileShown({});
  }

  void theFirstLogonToTheDemoShowsItsProgress() {
    Machine m;
    m.setSetting("PATH", "x");
    m.env.db.demoFolder = DEMO_DIR;
    Start s(m, "QUIL QTJL local:demo");
    // What the user sees while the demo is built: the dialog, its text, a bar that moves.
    int highest = -1;
    QString label;
    QTimer look;
    look.setInterval(10);
    connect(&look, &QTimer::timeout, this, [&] {
      for (QWidget* w : QApplication::topLevelWidgets())
        if (auto* dialog = qobject_cast<QProgressDialog*>(w); dialog && dialog->isVisible()) {
          highest = std::max(highest, dialog->value());
          label = dialog->labelText();
        }
    });
    look.start();
    s.load();
    look.stop();
    QVERIFY(highest > 0);
    QVERIFY2(label.startsWith("デモ用データベース（local:demo）を作成しています。"), qPrintable(label));
    QVERIFY(s.state.gDatabase);
    QCOMPARE(s.find<FlexGrid>("grdTable")->TextMatrix(4, 0), QString("KOKYAKU"));
    QVERIFY(m.boxes.shown().isEmpty());
  }

  void aFailingSettingsReadInTheClockTickShowsOneBox() {
    Machine m;
    m.setSetting("PATH", "x");
    Start s(m);
    s.load();
    FailingRegistry failing;
    s.state.gRegistry = std::make_unique<clsREG>(failing, m.boxes);
    // The timer fires again while the box is open; that tick must not open another.
    m.boxes.whileShown([&](const MessageBoxes::Box&) { s.window->timerTick(); });
    m.boxes.expect(Answer::Ok);
    s.window->timerTick();
    QCOMPARE(m.boxes.shown().size(), 1);
    QCOMPARE(m.boxes.shown()[0].title, QString("ReadEntry"));
    m.boxes.whileShown({});
  }

  void defaultSizeRestoresTheNormalWindow() {
    Machine m;
    m.setSetting("PATH", "x");
    Start s(m);
    s.load();
    s.window->showMaximized();
    QTest::mouseClick(s.find<QPushButton>("cmdDefaultSize"), Qt::LeftButton);
    QVERIFY(!s.window->isMaximized());
    QCOMPARE(s.window->width(), twipsToPixelsX(s.window.get(), 12015));
    // Wider windows widen the grids with the reference width; the filter follows them.
    // Wider windows widen the grids with the reference width, and the filter follows them;
    // a taller window gives the extra height to the lists, not to the key grid.
    const int narrow = s.find<QWidget>("frmWhere")->x();
    const int tableHeight = s.find<QWidget>("grdTable")->height();
    const int keyHeight = s.find<QWidget>("grdKey")->height();
    s.window->resize(s.window->width() * 3 / 2, s.window->height() + 100);
    QVERIFY(s.find<QWidget>("frmWhere")->x() > narrow);
    QVERIFY(qAbs(s.find<QWidget>("grdTable")->height() - tableHeight - 100) <= 1);
    QCOMPARE(s.find<QWidget>("grdKey")->height(), keyHeight);
  }
};

QTEST_MAIN(TestMainWindow)
#include "test_mainwindow.moc"
