#pragma once

#include "db/local/SqlLexer.h"

#include <QStringList>

#include <functional>
#include <optional>

// PIVOT and UNPIVOT as plain queries over the FROM item they follow. PIVOT becomes a grouped
// subquery: one column for each IN value and aggregate, the aggregate taking only the rows whose
// FOR column equals the value, grouped by every column of the source that neither the FOR clause
// nor an aggregate names. UNPIVOT becomes one branch of a UNION ALL for each IN column, beside
// the source's other columns; rows whose unpivoted values are all NULL go unless INCLUDE NULLS
// keeps them. PIVOT XML and IN lists of ANY or a subquery are refused as unimplemented.
namespace Pivots {

using Tokens = std::vector<SqlToken>;
// The columns of a FROM item given as tokens; nullopt when the item is no valid source.
using ColumnsOf = std::function<std::optional<QStringList>(const Tokens& item)>;

bool contains(const Tokens& tokens, size_t begin, size_t end);
// Rewrites the first PIVOT or UNPIVOT of [begin, end); the rest stays for the next rewrite.
Tokens rewrite(const Tokens& tokens, size_t begin, size_t end, const ColumnsOf& columnsOf);

} // namespace Pivots
