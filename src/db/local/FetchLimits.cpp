#include "db/local/FetchLimits.h"

#include "db/OraError.h"

namespace FetchLimits {

namespace {

using QueryBlock::Range;

// The query the clause at `at` limits: from its first SELECT or WITH to its ORDER BY (or to the
// clause when there is none); order is that ORDER BY, 0 for none.
struct Query {
  size_t begin = 0, order = 0, end = 0;
};

Query queryOf(const Tokens& t, size_t at) {
  size_t start = 0;
  int depth = 0;
  for (size_t j = at; j-- > 0;) {
    if (t[j].is(u")"))
      ++depth;
    else if (t[j].is(u"(") && depth-- == 0) {
      start = j + 1;
      break;
    }
  }
  Query q;
  q.end = at;
  depth = 0;
  bool found = false;
  for (size_t k = start; k < at; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && !found && (t[k].is(u"SELECT") || t[k].is(u"WITH"))) {
      q.begin = k;
      found = true;
    } else if (depth == 0 && t[k].is(u"ORDER") && k + 1 < at && t[k + 1].is(u"BY"))
      q.order = k;
  }
  if (!found)
    throw OraError(933, QStringLiteral("SQL command not properly ended"));
  return q;
}

SqlToken token(SqlToken::Kind kind, const QString& text) { return SqlToken{kind, text, 0, 0, 0}; }

// A key of the ORDER BY as an expression of the block's rows: an alias or a position stands for
// its select item.
void keyOf(const Tokens& t, Range key, const QueryBlock::Block& block, size_t select, Tokens& out) {
  const std::vector<Range> items = QueryBlock::split(t, select + 1, block.from);
  Range expr = key;
  if (key.end == key.begin + 1 && t[key.begin].kind == SqlToken::Kind::Number) {
    const size_t n = t[key.begin].text.toULongLong();
    if (n < 1 || n > block.items.size())
      throw OraError(1785, QStringLiteral("ORDER BY item must be the number of a SELECT-list expression"));
    expr = block.items[n - 1];
  } else if (key.end == key.begin + 1 && t[key.begin].isName()) {
    for (size_t n = 0; n < items.size(); ++n)
      if (items[n].end != block.items[n].end && t[items[n].end - 1].name() == t[key.begin].name())
        expr = block.items[n];
  }
  out.insert(out.end(), t.begin() + qsizetype(expr.begin), t.begin() + qsizetype(expr.end));
}

} // namespace

QString percent(const Tokens& t, size_t fetch, const QString& count, const Translate& translate) {
  const Query q = queryOf(t, fetch);
  const QString rows = QStringLiteral("(SELECT count(*) * (%1) / 100.0 AS n FROM (%2))")
                           .arg(count, translate(t, q.begin, q.order ? q.order : q.end));
  return QStringLiteral("(SELECT max(0, CAST(n AS INTEGER) + (n > CAST(n AS INTEGER))) FROM %1)").arg(rows);
}

QString withTies(const Tokens& t, size_t fetch, const QString& offset, const QString& count,
                 const Translate& translate) {
  const Query q = queryOf(t, fetch);
  if (!q.order)
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  const QueryBlock::Block block = QueryBlock::read(t, q.begin, q.order);
  const bool distinct = t[q.begin + 1].is(u"DISTINCT") || t[q.begin + 1].is(u"UNIQUE");
  // The ranks are those of a single block's rows: a compound query or DISTINCT has other rows.
  if (!t[q.begin].is(u"SELECT") || block.end != q.order || distinct || !block.from)
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  size_t keysEnd = q.order + 2;
  while (keysEnd < q.end && !t[keysEnd].is(u"OFFSET") && !t[keysEnd].is(u"FETCH"))
    ++keysEnd;
  // SELECT RANK() OVER (ORDER BY keys) rk, ROW_NUMBER() OVER (ORDER BY keys) rn FROM ...
  Tokens ranks{token(SqlToken::Kind::Word, QStringLiteral("SELECT"))};
  for (const char* function : {"RANK", "ROW_NUMBER"}) {
    if (ranks.size() > 1)
      ranks.push_back(token(SqlToken::Kind::Symbol, QStringLiteral(",")));
    for (const QString& w :
         {QString::fromLatin1(function), QStringLiteral("("), QStringLiteral(")"), QStringLiteral("OVER"),
          QStringLiteral("("), QStringLiteral("ORDER"), QStringLiteral("BY")})
      ranks.push_back(token(w.front().isLetter() ? SqlToken::Kind::Word : SqlToken::Kind::Symbol, w));
    for (const Range& key : QueryBlock::split(t, q.order + 2, keysEnd)) {
      if (!ranks.back().is(u"BY"))
        ranks.push_back(token(SqlToken::Kind::Symbol, QStringLiteral(",")));
      size_t e = key.end;
      while (e > key.begin + 1 && (t[e - 1].is(u"ASC") || t[e - 1].is(u"DESC") || t[e - 1].is(u"NULLS") ||
                                   t[e - 1].is(u"FIRST") || t[e - 1].is(u"LAST")))
        --e;
      keyOf(t, {key.begin, e}, block, q.begin, ranks);
      ranks.insert(ranks.end(), t.begin() + qsizetype(e), t.begin() + qsizetype(key.end));
    }
    ranks.push_back(token(SqlToken::Kind::Symbol, QStringLiteral(")")));
    ranks.push_back(token(SqlToken::Kind::Quoted, QString::fromLatin1(function)));
  }
  ranks.insert(ranks.end(), t.begin() + qsizetype(block.from), t.begin() + qsizetype(q.order));
  ranks.push_back(SqlToken{});
  return QStringLiteral("(WITH \"DBSWEEP$W\" AS (%1) SELECT CASE WHEN (%3) <= 0 THEN 0 WHEN r IS NULL THEN -1 "
                        "ELSE (SELECT count(*) FROM \"DBSWEEP$W\" WHERE \"RANK\" <= r) - (%2) END FROM (SELECT "
                        "(SELECT \"RANK\" FROM \"DBSWEEP$W\" WHERE \"ROW_NUMBER\" = (%2) + (%3)) AS r))")
      .arg(translate(ranks, 0, ranks.size()), offset, count);
}

} // namespace FetchLimits
