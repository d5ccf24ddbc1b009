#pragma once

#include "db/local/SqlLexer.h"

// Oracle refuses a query block that mixes rows and groups, where SQLite answers with the values
// of some row of each group: a column of the select list, HAVING or ORDER BY that is neither
// inside an aggregate nor one of the GROUP BY expressions is ORA-00937 without GROUP BY and
// ORA-00979 with it.
namespace GroupingCheck {

// Checks the query block whose SELECT is at select, within tokens [select, end).
void check(const std::vector<SqlToken>& tokens, size_t select, size_t end);

} // namespace GroupingCheck
