// The count job and what every job shares, without windows: the plan and its SQL, the line
// formats, the timer, the job on an embedded instance, and statements run off the caller's thread.
#include "../db/EngineFixture.h"
#include "FakeServices.h"
#include "RecordingSink.h"
#include "common/BDBSWEEP.h"
#include "jobs/CountJob.h"
#include "jobs/JobPlan.h"
#include "jobs/JobReport.h"
#include "jobs/ResultLineText.h"
#include "jobs/ResultSink.h"
#include "jobs/StatementRunner.h"
#include "jobs/clsTimer.h"

#include <QSemaphore>
#include <QTest>
#include <QTimer>

#include <stdexcept>

using namespace ResultLineText;

namespace {

// Every statement takes 1.234 s of the manual clock.
struct SlowStatements final : StatementRunner {
  explicit SlowStatements(ManualClock& clock) : clock(clock) {}
  void run(const std::function<void()>& call) override {
    clock.advance(1234);
    call();
  }
  ManualClock& clock;
};

// A clock whose tick the test sets anywhere in its range.
struct TickClock final : Clock {
  QDateTime now() const override { return {}; }
  qint64 tickMs() const override { return tick; }
  qint32 uptimeMs() const override { return 0; }
  qint64 tick = 0;
};

struct Job {
  explicit Job(std::shared_ptr<OraDatabase> database) {
    state.gDatabase = std::move(database);
    state.gJobTimer = std::make_unique<clsTimer>(clock);
    clock.setNow(QDateTime(QDate(2026, 11, 24), QTime(9, 5, 7)));
    sink.clear();
  }
  void count(const JobPlan& plan) {
    JobContext context{state, sink, statements, clock, boxes};
    RunCountJob(plan, context);
  }
  BDBSWEEP state;
  ManualClock clock;
  ScriptedMessageBoxes boxes;
  SlowStatements statements{clock};
  RecordingSink sink{true};
};

JobPlan planOf(QList<JobTarget> targets, const QString& column = QStringLiteral("CODE")) {
  JobPlan plan;
  plan.targets = std::move(targets);
  plan.countColumn = column;
  return plan;
}

} // namespace

class TestCountJob : public QObject {
  Q_OBJECT

private Q_SLOTS:
  void lineFieldsKeepTheirWidths() {
    QCOMPARE(TableField(QStringLiteral("EMP")), QStringLiteral("EMP             "));
    QCOMPARE(TableField(QStringLiteral("A_VERY_LONG_TABLE_NAME")), QStringLiteral("A_VERY_LONG_TABL"));
    QCOMPARE(CountField(0), QStringLiteral("        0件"));
    QCOMPARE(CountField(1234), QStringLiteral("    1,234件"));
    QCOMPARE(CountField(1234567), QStringLiteral("1,234,567件"));
    QCOMPARE(CountField(123456789), QStringLiteral("3,456,789件")); // longer than the field: cut
    QCOMPARE(OkField(), QStringLiteral("      OK"));
    QCOMPARE(ErrorField(942), QStringLiteral("Err  942"));
    QCOMPARE(ErrorField(1234567), QStringLiteral("Err34567"));
    QCOMPARE(FailureLine(QStringLiteral("DEPT"), 904, QStringLiteral("部署")),
             QStringLiteral("DEPT            :Err  904:部署"));
    QCOMPARE(OkLine(QStringLiteral("DEPT"), QString()), QStringLiteral("DEPT            :      OK:"));
    QCOMPARE(Thousands(999), QStringLiteral("999"));
    QCOMPARE(Thousands(1000), QStringLiteral("1,000"));

    QCOMPARE(ElapsedLine(12), QStringLiteral("所要時間(Sec)       12"));
    QCOMPARE(ElapsedLine(0.047), QStringLiteral("所要時間(Sec)    0.047"));
    QCOMPARE(ElapsedLine(123456.789), QStringLiteral("所要時間(Sec) 3456.789"));

    // Separators are "/" and ":" even where the locale writes dates otherwise.
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const QDateTime when(QDate(2026, 3, 4), QTime(17, 8, 9));
    QCOMPARE(StartLine(when), QStringLiteral("開始: 2026/03/04 17:08:09"));
    QCOMPARE(EndLine(when), QStringLiteral("終了: 2026/03/04 17:08:09"));
    QLocale::setDefault(before);
  }

