#pragma once

#include "db/local/SqlLexer.h"

#include <optional>

// SELECT ... FOR UPDATE [OF column, ...] [NOWAIT | WAIT n]. SQLite locks a whole schema file for
// writing, not rows: the query takes the write lock of every schema it reads, which another
// session's pending change holds as well, so that the lock is coarser than Oracle's row locks.
// SKIP LOCKED, whose rows depend on which rows others hold, is refused.
namespace RowLocks {

struct Clause {
  size_t at = 0;   // where FOR UPDATE starts: the query ends there
  int waitMs = -1; // NOWAIT: 0; WAIT n: n seconds; -1: the session's usual wait
};

// The clause that ends the query, if any.
std::optional<Clause> read(const std::vector<SqlToken>& t);

} // namespace RowLocks
