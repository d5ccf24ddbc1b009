#include "FakeServices.h"
#include "ScriptedMessageBoxes.h"
#include "app/FrameTexts.h"
#include "db/OraSession.h"
#include "db/local/LocalEngine.h"
#include "jobs/PendingTransaction.h"
#include "launcher/TrayAutoStart.h"
#include "platform/PlatformRegistry.h"
#include "settings/RegSetting.h"
#include "settings/clsREG.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using Answer = MessageBoxes::Answer;

class TestFrameTexts final : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void clockAndUptimeTexts() {
    QCOMPARE(ClockPanelText(QDateTime(QDate(2004, 12, 28), QTime(9, 5, 7))), QString(" 2004年12月28日(火) 09:05:07"));
    QCOMPARE(ClockPanelText(QDateTime(QDate(2026, 1, 4), QTime(23, 59, 59))), QString(" 2026年01月04日(日) 23:59:59"));
    const QString head = QStringLiteral("  ﾛｸﾞｵﾝ   :suzuki\r\n");
    QCOMPARE(UptimeLabelText("suzuki", ((26 * 60 + 3) * 60 + 4) * 1000), head + "  PC起動時間:1日 2:3:4");
    QCOMPARE(UptimeLabelText("suzuki", 23 * 3600 * 1000), head + "  PC起動時間:0日 23:0:0");
    // Rounded to the nearest second; at exactly half, to the even one.
    QCOMPARE(UptimeLabelText("suzuki", 59600), head + "  PC起動時間:0日 0:1:0");
    QCOMPARE(UptimeLabelText("suzuki", 2500), head + "  PC起動時間:0日 0:0:2");
    QCOMPARE(UptimeLabelText("suzuki", -5), head + "  PC起動時間:0日 0:0:0");
    QCOMPARE(UptimeLabelText("suzuki", -2000000000), head + "  そろそろPC再起動してね");
    QVERIFY(QRegularExpression(R"(^\d+\.\d+\.\d+$)").match(ProgramVersionNumbers()).hasMatch());
  }

  void residentCompanionRegistration() {
    QTemporaryDir dir;
    ScriptedMessageBoxes boxes;
    PlatformRegistry registry({dir.path() + "/config", dir.path() + "/autostart"}, {});
    clsREG reg(registry, boxes);
    RecordingLauncher launcher;
    const QString folder = dir.path() + "/bin";

    launcher.setSucceeds(false);
    boxes.expect(Answer::Ok);
    SetTrayAutoStart("ON", reg, launcher, boxes, folder);
    QCOMPARE(boxes.shown().size(), 1);
    QCOMPARE(boxes.shown()[0].text, "常駐DBSWEEPが" + folder + "に見つからないため、常駐設定出来ません");
    QCOMPARE(boxes.shown()[0].icon, MessageBoxes::Icon::Critical);
    QVERIFY(!TrayAutoStartRegistered(reg));

    launcher.setSucceeds(true);
    SetTrayAutoStart("on", reg, launcher, boxes, folder);
    QCOMPARE(launcher.launches().last().program, folder + "/dbsweep-tray");
    QCOMPARE(launcher.launches().last().state, ProcessLauncher::WindowState::Minimized);
    QVERIFY(TrayAutoStartRegistered(reg));
    QCOMPARE(RegSetting(reg, "R", "RUN", "DBSWEEP", QString("NONE")), folder + "/dbsweep-tray");
    QVERIFY(QFile::exists(dir.path() + "/autostart/DBSWEEP.desktop"));
    QCOMPARE(boxes.shown().size(), 1);

    SetTrayAutoStart("Off", reg, launcher, boxes, folder); // neither spelling: nothing happens
    QVERIFY(TrayAutoStartRegistered(reg));
    boxes.expect(Answer::Ok);
    SetTrayAutoStart("OFF", reg, launcher, boxes, folder);
    QVERIFY(!TrayAutoStartRegistered(reg));
    QCOMPARE(boxes.shown().last().text, QString("自動常駐を解除しました。\r\n常駐DBSWEEPが起動中の場合はシステムトレイ"
                                                "のアイコン上で右クリックして下さい。"));
    QCOMPARE(boxes.shown().last().icon, MessageBoxes::Icon::None);
    boxes.expect(Answer::Ok);
    SetTrayAutoStart("off", reg, launcher, boxes, folder); // removing what is not there only tells
    QCOMPARE(boxes.shown().size(), 3);
    QCOMPARE(launcher.launches().size(), 2);
  }

  void pendingWorkIsRolledBackCommittedOrKept() {
    QTemporaryDir dir;
    LocalEngine::createInstance(dir.path() + "/inst", "manager");
    OraSession session(DbEnvironment{dir.path()});
    auto db = session.OpenDatabase("local:" + dir.path() + "/inst", "system/manager", 0);
    db->ExecuteSQL("create table t (n number)");
    const auto count = [&] {
      auto d = db->CreateDynaset("select count(*) from t", 4);
      return d->Fields(0).toInt();
    };
    ScriptedMessageBoxes boxes;
    const auto pending = [&](Answer answer) {
      session.BeginTrans();
      db->ExecuteSQL("insert into t values (1)");
      boxes.expect(answer);
      return SettlePendingTransaction(boxes, session);
    };
    QVERIFY(pending(Answer::Yes));
    QCOMPARE(count(), 0);
    QVERIFY(pending(Answer::No));
    QCOMPARE(count(), 1);
    QVERIFY(!pending(Answer::Cancel));
    QCOMPARE(count(), 2); // still pending, in the same transaction
    session.Rollback();
    QCOMPARE(count(), 1);
    const MessageBoxes::Box& box = boxes.shown().first();
    QCOMPARE(box.text, QString("ﾄﾗﾝｻﾞｸｼｮﾝが完了していません\r\nロールバックしますか？\r\nはい：ﾛｰﾙﾊﾞｯｸ､いいえ：ｺﾐｯﾄ"));
    QCOMPARE(box.title, QString("DBSWEEP"));
    QCOMPARE(box.buttons, MessageBoxes::Buttons::YesNoCancel);
    QCOMPARE(box.icon, MessageBoxes::Icon::Exclamation);
  }
};

QTEST_GUILESS_MAIN(TestFrameTexts)
#include "test_frametexts.moc"
