#include "db/local/GroupingCheck.h"

#include "db/OraError.h"
#include "db/local/QueryBlock.h"

namespace GroupingCheck {

namespace {

using Tokens = std::vector<SqlToken>;
using QueryBlock::closing;
using QueryBlock::isAggregate;
using QueryBlock::isNoColumn;
using QueryBlock::isSubquery;
using QueryBlock::Range;

bool same(const Tokens& t, size_t at, Range expr, size_t end) {
  const size_t n = expr.end - expr.begin;
  if (at + n > end)
    return false;
  for (size_t k = 0; k < n; ++k)
    if (t[at + k].upper() != t[expr.begin + k].upper() || t[at + k].kind != t[expr.begin + k].kind)
      return false;
  return true;
}

// Whether the item [begin, end) holds an aggregate call outside its subqueries; an analytic
// call (OVER) is none.
bool hasAggregate(const Tokens& t, size_t begin, size_t end) {
  for (size_t k = begin; k < end; ++k) {
    if (isSubquery(t, k, end))
      k = closing(t, k, end) - 1;
    else if (isAggregate(t[k]) && k + 1 < end && t[k + 1].is(u"(")) {
      const size_t after = QueryBlock::afterOrdering(t, closing(t, k + 1, end), end);
      if (after >= end || !t[after].is(u"OVER"))
        return true;
    }
  }
  return false;
}

// Whether a column of the item stands outside aggregates, subqueries and group expressions.
bool hasStrayColumn(const Tokens& t, Range item, const std::vector<Range>& groups) {
  for (size_t k = item.begin; k < item.end;) {
    bool grouped = false;
    for (const Range& g : groups)
      if (g.end > g.begin && same(t, k, g, item.end)) {
        k += g.end - g.begin;
        grouped = true;
        break;
      }
    if (grouped)
      continue;
    const SqlToken& a = t[k];
    if (isSubquery(t, k, item.end)) {
      k = closing(t, k, item.end);
      continue;
    }
    if (a.is(u"OVER"))
      return false; // analytic functions order their own rows
    if (isAggregate(a) && k + 1 < item.end && t[k + 1].is(u"(")) {
      k = QueryBlock::afterOrdering(t, closing(t, k + 1, item.end), item.end);
      continue;
    }
    const bool typedLiteral = k + 1 < item.end && t[k + 1].kind == SqlToken::Kind::String;
    const bool call = k + 1 < item.end && t[k + 1].is(u"(");
    const bool typeName = k > item.begin && t[k - 1].is(u"AS");  // CAST(x AS NUMBER)
    const bool field = k + 1 < item.end && t[k + 1].is(u"FROM"); // EXTRACT(YEAR FROM d)
    if (!a.isName() || isNoColumn(a) || typedLiteral || call || typeName || field) {
      ++k;
      continue;
    }
    // A column, maybe qualified: grouped when a group expression names it.
    size_t e = k + 1;
    while (e + 1 < item.end && t[e].is(u".") && (t[e + 1].isName() || t[e + 1].is(u"*")))
      e += 2;
    // owner.package.function(...) and a sequence's values are no columns.
    if ((e < item.end && t[e].is(u"(")) || t[e - 1].is(u"NEXTVAL") || t[e - 1].is(u"CURRVAL")) {
      k = e;
      continue;
    }
    const QString last = t[e - 1].upper();
    bool found = false;
    for (const Range& g : groups) {
      const bool name = QueryBlock::isColumn(t, g.begin, g.end) && t[g.end - 1].upper() == last;
      if (name && (e - k == 1 || g.end - g.begin == 1 || same(t, k, g, item.end)))
        found = true;
    }
    if (!found)
      return true;
    k = e;
  }
  return false;
}

} // namespace

void check(const Tokens& t, size_t select, size_t end) {
  const QueryBlock::Block block = QueryBlock::read(t, select, end);
  if (!block.from || block.groupingSets)
    return;
  bool aggregated = false;
  for (const Range& item : block.items)
    aggregated = aggregated || hasAggregate(t, item.begin, item.end);
  if (!block.group && !aggregated)
    return;
  const std::vector<Range> groups =
      block.group ? QueryBlock::split(t, block.group, block.groupEnd) : std::vector<Range>{};
  for (const Range& item : block.items)
    if (hasStrayColumn(t, item, groups))
      throw block.group ? OraError(979, QStringLiteral("not a GROUP BY expression"))
                        : OraError(937, QStringLiteral("not a single-group group function"));
}

} // namespace GroupingCheck
