#pragma once

#include "db/OraError.h"
#include "db/local/Sqlite.h"

#include <optional>

// Turns SQLite's failures into the Oracle errors a user of Oracle expects, naming the violated
// constraint from the dictionary.
namespace SqlErrors {

enum class Dml { None, Insert, Update, Delete };

// A foreign key a statement broke: "OWNER.NAME" and the table it is of.
struct ForeignKey {
  QString name;
  QString childTable;
};

// violated names the foreign key the statement broke where the caller could tell.
OraError toOracle(sqlite3* db, const SqliteFailure& failure, const QString& owner, const QString& table, Dml dml,
                  const std::optional<ForeignKey>& violated = std::nullopt);

// The foreign key that statement, which failed for one, violates: SQLite's failure does not say
// which. The statement runs again with the checks deferred, in a savepoint undone at once, and
// SQLite's check of schema (of owner) names the key; nullopt when that cannot tell. values: those
// of the statement's parameters.
std::optional<ForeignKey> violatedForeignKey(sqlite3* db, const QString& statement, const QString& schema,
                                             const QString& owner, const QVariantList& values = {});

// "T.C" as Oracle quotes it: "T"."C".
QString quotedPath(const QString& dotted);

} // namespace SqlErrors
