#include "db/local/OuterJoins.h"

#include "db/OraError.h"

#include <QHash>
#include <QSet>

namespace OuterJoins {

namespace {

using Tokens = std::vector<SqlToken>;

SqlToken word(const char16_t* w) { return SqlToken{SqlToken::Kind::Word, QString::fromUtf16(w), 0, 0, 0}; }
SqlToken symbol(const char16_t* s) { return SqlToken{SqlToken::Kind::Symbol, QString::fromUtf16(s), 0, 0, 0}; }

bool isSetOperator(const SqlToken& t) {
  return t.is(u"UNION") || t.is(u"MINUS") || t.is(u"INTERSECT") || t.is(u"EXCEPT");
}

// The index of the token closing the parenthesis opened at open.
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

// Splits [begin, end) at top-level separators accepted by isSeparator.
std::vector<std::pair<size_t, size_t>> split(const Tokens& t, size_t begin, size_t end,
                                             const std::function<bool(size_t)>& isSeparator) {
  std::vector<std::pair<size_t, size_t>> parts;
  size_t start = begin;
  for (size_t i = begin; i < end; ++i) {
    if (t[i].is(u"(")) {
      i = closing(t, i, end);
      continue;
    }
    if (isSeparator(i)) {
      parts.emplace_back(start, i);
      start = i + 1;
    }
  }
  parts.emplace_back(start, end);
  return parts;
}

struct FromItem {
  size_t begin, end;
  QString qualifier; // alias, else the table name
};

class Rewriter final {
public:
  Rewriter(const Tokens& t, const HasColumn& hasColumn) : m_t(t), m_hasColumn(hasColumn) {}

  // Copies [begin, end) to out, rewriting every query block found at this level and inside
  // parentheses.
  void range(size_t begin, size_t end, Tokens& out) {
    size_t i = begin;
    while (i < end) {
      if (m_t[i].is(u"SELECT")) {
        i = block(i, end, out);
      } else if (m_t[i].is(u"(")) {
        const size_t close = closing(m_t, i, end);
        out.push_back(m_t[i]);
        range(i + 1, close, out);
        out.push_back(m_t[close]);
        i = close + 1;
      } else {
        if (m_t[i].is(u"(+)"))
          throw OraError(30563, QStringLiteral("outer join operator (+) is not allowed here"));
        out.push_back(m_t[i++]);
      }
    }
  }

private:
  // One SELECT block starting at begin; returns the index behind it.
  size_t block(size_t begin, size_t end, Tokens& out) {
    // Where the block's FROM list, WHERE and the rest lie.
    size_t from = 0, where = 0, tail = end;
    for (size_t i = begin + 1; i < end; ++i) {
      if (m_t[i].is(u"(")) {
        i = closing(m_t, i, end);
        continue;
      }
      if (m_t[i].is(u")"))
        break;
      if (!from && m_t[i].is(u"FROM"))
        from = i;
      else if (from && !where && m_t[i].is(u"WHERE"))
        where = i;
      else if (from && (m_t[i].is(u"GROUP") || m_t[i].is(u"HAVING") || m_t[i].is(u"ORDER") || m_t[i].is(u"CONNECT") ||
                        m_t[i].is(u"START") || isSetOperator(m_t[i]))) {
        tail = i;
        break;
      }
    }
    if (!from || !where || !has(where, tail)) {
      // Nothing to rewrite at this level: copy, rewriting nested blocks only.
      const size_t stop = tail;
      out.push_back(m_t[begin]);
      range(begin + 1, stop, out);
      return stop;
    }
    out.push_back(m_t[begin]);
    range(begin + 1, from, out); // the select list
    out.push_back(m_t[from]);

    std::vector<FromItem> items;
    for (auto [b, e] : split(m_t, from + 1, where, [&](size_t i) { return m_t[i].is(u","); })) {
      for (size_t i = b; i < e; ++i)
        if (m_t[i].is(u"JOIN"))
          throw OraError(25156, QStringLiteral("old style outer join (+) cannot be used with ANSI joins"));
      if (b == e)
        throw OraError(903, QStringLiteral("invalid table name"));
      items.push_back(FromItem{b, e, qualifierOf(b, e)});
    }

    struct Join {
      std::vector<std::pair<size_t, size_t>> conditions;
      QSet<int> dependsOn;
    };
    QHash<int, Join> joins; // by FROM item index
    std::vector<std::pair<size_t, size_t>> plain;
    const auto conjuncts = split(m_t, where + 1, tail, [&, between = false](size_t i) mutable {
      if (m_t[i].is(u"BETWEEN"))
        between = true;
      else if (m_t[i].is(u"AND")) {
        if (between)
          return between = false;
        return true;
      }
      return false;
    });
    for (auto [b, e] : conjuncts) {
      if (!has(b, e)) {
        plain.emplace_back(b, e);
        continue;
      }
      QSet<int> outer, others;
      for (size_t i = b; i < e; ++i) {
        if (m_t[i].is(u"OR") || m_t[i].is(u"IN"))
          throw OraError(1719, QStringLiteral("outer join operator (+) not allowed in operand of OR or IN"));
        if (m_t[i].is(u"(") && i + 1 < e && m_t[i + 1].is(u"SELECT"))
          throw OraError(1799, QStringLiteral("a column may not be outer-joined to a subquery"));
        if (!m_t[i].isName() || (i > b && m_t[i - 1].is(u".")) || (i + 1 < e && m_t[i + 1].is(u"(")))
          continue;
        // A column reference: [qualifier.]column, possibly followed by (+).
        const bool qualified = i + 2 < e && m_t[i + 1].is(u".") && m_t[i + 2].isName();
        const size_t last = qualified ? i + 2 : i;
        const bool marked = last + 1 < e && m_t[last + 1].is(u"(+)");
        const int item =
            qualified ? itemNamed(items, m_t[i].name()) : (marked ? itemWithColumn(items, m_t[i].name()) : -1);
        if (item >= 0)
          (marked ? outer : others).insert(item);
        else if (marked) // no table in the FROM list has it
          throw OraError(904,
                         QStringLiteral("%1: invalid identifier")
                             .arg(qualified ? u'"' + m_t[i].name() + QStringLiteral("\".\"") + m_t[last].name() + u'"'
                                            : u'"' + m_t[i].name() + u'"'));
        i = last;
      }
      if (outer.isEmpty()) // the (+) follows no column: a literal, an expression, a stray mark
        throw OraError(936, QStringLiteral("missing expression"));
      if (outer.size() > 1)
        throw OraError(1468, QStringLiteral("a predicate may reference only one outer-joined table"));
      const int table = *outer.begin();
      others.remove(table);
      Join& join = joins[table];
      join.conditions.emplace_back(b, e);
      join.dependsOn.unite(others);
    }
    // A table that only its own conditions mark has nothing to be joined to: keep them as
    // filters, as Oracle does.
    if (items.size() == 1) {
      for (auto c : joins.value(0).conditions)
        plain.push_back(c);
      joins.clear();
    }

    // Order: the tables joined normally as written, then each outer table after the tables its
    // conditions use.
    std::vector<int> order;
    for (int k = 0; k < int(items.size()); ++k)
      if (!joins.contains(k))
        order.push_back(k);
    QSet<int> placed(order.begin(), order.end());
    while (placed.size() < int(items.size())) {
      bool progress = false;
      for (int k = 0; k < int(items.size()); ++k) {
        if (placed.contains(k))
          continue;
        bool ready = true;
        for (int d : joins[k].dependsOn)
          ready = ready && (placed.contains(d) || !joins.contains(d) || d == k);
        if (!ready)
          continue;
        order.push_back(k);
        placed.insert(k);
        progress = true;
      }
      if (!progress)
        throw OraError(1416, QStringLiteral("two tables cannot be outer-joined to each other"));
    }
    if (order.empty() || joins.contains(order.front()))
      throw OraError(1416, QStringLiteral("two tables cannot be outer-joined to each other"));

    bool first = true;
    for (int k : order) {
      const FromItem& item = items[size_t(k)];
      if (joins.contains(k)) {
        out.push_back(word(u"LEFT"));
        out.push_back(word(u"JOIN"));
        range(item.begin, item.end, out);
        out.push_back(word(u"ON"));
        out.push_back(symbol(u"("));
        bool firstCondition = true;
        for (auto [b, e] : joins[k].conditions) {
          if (!firstCondition)
            out.push_back(word(u"AND"));
          firstCondition = false;
          copyWithoutMarks(b, e, out);
        }
        out.push_back(symbol(u")"));
      } else {
        if (!first)
          out.push_back(symbol(u","));
        range(item.begin, item.end, out);
      }
      first = false;
    }
    if (!plain.empty()) {
      out.push_back(m_t[where]);
      bool firstCondition = true;
      for (auto [b, e] : plain) {
        if (!firstCondition)
          out.push_back(word(u"AND"));
        firstCondition = false;
        range(b, e, out);
      }
    }
    return tail;
  }

