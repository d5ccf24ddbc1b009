// How long the data viewer takes to show its first 500 rows and ask about more, on a table of
// 200,000 rows, against the same viewer on a copy of its first 500 rows (which it reads whole
// and asks nothing about): the first rows must come as fast whatever the table's size.
//   bench_dataviewer [rows] [repeats]
#include "BenchInstance.h"
#include "JobBench.h"
#include "MedianTime.h"
#include "common/BDBSWEEP.h"
#include "jobs/StatementRunner.h"
#include "platform/PlatformRegistry.h"
#include "viewers/FDBSWEEP_ED.h"
#include "widgets/FlexGrid.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QLabel>
#include <QTemporaryDir>

#include <cstdio>
#include <cstdlib>

namespace {

// Notes when the first question comes and answers it No.
struct TimedNo final : MessageBoxes {
  QElapsedTimer* clock = nullptr;
  double askedAt = -1;
  Answer show(const Box& box) override {
    if (!box.text.startsWith(QStringLiteral("抽出件数が "))) {
      std::fprintf(stderr, "unexpected message: %s\n", qPrintable(box.text));
      std::exit(1);
    }
    if (askedAt < 0)
      askedAt = double(clock->nsecsElapsed()) / 1e6;
    return Answer::No;
  }
};

// Milliseconds from showing the viewer on sql to its first 500 rows being in the grid with the
// question asked, or to the end of loading when there is no question.
double firstRowsMs(BDBSWEEP& state, const QString& sql) {
  state.gLastSql = sql;
  TimedNo boxes;
  QElapsedTimer clock;
  boxes.clock = &clock;
  OffThreadStatements statements;
  clock.start();
  FDBSWEEP_ED viewer(state, boxes, statements, true);
  viewer.show();
  auto* total = viewer.findChild<QLabel*>(QStringLiteral("lblTotal"));
  while (total->text().isEmpty() && boxes.askedAt < 0)
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  const double ms = boxes.askedAt >= 0 ? boxes.askedAt : double(clock.nsecsElapsed()) / 1e6;
  while (total->text().isEmpty())
    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
  if (viewer.findChild<FlexGrid*>(QStringLiteral("grdED"))->Rows() != 501) {
    std::fprintf(stderr, "the viewer did not show 500 rows\n");
    std::exit(1);
  }
  return ms;
}

} // namespace

int main(int argc, char* argv[]) {
  QApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 200000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 5;

  const BenchInstance instance;
  const QString columns = QStringLiteral(
      "(LOG_NO number(10), KOKYAKU_NO number(8), ACCESS_DT date, URL varchar2(200), IP_ADDR varchar2(15), "
      "SESSION_ID raw(16))");
  auto database = std::make_shared<OraDatabase>(instance.logOn(QStringLiteral("system")));
  database->ExecuteSQL(QStringLiteral("create table DIGITS (D number(1))"));
  for (int d = 0; d < 10; ++d)
    database->ExecuteSQL(QStringLiteral("insert into DIGITS values (%1)").arg(d));
  database->ExecuteSQL(QStringLiteral("create table ACCESS_LOG ") + columns);
  database->ExecuteSQL(
      QStringLiteral("insert into ACCESS_LOG (LOG_NO, KOKYAKU_NO, ACCESS_DT, URL, IP_ADDR) select N, "
                     "decode(mod(N, 3), 0, null, 100000 + mod(N, 360)), to_date('2024/04/01', 'YYYY/MM/DD') + N / "
                     "1440, '/search?q=付箋&page=' || mod(N, 50), '203.0.113.' || mod(N, 250) from (select a.D * "
                     "100000 + b.D * 10000 + c.D * 1000 + e.D * 100 + f.D * 10 + g.D + 1 N from DIGITS a, DIGITS b, "
                     "DIGITS c, DIGITS e, DIGITS f, DIGITS g) where N <= %1")
          .arg(rows));
  database->ExecuteSQL(QStringLiteral("create table ACCESS_500 ") + columns);
  database->ExecuteSQL(QStringLiteral("insert into ACCESS_500 select * from ACCESS_LOG where LOG_NO <= 500"));
  database->ExecuteSQL(QStringLiteral("commit"));

  QTemporaryDir settings;
  QueuedAnswers unexpected;
  PlatformRegistry registry({settings.path() + QStringLiteral("/config"), settings.path() + QStringLiteral("/auto")},
                            {});
  BDBSWEEP state;
  state.gRegistry = std::make_unique<clsREG>(registry, unexpected);
  state.gDatabase = database;
  state.gUser = QStringLiteral("SYSTEM");
  state.gInfoTable = QStringLiteral("ACCESS_LOG");

  std::vector<double> big, small;
  for (int r = 0; r < repeats; ++r) {
    big.push_back(firstRowsMs(state, QStringLiteral("select * from ACCESS_LOG")));
    small.push_back(firstRowsMs(state, QStringLiteral("select * from ACCESS_500")));
  }
  std::printf("first 500 rows on screen, median of %d          time\n", repeats);
  std::printf("%d-row table, question asked            %9.1f ms\n", rows, median(big));
  std::printf("500-row table, nothing to ask               %9.1f ms\n", median(small));
  std::printf("ratio: %.2f×\n", median(big) / median(small));
  return 0;
}
