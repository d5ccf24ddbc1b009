#include "MainWindowFixture.h"
#include "app/LastLogon.h"
#include "launcher/TrayAutoStart.h"
#include "platform/DetachedProcessLauncher.h"
#include "tray/TrayCompanion.h"

#include <QAction>
#include <QFileInfo>
#include <QLockFile>
#include <QMenu>
#include <QProcess>
#include <QTest>
#include <QToolButton>

class TestTray final : public QObject {
  Q_OBJECT

  // Runs program with env changed as given, and returns its exit code and standard error.
  static std::pair<int, QString> run(const QString& program, const QMap<QString, QString>& changes) {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    for (auto it = changes.begin(); it != changes.end(); ++it) {
      if (it.value().isNull())
        env.remove(it.key());
      else
        env.insert(it.key(), it.value());
    }
    QProcess p;
    p.setProcessEnvironment(env);
    p.start(program, {});
    if (!p.waitForFinished(20000)) {
      p.kill();
      return {-1, QStringLiteral("did not end")};
    }
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2,
            QString::fromLocal8Bit(p.readAllStandardError())};
  }

private Q_SLOTS:
  void theMenuStartsDbsweepAndTheLauncherEntries() {
    Machine m;
    clsREG reg(m.registry, m.boxes);
    TrayCompanion tray(m.launcher, reg, "/opt/dbsweep");
    QCOMPARE(tray.menu()->actions().first()->text(), QString("DBSWEEP起動"));
    QCOMPARE(tray.quitAction()->text(), QString("終了"));
    // Before any first start of DBSWEEP, the companion looks beside itself.
    tray.startAction()->trigger();
    QCOMPARE(m.launcher.launches().last().program, QString("/opt/dbsweep/dbsweep"));
    QVERIFY(m.launcher.launches().last().arguments.isEmpty());
    // The folder DBSWEEP recorded comes first; when nothing starts there, its own folder next,
    // and a missing program is reported in the tray, not by ending the companion.
    m.setSetting("PATH", "/usr/lib/dbsweep");
    m.launcher.setSucceeds(false);
    tray.startAction()->trigger();
    QCOMPARE(m.launcher.launches().size(), 3);
    QCOMPARE(m.launcher.launches()[1].program, QString("/usr/lib/dbsweep/dbsweep"));
    QCOMPARE(m.launcher.launches()[2].program, QString("/opt/dbsweep/dbsweep"));

    // The launcher entries, read again each time the menu opens, with the last logon.
    QVERIFY(!tray.launcherActions()[0]->isVisible());
    m.setSetting("CHILDID0", "SQL");
    m.setSetting("CHILDNAME0", "dbsweep-sql");
    m.setSetting("CHILDPARA0", "3");
    WriteLastLogon(reg, {"scott", "ti ger", "orcl"});
    Q_EMIT tray.menu()->aboutToShow();
    QVERIFY(tray.launcherActions()[0]->isVisible());
    QVERIFY(!tray.launcherActions()[1]->isVisible());
    QCOMPARE(tray.launcherActions()[0]->text(), QString("SQL"));
    tray.launcherActions()[0]->trigger();
    QCOMPARE(m.launcher.launches().last().program, QString("dbsweep-sql"));
    QCOMPARE(m.launcher.launches().last().arguments, QStringList("scott/ti ger@orcl"));
  }

  void theRealCompanionMakesDbsweepResident() {
    // The first-start question and the main window's menu entries against the real companion
    // beside it: started, it finds no tray on this platform and ends, but it did start, so it
    // is registered.
    Machine m;
    QDir().mkpath(m.env.db.programFolder);
    QVERIFY(QFile::link(DBSWEEP_TRAY, TrayProgramPath(m.env.db.programFolder)));
    DetachedProcessLauncher real;
    Services services{m.boxes, m.clock, real, m.fakes.desktop, m.fakes.print, m.fakes.desktop, m.env};
    BDBSWEEP state;
    state.gRegistry = std::make_unique<clsREG>(m.registry, m.boxes);
    FDBSWEEP window(state, services);
    m.boxes.expect(MessageBoxes::Answer::Yes);
    window.load();
    QCOMPARE(m.boxes.shown().size(), 1);
    QCOMPARE(m.boxes.shown()[0].text, QString("常駐DBSWEEPを使用しますか"));
    QVERIFY(TrayAutoStartRegistered(*state.gRegistry));
    QMenu* options = window.findChild<QToolButton*>("tbar_5")->menu();
    QAction* on = options->actions().at(3);
    QAction* off = options->actions().at(4);
    QVERIFY(!on->isVisible() && off->isVisible());
    m.boxes.expect(MessageBoxes::Answer::Ok);
    off->trigger();
    window.timerTick();
    QVERIFY(on->isVisible() && !off->isVisible());
    on->trigger();
    QCOMPARE(m.boxes.shown().size(), 2); // no complaint: the companion is there
    window.timerTick();
    QVERIFY(!on->isVisible() && off->isVisible());
  }

  void oneCompanionPerUser() {
    QTemporaryDir runtime;
    QFile::setPermissions(runtime.path(), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QLockFile running(runtime.path() + "/dbsweep-tray.lock");
    QVERIFY(running.tryLock(0));
    const QMap<QString, QString> env = {{"QT_QPA_PLATFORM", "offscreen"}, {"XDG_RUNTIME_DIR", runtime.path()}};
    const auto [code, message] = run(DBSWEEP_TRAY, env);
    QCOMPARE(code, 0);
    QVERIFY2(message.contains("already running"), qPrintable(message));
    running.unlock();
    QCOMPARE(run(DBSWEEP_TRAY, env).first, 1); // on to the missing tray
  }

  void theCompanionIsBuiltWhereDbsweepLooksForIt() {
    QCOMPARE(QString(DBSWEEP_TRAY), TrayProgramPath(QFileInfo(DBSWEEP).absolutePath()));
  }

  void withoutADisplayOrATrayBothProgramsSaySoAndEnd() {
    const QMap<QString, QString> unreachable = {
        {"DISPLAY", ":1999"}, {"WAYLAND_DISPLAY", QString()}, {"QT_QPA_PLATFORM", QString()}};
    for (const QString& program : {QString(DBSWEEP), QString(DBSWEEP_TRAY)}) {
      const auto [code, message] = run(program, unreachable);
      QCOMPARE(code, 2);
      QVERIFY2(message.contains("no display found"), qPrintable(message));
      const auto [none, noneMessage] =
          run(program, {{"DISPLAY", QString()}, {"WAYLAND_DISPLAY", QString()}, {"QT_QPA_PLATFORM", QString()}});
      QCOMPARE(none, 2);
      QVERIFY2(noneMessage.contains("DISPLAY and WAYLAND_DISPLAY are not set"), qPrintable(noneMessage));
    }
    // A display without a system tray: the companion says it has nowhere to live.
    const auto [code, message] = run(DBSWEEP_TRAY, {{"QT_QPA_PLATFORM", "offscreen"}});
    QCOMPARE(code, 1);
    QVERIFY2(message.contains("no system tray"), qPrintable(message));
  }
};

QTEST_MAIN(TestTray)
#include "test_tray.moc"
