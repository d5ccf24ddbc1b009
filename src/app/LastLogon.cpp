#include "app/LastLogon.h"

#include "app/PasswordScramble.h"
#include "settings/RegSetting.h"

namespace {

const QString KeyUser = QStringLiteral("ORA_USER");
const QString KeyPassword = QStringLiteral("ORA_PASS");
const QString KeyHost = QStringLiteral("ORA_HOST");

} // namespace

Logon ReadLastLogon(clsREG& registry) {
  // The demo instance's owner, QUIL / QTJL.
  return {ReadJvkSetting(registry, KeyUser, QStringLiteral("QUIL")),
          UnscramblePassword(ReadJvkSetting(registry, KeyPassword, QStringLiteral("RVMP"))),
          ReadJvkSetting(registry, KeyHost, QStringLiteral("local:demo"))};
}

void WriteLastLogon(clsREG& registry, const Logon& logon) {
  WriteJvkSetting(registry, KeyUser, logon.user);
  WriteJvkSetting(registry, KeyPassword, ScramblePassword(logon.password));
  WriteJvkSetting(registry, KeyHost, logon.host);
}
