#pragma once

#include <sqlite3.h>

struct SessionSettings;

// Functions of numbers, dates and values of any type: REMAINDER, BITAND, NEXT_DAY, NULLIF,
// LNNVL, DUMP, VSIZE and ORA_HASH.
namespace ValueFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings);

} // namespace ValueFunctions
