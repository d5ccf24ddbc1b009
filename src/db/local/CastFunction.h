#pragma once

#include "db/local/SqlLexer.h"

#include <sqlite3.h>

#include <vector>

struct SessionSettings;

// CAST(value AS type), which the translator turns into dbsweep_cast(value, type, length or
// precision, scale): the value converted as Oracle converts it to the type named.
namespace CastFunction {

void registerAll(sqlite3* db, const SessionSettings* settings);

// The type of a CAST, tokens begin to end after its AS, as dbsweep_cast's last three arguments:
// ORA-00902 for a name that is no type, ORA-03001 for a type the engine does not convert to.
QString typeArguments(const std::vector<SqlToken>& t, size_t begin, size_t end);

} // namespace CastFunction
