#include "db/local/QueryBlock.h"

#include <QSet>

namespace QueryBlock {

namespace {

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

} // namespace

// Words that are no column where a name could stand.
bool isNoColumn(const SqlToken& t) {
  static const QSet<QString> words = {QStringLiteral("SELECT"),
                                      QStringLiteral("FROM"),
                                      QStringLiteral("NULL"),
                                      QStringLiteral("AND"),
                                      QStringLiteral("OR"),
                                      QStringLiteral("NOT"),
                                      QStringLiteral("IS"),
                                      QStringLiteral("IN"),
                                      QStringLiteral("LIKE"),
                                      QStringLiteral("ESCAPE"),
                                      QStringLiteral("BETWEEN"),
                                      QStringLiteral("CASE"),
                                      QStringLiteral("WHEN"),
                                      QStringLiteral("THEN"),
                                      QStringLiteral("ELSE"),
                                      QStringLiteral("END"),
                                      QStringLiteral("AS"),
                                      QStringLiteral("DISTINCT"),
                                      QStringLiteral("ALL"),
                                      QStringLiteral("EXISTS"),
                                      QStringLiteral("SYSDATE"),
                                      QStringLiteral("SYSTIMESTAMP"),
                                      QStringLiteral("USER"),
                                      QStringLiteral("UID"),
                                      QStringLiteral("ROWNUM"),
                                      QStringLiteral("LEVEL"),
                                      QStringLiteral("LEADING"),
                                      QStringLiteral("TRAILING"),
                                      QStringLiteral("BOTH"),
                                      QStringLiteral("PRIOR"),
                                      QStringLiteral("CONNECT_BY_ROOT"),
                                      QStringLiteral("ANY"),
                                      QStringLiteral("SOME"),
                                      QStringLiteral("CURRENT_DATE"),
                                      QStringLiteral("CURRENT_TIMESTAMP"),
                                      QStringLiteral("LOCALTIMESTAMP")};
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

void copyRewriting(const Tokens& t, size_t begin, size_t end, Tokens& out, const BlockRewrite& rewrite) {
  for (size_t i = begin; i < end;) {
    if (t[i].is(u"SELECT")) {
      if (const auto past = rewrite(i, begin, end, out)) {
        i = *past;
        continue;
      }
      out.push_back(t[i++]);
    } else if (t[i].is(u"(")) {
      const size_t close = closing(t, i, end) - 1;
      out.push_back(t[i]);
      copyRewriting(t, i + 1, close, out, rewrite);
      if (close < end)
        out.push_back(t[close]);
      i = close + 1;
    } else {
      out.push_back(t[i++]);
    }
  }
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

size_t afterOrdering(const Tokens& t, size_t k, size_t end) {
  if (k + 1 < end && t[k].is(u"KEEP") && t[k + 1].is(u"("))
    return closing(t, k + 1, end);
  if (k + 2 < end && t[k].is(u"WITHIN") && t[k + 1].is(u"GROUP") && t[k + 2].is(u"("))
    return closing(t, k + 2, end);
  return k;
}

bool isAggregate(const SqlToken& t) {
  static const QSet<QString> names = {
      QStringLiteral("COUNT"),   QStringLiteral("SUM"),      QStringLiteral("AVG"),        QStringLiteral("MIN"),
      QStringLiteral("MAX"),     QStringLiteral("STDDEV"),   QStringLiteral("VARIANCE"),   QStringLiteral("MEDIAN"),
      QStringLiteral("LISTAGG"), QStringLiteral("COLLECT"),  QStringLiteral("CORR"),       QStringLiteral("STDDEV_POP"),
      QStringLiteral("VAR_POP"), QStringLiteral("VAR_SAMP"), QStringLiteral("STDDEV_SAMP")};
  return t.kind == SqlToken::Kind::Word && names.contains(t.upper());
}

bool isColumn(const Tokens& t, size_t begin, size_t end) {
  if (end <= begin || (end - begin) % 2 == 0)
    return false;
  for (size_t k = begin; k < end; k += 2)
    if (!t[k].isName() || isNoColumn(t[k]) || (k + 1 < end && !t[k + 1].is(u".")))
      return false;
  return true;
}

bool isSubquery(const Tokens& t, size_t k, size_t end) {
  return t[k].is(u"(") && k + 1 < end && (t[k + 1].is(u"SELECT") || t[k + 1].is(u"WITH"));
}

bool isSetOperator(const SqlToken& t) {
  return t.is(u"UNION") || t.is(u"INTERSECT") || t.is(u"MINUS") || t.is(u"EXCEPT");
}

Block read(const Tokens& t, size_t select, size_t end) {
  Block b;
  int depth = 0;
  size_t k = select + 1;
  for (; k < end && t[k].kind != SqlToken::Kind::End; ++k) {
    if (t[k].is(u"(")) {
      ++depth;
    } else if (t[k].is(u")")) {
      if (--depth < 0)
        break;
    } else if (depth == 0) {
      if (isSetOperator(t[k]))
        break;
      if (!b.from && t[k].is(u"FROM"))
        b.from = k;
      else if (b.from && t[k].is(u"GROUP") && k + 1 < end && t[k + 1].is(u"BY"))
        b.group = k + 2;
      else if (b.group && !b.groupEnd && (t[k].is(u"HAVING") || t[k].is(u"ORDER")))
        b.groupEnd = k;
      else if (t[k].is(u"ROLLUP") || t[k].is(u"CUBE") || t[k].is(u"GROUPING"))
        b.groupingSets = true;
    }
  }
  b.end = k;
  if (b.group && !b.groupEnd)
    b.groupEnd = k;
  size_t listBegin = select + 1;
  if (listBegin < k && (t[listBegin].is(u"DISTINCT") || t[listBegin].is(u"UNIQUE") || t[listBegin].is(u"ALL")))
    ++listBegin;
  for (const Range& r : split(t, listBegin, b.from ? b.from : k))
    b.items.push_back(withoutAlias(t, r));
  return b;
}

} // namespace QueryBlock
