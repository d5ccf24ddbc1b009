#include "jobs/PendingTransaction.h"

#include "db/OraSession.h"
#include "services/MessageBoxes.h"

bool SettlePendingTransaction(MessageBoxes& boxes, OraSession& session) {
  const auto answer =
      boxes.show(QStringLiteral("ﾄﾗﾝｻﾞｸｼｮﾝが完了していません\r\nロールバックしますか？\r\nはい：ﾛｰﾙﾊﾞｯｸ､いいえ：ｺﾐｯﾄ"),
                 QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::YesNoCancel, MessageBoxes::Icon::Exclamation);
  if (answer == MessageBoxes::Answer::Yes)
    session.Rollback();
  else if (answer == MessageBoxes::Answer::No)
    session.CommitTrans();
  return answer != MessageBoxes::Answer::Cancel;
}
