#include "db/local/Privileges.h"

#include "db/local/Sqlite.h"

namespace Privileges {

namespace {

const QStringList& connectRole() {
  static const QStringList privileges{QStringLiteral("CREATE SESSION")};
  return privileges;
}

const QStringList& resourceRole() {
  static const QStringList privileges{QStringLiteral("CREATE TABLE"),     QStringLiteral("CREATE SEQUENCE"),
                                      QStringLiteral("CREATE PROCEDURE"), QStringLiteral("CREATE TRIGGER"),
                                      QStringLiteral("CREATE TYPE"),      QStringLiteral("CREATE CLUSTER"),
                                      QStringLiteral("CREATE INDEXTYPE"), QStringLiteral("CREATE OPERATOR")};
  return privileges;
}

// The system privileges a grant may name. Those whose statements the engine does not run are
// still granted and listed, as Oracle would, and have no effect here.
const QStringList& systemPrivileges() {
  static const QStringList privileges = [] {
    QStringList all{QStringLiteral("CREATE SESSION"),
                    QStringLiteral("ALTER SESSION"),
                    QStringLiteral("CREATE VIEW"),
                    QStringLiteral("CREATE SYNONYM"),
                    QStringLiteral("CREATE PUBLIC SYNONYM"),
                    QStringLiteral("DROP PUBLIC SYNONYM"),
                    QStringLiteral("CREATE ANY SYNONYM"),
                    QStringLiteral("DROP ANY SYNONYM"),
                    QStringLiteral("CREATE ANY TABLE"),
                    QStringLiteral("ALTER ANY TABLE"),
                    QStringLiteral("DROP ANY TABLE"),
                    QStringLiteral("LOCK ANY TABLE"),
                    QStringLiteral("COMMENT ANY TABLE"),
                    QStringLiteral("SELECT ANY TABLE"),
                    QStringLiteral("INSERT ANY TABLE"),
                    QStringLiteral("UPDATE ANY TABLE"),
                    QStringLiteral("DELETE ANY TABLE"),
                    QStringLiteral("CREATE ANY VIEW"),
                    QStringLiteral("DROP ANY VIEW"),
                    QStringLiteral("CREATE ANY INDEX"),
                    QStringLiteral("ALTER ANY INDEX"),
                    QStringLiteral("DROP ANY INDEX"),
                    QStringLiteral("CREATE ANY SEQUENCE"),
                    QStringLiteral("ALTER ANY SEQUENCE"),
                    QStringLiteral("DROP ANY SEQUENCE"),
                    QStringLiteral("SELECT ANY SEQUENCE"),
                    QStringLiteral("CREATE USER"),
                    QStringLiteral("ALTER USER"),
                    QStringLiteral("DROP USER"),
                    QStringLiteral("ALTER SYSTEM"),
                    QStringLiteral("GRANT ANY PRIVILEGE"),
                    QStringLiteral("GRANT ANY ROLE"),
                    QStringLiteral("GRANT ANY OBJECT PRIVILEGE"),
                    QStringLiteral("SELECT ANY DICTIONARY"),
                    QStringLiteral("UNLIMITED TABLESPACE")};
    return all + resourceRole();
  }();
  return privileges;
}

QString quoted(const QString& text) { return u'\'' + QString(text).replace(u'\'', QStringLiteral("''")) + u'\''; }

// The privileges of the roles, as rows (role, privilege) of a table of the session: written
// out in every view that reads them, they would make each statement's parse cost more.
QString roleTable() {
  QStringList rows;
  for (const QString& p : connectRole())
    rows << QStringLiteral("('CONNECT', %1)").arg(quoted(p));
  for (const QString& p : resourceRole())
    rows << QStringLiteral("('RESOURCE', %1)").arg(quoted(p));
  for (const QString& p : systemPrivileges())
    rows << QStringLiteral("('DBA', %1)").arg(quoted(p));
  return QStringLiteral("CREATE TEMP TABLE dbsweep_role_privileges(role TEXT, privilege TEXT);\n"
                        "INSERT INTO temp.dbsweep_role_privileges VALUES %1;\n")
      .arg(rows.join(u", "));
}

const char* const RolePrivileges = "SELECT role, privilege FROM temp.dbsweep_role_privileges";

// The roles granted, DBA being the catalogue's flag of a user.
const char* const RoleGrants = "SELECT grantee, granted_role, admin_option FROM CAT.role_privs UNION ALL "
                               "SELECT username, 'DBA', 'NO' FROM CAT.users WHERE is_dba = 1";

} // namespace

bool isSystemPrivilege(const QString& name) { return systemPrivileges().contains(name); }

bool isRole(const QString& name) { return name == u"CONNECT" || name == u"RESOURCE" || name == u"DBA"; }

bool holdsSystem(sqlite3* db, const QString& user, bool dba, const QString& privilege) {
  if (dba)
    return true;
  if (sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.sys_privs WHERE grantee IN (?1, 'PUBLIC') AND privilege = ?2"),
                  {user, privilege})
          .isValid())
    return true;
  const QVariant role = sqliteValue(
      db, QStringLiteral("SELECT group_concat(granted_role) FROM CAT.role_privs WHERE grantee IN (?1, 'PUBLIC')"),
      {user});
  const QStringList roles = role.toString().split(u',');
  return (roles.contains(u"CONNECT") && connectRole().contains(privilege)) ||
         (roles.contains(u"RESOURCE") && resourceRole().contains(privilege));
}

