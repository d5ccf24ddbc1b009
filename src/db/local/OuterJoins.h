#pragma once

#include "db/local/SqlLexer.h"

#include <functional>

// Rewrites Oracle's outer joins into ANSI joins, block by block: in a query block with a
// comma-separated FROM list, the WHERE conditions that mark one table's columns with (+)
// become that table's LEFT JOIN ... ON condition. Subqueries and UNION parts are rewritten on
// their own. A (+) that cannot be placed raises the error Oracle raises for it.
namespace OuterJoins {

// Whether the FROM item written as itemTokens has a column of this name; used to place a
// (+) on an unqualified column.
using HasColumn = std::function<bool(const std::vector<SqlToken>& itemTokens, const QString& column)>;

bool contains(const std::vector<SqlToken>& tokens, size_t begin, size_t end);

// Tokens [begin, end) rewritten, ending with an End token.
std::vector<SqlToken> rewrite(const std::vector<SqlToken>& tokens, size_t begin, size_t end,
                              const HasColumn& hasColumn);

} // namespace OuterJoins