  void timerAccumulatesScalesAndOverflows() {
    ManualClock clock;
    clsTimer timer(clock);
    QCOMPARE(timer.ElapsedTime(), 0.0); // never started
    timer.StartTimer();
    clock.advance(1500);
    QCOMPARE(timer.ElapsedTime(), 1.5); // a running interval counts
    timer.StopTimer();
    clock.advance(10000);
    QCOMPARE(timer.ElapsedTime(), 1.5); // a stopped one does not
    timer.ResumeTimer();
    clock.advance(500);
    timer.StopTimer();
    timer.StopTimer(); // stopping twice adds nothing
    QCOMPARE(timer.ElapsedTime(), 2.0);
    timer.setScaleFactor(0);
    timer.setScaleFactor(-5);
    QCOMPARE(timer.ScaleFactor(), 1000);
    timer.setScaleFactor(1);
    QCOMPARE(timer.ElapsedTime(), 2000.0);
    timer.StartTimer(); // starts afresh
    clock.advance(250);
    QCOMPARE(timer.ElapsedTime(), 250.0);

    // Counters that no longer fit raise an overflow rather than wrap to a wrong time.
    TickClock ticks;
    clsTimer big(ticks);
    big.StartTimer();
    ticks.tick = std::numeric_limits<qint64>::max();
    big.StopTimer();
    big.ResumeTimer();
    ticks.tick = std::numeric_limits<qint64>::max();
    QCOMPARE(big.ElapsedTime(), double(std::numeric_limits<qint64>::max()) / 1000);
    ticks.tick = 0;
    big.ResumeTimer();
    ticks.tick = 1;
    QVERIFY_THROWS_EXCEPTION(std::overflow_error, big.StopTimer());
    ticks.tick = std::numeric_limits<qint64>::min();
    big.StartTimer();
    ticks.tick = 1;
    QVERIFY_THROWS_EXCEPTION(std::overflow_error, big.ElapsedTime());
  }

  void planComposesEveryStatementOfAJob() {
    JobPlan plan = planOf({{QStringLiteral("URIAGE"), QStringLiteral("売上"), 3}});
    const JobTarget& t = plan.targets[0];
    QCOMPARE(plan.countSql(t), QStringLiteral("select CODE from URIAGE"));
    QCOMPARE(plan.selectSql(t), QStringLiteral("select * from URIAGE"));
    QCOMPARE(plan.fastDeleteSql(t), QStringLiteral("DELETE FROM URIAGE"));

    plan.addWhere = QStringLiteral("QTY > 5");
    QCOMPARE(plan.countSql(t), QStringLiteral("select CODE from URIAGE WHERE QTY > 5"));

    // A row in mode "all" filters nothing; the others join with "and"; the extra condition
    // then continues the clause as the user wrote it.
    plan.filterRows = {{QStringLiteral("CODE"), QStringLiteral("全て"), QStringLiteral("x"), QString()},
                       {QStringLiteral("SHOP"), QStringLiteral("のみ"), QStringLiteral("A%"), QString()},
                       {QStringLiteral("DAY"), QStringLiteral("～"), QStringLiteral("2026/01/01"),
                        QStringLiteral("2026/01/31")}};
    const QString where =
        QStringLiteral(" where (SHOP like 'A%') and (DAY between '2026/01/01' and '2026/01/31')");
    QCOMPARE(plan.where(), where);
    QCOMPARE(plan.countSql(t), QStringLiteral("select CODE from URIAGE") + where + QStringLiteral(" QTY > 5"));
    plan.addWhere.clear();
    QCOMPARE(plan.fastDeleteSql(t), QStringLiteral("DELETE FROM URIAGE") + where);
    QCOMPARE(FilterRowsWhere({plan.filterRows[0]}), QString());
  }

