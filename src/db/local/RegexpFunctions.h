#pragma once

#include <sqlite3.h>

struct SessionSettings;

// REGEXP_LIKE, REGEXP_SUBSTR, REGEXP_INSTR, REGEXP_COUNT and REGEXP_REPLACE, with Oracle's
// arguments and match parameters; positions count characters.
namespace RegexpFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings);

} // namespace RegexpFunctions
