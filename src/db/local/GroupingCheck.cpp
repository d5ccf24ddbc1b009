#include "db/local/GroupingCheck.h"

#include "db/OraError.h"

#include <QSet>

namespace GroupingCheck {

namespace {

using Tokens = std::vector<SqlToken>;

struct Range {
  size_t begin, end;
};

bool isAggregate(const SqlToken& t) {
  static const QSet<QString> names = {
      QStringLiteral("COUNT"),    QStringLiteral("SUM"),      QStringLiteral("AVG"),
      QStringLiteral("MIN"),      QStringLiteral("MAX"),      QStringLiteral("STDDEV"),
      QStringLiteral("VARIANCE"), QStringLiteral("MEDIAN"),   QStringLiteral("LISTAGG"),
      QStringLiteral("COLLECT"),  QStringLiteral("CORR"),     QStringLiteral("STDDEV_POP"),
      QStringLiteral("VAR_POP"),  QStringLiteral("VAR_SAMP"), QStringLiteral("STDDEV_SAMP")};
  return t.kind == SqlToken::Kind::Word && names.contains(t.upper());
}

// Words that are no column where a name could stand.
bool isNoColumn(const SqlToken& t) {
  static const QSet<QString> words = {
      QStringLiteral("SELECT"), QStringLiteral("FROM"),     QStringLiteral("NULL"),    QStringLiteral("AND"),
      QStringLiteral("OR"),     QStringLiteral("NOT"),      QStringLiteral("IS"),      QStringLiteral("IN"),
      QStringLiteral("LIKE"),   QStringLiteral("ESCAPE"),   QStringLiteral("BETWEEN"), QStringLiteral("CASE"),
      QStringLiteral("WHEN"),   QStringLiteral("THEN"),     QStringLiteral("ELSE"),    QStringLiteral("END"),
      QStringLiteral("AS"),     QStringLiteral("DISTINCT"), QStringLiteral("ALL"),     QStringLiteral("EXISTS"),
      QStringLiteral("SYSDATE"), QStringLiteral("SYSTIMESTAMP"), QStringLiteral("USER"), QStringLiteral("UID"),
      QStringLiteral("ROWNUM"), QStringLiteral("LEVEL"),    QStringLiteral("LEADING"), QStringLiteral("TRAILING"),
      QStringLiteral("BOTH"),   QStringLiteral("PRIOR"),    QStringLiteral("ANY"),     QStringLiteral("SOME"),
      QStringLiteral("CURRENT_DATE"), QStringLiteral("CURRENT_TIMESTAMP")};
  return t.kind != SqlToken::Kind::Quoted && words.contains(t.upper());
}

size_t closing(const Tokens& t, size_t open, size_t end) {
  int depth = 0;
  for (size_t k = open; k < end; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")") && --depth == 0)
      return k + 1;
  }
  return end;
}

bool isSubquery(const Tokens& t, size_t k, size_t end) {
  return t[k].is(u"(") && k + 1 < end && (t[k + 1].is(u"SELECT") || t[k + 1].is(u"WITH"));
}

// The ranges between commas at depth 0 of [begin, end).
std::vector<Range> split(const Tokens& t, size_t begin, size_t end) {
  std::vector<Range> parts;
  int depth = 0;
  size_t start = begin;
  for (size_t k = begin; k < end; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && t[k].is(u",")) {
      parts.push_back({start, k});
      start = k + 1;
    }
  }
  if (start < end)
    parts.push_back({start, end});
  return parts;
}

// The item without its alias.
Range withoutAlias(const Tokens& t, Range r) {
  if (r.end - r.begin < 2 || !t[r.end - 1].isName() || isNoColumn(t[r.end - 1]))
    return r;
  const SqlToken& before = t[r.end - 2];
  if (before.is(u"AS"))
    return {r.begin, r.end - 2};
  if ((before.isName() && !isNoColumn(before)) || before.is(u")") || before.kind == SqlToken::Kind::String ||
      before.kind == SqlToken::Kind::Number)
    return {r.begin, r.end - 1};
  return r;
}

bool isDottedName(const Tokens& t, Range r) {
  if ((r.end - r.begin) % 2 == 0)
    return false;
  for (size_t k = r.begin; k < r.end; k += 2)
    if (!t[k].isName() || (k + 1 < r.end && !t[k + 1].is(u".")))
      return false;
  return true;
}

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
      const size_t after = closing(t, k + 1, end);
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
      if (same(t, k, g, item.end)) {
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
      k = closing(t, k + 1, item.end);
      continue;
    }
    const bool typedLiteral = k + 1 < item.end && t[k + 1].kind == SqlToken::Kind::String;
    const bool call = k + 1 < item.end && t[k + 1].is(u"(");
    const bool typeName = k > item.begin && t[k - 1].is(u"AS"); // CAST(x AS NUMBER)
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
      const bool name = isDottedName(t, g) && t[g.end - 1].upper() == last;
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
  size_t from = 0, group = 0, groupEnd = 0;
  int depth = 0;
  size_t k = select + 1;
  for (; k < end && t[k].kind != SqlToken::Kind::End; ++k) {
    if (t[k].is(u"(")) {
      ++depth;
    } else if (t[k].is(u")")) {
      if (--depth < 0)
        break;
    } else if (depth == 0) {
      if (t[k].is(u"UNION") || t[k].is(u"INTERSECT") || t[k].is(u"MINUS") || t[k].is(u"EXCEPT"))
        break;
      if (!from && t[k].is(u"FROM"))
        from = k;
      else if (from && t[k].is(u"GROUP") && k + 1 < end && t[k + 1].is(u"BY"))
        group = k + 2;
      else if (group && !groupEnd && (t[k].is(u"HAVING") || t[k].is(u"ORDER")))
        groupEnd = k;
      else if (t[k].is(u"ROLLUP") || t[k].is(u"CUBE") || t[k].is(u"GROUPING"))
        return;
    }
  }
  if (!from)
    return;
  if (group && !groupEnd)
    groupEnd = k;
  size_t listBegin = select + 1;
  if (t[listBegin].is(u"DISTINCT") || t[listBegin].is(u"UNIQUE") || t[listBegin].is(u"ALL"))
    ++listBegin;
  std::vector<Range> items;
  for (const Range& r : split(t, listBegin, from))
    items.push_back(withoutAlias(t, r));
  bool aggregated = false;
  for (const Range& item : items)
    aggregated = aggregated || hasAggregate(t, item.begin, item.end);
  if (!group && !aggregated)
    return;
  const std::vector<Range> groups = group ? split(t, group, groupEnd) : std::vector<Range>{};
  for (const Range& item : items)
    if (hasStrayColumn(t, item, groups))
      throw group ? OraError(979, QStringLiteral("not a GROUP BY expression"))
                  : OraError(937, QStringLiteral("not a single-group group function"));
}

} // namespace GroupingCheck
