#include "db/local/GroupingSets.h"

#include "db/OraError.h"
#include "db/local/QueryBlock.h"
#include "db/local/SqlTranslator.h"
#include "db/local/TokenCursor.h"

namespace GroupingSets {

namespace {

using QueryBlock::closing;
using QueryBlock::Range;
using QueryBlock::split;
using Set = std::vector<Range>;

SqlToken word(const QString& text) { return SqlToken{SqlToken::Kind::Word, text, 0, 0, 0}; }
SqlToken symbol(const QString& text) { return SqlToken{SqlToken::Kind::Symbol, text, 0, 0, 0}; }

bool same(const Tokens& t, Range a, Range b) {
  if (a.end - a.begin != b.end - b.begin)
    return false;
  for (size_t k = 0; k < a.end - a.begin; ++k)
    if (t[a.begin + k].kind != t[b.begin + k].kind || t[a.begin + k].upper() != t[b.begin + k].upper())
      return false;
  return true;
}

bool inSet(const Tokens& t, Range e, const Set& set) {
  for (const Range& r : set)
    if (same(t, e, r))
      return true;
  return false;
}

bool opensSets(const Tokens& t, size_t k, size_t end) {
  return k + 1 < end && (((t[k].is(u"ROLLUP") || t[k].is(u"CUBE")) && t[k + 1].is(u"(")) ||
                         (t[k].is(u"GROUPING") && t[k + 1].is(u"SETS")));
}

// A composite "(a, b)" is one element of ROLLUP and CUBE, and one set of GROUPING SETS.
Set composite(const Tokens& t, Range r) {
  if (t[r.begin].is(u"(") && closing(t, r.begin, r.end) == r.end)
    return split(t, r.begin + 1, r.end - 1);
  return {r};
}

Set joined(const Set& a, const Set& b) {
  Set out = a;
  out.insert(out.end(), b.begin(), b.end());
  return out;
}

// The grouping sets one element of a GROUP BY list stands for.
std::vector<Set> setsOf(const Tokens& t, Range element) {
  const size_t k = element.begin;
  if (!opensSets(t, k, element.end))
    return {composite(t, element)};
  const bool sets = t[k].is(u"GROUPING");
  const size_t open = sets ? k + 2 : k + 1;
  if (open >= element.end || !t[open].is(u"(") || closing(t, open, element.end) != element.end)
    TokenCursor::fail(933);
  const std::vector<Range> parts = split(t, open + 1, element.end - 1);
  std::vector<Set> out;
  if (sets) {
    for (const Range& part : parts)
      for (const Set& s : setsOf(t, part))
        out.push_back(s);
    return out;
  }
  std::vector<Set> columns;
  for (const Range& part : parts)
    columns.push_back(composite(t, part));
  if (t[k].is(u"ROLLUP")) {
    for (size_t n = columns.size() + 1; n-- > 0;) {
      Set s;
      for (size_t c = 0; c < n; ++c)
        s = joined(s, columns[c]);
      out.push_back(s);
    }
    return out;
  }
  // Each set is a grouped query of its own: a CUBE that large is no query to run.
  if (columns.size() > 12)
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  for (size_t mask = (size_t(1) << columns.size()); mask-- > 0;) {
    Set s;
    for (size_t c = 0; c < columns.size(); ++c)
      if (mask & (size_t(1) << (columns.size() - 1 - c)))
        s = joined(s, columns[c]);
    out.push_back(s);
  }
  return out;
}

// The grouping sets of a GROUP BY list: every combination of its elements' sets.
std::vector<Set> groupingSets(const Tokens& t, size_t begin, size_t end) {
  std::vector<Set> out{Set{}};
  for (const Range& element : split(t, begin, end)) {
    std::vector<Set> next;
    for (const Set& left : out)
      for (const Set& right : setsOf(t, element))
        next.push_back(joined(left, right));
    out = std::move(next);
  }
  return out;
}

bool hasGroupingSets(const Tokens& t, size_t begin, size_t end) {
  for (size_t k = begin; k < end; ++k)
    if (opensSets(t, k, end))
      return true;
  return false;
}

class Rewriter final {
public:
  explicit Rewriter(const Tokens& t) : m_t(t) {}

