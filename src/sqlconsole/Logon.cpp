#include "sqlconsole/Logon.h"

Logon Logon::parse(const QString& text) {
  Logon logon;
  // The host may itself hold '/' (local:/folder), and user names never hold '/' or '@'.
  const qsizetype at = text.lastIndexOf(u'@');
  if (at == text.size() - 1) {
    logon.error = QStringLiteral("missing @HOST in %1").arg(text.left(text.indexOf(u'/')));
    return logon;
  }
  if (at >= 0)
    logon.host = text.mid(at + 1);
  const QString credentials = at < 0 ? text : text.left(at);
  const qsizetype slash = credentials.indexOf(u'/');
  logon.user = credentials.left(slash);
  if (slash >= 0)
    logon.password = credentials.mid(slash + 1);
  if (logon.user.isEmpty())
    logon.error = QStringLiteral("missing the user name in USER/PASSWORD@HOST");
  return logon;
}
