#pragma once

#include <sqlite3.h>

class LocalConnection;

// SYS_CONTEXT('USERENV', parameter) and USERENV(parameter): what the session knows of itself,
// its user and schema, the instance, the client's machine and program.
namespace SessionContext {

// The functions read the connection, which must outlive its use of them.
void registerAll(sqlite3* db, const LocalConnection* connection);

} // namespace SessionContext
