#include "db/local/QuantifiedComparisons.h"

#include <QHash>

namespace QuantifiedComparisons {

namespace {

QString operatorOf(const SqlToken& op) { return op.is(u"!=") || op.is(u"^=") ? QStringLiteral("<>") : op.text; }

// The operator whose answer is the opposite: x > ALL (s) is NOT (x <= ANY (s)).
QString negated(const QString& op) {
  static const QHash<QString, QString> opposite = {{"=", "<>"}, {"<>", "="}, {"<", ">="},
                                                   {">=", "<"}, {">", "<="}, {"<=", ">"}};
  return opposite.value(op);
}

SqlToken symbol(const char16_t* s) { return SqlToken{SqlToken::Kind::Symbol, QString::fromUtf16(s), 0, 0, 0}; }

} // namespace

bool isQuantifier(const SqlToken& t) { return t.is(u"ANY") || t.is(u"SOME") || t.is(u"ALL"); }

Tokens expandList(const Tokens& t, QueryBlock::Range left, size_t op, size_t open, size_t close) {
  Tokens out{symbol(u"(")};
  for (const QueryBlock::Range& item : QueryBlock::split(t, open + 1, close - 1)) {
    if (out.size() > 1)
      out.push_back(SqlToken{SqlToken::Kind::Word, t[op + 1].is(u"ALL") ? "AND" : "OR", 0, 0, 0});
    out.push_back(symbol(u"("));
    out.insert(out.end(), t.begin() + qsizetype(left.begin), t.begin() + qsizetype(left.end));
    out.push_back(t[op]);
    out.insert(out.end(), t.begin() + qsizetype(item.begin), t.begin() + qsizetype(item.end));
    out.push_back(symbol(u")"));
  }
  out.push_back(symbol(u")"));
  return out;
}

QString subquery(const Tokens& t, size_t op, const QString& x, const QString& query) {
  const bool all = t[op + 1].is(u"ALL");
  const QString compare = all ? negated(operatorOf(t[op])) : operatorOf(t[op]);
  const QString any = QStringLiteral("(WITH \"DBSWEEP$Q\"(\"C\") AS (%1) SELECT CASE WHEN max(%2 %3 \"C\") THEN 1 "
                                     "WHEN max((%2 %3 \"C\") IS NULL) THEN NULL ELSE 0 END FROM \"DBSWEEP$Q\")")
                          .arg(query, x, compare);
  return all ? QStringLiteral("(NOT %1)").arg(any) : any;
}

} // namespace QuantifiedComparisons
