#pragma once

#include "db/local/SqlLexer.h"

#include <optional>

// The typed literals of Oracle SQL: DATE 'YYYY-MM-DD', TIMESTAMP 'YYYY-MM-DD HH24:MI:SS.FF' and
// INTERVAL 'text' with its qualifier (DAY, YEAR(3) TO MONTH, DAY TO SECOND(2) …), read into the
// stored text of their value.
namespace TypedLiterals {

struct Literal {
  QString value; // the stored text
  size_t end;    // past the literal's last token
};

// Past the typed literal starting at i, if one does; reads no value.
std::optional<size_t> end(const std::vector<SqlToken>& t, size_t i, size_t end);
// The literal starting at i, if one does; raises Oracle's error for a value it cannot hold.
std::optional<Literal> read(const std::vector<SqlToken>& t, size_t i, size_t end);

} // namespace TypedLiterals
