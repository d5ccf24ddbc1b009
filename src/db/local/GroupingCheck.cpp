#include "db/local/GroupingCheck.h"

#include "db/OraError.h"
#include "db/local/QueryBlock.h"

#include <QStringList>

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

// The names the select list gives its items: "expr alias" and "expr AS alias".
QStringList aliases(const Tokens& t, const QueryBlock::Block& block) {
  QStringList names;
  for (const Range& item : block.items) {
    size_t k = item.end;
    if (k < block.end && t[k].is(u"AS"))
      ++k;
    if (k < block.end && t[k].isName() && !t[k].is(u"FROM"))
      names << t[k].name();
  }
  return names;
}

// HAVING's condition and ORDER BY's items, which see groups as the select list does: all but the
// ORDER BY items that name a select-list alias or position, which stand for that item.
std::vector<Range> laterClauses(const Tokens& t, const QueryBlock::Block& block, bool ordered) {
  std::vector<Range> out;
  size_t having = 0, order = 0, orderEnd = block.end;
  int depth = 0;
  for (size_t k = block.groupEnd ? block.groupEnd : block.from; k < block.end; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && t[k].is(u"HAVING"))
      having = k + 1;
    else if (depth == 0 && t[k].is(u"ORDER") && k + 1 < block.end && t[k + 1].is(u"BY")) {
      if (having)
        out.push_back({having, k});
      having = 0;
      order = k + 2;
    } else if (depth == 0 && order && (t[k].is(u"FOR") || t[k].is(u"OFFSET") || t[k].is(u"FETCH"))) {
      orderEnd = k;
      break;
    }
  }
  if (having)
    out.push_back({having, block.end});
  if (!order || !ordered)
    return out;
  const QStringList names = aliases(t, block);
  for (Range item : QueryBlock::split(t, order, orderEnd)) {
    if (item.end - item.begin > 2 && t[item.end - 2].is(u"NULLS"))
      item.end -= 2;
    if (item.end - item.begin > 1 && (t[item.end - 1].is(u"ASC") || t[item.end - 1].is(u"DESC")))
      --item.end;
    const bool single = item.end == item.begin + 1;
    if (single && (t[item.begin].kind == SqlToken::Kind::Number || names.contains(t[item.begin].name())))
      continue;
    out.push_back(item);
  }
  return out;
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
  // The ORDER BY after a compound query's last branch orders the whole compound.
  const bool compound = (select > 0 && QueryBlock::isSetOperator(t[select - 1])) ||
                        (block.end < end && QueryBlock::isSetOperator(t[block.end]));
  std::vector<Range> items = block.items;
  for (const Range& r : laterClauses(t, block, !compound))
    items.push_back(r);
  for (const Range& item : items)
    if (hasStrayColumn(t, item, groups))
      throw block.group ? OraError(979, QStringLiteral("not a GROUP BY expression"))
                        : OraError(937, QStringLiteral("not a single-group group function"));
}

} // namespace GroupingCheck
