#pragma once

#include "db/local/SqlLexer.h"

#include <functional>

// A compound query (UNION, INTERSECT, MINUS) takes its column types from its first branch, and
// Oracle refuses a branch whose column is of another kind, number, text or date: ORA-01790,
// where SQLite mixes them silently. A column whose kind cannot be told from the SQL passes.
namespace CompoundCheck {

// The declared SQLite type of the column [begin, end) in its query block; "" when unknown.
using ColumnType = std::function<QString(size_t begin, size_t end)>;

// Whether the select-list expression [begin, end) is text by the way it is written: a text
// literal, a concatenation, TO_CHAR or another function that returns text.
bool isText(const std::vector<SqlToken>& tokens, size_t begin, size_t end);

// Checks every compound query within tokens [begin, end).
void check(const std::vector<SqlToken>& tokens, size_t begin, size_t end, const ColumnType& columnType);

} // namespace CompoundCheck
