#include "db/local/SessionContext.h"

#include "db/local/FunctionCall.h"
#include "db/local/LocalConnection.h"
#include "platform/SystemInfo.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QSysInfo>

namespace {

using FunctionCall::Call;

OraError invalidParameter() { return OraError(2003, QStringLiteral("invalid USERENV parameter")); }

// A USERENV parameter's value, or nullopt for one Oracle has but leaves empty here.
std::optional<QString> userenv(const LocalConnection& c, const QString& parameter) {
  const QString instance = QFileInfo(c.folder()).fileName().toUpper();
  if (parameter == u"SESSION_USER" || parameter == u"CURRENT_USER" || parameter == u"CURRENT_SCHEMA" ||
      parameter == u"AUTHENTICATED_IDENTITY" || parameter == u"PROXY_USER")
    return parameter == u"PROXY_USER" ? std::nullopt : std::optional(c.user());
  if (parameter == u"DB_NAME" || parameter == u"INSTANCE_NAME" || parameter == u"DB_UNIQUE_NAME" ||
      parameter == u"SERVICE_NAME" || parameter == u"CON_NAME")
    return instance;
  if (parameter == u"HOST" || parameter == u"SERVER_HOST" || parameter == u"TERMINAL")
    return QSysInfo::machineHostName();
  if (parameter == u"OS_USER")
    return processOwnerLogonName();
  if (parameter == u"SID" || parameter == u"SESSIONID")
    return QString::number(c.sid());
  if (parameter == u"INSTANCE")
    return QStringLiteral("1");
  if (parameter == u"MODULE") {
    const QString app = QCoreApplication::applicationFilePath();
    return app.isEmpty() ? QStringLiteral("dbsweep") : QFileInfo(app).fileName();
  }
  if (parameter == u"ISDBA")
    return c.isDba() ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
  if (parameter == u"LANGUAGE")
    return QStringLiteral("AMERICAN_AMERICA.AL32UTF8");
  if (parameter == u"LANG")
    return QStringLiteral("US");
  if (parameter == u"NLS_TERRITORY")
    return QStringLiteral("AMERICA");
  if (parameter == u"NLS_CALENDAR")
    return QStringLiteral("GREGORIAN");
  if (parameter == u"NLS_SORT")
    return QStringLiteral("BINARY");
  if (parameter == u"NLS_DATE_FORMAT")
    return c.settings().dateModel();
  if (parameter == u"AUTHENTICATION_METHOD")
    return QStringLiteral("PASSWORD");
  if (parameter == u"ACTION" || parameter == u"CLIENT_INFO" || parameter == u"CLIENT_IDENTIFIER" ||
      parameter == u"IP_ADDRESS")
    return std::nullopt;
  throw invalidParameter();
}

const LocalConnection& connectionOf(sqlite3_context* ctx) {
  return *static_cast<const LocalConnection*>(sqlite3_user_data(ctx));
}

void set(Call& c, const std::optional<QString>& v) {
  if (v)
    c.set(*v);
  else
    c.setNull();
}

// Namespaces other than USERENV are the application's own contexts, none of which is set here.
void sysContext(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  try {
    Call c(ctx, argc, argv);
    if (c.anyNull())
      return c.setNull();
    if (c.text(0).toUpper() != u"USERENV")
      return c.setNull();
    set(c, userenv(connectionOf(ctx), c.text(1).trimmed().toUpper()));
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

// The older USERENV(parameter) knows fewer parameters, SESSIONID and SID among them.
void userenvFunction(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  try {
    Call c(ctx, argc, argv);
    if (c.isNull(0))
      throw invalidParameter();
    const QString parameter = c.text(0).trimmed().toUpper();
    static const QStringList known = {QStringLiteral("SESSIONID"), QStringLiteral("SID"),
                                      QStringLiteral("TERMINAL"),  QStringLiteral("LANGUAGE"),
                                      QStringLiteral("LANG"),      QStringLiteral("ISDBA"),
                                      QStringLiteral("INSTANCE"),  QStringLiteral("CLIENT_INFO")};
    if (!known.contains(parameter))
      throw invalidParameter();
    const auto v = userenv(connectionOf(ctx), parameter);
    // Through SQLite directly: the user data here is the connection, not the session's settings.
    if (v && (parameter == u"SESSIONID" || parameter == u"SID" || parameter == u"INSTANCE"))
      return sqlite3_result_int64(ctx, v->toLongLong());
    set(c, v);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

} // namespace

namespace SessionContext {

void registerAll(sqlite3* db, const LocalConnection* connection) {
  auto* data = const_cast<LocalConnection*>(connection);
  sqlite3_create_function_v2(db, "SYS_CONTEXT", 2, SQLITE_UTF8, data, sysContext, nullptr, nullptr, nullptr);
  sqlite3_create_function_v2(db, "USERENV", 1, SQLITE_UTF8, data, userenvFunction, nullptr, nullptr, nullptr);
}

} // namespace SessionContext
