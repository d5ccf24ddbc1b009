#pragma once

#include <QString>

#include <sqlite3.h>

struct SessionSettings;

// The dictionary views beyond those of the schema browser: object privileges (*_TAB_PRIVS),
// users (DBA_USERS, USER_USERS), the instance (V$VERSION, V$DATABASE) and the session's NLS
// parameters, as temporary views of one session.
namespace DictionaryViews {

void install(sqlite3* db, const QString& user, bool dba);
// The functions the views read the session's settings through.
void registerFunctions(sqlite3* db, const SessionSettings* settings);

} // namespace DictionaryViews
