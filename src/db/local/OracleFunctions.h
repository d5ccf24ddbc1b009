#pragma once

#include <sqlite3.h>

struct SessionSettings;

// Oracle's SQL functions as SQLite functions of a connection, under their Oracle names. Those
// that SQLite has built in (UPPER, SUBSTR, ROUND …) are replaced by Oracle's semantics: '' is
// NULL, positions count characters, numbers round in decimal. A failing call reports
// "ORA-nnnnn: text", which the engine raises as that Oracle error.
namespace OracleFunctions {

// The functions read the session's settings, which must outlive the connection's use of them.
void registerAll(sqlite3* db, const SessionSettings* settings);

} // namespace OracleFunctions
