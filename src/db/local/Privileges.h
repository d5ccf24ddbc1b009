#pragma once

#include <QString>
#include <QStringList>

#include <sqlite3.h>

// System privileges and the roles the engine knows, CONNECT, RESOURCE and DBA, as Oracle 19c
// defines them. A user holds a privilege granted to it or to PUBLIC, directly or through a role;
// a DBA holds them all.
namespace Privileges {

// Whether name is one of Oracle's system privileges ("CREATE TABLE", "SELECT ANY TABLE" ...).
bool isSystemPrivilege(const QString& name);
bool isRole(const QString& name);

// Whether user holds privilege; dba: the session is a DBA's. Reads CAT.
bool holdsSystem(sqlite3* db, const QString& user, bool dba, const QString& privilege);

// USER_SYS_PRIVS, USER_ROLE_PRIVS, SESSION_PRIVS and, for a DBA, DBA_SYS_PRIVS and
// DBA_ROLE_PRIVS, as temporary views of one session.
void installViews(sqlite3* db, const QString& user, bool dba);

} // namespace Privileges
