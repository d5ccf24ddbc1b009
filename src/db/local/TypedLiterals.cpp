#include "db/local/TypedLiterals.h"

#include "db/OraError.h"
#include "db/local/OracleTimestamp.h"

namespace TypedLiterals {

namespace {

bool isField(const SqlToken& t) {
  return t.is(u"YEAR") || t.is(u"MONTH") || t.is(u"DAY") || t.is(u"HOUR") || t.is(u"MINUTE") || t.is(u"SECOND");
}

// An interval's qualifier from k: its fields and precisions, and where it ends.
struct Qualifier {
  QString leading, trailing;
  int leadingPrecision = -1, fractionPrecision = -1;
  size_t end = 0;
};

// "(n)" or "(n, m)" at k: the numbers, -1 where absent; k moves past it.
std::pair<int, int> precisions(const std::vector<SqlToken>& t, size_t& k, size_t end) {
  if (k >= end || !t[k].is(u"("))
    return {-1, -1};
  const auto number = [&](size_t at) {
    if (at >= end || t[at].kind != SqlToken::Kind::Number)
      throw OraError(30088, QStringLiteral("datetime/interval precision is out of range"));
    return t[at].text.toInt();
  };
  const int first = number(k + 1);
  int second = -1;
  k += 2;
  if (k < end && t[k].is(u",")) {
    second = number(k + 1);
    k += 2;
  }
  if (k >= end || !t[k].is(u")"))
    throw OraError(907, QStringLiteral("missing right parenthesis"));
  ++k;
  return {first, second};
}

std::optional<Qualifier> qualifier(const std::vector<SqlToken>& t, size_t k, size_t end) {
  if (k >= end || !isField(t[k]))
    return std::nullopt;
  Qualifier q;
  q.leading = t[k].upper();
  ++k;
  const auto [lead, fraction] = precisions(t, k, end);
  q.leadingPrecision = lead;
  q.fractionPrecision = q.leading == u"SECOND" ? fraction : -1;
  if (k + 1 < end && t[k].is(u"TO") && isField(t[k + 1])) {
    q.trailing = t[k + 1].upper();
    k += 2;
    if (q.trailing == u"SECOND")
      q.fractionPrecision = precisions(t, k, end).first;
  }
  q.end = k;
  return q;
}

} // namespace

std::optional<size_t> end(const std::vector<SqlToken>& t, size_t i, size_t end) {
  if (i + 1 >= end || t[i + 1].kind != SqlToken::Kind::String)
    return std::nullopt;
  if (t[i].is(u"DATE") || t[i].is(u"TIMESTAMP"))
    return i + 2;
  if (!t[i].is(u"INTERVAL"))
    return std::nullopt;
  try {
    if (const auto q = qualifier(t, i + 2, end))
      return q->end;
  } catch (const OraError&) {
    // A malformed qualifier is reported when the literal is read.
  }
  return i + 2;
}

std::optional<Literal> read(const std::vector<SqlToken>& t, size_t i, size_t end) {
  if (i + 1 >= end || t[i + 1].kind != SqlToken::Kind::String)
    return std::nullopt;
  const QString& text = t[i + 1].text;
  if (t[i].is(u"DATE"))
    return Literal{OracleDateTime::stored(OracleDateTime::parse(text, u"YYYY-MM-DD", QDate::currentDate())), i + 2};
  if (t[i].is(u"TIMESTAMP"))
    return Literal{OracleTimestamp::text(OracleTimestamp::literal(text)), i + 2};
  if (!t[i].is(u"INTERVAL"))
    return std::nullopt;
  const auto q = qualifier(t, i + 2, end);
  if (!q)
    throw OraError(30089, QStringLiteral("missing or invalid <datetime field>"));
  return Literal{OracleTimestamp::text(OracleTimestamp::intervalLiteral(text, q->leading, q->leadingPrecision,
                                                                        q->trailing, q->fractionPrecision)),
                 q->end};
}

} // namespace TypedLiterals
