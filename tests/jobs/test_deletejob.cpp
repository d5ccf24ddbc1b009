// The delete, drop, rollback and commit jobs without windows, on an embedded instance: every
// answer to every question, the stop button between tables and rows, a row that cannot be
// deleted, and the transaction they leave for the user to end.
#include "../db/EngineFixture.h"
#include "FakeServices.h"
#include "RecordingSink.h"
#include "common/BDBSWEEP.h"
#include "db/OraSession.h"
#include "jobs/DeleteJob.h"
#include "jobs/JobPlan.h"
#include "jobs/JobProgress.h"
#include "jobs/JobReport.h"
#include "jobs/ResultSink.h"
#include "jobs/StatementRunner.h"
#include "jobs/TransactionJobs.h"

#include <QTest>

using Answer = MessageBoxes::Answer;

namespace {

// The progress window: records its captions and lets a test press stop at a chosen moment.
struct ScriptedProgress final : JobProgress {
  QStringList captions;
  std::function<void(const QString&)> onCaption;
  std::function<void()> onYield;
  void setCaption(const QString& caption) override {
    captions << caption;
    if (onCaption)
      onCaption(caption);
  }
  void yield() override {
    if (onYield)
      onYield();
  }
};

const QString TruncateQuestion =
    QStringLiteral("全件削除を高速に行いますか？\r\n（但し、削除後のﾛｰﾙﾊﾞｯｸは出来なくなります)");
const QString OneByOneQuestion =
    QStringLiteral("一件ずつ削除しますか？\r\n（時間は掛かりますが、削除件数が表示されます）");

} // namespace

class TestDeleteJob final : public QObject {
  Q_OBJECT

  // Tables A (5 rows), B (3 rows) and C (4 rows) of SALES, each with a column K.
  struct Shop {
    Shop() {
      auto sales = engine.sales();
      for (const auto& [table, rows] : {std::pair{"A", 5}, std::pair{"B", 3}, std::pair{"C", 4}}) {
        sales->ExecuteSQL(QStringLiteral("create table %1 (K number, NOTE varchar2(10))").arg(table));
        for (int k = 1; k <= rows; ++k)
          sales->ExecuteSQL(QStringLiteral("insert into %1 values (%2, 'n%2')").arg(table).arg(k));
      }
      session = std::make_shared<OraSession>(DbEnvironment{});
      state.gDatabase = session->OpenDatabase(QStringLiteral("local:") + engine.folder, QStringLiteral("SALES/secret"), 0);
      state.gSession = session;
      state.gJobTimer = std::make_unique<clsTimer>(clock);
      plan.targets = {{QStringLiteral("A"), QStringLiteral("エー"), 1},
                      {QStringLiteral("B"), QStringLiteral("ビー"), 3},
                      {QStringLiteral("C"), QStringLiteral("シー"), 4}};
    }
    // The rows of table as a second session sees them: committed work only.
    int rows(const QString& table) {
      return int(other->CreateDynaset("select K from " + table, OraDynaset::ReadOnly)->RecordCount());
    }
    bool remove(bool offerTruncate = true) {
      JobContext context{state, sink, statements, clock, boxes};
      return RunDeleteJob(plan, context, progress, offerTruncate);
    }
    void drop() {
      JobContext context{state, sink, statements, clock, boxes};
      RunDropJob(plan, context, progress);
    }
    bool rollback() {
      JobContext context{state, sink, statements, clock, boxes};
      return RunRollback(context);
    }
    bool commit() {
      JobContext context{state, sink, statements, clock, boxes};
      return RunCommit(context);
    }
    QStringList tableLines() const { return sink.lines.mid(4, sink.lines.size() - 8); }

