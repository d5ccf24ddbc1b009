#pragma once

#include "db/local/OracleNumber.h"

#include <sqlite3.h>

// NUMBER values in and out of the engine's SQLite functions: integers and doubles as SQLite's
// own, a wide value as its text.
namespace SqliteNumber {

// An argument as a number; a text that is none raises ORA-01722.
OracleNumber::Value read(sqlite3_value* v);
void result(sqlite3_context* ctx, const OracleNumber::Value& v);

} // namespace SqliteNumber
