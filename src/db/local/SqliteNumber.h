#pragma once

#include "db/local/OracleNumber.h"
#include "db/local/WideNumbers.h"

#include <sqlite3.h>

// NUMBER values in and out of the engine's SQLite functions: integers and doubles as SQLite's
// own, a wide value as its nearest double with its digits kept in the session's WideNumbers.
namespace SqliteNumber {

// An argument as a number; a text that is none raises ORA-01722.
OracleNumber::Value read(sqlite3_value* v, const WideNumbers& wide);
// ORA-03001 where the statement already carries another number as the same double.
void result(sqlite3_context* ctx, const OracleNumber::Value& v, WideNumbers& wide);
// A double as Oracle prints the number: its wide digits where it stands for a wide value.
QString text(double d, const WideNumbers& wide);

} // namespace SqliteNumber
