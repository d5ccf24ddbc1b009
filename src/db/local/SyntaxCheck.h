#pragma once

#include "db/local/SqlLexer.h"

// What Oracle's parser names where SQLite only reports a syntax error: an expression missing
// after an operator, a comma or a clause's keyword (ORA-00936, ORA-00921 at the statement's end),
// a select list running on where FROM is due (ORA-00923), no table after FROM (ORA-00903).
namespace SyntaxCheck {

void check(const std::vector<SqlToken>& tokens);

} // namespace SyntaxCheck
