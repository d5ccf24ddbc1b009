#include "FakeServices.h"
#include "launcher/TrayAutoStart.h"
#include "tray/TrayCompanion.h"

#include <QAction>
#include <QFileInfo>
#include <QMenu>
#include <QProcess>
#include <QTest>

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
  void theMenuStartsDbsweepFromItsOwnFolder() {
    RecordingLauncher launcher;
    TrayCompanion tray(launcher, "/opt/dbsweep");
    QCOMPARE(tray.menu()->actions().first()->text(), QString("DBSWEEP起動"));
    QCOMPARE(tray.quitAction()->text(), QString("終了"));
    tray.startAction()->trigger();
    QCOMPARE(launcher.launches().size(), 1);
    QCOMPARE(launcher.launches()[0].program, QString("/opt/dbsweep/dbsweep"));
    QVERIFY(launcher.launches()[0].arguments.isEmpty());
    // A missing program is reported in the tray, not by ending the companion.
    launcher.setSucceeds(false);
    tray.startAction()->trigger();
    QCOMPARE(launcher.launches().size(), 2);
  }

  void theCompanionIsBuiltWhereDbsweepLooksForIt() {
    QCOMPARE(QString(DBSWEEP_TRAY), TrayProgramPath(QFileInfo(DBSWEEP).absolutePath()));
  }

  void withoutADisplayOrATrayBothProgramsSaySoAndEnd() {
    const QMap<QString, QString> unreachable = {
        {"DISPLAY", ":97"}, {"WAYLAND_DISPLAY", QString()}, {"QT_QPA_PLATFORM", QString()}};
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
