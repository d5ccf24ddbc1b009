#pragma once

#include "db/local/SqlLexer.h"

class LocalConnection;

// INSERT, UPDATE and DELETE through a view of one table: the statement is rewritten onto the
// table, its columns named as the table names them and, for UPDATE and DELETE, the view's
// condition added, so it changes exactly the rows the view shows. A view of anything more
// (a join, DISTINCT, GROUP BY, an aggregate, a set operation) is ORA-01732, a read-only view
// ORA-42399, and a column the view computes ORA-01733.
namespace ViewDml {

// tokens: the statement, its target [targetBegin, targetEnd) naming owner's view. Returns the
// statement on the view's table.
std::vector<SqlToken> rewrite(LocalConnection& c, const std::vector<SqlToken>& tokens, size_t targetBegin,
                              size_t targetEnd, const QString& owner, const QString& view);

} // namespace ViewDml
