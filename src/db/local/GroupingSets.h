#pragma once

#include "db/local/SqlLexer.h"

// GROUP BY ROLLUP, CUBE and GROUPING SETS as SQLite's plain GROUP BY: one grouped query for each
// grouping set, joined by UNION ALL. In the branch of a set, a group expression the set leaves
// out is NULL in the select list and HAVING, GROUPING(expr) is 1 for it and 0 for one the set
// keeps, GROUPING_ID(...) the bits of those GROUPINGs. An ORDER BY of the block sorts the union:
// an item that repeats a select item sorts by that item's column.
namespace GroupingSets {

using Tokens = std::vector<SqlToken>;

bool contains(const Tokens& tokens, size_t begin, size_t end);
Tokens rewrite(const Tokens& tokens, size_t begin, size_t end);

} // namespace GroupingSets
