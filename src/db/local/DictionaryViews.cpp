#include "db/local/DictionaryViews.h"

#include "db/local/SessionSettings.h"
#include "db/local/Sqlite.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFileInfo>

namespace DictionaryViews {

namespace {

QString quoted(const QString& text) { return u'\'' + QString(text).replace(u'\'', QStringLiteral("''")) + u'\''; }

const char* const Privileges =
    "SELECT grantee AS \"GRANTEE\", owner AS \"OWNER\", table_name AS \"TABLE_NAME\", grantor AS \"GRANTOR\", "
    "privilege AS \"PRIVILEGE\", grantable AS \"GRANTABLE\", 'NO' AS \"HIERARCHY\", 'NO' AS \"COMMON\", "
    "CASE WHEN EXISTS (SELECT 1 FROM CAT.objects o WHERE o.owner = p.owner AND o.name = p.table_name AND "
    "o.type = 'VIEW') THEN 'VIEW' ELSE 'TABLE' END AS \"TYPE\", 'NO' AS \"INHERITED\" FROM CAT.tab_privs p";

const char* const Users = "SELECT username AS \"USERNAME\", user_id AS \"USER_ID\", 'OPEN' AS \"ACCOUNT_STATUS\", "
                          "NULL AS \"LOCK_DATE\", NULL AS \"EXPIRY_DATE\", 'USERS' AS \"DEFAULT_TABLESPACE\", "
                          "'TEMP' AS \"TEMPORARY_TABLESPACE\", created AS \"CREATED\", 'DEFAULT' AS \"PROFILE\", "
                          "'PASSWORD' AS \"AUTHENTICATION_TYPE\", 'N' AS \"COMMON\", 'N' AS \"ORACLE_MAINTAINED\" "
                          "FROM CAT.users";

void nlsDateFormat(sqlite3_context* ctx, int, sqlite3_value**) {
  const auto* settings = static_cast<const SessionSettings*>(sqlite3_user_data(ctx));
  const QByteArray model = settings->dateModel().toUtf8();
  sqlite3_result_text(ctx, model.constData(), int(model.size()), SQLITE_TRANSIENT);
}

} // namespace

void install(sqlite3* db, const QString& user, bool dba) {
  const QString me = quoted(user);
  // The instance is named after its folder, the catalogue's.
  const QString file =
      sqliteValue(db, QStringLiteral("SELECT file FROM pragma_database_list WHERE name = 'CAT'")).toString();
  const QString name = QFileInfo(file).dir().dirName().toUpper();
  const qint64 dbid =
      QCryptographicHash::hash(name.toUtf8(), QCryptographicHash::Sha1).left(4).toHex().toLongLong(nullptr, 16);
  const QString banner =
      QStringLiteral("Oracle Database 19c compatible embedded engine Release 19.0.0.0.0 - Production");
  QString sql;
  sql += QStringLiteral("CREATE TEMP VIEW \"USER_TAB_PRIVS\" AS SELECT * FROM (%1) WHERE %2 IN (\"GRANTEE\", "
                        "\"OWNER\", \"GRANTOR\");\n")
             .arg(QLatin1String(Privileges), me);
  // ALL_TAB_PRIVS names the owner TABLE_SCHEMA and shows the grants to PUBLIC as well.
  sql +=
      QStringLiteral("CREATE TEMP VIEW \"ALL_TAB_PRIVS\" AS SELECT \"GRANTOR\", \"GRANTEE\", \"OWNER\" AS "
                     "\"TABLE_SCHEMA\", \"TABLE_NAME\", \"PRIVILEGE\", \"GRANTABLE\", \"HIERARCHY\", \"COMMON\", "
                     "\"TYPE\", \"INHERITED\" FROM (%1) WHERE %3 OR \"GRANTEE\" IN (%2, 'PUBLIC') OR %2 IN (\"OWNER\", "
                     "\"GRANTOR\");\n")
          .arg(QLatin1String(Privileges), me, dba ? QStringLiteral("1") : QStringLiteral("0"));
  sql += QStringLiteral("CREATE TEMP VIEW \"USER_USERS\" AS SELECT \"USERNAME\", \"USER_ID\", \"ACCOUNT_STATUS\", "
                        "\"LOCK_DATE\", \"EXPIRY_DATE\", \"DEFAULT_TABLESPACE\", \"TEMPORARY_TABLESPACE\", \"CREATED\" "
                        "FROM (%1) WHERE \"USERNAME\" = %2;\n")
             .arg(QLatin1String(Users), me);
  if (dba) {
    sql += QStringLiteral("CREATE TEMP VIEW \"DBA_TAB_PRIVS\" AS %1;\n").arg(QLatin1String(Privileges));
    // DBA_USERS tells more than the twin of ALL_USERS the catalogue gives a DBA.
    sql += QStringLiteral("DROP VIEW IF EXISTS temp.\"DBA_USERS\";\nCREATE TEMP VIEW \"DBA_USERS\" AS %1;\n")
               .arg(QLatin1String(Users));
  }
  sql += QStringLiteral("CREATE TEMP VIEW \"V$VERSION\" AS SELECT %1 AS \"BANNER\", %2 AS \"BANNER_FULL\", %1 AS "
                        "\"BANNER_LEGACY\", 0 AS \"CON_ID\";\n")
             .arg(quoted(banner), quoted(banner + QStringLiteral("\nVersion 19.0.0.0.0")));
  sql += QStringLiteral("CREATE TEMP VIEW \"V$DATABASE\" AS SELECT %1 AS \"DBID\", %2 AS \"NAME\", (SELECT created "
                        "FROM CAT.users WHERE username = 'SYSTEM') AS \"CREATED\", 'NOARCHIVELOG' AS \"LOG_MODE\", "
                        "'READ WRITE' AS \"OPEN_MODE\", 'PRIMARY' AS \"DATABASE_ROLE\", %2 AS \"DB_UNIQUE_NAME\", "
                        "'Linux x86 64-bit' AS \"PLATFORM_NAME\", 'NO' AS \"CDB\", 0 AS \"CON_ID\";\n")
             .arg(dbid)
             .arg(quoted(name));
  // The date format is the session's; the engine knows no other language, territory or sort.
  sql += QStringLiteral(
      "CREATE TEMP VIEW \"NLS_SESSION_PARAMETERS\" AS SELECT column1 AS \"PARAMETER\", column2 AS \"VALUE\" FROM "
      "(VALUES ('NLS_LANGUAGE', 'AMERICAN'), ('NLS_TERRITORY', 'AMERICA'), ('NLS_CURRENCY', '$'), "
      "('NLS_ISO_CURRENCY', 'AMERICA'), ('NLS_NUMERIC_CHARACTERS', '.,'), ('NLS_CALENDAR', 'GREGORIAN'), "
      "('NLS_DATE_FORMAT', dbsweep_nls_date_format()), ('NLS_DATE_LANGUAGE', 'AMERICAN'), ('NLS_SORT', 'BINARY'), "
      "('NLS_TIME_FORMAT', 'HH.MI.SSXFF AM'), ('NLS_TIMESTAMP_FORMAT', 'DD-MON-RR HH.MI.SSXFF AM'), "
      "('NLS_TIME_TZ_FORMAT', 'HH.MI.SSXFF AM TZR'), ('NLS_TIMESTAMP_TZ_FORMAT', 'DD-MON-RR HH.MI.SSXFF AM TZR'), "
      "('NLS_DUAL_CURRENCY', '$'), ('NLS_COMP', 'BINARY'), ('NLS_LENGTH_SEMANTICS', 'BYTE'), "
      "('NLS_NCHAR_CONV_EXCP', 'FALSE'));\n");
  sqliteExec(db, sql);
}

void registerFunctions(sqlite3* db, const SessionSettings* settings) {
  sqlite3_create_function_v2(db, "dbsweep_nls_date_format", 0, SQLITE_UTF8, const_cast<SessionSettings*>(settings),
                             nlsDateFormat, nullptr, nullptr, nullptr);
}

} // namespace DictionaryViews
