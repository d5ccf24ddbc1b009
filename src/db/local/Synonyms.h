#pragma once

#include "db/local/SqlLexer.h"

#include <QStringList>

#include <sqlite3.h>

// Synonyms: other names for tables, views, sequences and synonyms, private to a schema or PUBLIC.
// A statement is given the objects its synonyms stand for before it is translated, so that every
// later step (privileges, views, identity columns, error texts) sees the object itself.
namespace Synonyms {

// The statement with every table, view or sequence it names through a synonym named by the
// object the synonym stands for. An unqualified name is the session's own object first, then a
// public synonym; a FROM item or DML target keeps the name written as its alias, so that columns
// qualified by it still resolve. ORA-00980 for a synonym whose object is gone, ORA-01775 for a
// loop. An unqualified name that only one of the other schemas the session opened (attached)
// holds is ORA-00942, as Oracle never looks there.
std::vector<SqlToken> resolve(sqlite3* db, const QString& user, const std::vector<SqlToken>& tokens,
                              const QStringList& attached);

// ALL_SYNONYMS, USER_SYNONYMS and, for a DBA, DBA_SYNONYMS, as temporary views of one session.
void installViews(sqlite3* db, const QString& user, bool dba);

} // namespace Synonyms
