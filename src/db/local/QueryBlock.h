#pragma once

#include "db/local/SqlLexer.h"

#include <functional>
#include <optional>

// The parts of one query block read from its tokens, for the checks that Oracle makes of a
// block's select list before it runs it.
namespace QueryBlock {

using Tokens = std::vector<SqlToken>;

struct Range {
  size_t begin, end;
};

struct Block {
  std::vector<Range> items; // the select list, without aliases
  size_t from = 0;          // 0: no FROM
  size_t group = 0;         // the first token of the GROUP BY list, 0: none
  size_t groupEnd = 0;
  bool groupingSets = false; // ROLLUP, CUBE, GROUPING SETS
  size_t end = 0;            // past the block: a set operator, its closing parenthesis, the end
};

// The block whose SELECT is at select, within [select, end).
Block read(const Tokens& t, size_t select, size_t end);

// Past the parenthesis closing the one at open; end when it is never closed.
size_t closing(const Tokens& t, size_t open, size_t end);
// A rewrite of the query block whose SELECT is at select, within [begin, end): writes the block
// to out and returns past it, or nullopt to leave it as written.
using BlockRewrite = std::function<std::optional<size_t>(size_t select, size_t begin, size_t end, Tokens& out)>;
// Copies [begin, end) to out, going into parentheses, with every query block offered to rewrite.
void copyRewriting(const Tokens& t, size_t begin, size_t end, Tokens& out, const BlockRewrite& rewrite);
// The ranges between commas at depth 0 of [begin, end).
std::vector<Range> split(const Tokens& t, size_t begin, size_t end);
// Words that are no column where a name could stand.
bool isNoColumn(const SqlToken& t);
bool isSetOperator(const SqlToken& t);
// [owner.]table.column and the like: names joined by dots, none of them a word that is no column.
bool isColumn(const Tokens& t, size_t begin, size_t end);
// Whether a parenthesised query opens at k.
bool isSubquery(const Tokens& t, size_t k, size_t end);
// Past an aggregate's own ordering at k, "WITHIN GROUP (...)" or "KEEP (...)"; else k.
size_t afterOrdering(const Tokens& t, size_t k, size_t end);
// The name of an aggregate function: COUNT, SUM, MAX ...
bool isAggregate(const SqlToken& t);

} // namespace QueryBlock
