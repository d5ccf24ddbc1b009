#pragma once

#include "db/local/SqlLexer.h"

#include <sqlite3.h>

// The expressions of function-based indexes. Oracle indexes an expression, and a column in
// descending order too, through a hidden virtual column of the table, SYS_NCnnnnn$, numbered
// after the table's columns; the dictionary shows that name among the index's columns and the
// expression, in Oracle's own spelling, in *_IND_EXPRESSIONS.
namespace IndexExpressions {

// Tokens [begin, end) as Oracle keeps an index expression: names quoted, words in upper case,
// no blanks but between words: upper(name) is UPPER("NAME").
QString text(const std::vector<SqlToken>& t, size_t begin, size_t end);
// The name of the next hidden column of owner.table.
QString hiddenColumn(sqlite3* db, const QString& owner, const QString& table);

} // namespace IndexExpressions