  void range(size_t begin, size_t end, Tokens& out) {
    QueryBlock::copyRewriting(m_t, begin, end, out,
                              [this](size_t select, size_t, size_t to, Tokens& written) -> std::optional<size_t> {
                                const QueryBlock::Block b = QueryBlock::read(m_t, select, to);
                                if (!b.group || !hasGroupingSets(m_t, b.group, b.groupEnd))
                                  return std::nullopt;
                                block(select, b, written);
                                return b.end;
                              });
  }

private:
  struct Item {
    Range whole, bare;
    QString label; // the column's name in the union; empty for *
  };

  void block(size_t select, const QueryBlock::Block& b, Tokens& out) {
    size_t having = 0, order = b.end;
    for (size_t k = b.groupEnd, depth = 0; k < b.end; ++k) {
      if (m_t[k].is(u"("))
        ++depth;
      else if (m_t[k].is(u")"))
        --depth;
      else if (depth == 0 && m_t[k].is(u"HAVING"))
        having = k;
      else if (depth == 0 && m_t[k].is(u"ORDER") && k + 1 < b.end && m_t[k + 1].is(u"BY") && order == b.end)
        order = k;
    }
    size_t listBegin = select + 1;
    const bool modified = m_t[listBegin].is(u"DISTINCT") || m_t[listBegin].is(u"UNIQUE") || m_t[listBegin].is(u"ALL");
    listBegin += modified ? 1 : 0;
    const std::vector<Range> wholes = split(m_t, listBegin, b.from);
    if (wholes.size() != b.items.size())
      TokenCursor::fail(936);
    std::vector<Item> items;
    for (size_t n = 0; n < wholes.size(); ++n) {
      const Range bare = b.items[n];
      const bool star = m_t[bare.end - 1].is(u"*");
      const QString label = bare.end != wholes[n].end ? m_t[wholes[n].end - 1].name()
                            : star                    ? QString()
                            : QueryBlock::isColumn(m_t, bare.begin, bare.end)
                                ? m_t[bare.end - 1].name()
                                : SqlTranslator::labelOf(m_t, bare.begin, bare.end);
      items.push_back({wholes[n], bare, label});
    }
    const std::vector<Set> sets = groupingSets(m_t, b.group, b.groupEnd);
    Set all;
    for (const Set& s : sets)
      for (const Range& r : s)
        if (!inSet(m_t, r, all))
          all.push_back(r);

    for (const char* w : {"SELECT", "*", "FROM"})
      out.push_back(w[0] == '*' ? symbol(QStringLiteral("*")) : word(QString::fromLatin1(w)));
    out.push_back(symbol(QStringLiteral("(")));
    for (size_t n = 0; n < sets.size(); ++n) {
      if (n)
        out.insert(out.end(), {word(QStringLiteral("UNION")), word(QStringLiteral("ALL"))});
      out.push_back(m_t[select]);
      if (modified)
        out.push_back(m_t[select + 1]);
      for (size_t i = 0; i < items.size(); ++i) {
        if (i)
          out.push_back(symbol(QStringLiteral(",")));
        replaced(items[i].bare, sets[n], all, out);
        if (!items[i].label.isEmpty()) {
          out.push_back(word(QStringLiteral("AS")));
          out.push_back(SqlToken{SqlToken::Kind::Quoted, items[i].label, 0, 0, 0});
        }
      }
      range(b.from, b.group - 2, out);
      // The empty set is one group of all rows, also for a select list without aggregates.
      out.push_back(word(QStringLiteral("GROUP")));
      out.push_back(word(QStringLiteral("BY")));
      if (sets[n].empty())
        out.push_back(word(QStringLiteral("NULL")));
      for (size_t e = 0; e < sets[n].size(); ++e) {
        if (e)
          out.push_back(symbol(QStringLiteral(",")));
        range(sets[n][e].begin, sets[n][e].end, out);
      }
      if (having) {
        out.push_back(m_t[having]);
        replaced({having + 1, order}, sets[n], all, out);
      }
    }
    out.push_back(symbol(QStringLiteral(")")));
    if (order < b.end)
      ordering(order, b.end, items, out);
  }

