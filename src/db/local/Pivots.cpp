#include "db/local/Pivots.h"

#include "db/OraError.h"
#include "db/local/QueryBlock.h"
#include "db/local/SqlTranslator.h"
#include "db/local/TokenCursor.h"

#include <QSet>

namespace Pivots {

namespace {

using QueryBlock::closing;
using QueryBlock::Range;
using QueryBlock::split;

SqlToken word(const QString& text) { return SqlToken{SqlToken::Kind::Word, text, 0, 0, 0}; }
SqlToken symbol(const QString& text) { return SqlToken{SqlToken::Kind::Symbol, text, 0, 0, 0}; }
SqlToken quoted(const QString& text) { return SqlToken{SqlToken::Kind::Quoted, text, 0, 0, 0}; }
SqlToken string(const QString& text) { return SqlToken{SqlToken::Kind::String, text, 0, 0, 0}; }

[[noreturn]] void unimplemented() { throw OraError(3001, QStringLiteral("unimplemented feature")); }

Tokens& operator<<(Tokens& out, const SqlToken& token) {
  out.push_back(token);
  return out;
}

void append(Tokens& out, const Tokens& t, Range r) { out.insert(out.end(), t.begin() + r.begin, t.begin() + r.end); }

void appendWords(Tokens& out, QStringView words) {
  for (const auto& w : words.split(u' '))
    out.push_back(w.size() == 1 && !w.front().isLetter() ? symbol(w.toString()) : word(w.toString()));
}

bool opensClause(const Tokens& t, size_t k, size_t end) {
  if (t[k].kind != SqlToken::Kind::Word || k + 1 >= end || (k > 0 && t[k - 1].is(u".")))
    return false;
  if (t[k].is(u"PIVOT"))
    return t[k + 1].is(u"(") || t[k + 1].is(u"XML");
  return t[k].is(u"UNPIVOT") && (t[k + 1].is(u"(") || t[k + 1].is(u"INCLUDE") || t[k + 1].is(u"EXCLUDE"));
}

// A range and the alias written at its end, with or without AS.
struct Aliased {
  Range value;
  std::optional<SqlToken> alias;
};

Aliased aliased(const Tokens& t, Range r) {
  if (r.end - r.begin >= 2 && t[r.end - 1].isName() && !QueryBlock::isNoColumn(t[r.end - 1])) {
    const SqlToken& before = t[r.end - 2];
    if (before.is(u"AS") && r.end - r.begin >= 3)
      return {{r.begin, r.end - 2}, t[r.end - 1]};
    if (before.is(u")") || before.kind == SqlToken::Kind::String || before.kind == SqlToken::Kind::Number)
      return {{r.begin, r.end - 1}, t[r.end - 1]};
  }
  return {r, std::nullopt};
}

// The parts of "(a, b)" or the one part "a".
std::vector<Range> tuple(const Tokens& t, Range r) {
  if (r.end > r.begin && t[r.begin].is(u"(") && closing(t, r.begin, r.end) == r.end)
    return split(t, r.begin + 1, r.end - 1);
  return {r};
}

// The index of the word w at depth 0 of [begin, end), end when there is none.
size_t findWord(const Tokens& t, size_t begin, size_t end, QStringView w) {
  int depth = 0;
  for (size_t k = begin; k < end; ++k) {
    if (t[k].is(u"("))
      ++depth;
    else if (t[k].is(u")"))
      --depth;
    else if (depth == 0 && t[k].is(w))
      return k;
  }
  return end;
}

// "IN ( ... )" at in, ending the clause that closes at close: the ranges of its list.
std::vector<Range> inList(const Tokens& t, size_t in, size_t close) {
  if (in + 1 >= close || !t[in].is(u"IN") || !t[in + 1].is(u"(") || closing(t, in + 1, close) != close - 1)
    TokenCursor::fail(933);
  return split(t, in + 2, close - 2);
}

QStringList namesIn(const Tokens& t, const std::vector<Range>& ranges) {
  QStringList names;
  for (const Range& r : ranges)
    for (size_t k = r.begin; k < r.end; ++k)
      if (t[k].isName())
        names << t[k].name();
  return names;
}

struct Source {
  Range range;
  QStringList columns;
};

Source sourceBefore(const Tokens& t, size_t begin, size_t k, const ColumnsOf& columnsOf) {
  size_t s = k;
  int depth = 0;
  while (s > begin) {
    const SqlToken& before = t[s - 1];
    if (before.is(u")"))
      ++depth;
    else if (before.is(u"("))
      --depth;
    if (depth < 0 || (depth == 0 && (before.is(u"FROM") || before.is(u",") || before.is(u"JOIN"))))
      break;
    --s;
  }
  if (s == k)
    TokenCursor::fail(903);
  Tokens item(t.begin() + s, t.begin() + k);
  item.push_back(SqlToken{});
  const auto columns = columnsOf(item);
  if (!columns)
    TokenCursor::fail(942);
  return {{s, k}, *columns};
}

// ( SELECT keep..., agg(CASE WHEN for = value THEN expr END) "name"... FROM source GROUP BY keep... )
Tokens pivot(const Tokens& t, const Source& source, size_t open, size_t close) {
  const size_t forAt = findWord(t, open + 1, close - 1, u"FOR");
  const size_t inAt = findWord(t, forAt, close - 1, u"IN");
  if (forAt == close - 1 || inAt == close - 1)
    TokenCursor::fail(933);
  const std::vector<Range> forColumns = tuple(t, {forAt + 1, inAt});
  std::vector<Aliased> aggregates;
  std::vector<Range> arguments;
  for (const Range& r : split(t, open + 1, forAt)) {
    const Aliased a = aliased(t, r);
    if (a.value.end - a.value.begin < 3 || !t[a.value.begin + 1].is(u"(") ||
        closing(t, a.value.begin + 1, a.value.end) != a.value.end)
      throw OraError(56902, QStringLiteral("expect aggregate function inside pivot operation"));
    aggregates.push_back(a);
    arguments.push_back({a.value.begin + 2, a.value.end - 1});
  }
  const QStringList used = namesIn(t, forColumns) + namesIn(t, arguments);
  QStringList keep;
  for (const QString& c : source.columns)
    if (!used.contains(c))
      keep << c;

  Tokens out{symbol("("), word("SELECT")};
  for (const QString& c : keep)
    out << quoted(c) << symbol(",");
  QSet<QString> names;
  for (const Range& item : inList(t, inAt, close)) {
    if (t[item.begin].is(u"ANY") || t[item.begin].is(u"SELECT") ||
        (t[item.begin].is(u"(") && item.begin + 1 < item.end && t[item.begin + 1].is(u"SELECT")))
      unimplemented();
    const Aliased value = aliased(t, item);
    const std::vector<Range> parts = tuple(t, value.value);
    if (parts.size() != forColumns.size())
      throw OraError(56901, QStringLiteral("non-constant expression is not allowed for pivot|unpivot values"));
    QStringList labels;
    for (const Range& p : parts)
      labels << SqlTranslator::labelOf(t, p.begin, p.end);
    const QString valueName = value.alias ? value.alias->name() : labels.join(u'_');
    for (size_t a = 0; a < aggregates.size(); ++a) {
      const QString name = aggregates[a].alias ? valueName + u'_' + aggregates[a].alias->name() : valueName;
      if (names.contains(name))
        throw OraError(918, QStringLiteral("column ambiguously defined"));
      names.insert(name);
      Range argument = arguments[a];
      out << t[aggregates[a].value.begin] << symbol("(");
      if (t[argument.begin].is(u"DISTINCT") || t[argument.begin].is(u"ALL"))
        out << t[argument.begin++];
      out << word("CASE") << word("WHEN");
      for (size_t c = 0; c < parts.size(); ++c) {
        if (c > 0)
          out << word("AND");
        append(out, t, forColumns[c]);
        out << symbol("=");
        append(out, t, parts[c]);
      }
      out << word("THEN");
      if (argument.end - argument.begin == 1 && t[argument.begin].is(u"*"))
        out << SqlToken{SqlToken::Kind::Number, QStringLiteral("1"), 0, 0, 0};
      else
        append(out, t, argument);
      out << word("END") << symbol(")") << quoted(name) << symbol(",");
    }
  }
  out.pop_back();
  out << word("FROM");
  append(out, t, source.range);
  if (!keep.isEmpty()) {
    appendWords(out, u"GROUP BY");
    for (const QString& c : keep)
      out << quoted(c) << symbol(",");
    out.pop_back();
  }
  out << symbol(")");
  return out;
}

// ( SELECT * FROM ( SELECT keep..., 'C1' name, c1 value FROM source UNION ALL ... ) [WHERE ...] )
Tokens unpivot(const Tokens& t, const Source& source, size_t open, size_t close, bool includeNulls) {
  const size_t forAt = findWord(t, open + 1, close - 1, u"FOR");
  const size_t inAt = findWord(t, forAt, close - 1, u"IN");
  if (forAt == close - 1 || inAt == close - 1)
    TokenCursor::fail(933);
  const std::vector<Range> values = tuple(t, {open + 1, forAt});
  const std::vector<Range> names = tuple(t, {forAt + 1, inAt});
  struct Item {
    std::vector<Range> columns;
    std::vector<Range> labels; // empty: the columns' own names
  };
  std::vector<Item> items;
  QStringList unpivoted;
  for (const Range& r : inList(t, inAt, close)) {
    const size_t as = findWord(t, r.begin, r.end, u"AS");
    Item item{tuple(t, {r.begin, as}), as == r.end ? std::vector<Range>{} : tuple(t, {as + 1, r.end})};
    if (item.columns.size() != values.size() || (!item.labels.empty() && item.labels.size() != names.size()))
      TokenCursor::fail(907);
    unpivoted << namesIn(t, item.columns);
    items.push_back(item);
  }
  QStringList keep;
  for (const QString& c : source.columns)
    if (!unpivoted.contains(c))
      keep << c;

  Tokens out{symbol("(")};
  appendWords(out, u"SELECT * FROM (");
  for (const Item& item : items) {
    if (&item != &items.front())
      appendWords(out, u"UNION ALL");
    out << word("SELECT");
    for (const QString& c : keep)
      out << quoted(c) << symbol(",");
    QStringList columnNames = namesIn(t, item.columns);
    for (size_t n = 0; n < names.size(); ++n) {
      if (item.labels.empty())
        out << string(columnNames.join(u'_'));
      else
        append(out, t, item.labels[n]);
      out << word("AS");
      append(out, t, names[n]);
      out << symbol(",");
    }
    for (size_t v = 0; v < values.size(); ++v) {
      append(out, t, item.columns[v]);
      out << word("AS");
      append(out, t, values[v]);
      out << symbol(",");
    }
    out.pop_back();
    out << word("FROM");
    append(out, t, source.range);
  }
  out << symbol(")");
  if (!includeNulls) {
    appendWords(out, u"WHERE NOT (");
    for (const Range& v : values) {
      if (&v != &values.front())
        out << word("AND");
      append(out, t, v);
      appendWords(out, u"IS NULL");
    }
    out << symbol(")");
  }
  out << symbol(")");
  return out;
}

} // namespace

bool contains(const Tokens& t, size_t begin, size_t end) {
  end = withoutEndTokens(t, begin, end);
  for (size_t k = begin; k < end; ++k)
    if (opensClause(t, k, end))
      return true;
  return false;
}

Tokens rewrite(const Tokens& t, size_t begin, size_t end, const ColumnsOf& columnsOf) {
  end = withoutEndTokens(t, begin, end);
  size_t k = begin;
  while (!opensClause(t, k, end))
    ++k;
  const bool isPivot = t[k].is(u"PIVOT");
  size_t open = k + 1;
  if (isPivot && t[open].is(u"XML"))
    unimplemented();
  bool includeNulls = false;
  if (!isPivot && !t[open].is(u"(")) {
    includeNulls = t[open].is(u"INCLUDE");
    if (open + 2 >= end || !t[open + 1].is(u"NULLS"))
      TokenCursor::fail(933);
    open += 2;
  }
  if (!t[open].is(u"("))
    TokenCursor::fail(906);
  const size_t close = closing(t, open, end);
  const Source source = sourceBefore(t, begin, k, columnsOf);
  Tokens out(t.begin() + begin, t.begin() + source.range.begin);
  const Tokens query = isPivot ? pivot(t, source, open, close) : unpivot(t, source, open, close, includeNulls);
  out.insert(out.end(), query.begin(), query.end());
  out.insert(out.end(), t.begin() + close, t.begin() + end);
  out.push_back(SqlToken{});
  return out;
}

} // namespace Pivots
