// The delete job's extra condition with date arithmetic deletes, on the demo's data, exactly
// the rows whose dates satisfy it, as counted here from the dates themselves: with one DELETE
// and row by row.
#include "../db/EngineFixture.h"
#include "FakeServices.h"
#include "RecordingSink.h"
#include "common/BDBSWEEP.h"
#include "db/OraSession.h"
#include "db/local/DemoInstance.h"
#include "jobs/DeleteJob.h"
#include "jobs/JobPlan.h"
#include "jobs/JobProgress.h"
#include "jobs/JobReport.h"
#include "jobs/StatementRunner.h"
#include "jobs/TransactionJobs.h"

#include <QTest>

using Answer = MessageBoxes::Answer;

namespace {

struct SilentProgress final : JobProgress {
  void setCaption(const QString&) override {}
  void yield() override {}
};

constexpr qint64 Day = 86400;

} // namespace

class TestDeleteDates final : public QObject {
  Q_OBJECT

  QTemporaryDir m_dir;
  QString m_folder = m_dir.path() + QStringLiteral("/demo");

  // The point history's keys and dates as db sees them.
  static QMap<QString, QDateTime> history(OraDatabase& db) {
    QMap<QString, QDateTime> rows;
    for (const QString& row :
         rowsOf(db, "select kokyaku_no || '/' || rireki_seq, to_char(hassei_ymd, 'YYYY-MM-DD HH24:MI:SS') from "
                    "point_rireki"))
      rows.insert(row.section(u'|', 0, 0),
                  QDateTime::fromString(row.section(u'|', 1), QStringLiteral("yyyy-MM-dd HH:mm:ss")));
    return rows;
  }

private Q_SLOTS:
  void initTestCase() { DemoInstance::ensure(m_folder, DEMO_DIR); }

  void dateConditionsDeleteTheRowsTheyName() {
    struct Case {
      QString condition;
      std::function<bool(const QDateTime& date, const QDateTime& now)> holds;
    };
    const auto daysBefore = [](const QDateTime& date, const QDateTime& now) { return double(date.secsTo(now)) / Day; };
    const QList<Case> cases = {
        {"HASSEI_YMD < SYSDATE - 365 * 3", [&](auto& d, auto& now) { return daysBefore(d, now) > 365 * 3; }},
        {"HASSEI_YMD >= TRUNC(SYSDATE) - 365 * 2 - 0.5",
         [&](auto& d, auto& now) { return daysBefore(d, now.date().startOfDay()) <= 730.5; }},
        {"SYSDATE - HASSEI_YMD BETWEEN 800 AND 1200",
         [&](auto& d, auto& now) { return daysBefore(d, now) >= 800 && daysBefore(d, now) <= 1200; }},
        {"ADD_MONTHS(HASSEI_YMD, 36) > SYSDATE AND HASSEI_YMD + 400 < SYSDATE",
         [&](auto& d, auto& now) { return d.addMonths(36) > now && daysBefore(d, now) > 400; }},
    };
    for (const Case& c : cases) {
      for (const bool rowByRow : {false, true}) {
        auto session = std::make_shared<OraSession>(DbEnvironment{});
        BDBSWEEP state;
        ManualClock clock;
        ScriptedMessageBoxes boxes;
        OffThreadStatements statements;
        RecordingSink sink{false};
        SilentProgress progress;
        state.gDatabase = session->OpenDatabase(QStringLiteral("local:") + m_folder, QStringLiteral("QUIL/QTJL"), 0);
        state.gSession = session;
        state.gJobTimer = std::make_unique<clsTimer>(clock);
        JobContext context{state, sink, statements, clock, boxes};
        JobPlan plan;
        plan.targets = {{QStringLiteral("POINT_RIREKI"), QStringLiteral("ポイント履歴"), 1}};
        plan.addWhere = c.condition;

        const QMap<QString, QDateTime> before = history(*state.gDatabase);
        const QDateTime now = QDateTime::currentDateTime();
        QStringList kept;
        for (auto it = before.cbegin(); it != before.cend(); ++it)
          if (!c.holds(it.value(), now))
            kept << it.key();
        // The condition splits the history, or it would tell little.
        QVERIFY2(!kept.isEmpty() && kept.size() < before.size(), qPrintable(c.condition));

        boxes.expect(rowByRow ? Answer::Yes : Answer::No);
        QVERIFY(RunDeleteJob(plan, context, progress, true));
        QCOMPARE(history(*state.gDatabase).keys(), kept);
        boxes.expect(Answer::Ok);
        QVERIFY(RunRollback(context));
        QCOMPARE(history(*state.gDatabase).size(), before.size());
      }
    }
  }
};

QTEST_GUILESS_MAIN(TestDeleteDates)
#include "test_deletedates.moc"
