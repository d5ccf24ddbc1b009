// GRANT and REVOKE of object privileges, system privileges and roles.
#include "db/local/DdlRunner.h"
#include "db/local/LocalConnection.h"
#include "db/local/Privileges.h"

#include <algorithm>

namespace {

const QString InsufficientPrivileges = QStringLiteral("insufficient privileges");

// The object privileges of Oracle; those the engine has no use for are refused, not ignored.
bool isObjectPrivilege(const QString& name) {
  static const QStringList names = {QStringLiteral("ALTER"),
                                    QStringLiteral("DEBUG"),
                                    QStringLiteral("DELETE"),
                                    QStringLiteral("EXECUTE"),
                                    QStringLiteral("FLASHBACK"),
                                    QStringLiteral("INDEX"),
                                    QStringLiteral("INHERIT PRIVILEGES"),
                                    QStringLiteral("INSERT"),
                                    QStringLiteral("KEEP SEQUENCE"),
                                    QStringLiteral("ON COMMIT REFRESH"),
                                    QStringLiteral("QUERY REWRITE"),
                                    QStringLiteral("READ"),
                                    QStringLiteral("REFERENCES"),
                                    QStringLiteral("SELECT"),
                                    QStringLiteral("UNDER"),
                                    QStringLiteral("UPDATE"),
                                    QStringLiteral("WRITE"),
                                    QStringLiteral("USE")};
  return names.contains(name);
}

// The privileges on owner.object that grantee holds WITH GRANT OPTION.
QStringList grantablePrivileges(sqlite3* db, const QString& grantee, const QString& owner, const QString& object) {
  SqliteStmt s(db, QStringLiteral("SELECT DISTINCT privilege FROM CAT.tab_privs WHERE grantee = ?1 AND owner = ?2 AND "
                                  "table_name = ?3 AND grantable = 'YES'"));
  s.bindAll({grantee, owner, object});
  QStringList held;
  while (s.step())
    held << s.text(0);
  return held;
}

// Taking a privilege from a grantee takes with it the grants it made of it by the grant option,
// and theirs in turn, unless it still holds the privilege with the option from another grantor.
void revokeDependentGrants(sqlite3* db, const QString& owner, const QString& object, const QString& privilege,
                           const QString& grantee) {
  if (grantablePrivileges(db, grantee, owner, object).contains(privilege))
    return;
  SqliteStmt s(db, QStringLiteral("SELECT grantee FROM CAT.tab_privs WHERE grantor = ?1 AND owner = ?2 AND "
                                  "table_name = ?3 AND privilege = ?4"));
  s.bindAll({grantee, owner, object, privilege});
  QStringList dependants;
  while (s.step())
    dependants << s.text(0);
  sqliteExec(db,
             QStringLiteral("DELETE FROM CAT.tab_privs WHERE grantor = ?1 AND owner = ?2 AND table_name = ?3 AND "
                            "privilege = ?4"),
             {grantee, owner, object, privilege});
  for (const QString& d : std::as_const(dependants))
    revokeDependentGrants(db, owner, object, privilege, d);
}

} // namespace

void DdlRunner::grant(bool revoke) {
  const char16_t* const to = revoke ? u"FROM" : u"TO";
  QStringList privileges;
  do {
    QStringList words;
    while (m_t.peek().isName() && !m_t.peek().is(u"ON") && !m_t.peek().is(to))
      words << m_t.next().upper();
    // Column privileges, UPDATE (column, ...), are not kept.
    if (m_t.peek().is(u"("))
      throw OraError(3001, QStringLiteral("unimplemented feature"));
    if (words.isEmpty())
      throw OraError(990, QStringLiteral("missing or invalid privilege"));
    privileges << words.join(u' ');
  } while (m_t.accept(u","));
  QString objectOwner, object;
  const bool onObject = m_t.accept(u"ON");
  if (onObject)
    std::tie(objectOwner, object) = m_t.qualifiedName();
  m_t.expect(to, 905);
  QStringList grantees;
  do
    grantees << m_t.name(987);
  while (m_t.accept(u","));
  bool option = false;
  if (!revoke && m_t.accept(u"WITH")) {
    option = true;
    if (onObject && !m_t.accept(u"GRANT"))
      TokenCursor::fail(993);
    if (!onObject && !m_t.accept(u"ADMIN"))
      throw OraError(1939, QStringLiteral("only the ADMIN OPTION can be specified"));
    m_t.expect(u"OPTION", 994);
  }
  skipClauses();
  if (onObject)
    return grantObject(revoke, privileges, ownerOr(objectOwner), object, grantees, option);
  grantSystem(revoke, privileges, grantees, option);
}