  void countsEveryTableAndReportsFailuresInLine() {
    EngineFixture engine;
    auto sales = engine.sales();
    sales->ExecuteSQL(QStringLiteral("CREATE TABLE SHOPS (CODE VARCHAR2(4), AREA VARCHAR2(10))"));
    sales->ExecuteSQL(QStringLiteral("CREATE TABLE ORDERS (CODE VARCHAR2(4), QTY NUMBER)"));
    sales->ExecuteSQL(QStringLiteral("CREATE TABLE NOTES (TEXT VARCHAR2(10))"));
    for (int i = 0; i < 5; ++i)
      sales->ExecuteSQL(QStringLiteral("INSERT INTO SHOPS VALUES ('S%1', '%2')").arg(i).arg(i < 2 ? "EAST" : "WEST"));
    Job job(sales);
    JobPlan plan = planOf({{QStringLiteral("SHOPS"), QStringLiteral("店舗"), 1},
                           {QStringLiteral("GONE"), QStringLiteral("削除済"), 2},
                           {QStringLiteral("ORDERS"), QStringLiteral("注文"), 4},
                           {QStringLiteral("NOTES"), QStringLiteral("メモ"), 5}});
    plan.filterRows = {{QStringLiteral("CODE"), QStringLiteral("のみ"), QStringLiteral("S%"), QString()}};
    plan.addWhere = QStringLiteral("AND CODE <> 'S4'");
    job.count(plan);
    QCOMPARE(job.sink.lines,
             (QStringList{"<heading>",
                          "GR|＝＝＝件数カウント開始＝＝＝",
                          "BY|開始: 2026/11/24 09:05:07",
                          "|",
                          "cd|SHOPS           :        4件:店舗",
                          "--",
                          "RD|GONE            :Err  942:削除済",
                          "RD|ORA-00942: table or view does not exist",
                          "--",
                          "cd|ORDERS          :        0件:注文",
                          "--",
                          "RD|NOTES           :Err  904:メモ",
                          "RD|ORA-00904: \"CODE\": invalid identifier",
                          "--",
                          "|",
                          "by|終了: 2026/11/24 09:05:11",
                          "|所要時間(Sec)    4.936",
                          "GR|＝＝＝件数カウント終了＝＝＝",
                          "--"}));
    QCOMPARE(job.state.gLastSql,
             QStringLiteral("select CODE from NOTES where (CODE like 'S%') AND CODE <> 'S4'"));
    QCOMPARE(job.state.gLastWhere, QStringLiteral(" where (CODE like 'S%')"));
  }

  void aJobWithoutTargetsKeepsItsFrame() {
    EngineFixture engine;
    Job job(engine.sales());
    job.state.gLastSql = QStringLiteral("select * from BEFORE");
    job.count(planOf({}));
    QCOMPARE(job.sink.lines, (QStringList{"<heading>", "GR|＝＝＝件数カウント開始＝＝＝", "BY|開始: 2026/11/24 09:05:07", "|",
                                          "|", "by|終了: 2026/11/24 09:05:07", "|所要時間(Sec)        0",
                                          "GR|＝＝＝件数カウント終了＝＝＝", "--"}));
    QCOMPARE(job.state.gLastSql, QStringLiteral("select * from BEFORE"));
  }

  void withoutAColumnOrAConnectionNothingIsCounted() {
    Job job(nullptr);
    job.sink.lines = {QStringLiteral("earlier line")};
    job.boxes.expect(MessageBoxes::Answer::Ok);
    job.count(planOf({{QStringLiteral("SHOPS"), QStringLiteral("店舗"), 1}}, QString()));
    QCOMPARE(job.boxes.shown().size(), 1);
    QCOMPARE(job.boxes.shown()[0].title, QStringLiteral("DBSWEEP"));
    QCOMPARE(job.boxes.shown()[0].icon, MessageBoxes::Icon::Exclamation);
    QCOMPARE(job.sink.lines, QStringList{QStringLiteral("earlier line")});

    // No session: every target fails in its own lines and the run still closes.
    job.count(planOf({{QStringLiteral("A"), QString(), 1}, {QStringLiteral("B"), QString(), 2}}));
    QCOMPARE(job.sink.lines.filter(QStringLiteral("RD|")),
             (QStringList{"RD|A               :Err 3114:", "RD|ORA-03114: not connected to ORACLE",
                          "RD|B               :Err 3114:", "RD|ORA-03114: not connected to ORACLE"}));
    QCOMPARE(job.sink.lines.last(), QStringLiteral("--"));
    QCOMPARE(job.sink.lines[job.sink.lines.size() - 2], QStringLiteral("GR|＝＝＝件数カウント終了＝＝＝"));
  }

  void offThreadStatementsKeepTheEventLoopRunning() {
    OffThreadStatements statements;
    QSemaphore released;
    int ticks = 0;
    QTimer timer;
    // Only a timer of the waiting thread can let the statement finish: if the caller blocked,
    // the statement would time out and say so.
    QObject::connect(&timer, &QTimer::timeout, [&] {
      if (++ticks == 3)
        released.release();
    });
    timer.start(5);
    bool finished = false;
    statements.run([&] { finished = released.tryAcquire(1, 10000); });
    QVERIFY(finished);
    QVERIFY(ticks >= 3);

    // What the call throws reaches the caller, on the caller's thread.
    QVERIFY_THROWS_EXCEPTION(OraError, statements.run([] { throw OraError(28, QStringLiteral("your session has been killed")); }));
  }

};

QTEST_GUILESS_MAIN(TestCountJob)
#include "test_countjob.moc"
