#pragma once

#include "db/local/SqlLexer.h"

#include <QString>

#include <functional>
#include <optional>

struct sqlite3;

// The aggregates that order their group's rows themselves, which SQLite's aggregates cannot:
// LISTAGG([DISTINCT] expr, sep) [WITHIN GROUP (ORDER BY ...)] and MIN, MAX, SUM, AVG or COUNT(expr)
// KEEP (DENSE_RANK FIRST|LAST ORDER BY ...). Each becomes a call of an engine aggregate that
// gets the ordering keys with every row, each followed by its direction and place for NULLs; both
// also serve as analytic functions over a partition (OVER (PARTITION BY ...)).
namespace OrderedAggregates {

using Tokens = std::vector<SqlToken>;
using Translate = std::function<QString(size_t begin, size_t end)>;

// The engine call for the aggregate whose name is at i, moving i past its ordering clause;
// nullopt for another aggregate without KEEP.
std::optional<QString> translateCall(const Tokens& t, size_t& i, size_t end, const Translate& translate);

void registerFunctions(sqlite3* db);

} // namespace OrderedAggregates
