#include "db/local/RownumLimits.h"

#include "db/OraError.h"

#include <limits>

namespace RownumLimits {

namespace {

using Tokens = std::vector<SqlToken>;

SqlToken sym(const QString& s) { return SqlToken{SqlToken::Kind::Symbol, s, 0, 0, 0}; }

size_t closing(const Tokens& t, size_t open, size_t end) {
  int depth = 0;
  for (size_t i = open; i < end; ++i) {
    if (t[i].is(u"("))
      ++depth;
    else if (t[i].is(u")") && --depth == 0)
      return i;
  }
  throw OraError(907, QStringLiteral("missing right parenthesis"));
}

// The limit a conjunct [b, e) sets, or -1 when it is not a ROWNUM condition.
qint64 limitOf(const Tokens& t, size_t b, size_t e) {
  if (e - b != 3)
    return -1;
  const bool left = t[b].is(u"ROWNUM") && t[b + 2].kind == SqlToken::Kind::Number;
  const bool right = t[b + 2].is(u"ROWNUM") && t[b].kind == SqlToken::Kind::Number;
  if (!left && !right)
    return -1;
  const double n = t[left ? b + 2 : b].text.toDouble();
  QString op = t[b + 1].text;
  if (right) // "n >= ROWNUM" is "ROWNUM <= n"
    op = op == u"<"    ? QStringLiteral(">")
         : op == u">"  ? QStringLiteral("<")
         : op == u"<=" ? QStringLiteral(">=")
         : op == u">=" ? QStringLiteral("<=")
                       : op;
  const qint64 whole = qint64(n);
  if (op == u"<=")
    return n < 1 ? 0 : whole;
  if (op == u"<")
    return n <= 1 ? 0 : (n == whole ? whole - 1 : whole);
  if (op == u"=")
    return n == 1 ? 1 : 0;
  if (op == u">")
    return n < 1 ? std::numeric_limits<qint64>::max() : 0;
  if (op == u">=")
    return n <= 1 ? std::numeric_limits<qint64>::max() : 0;
  return -1;
}

// The OFFSET keeps SQLite from merging the limited query into one around it: merged, an outer
// ORDER BY would choose the rows the limit keeps, where Oracle numbers them in the order they
// come, an inline view's order for one.
SqlToken limitTo(qint64 limit) { return sym(QStringLiteral("LIMIT %1 OFFSET 0").arg(limit)); }

class Rewriter final {
public:
  explicit Rewriter(const Tokens& t) : m_t(t) {}

