#include "jobs/CountJob.h"

#include "common/BDBSWEEP.h"
#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "jobs/JobPlan.h"
#include "jobs/JobReport.h"
#include "jobs/ResultLineText.h"
#include "jobs/ResultSink.h"
#include "jobs/StatementRunner.h"
#include "services/MessageBoxes.h"

using namespace ResultLineText;

namespace {

// The rows of a no-cache result set, which a backend counts without bringing them over.
qint64 CountRows(const std::shared_ptr<OraDatabase>& database, const QString& sql) {
  if (!database)
    throw NotConnected();
  return database->CreateDynaset(sql, OraDynaset::NoCache)->RecordCount();
}

} // namespace

void RunCountJob(const JobPlan& plan, JobContext& context) {
  if (plan.countColumn.isEmpty()) {
    context.boxes.show(QStringLiteral("件数を数える項目がありません。\r\nキー項目を選んでから実行してください。"),
                       QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Exclamation);
    return;
  }
  JobReport report(context);
  report.open(CountStartBanner);
  const QString where = plan.where();
  for (const JobTarget& target : plan.targets) {
    const QString sql = plan.countSql(target);
    context.state.gLastSql = sql;
    context.state.gLastWhere = where;
    try {
      qint64 count = 0;
      // The database handle travels with the call: a logon in between cannot pull it away.
      context.statements.run([&count, &sql, database = context.state.gDatabase] { count = CountRows(database, sql); });
      report.add(CountLine(target.id, count, target.name), CountSuccess);
    } catch (const OraError& e) {
      report.failure(target.id, e, target.name);
    }
    context.results.repaint();
  }
  report.close(CountEndTime, CountEndBanner);
}