    EngineFixture engine;
    std::shared_ptr<OraDatabase> other = engine.sales();
    std::shared_ptr<OraSession> session;
    BDBSWEEP state;
    ManualClock clock;
    ScriptedMessageBoxes boxes;
    OffThreadStatements statements;
    RecordingSink sink{false};
    ScriptedProgress progress;
    JobPlan plan;
  };

private Q_SLOTS:
  void everyAnswerToTheQuestionsDoesWhatItSays() {
    {
      // Yes to the fast question: whole tables truncated, nothing left to roll back.
      Shop s;
      s.plan.targets.insert(1, {QStringLiteral("GONE"), QStringLiteral("無し"), 2});
      s.boxes.expect(Answer::Yes);
      QVERIFY(!s.remove());
      const MessageBoxes::Box& asked = s.boxes.shown()[0];
      QCOMPARE(asked.text, TruncateQuestion);
      QCOMPARE(asked.buttons, MessageBoxes::Buttons::YesNoCancel);
      QCOMPARE(asked.icon, MessageBoxes::Icon::Question);
      QCOMPARE(asked.defaultButton, 3);
      QCOMPARE(s.tableLines(), (QStringList{"CD|A               :      OK:", "RD|GONE            :Err  942:",
                                            "RD|ORA-00942: table or view does not exist",
                                            "CD|B               :      OK:", "CD|C               :      OK:"}));
      QCOMPARE(s.sink.lines[1], QStringLiteral("GR|＝＝＝＝＝削除開始＝＝＝＝＝"));
      QCOMPARE(s.sink.lines.last(), QStringLiteral("GR|＝＝＝＝＝削除終了＝＝＝＝＝"));
      QCOMPARE(s.sink.lines[s.sink.lines.size() - 3], QStringLiteral("BY|終了: 2026/01/05 09:00:00"));
      QCOMPARE(s.state.gLastSql, QStringLiteral("truncate table C"));
      QCOMPARE(s.state.gLastWhere, QStringLiteral("TRUNCATE"));
      QCOMPARE(s.rows("A") + s.rows("B") + s.rows("C"), 0);
    }
    {
      // No, then Yes: one row at a time, each table's line counting what went; all pending.
      Shop s;
      s.boxes.expect(Answer::No);
      s.boxes.expect(Answer::Yes);
      QVERIFY(s.remove());
      QCOMPARE(s.boxes.shown()[1].text, OneByOneQuestion);
      QCOMPARE(s.boxes.shown()[1].defaultButton, 3);
      QCOMPARE(s.tableLines(), (QStringList{"CD|A               :        5件:エー", "CD|B               :        3件:ビー",
                                            "CD|C               :        4件:シー"}));
      QCOMPARE(s.progress.captions.first(), QStringLiteral("削除中[エー:A](1/5)"));
      QCOMPARE(s.progress.captions.last(), QStringLiteral("削除中[シー:C](4/4)"));
      QCOMPARE(s.state.gLastSql, QStringLiteral("select * from C"));
      QCOMPARE(s.rows("A"), 5); // not committed
      // Cancel at the rollback question changes nothing; OK brings every row back.
      const QStringList report = s.sink.lines;
      s.boxes.expect(Answer::Cancel);
      QVERIFY(!s.rollback());
      QCOMPARE(s.sink.lines, report);
      QCOMPARE(s.boxes.shown().last().text, QStringLiteral("ロールバックしますか"));
      QCOMPARE(s.boxes.shown().last().buttons, MessageBoxes::Buttons::OkCancel);
      s.boxes.expect(Answer::Ok);
      QVERIFY(s.rollback());
      QCOMPARE(s.state.gDatabase->CreateDynaset("select K from B", OraDynaset::ReadOnly)->RecordCount(), 3);
    }
    {
      // A filter skips the fast question; No then deletes with one statement per table.
      Shop s;
      s.plan.filterRows = {{QStringLiteral("K"), QStringLiteral("のみ"), QStringLiteral("2"), QString()}};
      s.plan.addWhere = QStringLiteral("OR K = 3");
      s.boxes.expect(Answer::No);
      QVERIFY(s.remove());
      QCOMPARE(s.boxes.shown().size(), 1);
      QCOMPARE(s.boxes.shown()[0].text, OneByOneQuestion);
      QCOMPARE(s.tableLines(), (QStringList{"CD|A               :      OK:エー", "CD|B               :      OK:ビー",
                                            "CD|C               :      OK:シー"}));
      QCOMPARE(s.progress.captions, (QStringList{"削除中[エー:A](№1)", "削除中[ビー:B](№3)", "削除中[シー:C](№4)"}));
      QCOMPARE(s.state.gLastSql, QStringLiteral("DELETE FROM C where (K like '2') OR K = 3"));
      QCOMPARE(s.state.gLastWhere, QStringLiteral(" where (K like '2')"));
      s.boxes.expect(Answer::Ok);
      QVERIFY(s.commit());
      QCOMPARE(s.sink.lines, (QStringList{"<heading>", "GD|＝＝＝＝コミット完了＝＝＝＝"}));
      QCOMPARE(s.rows("A"), 3);
      QCOMPARE(s.rows("B"), 1);
    }
    // Cancel at either question, or a window that never offers truncation: banners only, no
    // question more than needed, nothing deleted, nothing pending.
    for (const QList<Answer>& answers : {QList<Answer>{Answer::Cancel}, QList<Answer>{Answer::No, Answer::Cancel}}) {
      Shop s;
      for (Answer a : answers)
        s.boxes.expect(a);
      QVERIFY(!s.remove());
      QCOMPARE(s.sink.lines.size(), 1 + 3 + 4);
      QCOMPARE(s.rows("A"), 5);
    }
    Shop s;
    s.boxes.expect(Answer::Cancel);
    QVERIFY(!s.remove(false));
    QCOMPARE(s.boxes.shown()[0].text, OneByOneQuestion);
  }

