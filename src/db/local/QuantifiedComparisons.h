#pragma once

#include "db/local/QueryBlock.h"

#include <functional>

// "x op ANY|SOME|ALL (list or subquery)" with Oracle's three-valued answer: ANY is true when one
// comparison is, false when none could be (an empty subquery too), else unknown; ALL is true
// when every comparison is (an empty subquery too), false when one is false, else unknown.
namespace QuantifiedComparisons {

using Tokens = QueryBlock::Tokens;

bool isQuantifier(const SqlToken& t);
// A list as comparisons joined by OR (ANY) or AND (ALL), whose logic is Oracle's: the tokens of
// "((x op a) OR (x op b) ...)" for left, the operator at op and the list [open, close).
Tokens expandList(const Tokens& t, QueryBlock::Range left, size_t op, size_t open, size_t close);
// SQLite SQL comparing x, translated, with every row of query, translated.
QString subquery(const Tokens& t, size_t op, const QString& x, const QString& query);

} // namespace QuantifiedComparisons
