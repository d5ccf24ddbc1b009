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
    // Oracle's ADD_MONTHS: the last day of a month goes to the last day of the other.
    const auto addMonths = [](const QDateTime& d, int months) {
      const QDate day = d.date();
      const QDate moved = QDate(day.year(), day.month(), 1).addMonths(months);
      const bool last = day.day() == day.daysInMonth();
      return QDateTime(
          QDate(moved.year(), moved.month(), last ? moved.daysInMonth() : qMin(day.day(), moved.daysInMonth())),
          d.time());
    };
    // The conditions reach back to a day in the middle of the demo's history, however far today
    // has moved on from it.
    const QDate middle(2024, 4, 15);
    const int days = int(middle.daysTo(QDate::currentDate()));
    const int months =
        (QDate::currentDate().year() - middle.year()) * 12 + QDate::currentDate().month() - middle.month();
    const QList<Case> cases = {
        {QString("HASSEI_YMD < SYSDATE - %1").arg(days), [&](auto& d, auto& now) { return daysBefore(d, now) > days; }},
        {QString("HASSEI_YMD >= TRUNC(SYSDATE) - %1 - 0.5").arg(days),
         [&](auto& d, auto& now) { return daysBefore(d, now.date().startOfDay()) <= days + 0.5; }},
        {QString("SYSDATE - HASSEI_YMD BETWEEN %1 AND %2").arg(days - 200).arg(days + 200),
         [&](auto& d, auto& now) { return daysBefore(d, now) >= days - 200 && daysBefore(d, now) <= days + 200; }},
        {QString("ADD_MONTHS(HASSEI_YMD, %1) > SYSDATE AND HASSEI_YMD + %2 < SYSDATE").arg(months).arg(days - 300),
         [&](auto& d, auto& now) { return addMonths(d, months) > now && daysBefore(d, now) > days - 300; }},
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