void DdlRunner::requireUser(const QString& name) const {
  if (!sqliteValue(m_c.db(), QStringLiteral("SELECT 1 FROM CAT.users WHERE username = ?1"), {name}).isValid())
    throw OraError(1917, QStringLiteral("user or role '%1' does not exist").arg(name));
}

// SELECT, INSERT, UPDATE and DELETE (ALL: the four) on a table or view, SELECT on a sequence.
// Its owner grants them, and so does a DBA, in the owner's name; a user holding one WITH GRANT
// OPTION grants it in its own. Each grantor takes back only what it granted.
void DdlRunner::grantObject(bool revoke, QStringList privileges, const QString& owner, const QString& object,
                            const QStringList& grantees, bool grantOption) {
  static const QStringList usable = {QStringLiteral("SELECT"), QStringLiteral("INSERT"), QStringLiteral("UPDATE"),
                                     QStringLiteral("DELETE")};
  const bool all =
      privileges == QStringList{QStringLiteral("ALL")} || privileges == QStringList{QStringLiteral("ALL PRIVILEGES")};
  if (all)
    privileges = usable;
  const auto type = objectType(owner, object);
  const bool sequence = type == QStringLiteral("SEQUENCE");
  for (const QString& p : std::as_const(privileges)) {
    if (!isObjectPrivilege(p))
      throw OraError(990, QStringLiteral("missing or invalid privilege"));
    if (!usable.contains(p) || (sequence && p != u"SELECT"))
      throw OraError(3001, QStringLiteral("unimplemented feature"));
  }
  if (type && type != QStringLiteral("TABLE") && type != QStringLiteral("VIEW") && !sequence)
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  if (!type)
    throw OraError(942, QStringLiteral("table or view does not exist"));
  if (grantOption && grantees.contains(QStringLiteral("PUBLIC")))
    throw OraError(1926, QStringLiteral("cannot GRANT to a role WITH GRANT OPTION"));
  sqlite3* db = m_c.db();
  const bool asOwner = owner == m_c.user() || m_c.isDba();
  const QString grantor = asOwner ? owner : m_c.user();
  if (!asOwner && !revoke) {
    const QStringList grantable = grantablePrivileges(db, grantor, owner, object);
    // ALL grants what the grantor may grant.
    if (all)
      privileges = grantable;
    if (privileges.isEmpty() ||
        std::any_of(privileges.begin(), privileges.end(), [&](const QString& p) { return !grantable.contains(p); }))
      throw OraError(1031, InsufficientPrivileges);
  }
  inTransaction([&] {
    for (const QString& g : grantees) {
      if (g != u"PUBLIC")
        requireUser(g);
      // The owner holds every privilege on its objects already.
      if (g == m_c.user() || g == grantor || g == owner)
        throw OraError(1749, QStringLiteral("you may not GRANT/REVOKE privileges to/from yourself"));
      bool revoked = false;
      for (const QString& p : std::as_const(privileges)) {
        const QVariantList key{g, owner, object, p, grantor};
        if (!revoke) {
          // Granted again, a privilege gains the grant option but never loses it.
          sqliteExec(db,
                     QStringLiteral("INSERT INTO CAT.tab_privs(grantee, owner, table_name, privilege, grantor, "
                                    "grantable) VALUES (?1, ?2, ?3, ?4, ?5, ?6) ON CONFLICT DO UPDATE SET grantable "
                                    "= max(grantable, excluded.grantable)"),
                     key + QVariantList{grantOption ? QStringLiteral("YES") : QStringLiteral("NO")});
          continue;
        }
        sqliteExec(db,
                   QStringLiteral("DELETE FROM CAT.tab_privs WHERE grantee = ?1 AND owner = ?2 AND table_name = ?3 "
                                  "AND privilege = ?4 AND grantor = ?5"),
                   key);
        const bool held = sqlite3_changes(db) > 0;
        if (!held && !all)
          throw OraError(1927, QStringLiteral("cannot REVOKE privileges you did not grant"));
        if (held)
          revokeDependentGrants(db, owner, object, p, g);
        revoked = revoked || held;
      }
      if (revoke && !revoked)
        throw OraError(1927, QStringLiteral("cannot REVOKE privileges you did not grant"));
    }
  });
}

