#pragma once

#include "db/local/SqlLexer.h"

// Oracle's "WHERE ROWNUM <= n" keeps the first n rows the block produces, before any ORDER BY
// sorts them. Each block with such a condition becomes
//   SELECT * FROM (the block without it LIMIT n) [ORDER BY ...]
// Conditions no row can meet (ROWNUM > n, ROWNUM = 2) keep none, as in Oracle.
namespace RownumLimits {

bool contains(const std::vector<SqlToken>& tokens, size_t begin, size_t end);
std::vector<SqlToken> rewrite(const std::vector<SqlToken>& tokens, size_t begin, size_t end);

} // namespace RownumLimits
