#pragma once

#include "db/local/TokenCursor.h"

#include <sqlite3.h>

#include <optional>

// Identity columns: GENERATED ALWAYS | BY DEFAULT AS IDENTITY. Each has a sequence of its own,
// ISEQ$$_n as Oracle names them, whose NEXTVAL is the column's default; an ALWAYS column takes
// no value from a statement.
namespace IdentityColumns {

struct Identity {
  QString generation; // "ALWAYS" or "BY DEFAULT"
  qint64 start = 1;
  qint64 step = 1;
};

// The identity clause at the cursor, after GENERATED; ORA-03001 for ON NULL and for options
// other than START WITH and INCREMENT BY.
Identity parse(TokenCursor& c);
// Creates the sequence of a new identity column of owner; returns the column's default.
QString createSequence(sqlite3* db, const QString& owner, const Identity& identity);
// ORA-32795 for an INSERT and ORA-32796 for an UPDATE that write an ALWAYS identity column of
// owner.table; t is the statement, its target ending before targetEnd.
void checkDml(sqlite3* db, const std::vector<SqlToken>& t, size_t targetEnd, const QString& owner,
              const QString& table);

} // namespace IdentityColumns
