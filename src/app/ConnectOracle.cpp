#include "app/ConnectOracle.h"

#include "common/BDBSWEEP.h"
#include "common/JVK_Cmn.h"
#include "db/OraError.h"
#include "db/OraSession.h"
#include "services/MessageBoxes.h"

#include <QDebug>

bool OpenOraDatabase(BDBSWEEP& state, const DbEnvironment& env) {
  try {
    state.gSession = std::make_shared<OraSession>(env);
    state.gDatabase = state.gSession->OpenDatabase(state.gHost, state.gUser + u'/' + state.gPassword, 0);
    return true;
  } catch (const OraError& e) {
    // The message box says only that the logon failed; why (no client library, a wrong
    // password, an unknown service) goes to the standard error for whoever looks after it.
    qWarning().noquote() << "dbsweep:" << e.message();
    return false;
  }
}

bool ConnectOracle(BDBSWEEP& state, MessageBoxes& boxes, const DbEnvironment& env, const LogonHooks& hooks) {
  state.gLogonCaption = QStringLiteral("User:") + state.gUser + QStringLiteral("\r\nHost:") + state.gHost;
  if (hooks.showCaption)
    hooks.showCaption();
  if (hooks.beforeOpen)
    hooks.beforeOpen();
  if (OpenOraDatabase(state, env)) {
    state.gWindowsUser = GetWindowsUserName();
    return true;
  }
  boxes.show(QStringLiteral("オラクルセッションが確立できません。"), QStringLiteral("エラー"),
             MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Critical);
  return false;
}