  // The block's part [r.begin, r.end) in the branch of one grouping set.
  void replaced(Range r, const Set& set, const Set& all, Tokens& out) {
    for (size_t k = r.begin; k < r.end;) {
      const bool call = k + 1 < r.end && m_t[k + 1].is(u"(");
      if (call && (m_t[k].is(u"GROUPING") || m_t[k].is(u"GROUPING_ID"))) {
        const size_t close = closing(m_t, k + 1, r.end);
        qint64 bits = 0;
        for (const Range& arg : split(m_t, k + 2, close - 1)) {
          if (!inSet(m_t, arg, all))
            throw OraError(979, QStringLiteral("not a GROUP BY expression"));
          bits = bits * 2 + (inSet(m_t, arg, set) ? 0 : 1);
        }
        out.push_back(SqlToken{SqlToken::Kind::Number, QString::number(bits), 0, 0, 0});
        k = close;
        continue;
      }
      if ((call && QueryBlock::isAggregate(m_t[k])) || QueryBlock::isSubquery(m_t, k, r.end)) {
        const size_t close = closing(m_t, call ? k + 1 : k, r.end);
        range(k, close, out);
        k = close;
        continue;
      }
      const bool name = !(k > r.begin && m_t[k - 1].is(u"."));
      const Range* left = nullptr;
      for (const Range& e : all)
        if (name && !inSet(m_t, e, set) && k + (e.end - e.begin) <= r.end && same(m_t, {k, k + (e.end - e.begin)}, e)) {
          const size_t after = k + (e.end - e.begin);
          if (after < r.end && (m_t[after].is(u".") || m_t[after].is(u"(")))
            continue;
          left = &e;
          break;
        }
      if (left) {
        out.push_back(word(QStringLiteral("NULL")));
        k += left->end - left->begin;
        continue;
      }
      out.push_back(m_t[k++]);
    }
  }

  // ORDER BY over the union: an item written as a select item is that item's column.
  void ordering(size_t order, size_t end, const std::vector<Item>& items, Tokens& out) {
    size_t listEnd = order + 2;
    for (int depth = 0; listEnd < end; ++listEnd) {
      if (m_t[listEnd].is(u"("))
        ++depth;
      else if (m_t[listEnd].is(u")"))
        --depth;
      else if (depth == 0 && (m_t[listEnd].is(u"OFFSET") || m_t[listEnd].is(u"FETCH") || m_t[listEnd].is(u"FOR")))
        break;
    }
    out.push_back(m_t[order]);
    out.push_back(m_t[order + 1]);
    const std::vector<Range> keys = split(m_t, order + 2, listEnd);
    for (size_t n = 0; n < keys.size(); ++n) {
      if (n)
        out.push_back(symbol(QStringLiteral(",")));
      size_t e = keys[n].end;
      if (e - keys[n].begin > 2 && m_t[e - 2].is(u"NULLS"))
        e -= 2;
      if (e - keys[n].begin > 1 && (m_t[e - 1].is(u"ASC") || m_t[e - 1].is(u"DESC")))
        --e;
      const Item* match = nullptr;
      for (const Item& item : items)
        if (!item.label.isEmpty() && same(m_t, {keys[n].begin, e}, item.bare))
          match = &item;
      if (match)
        out.push_back(SqlToken{SqlToken::Kind::Quoted, match->label, 0, 0, 0});
      range(match ? e : keys[n].begin, keys[n].end, out);
    }
    range(listEnd, end, out);
  }

  const Tokens& m_t;
};

} // namespace

bool contains(const Tokens& t, size_t begin, size_t end) { return hasGroupingSets(t, begin, end); }

Tokens rewrite(const Tokens& t, size_t begin, size_t end) {
  Tokens out;
  Rewriter(t).range(begin, withoutEndTokens(t, begin, end), out);
  out.push_back(SqlToken{});
  return out;
}

} // namespace GroupingSets
