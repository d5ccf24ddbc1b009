#pragma once

#include "db/local/QueryBlock.h"

#include <functional>

// The row counts of FETCH ... PERCENT ROWS and FETCH ... WITH TIES, which depend on the query's
// rows: each becomes a query of its own that SQLite's LIMIT evaluates once. PERCENT takes the
// smallest count of rows that is at least that share of all rows; WITH TIES takes, beyond the
// count asked for, the rows that sort equal to the last of them.
namespace FetchLimits {

using Tokens = QueryBlock::Tokens;
using Translate = std::function<QString(const Tokens& tokens, size_t begin, size_t end)>;

// The LIMIT for the row limiting clause whose FETCH is at fetch; offset and count are SQLite
// expressions, percent that count is a share.
QString percent(const Tokens& t, size_t fetch, const QString& count, const Translate& translate);
QString withTies(const Tokens& t, size_t fetch, const QString& offset, const QString& count,
                 const Translate& translate);

} // namespace FetchLimits