  bool has(size_t begin, size_t end) const {
    for (size_t i = begin; i < end; ++i) {
      if (m_t[i].is(u"(") && i + 1 < end && m_t[i + 1].is(u"SELECT")) {
        i = closing(m_t, i, end); // a subquery's marks are its own
        continue;
      }
      if (m_t[i].is(u"(+)"))
        return true;
    }
    return false;
  }

  QString qualifierOf(size_t b, size_t e) const {
    if (e - b >= 2 && m_t[e - 1].isName() && !m_t[e - 2].is(u"."))
      return m_t[e - 1].name(); // alias
    return m_t[e - 1].name();
  }

  int itemNamed(const std::vector<FromItem>& items, const QString& qualifier) const {
    for (size_t k = 0; k < items.size(); ++k)
      if (items[k].qualifier == qualifier)
        return int(k);
    return -1;
  }

  int itemWithColumn(const std::vector<FromItem>& items, const QString& column) const {
    int found = -1;
    for (size_t k = 0; k < items.size(); ++k) {
      if (!m_hasColumn ||
          !m_hasColumn(Tokens(m_t.begin() + qsizetype(items[k].begin), m_t.begin() + qsizetype(items[k].end)), column))
        continue;
      if (found >= 0)
        throw OraError(918, QStringLiteral("column ambiguously defined"));
      found = int(k);
    }
    if (found < 0)
      throw OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(column));
    return found;
  }

  void copyWithoutMarks(size_t begin, size_t end, Tokens& out) {
    Tokens plainTokens;
    for (size_t i = begin; i < end; ++i)
      if (!m_t[i].is(u"(+)"))
        plainTokens.push_back(m_t[i]);
    plainTokens.push_back(SqlToken{});
    Rewriter inner(plainTokens, m_hasColumn);
    inner.range(0, plainTokens.size() - 1, out);
  }

  const Tokens& m_t;
  const HasColumn& m_hasColumn;
};

} // namespace

bool contains(const std::vector<SqlToken>& tokens, size_t begin, size_t end) {
  return containsToken(tokens, begin, end, u"(+)");
}

std::vector<SqlToken> rewrite(const std::vector<SqlToken>& tokens, size_t begin, size_t end,
                              const HasColumn& hasColumn) {
  Tokens out;
  end = withoutEndTokens(tokens, begin, end);
  Rewriter(tokens, hasColumn).range(begin, end, out);
  out.push_back(SqlToken{});
  return out;
}

} // namespace OuterJoins