// System privileges and roles, granted by a DBA or by a holder of them WITH ADMIN OPTION.
// Taking one back takes nothing its grantee granted with it.
void DdlRunner::grantSystem(bool revoke, const QStringList& privileges, const QStringList& grantees, bool adminOption) {
  sqlite3* db = m_c.db();
  for (const QString& p : privileges) {
    const bool role = Privileges::isRole(p);
    if (p == u"ALL PRIVILEGES")
      throw OraError(3001, QStringLiteral("unimplemented feature"));
    if (!role && !Privileges::isSystemPrivilege(p)) {
      if (p.contains(u' '))
        throw OraError(990, QStringLiteral("missing or invalid privilege"));
      throw OraError(1919, QStringLiteral("role '%1' does not exist").arg(p));
    }
    const bool admin =
        m_c.isDba() ||
        sqliteValue(db,
                    role ? QStringLiteral("SELECT 1 FROM CAT.role_privs WHERE grantee = ?1 AND granted_role = ?2 AND "
                                          "admin_option = 'YES'")
                         : QStringLiteral("SELECT 1 FROM CAT.sys_privs WHERE grantee = ?1 AND privilege = ?2 AND "
                                          "admin_option = 'YES'"),
                    {m_c.user(), p})
            .isValid();
    if (!admin)
      throw OraError(1031, InsufficientPrivileges);
  }
  const QString option = adminOption ? QStringLiteral("YES") : QStringLiteral("NO");
  inTransaction([&] {
    for (const QString& g : grantees) {
      if (g != u"PUBLIC")
        requireUser(g);
      for (const QString& p : privileges) {
        if (p == u"DBA") {
          if (g == u"PUBLIC")
            throw OraError(3001, QStringLiteral("unimplemented feature"));
          sqliteExec(db, QStringLiteral("UPDATE CAT.users SET is_dba = ?2 WHERE username = ?1"), {g, revoke ? 0 : 1});
          continue;
        }
        const bool role = Privileges::isRole(p);
        const QString table = role ? QStringLiteral("role_privs") : QStringLiteral("sys_privs");
        const QString column = role ? QStringLiteral("granted_role") : QStringLiteral("privilege");
        if (!revoke) {
          sqliteExec(db,
                     QStringLiteral("INSERT INTO CAT.%1(grantee, %2, admin_option) VALUES (?1, ?2, ?3) ON CONFLICT "
                                    "DO UPDATE SET admin_option = max(admin_option, excluded.admin_option)")
                         .arg(table, column),
                     {g, p, option});
          continue;
        }
        sqliteExec(db, QStringLiteral("DELETE FROM CAT.%1 WHERE grantee = ?1 AND %2 = ?2").arg(table, column), {g, p});
        if (sqlite3_changes(db) == 0) {
          if (role)
            throw OraError(1951, QStringLiteral("ROLE '%1' not granted to '%2'").arg(p, g));
          throw OraError(1952, QStringLiteral("system privileges not granted to '%1'").arg(g));
        }
      }
    }
  });
}
