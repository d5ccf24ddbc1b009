// The delete job on the embedded engine as the main window runs it (statements off the calling
// thread, a turn of the event loop and a new caption before every row): 100,000 rows deleted
// one by one through an updatable result set, against the same rows deleted with one statement.
//   bench_deletejob [rows] [repeats]
#include "BenchInstance.h"
#include "JobBench.h"
#include "MedianTime.h"
#include "common/BDBSWEEP.h"
#include "db/OraSession.h"
#include "jobs/DeleteJob.h"
#include "jobs/JobPlan.h"
#include "jobs/JobProgress.h"
#include "jobs/JobReport.h"
#include "jobs/StatementRunner.h"
#include "platform/SystemClock.h"

#include <QCoreApplication>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

// The progress window's share of the work: the caption text made and kept, the event loop
// turned, as the window does it.
struct LoopProgress final : JobProgress {
  QString caption;
  void setCaption(const QString& text) override { caption = text; }
  void yield() override { QCoreApplication::processEvents(); }
};


} // namespace

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 100000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 3;

  const BenchInstance instance;
  // The deletes wait in the session's transaction, as in the program, and are committed after.
  const auto session = std::make_shared<OraSession>(DbEnvironment{});
  const std::shared_ptr<OraDatabase> database =
      session->OpenDatabase(QStringLiteral("local:") + instance.folder, QStringLiteral("system/pw"), 0);
  database->ExecuteSQL(QStringLiteral("create table SOURCE (ID number(10), SHOP varchar2(8), QTY number)"));
  database->ExecuteSQL(QStringLiteral("create table T (ID number(10), SHOP varchar2(8), QTY number)"));
  database->connection().begin();
  for (int r = 0; r < rows; ++r)
    database->ExecuteSQL(QStringLiteral("insert into SOURCE values (%1, 'S%2', %3)").arg(r).arg(r % 97).arg(r % 13));
  database->connection().commit();

  BDBSWEEP state;
  state.gSession = session;
  state.gDatabase = database;
  SystemClock clock;
  TextSink sink;
  OffThreadStatements statements;
  QueuedAnswers boxes;
  LoopProgress progress;
  JobContext context{state, sink, statements, clock, boxes};
  JobPlan plan;
  plan.targets = {{QStringLiteral("T"), QStringLiteral("テスト"), 1}};

  const auto run = [&](bool oneByOne) {
    database->ExecuteSQL(QStringLiteral("insert into T select * from SOURCE"));
    state.gJobTimer = std::make_unique<clsTimer>(clock);
    boxes.queue.enqueue(MessageBoxes::Answer::No);
    boxes.queue.enqueue(oneByOne ? MessageBoxes::Answer::Yes : MessageBoxes::Answer::No);
    const double ms = msOf([&] { RunDeleteJob(plan, context, progress, true); });
    session->CommitTrans();
    const qint64 left = database->CreateDynaset(QStringLiteral("select ID from T"), OraDynaset::NoCache)->RecordCount();
    if (left != 0) {
      std::fprintf(stderr, "%lld rows were not deleted\n", left);
      std::exit(1);
    }
    return ms;
  };
  std::vector<double> oneByOne, fast;
  for (int r = 0; r < repeats; ++r) {
    oneByOne.push_back(run(true));
    fast.push_back(run(false));
  }
  const double slow = median(oneByOne);
  const double quick = median(fast);
  std::printf("%d rows, median of %d runs        time        rows/s\n", rows, repeats);
  std::printf("row by row (a turn per row)   %9.1f ms  %10.0f\n", slow, rows / slow * 1000);
  std::printf("one DELETE                    %9.1f ms  %10.0f\n", quick, rows / quick * 1000);
  std::printf("row by row / one DELETE       %.2f×\n", slow / quick);
  return 0;
}