  void theStopButtonIsHonouredBetweenTablesAndRows() {
    {
      // Stopped during the second table, row by row: its line shows the rows gone so far, the
      // third table is untouched, and what went is pending.
      Shop s;
      s.boxes.expect(Answer::No);
      s.boxes.expect(Answer::Yes);
      s.progress.onCaption = [&](const QString& caption) {
        if (caption == QStringLiteral("削除中[ビー:B](2/3)"))
          s.state.gCancelRequested = true;
      };
      QVERIFY(s.remove());
      QCOMPARE(s.tableLines(), (QStringList{"CD|A               :        5件:エー", "CD|B               :        2件:ビー"}));
      QCOMPARE(s.progress.captions.last(), QStringLiteral("削除中[ビー:B](2/3)"));
      QCOMPARE(s.state.gLastSql, QStringLiteral("select * from A"));
      QCOMPARE(s.rows("C"), 4);
      s.boxes.expect(Answer::Ok);
      QVERIFY(s.rollback());
      QCOMPARE(s.sink.lines, (QStringList{"<heading>", "MD|＝＝＝ロールバック完了＝＝＝"}));
      QCOMPARE(s.rows("A"), 5);
      QCOMPARE(s.rows("B"), 3);
    }
    {
      // Stopped before the first truncate: nothing truncated, nothing pending.
      Shop s;
      s.boxes.expect(Answer::Yes);
      s.progress.onYield = [&] { s.state.gCancelRequested = true; };
      QVERIFY(!s.remove());
      QVERIFY(s.tableLines().isEmpty());
      QCOMPARE(s.rows("A"), 5);
    }
  }

