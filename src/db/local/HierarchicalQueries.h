#pragma once

#include "db/local/SqlLexer.h"

#include <QStringList>

#include <functional>
#include <optional>

struct sqlite3;

// Oracle's hierarchical queries (START WITH ... CONNECT BY ...) as SQLite recursive queries. The
// tree is walked once by a recursive query that keeps, for each row reached, only its identity
// (a table's rowid, else its number in a numbered copy of the FROM item), its LEVEL, the path of
// identities from its root and the values the query asks of its ancestors (PRIOR,
// CONNECT_BY_ROOT, SYS_CONNECT_BY_PATH); the query's own select list, WHERE, GROUP BY and ORDER
// BY then run over those rows joined back to their FROM item. The path orders the rows depth
// first, parents before their children, as Oracle returns them; ORDER SIBLINGS BY numbers the
// rows in that order beforehand so that siblings keep it. A row that is its own ancestor is
// Oracle's CONNECT BY loop: ORA-01436, or left out under NOCYCLE.
namespace HierarchicalQueries {

using Tokens = std::vector<SqlToken>;

// The columns of "SELECT * FROM item", for the FROM item [begin, end) of the query; nullopt when
// that cannot be read. A rowid query tells whether the item is a table.
using ColumnsOf = std::function<std::optional<QStringList>(const Tokens& item, bool rowid)>;

bool contains(const Tokens& tokens, size_t begin, size_t end);
Tokens rewrite(const Tokens& tokens, size_t begin, size_t end, const ColumnsOf& columnsOf);

// The engine functions of the walk: a row's path, and whether the row is on its parent's path,
// which raises ORA-01436 for a query without NOCYCLE.
void registerFunctions(sqlite3* db);

} // namespace HierarchicalQueries
