#pragma once

#include "db/OraError.h"
#include "db/local/Sqlite.h"

// Turns SQLite's failures into the Oracle errors a user of Oracle expects, naming the violated
// constraint from the dictionary.
namespace SqlErrors {

enum class Dml { None, Insert, Update, Delete };

OraError toOracle(sqlite3* db, const SqliteFailure& failure, const QString& owner, const QString& table, Dml dml);

// "T.C" as Oracle quotes it: "T"."C".
QString quotedPath(const QString& dotted);

} // namespace SqlErrors
