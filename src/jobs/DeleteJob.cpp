#include "jobs/DeleteJob.h"

#include "common/BDBSWEEP.h"
#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "db/OraSession.h"
#include "filter/RowFilter.h"
#include "jobs/JobPlan.h"
#include "jobs/JobProgress.h"
#include "jobs/JobReport.h"
#include "jobs/ResultLineText.h"
#include "jobs/ResultSink.h"
#include "jobs/StatementRunner.h"
#include "services/MessageBoxes.h"

#include <memory>
#include <optional>

using namespace ResultLineText;
using Answer = MessageBoxes::Answer;

namespace {

const QString Title = QStringLiteral("DBSWEEP");

enum class Mode { Truncate, RowByRow, Fast, Cancel };

OraDatabase& databaseOf(const std::shared_ptr<OraDatabase>& database) {
  if (!database)
    throw NotConnected();
  return *database;
}

// The shared start of both jobs: the stop flag down, a transaction begun, the start banner.
// Without a transaction, the reason: there is no session (a logon was given up after the old
// session was released, so the database left behind would commit each delete at once), or it
// would not begin one.
std::optional<OraError> begin(JobContext& context, JobReport& report, const QString& banner) {
  context.state.gCancelRequested = false;
  std::optional<OraError> noTransaction = NotConnected();
  if (const std::shared_ptr<OraSession> session = context.state.gSession) {
    try {
      context.statements.run([&session] { session->BeginTrans(); });
      noTransaction.reset();
    } catch (const OraError& e) {
      noTransaction = e;
    }
  }
  report.open(banner);
  return noTransaction;
}

bool cancelled(JobContext& context, JobProgress& progress) {
  progress.yield();
  return context.state.gCancelRequested;
}

QString deletingCaption(const JobTarget& target, const QString& where) {
  return QStringLiteral("削除中[") + target.name + u':' + target.id + QStringLiteral("](") + where + u')';
}

Mode chooseMode(const JobPlan& plan, JobContext& context, bool offerTruncate) {
  bool everything = plan.addWhere.isEmpty();
  for (const JobFilterRow& row : plan.filterRows)
    everything = everything && row.mode == RowFilter::All;
  if (offerTruncate && everything) {
    const Answer fast = context.boxes.show(
        QStringLiteral("全件削除を高速に行いますか？\r\n（但し、削除後のﾛｰﾙﾊﾞｯｸは出来なくなります)"), Title,
        MessageBoxes::Buttons::YesNoCancel, MessageBoxes::Icon::Question, 3);
    if (fast == Answer::Yes)
      return Mode::Truncate;
    if (fast != Answer::No)
      return Mode::Cancel;
  }
  const Answer oneByOne =
      context.boxes.show(QStringLiteral("一件ずつ削除しますか？\r\n（時間は掛かりますが、削除件数が表示されます）"), Title,
                         MessageBoxes::Buttons::YesNoCancel, MessageBoxes::Icon::Question, 3);
  if (oneByOne == Answer::Yes)
    return Mode::RowByRow;
  return oneByOne == Answer::No ? Mode::Fast : Mode::Cancel;
}

// Runs one statement without rows for a table and writes its line: OK, or the failure.
void execute(JobContext& context, JobReport& report, const QString& sql, const QString& id, const QString& name) {
  try {
    context.statements.run([&sql, database = context.state.gDatabase] { databaseOf(database).ExecuteSQL(sql); });
    report.add(OkLine(id, name), Success);
  } catch (const OraError& e) {
    report.failure(id, e, name);
  }
}

// Truncates or drops every target (head + its ID), until the last or until the user stops. The
// lines leave the display name out: what went is the table, not rows under a name.
void wholeTables(const JobPlan& plan, const QString& head, const QString& lastWhere, JobContext& context,
                 JobReport& report, JobProgress& progress) {
  for (const JobTarget& target : plan.targets) {
    const QString sql = head + target.id;
    if (cancelled(context, progress))
      return;
    context.state.gLastSql = sql;
    context.state.gLastWhere = lastWhere;
    execute(context, report, sql, target.id, QString());
    context.results.repaint();
  }
}

// Deletes the rows of one table one at a time, giving the user a turn before each. False when
// the job must not go on: the user stopped it, or a row could not be deleted. Such a row stops
// the whole job: the user is told, and the rows deleted so far stay pending for the user to roll
// back or commit.
bool deleteRows(const JobTarget& target, const QString& sql, JobContext& context, JobReport& report,
                JobProgress& progress) {
  std::unique_ptr<OraDynaset> rows;
  qint64 n = 0;
  try {
    context.statements.run([&rows, &n, &sql, database = context.state.gDatabase] {
      rows = databaseOf(database).CreateDynaset(sql, OraDynaset::Updatable);
      n = rows->RecordCount();
    });
  } catch (const OraError& e) {
    report.failure(target.id, e, target.name);
    return true;
  }
  // Released where it was used.
  const auto release = [&context, &rows] { context.statements.run([&rows] { rows.reset(); }); };
  qint64 deleted = 0;
  for (qint64 r = 1; r <= n; ++r) {
    if (cancelled(context, progress))
      break;
    progress.setCaption(deletingCaption(target, QString::number(r) + u'/' + QString::number(n)));
    try {
      context.statements.run([&rows] {
        rows->Delete();
        rows->MoveNext();
      });
    } catch (const OraError& e) {
      release();
      context.boxes.show(e.message() + QStringLiteral("\r\n処理を中止します"), Title, MessageBoxes::Buttons::Ok,
                         MessageBoxes::Icon::Critical);
      report.failure(target.id, e, target.name);
      return false;
    }
    deleted = r;
  }
  release();
  report.add(CountLine(target.id, deleted, target.name), Success);
  return !context.state.gCancelRequested;
}

// The filtered deletes, one table after the other, until the last or until one says stop.
void deleteFiltered(const JobPlan& plan, bool oneByOne, JobContext& context, JobReport& report,
                    JobProgress& progress) {
  const QString where = plan.where();
  for (const JobTarget& target : plan.targets) {
    QString sql;
    if (oneByOne) {
      sql = plan.selectSql(target);
      if (!deleteRows(target, sql, context, report, progress))
        return;
    } else {
      sql = plan.fastDeleteSql(target);
      if (cancelled(context, progress))
        return;
      progress.setCaption(deletingCaption(target, u'№' + QString::number(target.position)));
      execute(context, report, sql, target.id, target.name);
    }
    context.state.gLastSql = sql;
    context.state.gLastWhere = where;
    context.results.repaint();
  }
}

} // namespace