  void range(size_t begin, size_t end, Tokens& out) {
    for (size_t i = begin; i < end;) {
      if (m_t[i].is(u"SELECT")) {
        i = block(i, end, out);
      } else if (m_t[i].is(u"(")) {
        const size_t close = closing(m_t, i, end);
        out.push_back(m_t[i]);
        range(i + 1, close, out);
        out.push_back(m_t[close]);
        i = close + 1;
      } else {
        out.push_back(m_t[i++]);
      }
    }
  }

private:
  size_t block(size_t begin, size_t end, Tokens& out) {
    size_t from = 0, where = 0, whereEnd = 0, order = 0, tail = end;
    bool joined = false;
    for (size_t i = begin + 1; i < end; ++i) {
      if (m_t[i].is(u"(")) {
        i = closing(m_t, i, end);
        continue;
      }
      const SqlToken& t = m_t[i];
      if (t.is(u")") || t.is(u"UNION") || t.is(u"MINUS") || t.is(u"INTERSECT")) {
        tail = i;
        break;
      }
      if (!from && t.is(u"FROM"))
        from = i;
      else if (from && !where && (t.is(u",") || t.is(u"JOIN")))
        joined = true;
      if (!where && t.is(u"WHERE"))
        where = i;
      else if (where && !whereEnd && (t.is(u"GROUP") || t.is(u"HAVING") || t.is(u"ORDER") || t.is(u"CONNECT")))
        whereEnd = i;
      if (!order && t.is(u"ORDER"))
        order = i;
    }
    if (where && !whereEnd)
      whereEnd = order ? order : tail;
    // The top-level conjuncts of WHERE.
    std::vector<std::pair<size_t, size_t>> conjuncts;
    if (where) {
      size_t start = where + 1;
      bool between = false;
      for (size_t i = where + 1; i <= whereEnd; ++i) {
        if (i < whereEnd && m_t[i].is(u"(")) {
          i = closing(m_t, i, whereEnd);
          continue;
        }
        if (i < whereEnd && m_t[i].is(u"BETWEEN"))
          between = true;
        if (i == whereEnd || (m_t[i].is(u"AND") && !std::exchange(between, false))) {
          conjuncts.emplace_back(start, i);
          start = i + 1;
        }
      }
    }
    qint64 limit = -1;
    std::vector<std::pair<size_t, size_t>> kept;
    for (auto [b, e] : conjuncts) {
      const qint64 l = limitOf(m_t, b, e);
      if (l < 0)
        kept.emplace_back(b, e);
      else
        limit = limit < 0 ? l : std::min(limit, l);
    }
    if (limit < 0) {
      out.push_back(m_t[begin]);
      range(begin + 1, tail, out);
      return tail;
    }
    if (from && !joined) {
      // One table: limit its rows first, then select, group and sort them, so that
      // "count(*) ... where rownum < 3" counts two rows.
      const SqlToken& qualifier = m_t[where - 1];
      out.push_back(m_t[begin]);
      range(begin + 1, from + 1, out);
      out.push_back(sym(QStringLiteral("(SELECT * FROM")));
      range(from + 1, where, out);
      for (size_t k = 0; k < kept.size(); ++k) {
        out.push_back(k == 0 ? m_t[where] : SqlToken{SqlToken::Kind::Word, QStringLiteral("AND"), 0, 0, 0});
        range(kept[k].first, kept[k].second, out);
      }
      if (limit != std::numeric_limits<qint64>::max())
        out.push_back(limitTo(limit));
      out.push_back(sym(QStringLiteral(")")));
      // An inline view without an alias leaves nothing to qualify its columns by.
      if (qualifier.isName())
        out.push_back(qualifier);
      range(whereEnd, tail, out);
      return tail;
    }
    // Several tables: the limit applies to the joined rows before sorting.
    const size_t bodyEnd = order ? order : tail;
    out.push_back(sym(QStringLiteral("SELECT * FROM (")));
    out.push_back(m_t[begin]);
    range(begin + 1, where, out);
    for (size_t k = 0; k < kept.size(); ++k) {
      out.push_back(k == 0 ? m_t[where] : SqlToken{SqlToken::Kind::Word, QStringLiteral("AND"), 0, 0, 0});
      range(kept[k].first, kept[k].second, out);
    }
    range(whereEnd, bodyEnd, out);
    if (limit != std::numeric_limits<qint64>::max())
      out.push_back(limitTo(limit));
    out.push_back(sym(QStringLiteral(")")));
    // Outside the subquery the columns are known by their names only.
    for (size_t i = bodyEnd; i < tail; ++i)
      if (!(i + 1 < tail && m_t[i].isName() && m_t[i + 1].is(u".")) && !(i > bodyEnd && m_t[i].is(u".")))
        out.push_back(m_t[i]);
    return tail;
  }

  const Tokens& m_t;
};

} // namespace

bool contains(const std::vector<SqlToken>& tokens, size_t begin, size_t end) {
  return containsToken(tokens, begin, end, u"ROWNUM");
}

std::vector<SqlToken> rewrite(const std::vector<SqlToken>& tokens, size_t begin, size_t end) {
  end = withoutEndTokens(tokens, begin, end);
  Tokens out;
  Rewriter(tokens).range(begin, end, out);
  out.push_back(SqlToken{});
  return out;
}

} // namespace RownumLimits
