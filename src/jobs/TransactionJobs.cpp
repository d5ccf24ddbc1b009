#include "jobs/TransactionJobs.h"

#include "common/BDBSWEEP.h"
#include "db/OraError.h"
#include "db/OraSession.h"
#include "jobs/JobReport.h"
#include "jobs/ResultLineText.h"
#include "jobs/ResultSink.h"
#include "jobs/StatementRunner.h"
#include "services/MessageBoxes.h"
#include "services/OraErrorBox.h"

#include <functional>

using namespace ResultLineText;

namespace {

bool endTransaction(JobContext& context, const QString& question, const std::function<void(OraSession&)>& end,
                    const QString& done, const QString& code) {
  if (context.boxes.show(question, QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::OkCancel,
                         MessageBoxes::Icon::Question) != MessageBoxes::Answer::Ok)
    return false;
  try {
    context.statements.run([&end, session = context.state.gSession] {
      if (!session)
        throw NotConnected();
      end(*session);
    });
  } catch (const OraError& e) {
    // The deletes stay where they were as far as the user can tell: the buttons stay on, so a
    // second try (or the question on leaving) remains possible.
    ShowOraError(context.boxes, e);
    return false;
  }
  context.results.clear();
  context.results.addItem(done, code);
  return true;
}

} // namespace

bool RunRollback(JobContext& context) {
  return endTransaction(context, QStringLiteral("ロールバックしますか"), &OraSession::Rollback, RollbackDone,
                        RolledBack);
}

bool RunCommit(JobContext& context) {
  return endTransaction(context, QStringLiteral("コミットしますか"), &OraSession::CommitTrans, CommitDone, Committed);
}