bool RunDeleteJob(const JobPlan& plan, JobContext& context, JobProgress& progress, bool offerTruncate) {
  JobReport report(context);
  const std::optional<OraError> noTransaction = begin(context, report, DeleteStartBanner);
  bool pending = false;
  const Mode mode = chooseMode(plan, context, offerTruncate);
  if (mode == Mode::Truncate) {
    wholeTables(plan, QStringLiteral("truncate table "), QStringLiteral("TRUNCATE"), context, report, progress);
  } else if (mode != Mode::Cancel && noTransaction) {
    // Rows deleted outside a transaction could not be rolled back: none are touched.
    for (const JobTarget& target : plan.targets)
      report.failure(target.id, *noTransaction, target.name);
  } else if (mode != Mode::Cancel) {
    deleteFiltered(plan, mode == Mode::RowByRow, context, report, progress);
    pending = true;
  }
  report.close(EndTime, DeleteEndBanner);
  return pending;
}

void RunDropJob(const JobPlan& plan, JobContext& context, JobProgress& progress) {
  JobReport report(context);
  begin(context, report, DropStartBanner); // a drop commits by itself, transaction or not
  const Answer answer = context.boxes.show(
      QStringLiteral("テーブルを跡形もなく消し去りますか？\r\n（データ・テーブル定義共に消去され、復活は出来なくなります)"),
      Title, MessageBoxes::Buttons::YesNo, MessageBoxes::Icon::Question, 2);
  if (answer == Answer::Yes)
    wholeTables(plan, QStringLiteral("drop table "), QStringLiteral("DROP"), context, report, progress);
  report.close(EndTime, DropEndBanner);
}