  void aRowThatCannotGoStopsTheWholeJob() {
    Shop s;
    s.boxes.expect(Answer::No);
    s.boxes.expect(Answer::Yes);
    s.boxes.expect(Answer::Ok);
    s.progress.onCaption = [&](const QString& caption) {
      if (caption == QStringLiteral("削除中[ビー:B](2/3)"))
        killSession(*s.state.gDatabase, s.engine.folder);
    };
    QVERIFY(s.remove());
    QCOMPARE(s.boxes.shown().size(), 3);
    const MessageBoxes::Box& stop = s.boxes.shown()[2];
    QCOMPARE(stop.text, QStringLiteral("ORA-00028: your session has been killed\r\n処理を中止します"));
    QCOMPARE(stop.icon, MessageBoxes::Icon::Critical);
    QCOMPARE(s.tableLines(), (QStringList{"CD|A               :        5件:エー", "RD|B               :Err   28:ビー",
                                          "RD|ORA-00028: your session has been killed"}));
    QCOMPARE(s.sink.lines.last(), QStringLiteral("GR|＝＝＝＝＝削除終了＝＝＝＝＝"));
    // The killed session's deletes went with it; the third table was never touched.
    QCOMPARE(s.rows("A"), 5);
    QCOMPARE(s.rows("B"), 3);
    QVERIFY(!s.progress.captions.join(u' ').contains(QStringLiteral("シー")));

    // Ending the transaction of a dead session fails in the user's sight and changes nothing.
    s.boxes.expect(Answer::Ok);
    s.boxes.expect(Answer::Ok);
    const QStringList before = s.sink.lines;
    QVERIFY(!s.commit());
    QCOMPARE(s.boxes.shown().last().title, QStringLiteral("エラー"));
    QVERIFY(s.boxes.shown().last().text.startsWith(QStringLiteral("ORA-")));
    QCOMPARE(s.sink.lines, before);
  }

  void noRowIsDeletedWhereNoTransactionHoldsTheDeletes() {
    // The session was released for a logon that was then given up: the database left behind
    // would commit every delete at once, so none is sent.
    Shop s;
    s.state.gSession.reset();
    s.boxes.expect(Answer::No);
    s.boxes.expect(Answer::No);
    QVERIFY(!s.remove());
    QCOMPARE(s.tableLines(),
             (QStringList{"RD|A               :Err 3114:エー", "RD|ORA-03114: not connected to ORACLE",
                          "RD|B               :Err 3114:ビー", "RD|ORA-03114: not connected to ORACLE",
                          "RD|C               :Err 3114:シー", "RD|ORA-03114: not connected to ORACLE"}));
    s.state.gDatabase.reset(); // nothing of this session may be pending when the rows are counted
    QCOMPARE(s.rows("A") + s.rows("B") + s.rows("C"), 12);
  }

  void dropAsksFirstAndLeavesNoTrace() {
    Shop s;
    s.boxes.expect(Answer::No);
    s.drop();
    QCOMPARE(s.boxes.shown()[0].text,
             QStringLiteral("テーブルを跡形もなく消し去りますか？\r\n（データ・テーブル定義共に消去され、復活は出来なくなります)"));
    QCOMPARE(s.boxes.shown()[0].buttons, MessageBoxes::Buttons::YesNo);
    QCOMPARE(s.boxes.shown()[0].defaultButton, 2);
    QCOMPARE(s.sink.lines.size(), 1 + 3 + 4);
    QCOMPARE(s.rows("A"), 5);

    s.plan.targets[1].id = QStringLiteral("GONE");
    s.boxes.expect(Answer::Yes);
    s.drop();
    QCOMPARE(s.tableLines(), (QStringList{"CD|A               :      OK:", "RD|GONE            :Err  942:",
                                          "RD|ORA-00942: table or view does not exist", "CD|C               :      OK:"}));
    QCOMPARE(s.sink.lines[1], QStringLiteral("GR|＝＝＝＝＝Drop開始＝＝＝＝＝"));
    QCOMPARE(s.state.gLastSql, QStringLiteral("drop table C"));
    QCOMPARE(s.state.gLastWhere, QStringLiteral("DROP"));
    QCOMPARE(errorOf([&] { s.rows("A"); }), 942);
    QCOMPARE(s.rows("B"), 3);
  }
};

QTEST_GUILESS_MAIN(TestDeleteJob)
#include "test_deletejob.moc"