void installViews(sqlite3* db, const QString& user, bool dba) {
  const QString me = quoted(user);
  const QString held =
      QStringLiteral("SELECT privilege FROM CAT.sys_privs WHERE grantee IN (%1, 'PUBLIC') UNION SELECT r.privilege "
                     "FROM (%2) r JOIN (%3) g ON g.granted_role = r.role WHERE g.grantee IN (%1, 'PUBLIC')")
          .arg(me, QLatin1String(RolePrivileges), QLatin1String(RoleGrants));
  QString sql =
      roleTable() +
      QStringLiteral("CREATE TEMP VIEW \"USER_SYS_PRIVS\" AS SELECT grantee AS \"USERNAME\", privilege AS "
                     "\"PRIVILEGE\", admin_option AS \"ADMIN_OPTION\", 'NO' AS \"COMMON\", 'NO' AS \"INHERITED\" "
                     "FROM CAT.sys_privs WHERE grantee IN (%1, 'PUBLIC');\n"
                     "CREATE TEMP VIEW \"USER_ROLE_PRIVS\" AS SELECT grantee AS \"USERNAME\", granted_role AS "
                     "\"GRANTED_ROLE\", admin_option AS \"ADMIN_OPTION\", 'NO' AS \"DELEGATE_OPTION\", 'YES' AS "
                     "\"DEFAULT_ROLE\", 'NO' AS \"COMMON\", 'NO' AS \"INHERITED\" FROM (%2) WHERE grantee IN (%1, "
                     "'PUBLIC');\n"
                     "CREATE TEMP VIEW \"SESSION_PRIVS\" AS SELECT privilege AS \"PRIVILEGE\" FROM (%3);\n")
          .arg(me, QLatin1String(RoleGrants), held);
  if (dba)
    sql += QStringLiteral("CREATE TEMP VIEW \"DBA_SYS_PRIVS\" AS SELECT grantee AS \"GRANTEE\", privilege AS "
                          "\"PRIVILEGE\", admin_option AS \"ADMIN_OPTION\", 'NO' AS \"COMMON\", 'NO' AS "
                          "\"INHERITED\" FROM CAT.sys_privs UNION ALL SELECT role, privilege, 'NO', 'NO', 'NO' FROM "
                          "(%1) WHERE role <> 'DBA';\n"
                          "CREATE TEMP VIEW \"DBA_ROLE_PRIVS\" AS SELECT grantee AS \"GRANTEE\", granted_role AS "
                          "\"GRANTED_ROLE\", admin_option AS \"ADMIN_OPTION\", 'NO' AS \"DELEGATE_OPTION\", 'YES' AS "
                          "\"DEFAULT_ROLE\", 'NO' AS \"COMMON\", 'NO' AS \"INHERITED\" FROM (%2);\n")
               .arg(QLatin1String(RolePrivileges), QLatin1String(RoleGrants));
  sqliteExec(db, sql);
}

} // namespace Privileges
