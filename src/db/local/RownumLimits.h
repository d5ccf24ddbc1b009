#pragma once

#include "db/local/SqlLexer.h"

#include <sqlite3.h>

// Oracle's "WHERE ROWNUM <= n" keeps the first n rows the block produces, before any ORDER BY
// sorts them. Each block with such a condition becomes
//   SELECT * FROM (the block without it LIMIT n) [ORDER BY ...]
// Conditions no row can meet (ROWNUM > n, ROWNUM = 2) keep none, as in Oracle. Other conditions
// on ROWNUM (ROWNUM < 3 OR k = 5, ROWNUM BETWEEN 1 AND 2) filter the rows one by one in the
// statement's own blocks and DELETE or UPDATE, and are refused in subqueries (ORA-03001).
namespace RownumLimits {

bool contains(const std::vector<SqlToken>& tokens, size_t begin, size_t end);
// statement: the translation's number, which keeps apart the counts of its filters.
std::vector<SqlToken> rewrite(const std::vector<SqlToken>& tokens, size_t begin, size_t end, qint64 statement);
// The functions the filters count rows with.
void registerFunctions(sqlite3* db);

} // namespace RownumLimits
