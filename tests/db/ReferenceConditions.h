#pragma once

#include <QDateTime>
#include <QRandomGenerator>
#include <QStringList>

#include <functional>
#include <optional>

// Random WHERE conditions over one small table, each with its truth worked out here by SQL's
// three-valued logic, so that what the engine selects can be checked row by row.
namespace ReferenceConditions {

// A row of table F (ID NUMBER, N NUMBER(6,2), S VARCHAR2(10), D DATE); nullopt is NULL.
struct Row {
  qint64 id = 0;
  std::optional<double> n;
  std::optional<QString> s;
  std::optional<QDateTime> d;
};

enum class Truth { False, True, Unknown };

struct Condition {
  QString sql;
  std::function<Truth(const Row&)> truth;
};

inline const QStringList Texts = {"a", "ab", "abc", "b", "ba", "B", "日本", "z9"};
inline const QDate FirstDay(2024, 1, 1);

// Rows with every kind of value, NULL one time in five; numbers are quarters, exact in binary
// and in decimal alike.
inline std::vector<Row> randomRows(QRandomGenerator& random, int count) {
  std::vector<Row> rows;
  for (int id = 1; id <= count; ++id) {
    Row r;
    r.id = id;
    if (random.bounded(5))
      r.n = (int(random.bounded(41)) - 20) / 4.0;
    if (random.bounded(5))
      r.s = Texts[random.bounded(int(Texts.size()))];
    if (random.bounded(5))
      r.d = QDateTime(FirstDay.addDays(random.bounded(60)), QTime(int(random.bounded(24)), 0));
    rows.push_back(r);
  }
  return rows;
}

inline QString insertOf(const Row& r) {
  return QStringLiteral("insert into f values (%1, %2, %3, %4)")
      .arg(r.id)
      .arg(r.n ? QString::number(*r.n) : QStringLiteral("null"), r.s ? u'\'' + *r.s + u'\'' : QStringLiteral("null"),
           r.d ? QStringLiteral("to_date('%1', 'YYYY-MM-DD HH24:MI')").arg(r.d->toString("yyyy-MM-dd HH:mm"))
               : QStringLiteral("null"));
}

template <typename T> Truth compared(const std::optional<T>& a, const QString& op, const T& b) {
  if (!a)
    return Truth::Unknown;
  const bool result = op == u"="    ? *a == b
                      : op == u"<>" ? *a != b
                      : op == u"<"  ? *a < b
                      : op == u"<=" ? *a <= b
                      : op == u">"  ? *a > b
                                    : *a >= b;
  return result ? Truth::True : Truth::False;
}

inline Truth bothTrue(Truth a, Truth b) {
  if (a == Truth::False || b == Truth::False)
    return Truth::False;
  return a == Truth::True && b == Truth::True ? Truth::True : Truth::Unknown;
}
inline Truth negated(Truth a) { return a == Truth::Unknown ? a : a == Truth::True ? Truth::False : Truth::True; }
inline Truth eitherTrue(Truth a, Truth b) { return negated(bothTrue(negated(a), negated(b))); }

template <typename T> std::optional<T> mapped(const std::optional<T>& v, const std::function<T(const T&)>& f) {
  return v ? std::optional<T>(f(*v)) : std::nullopt;
}

inline Condition randomCondition(QRandomGenerator& random, int depth = 2) {
  static const QStringList ops = {"=", "<>", "<", "<=", ">", ">="};
  const QString op = ops[random.bounded(int(ops.size()))];
  if (depth > 0 && random.bounded(3) == 0) {
    const Condition a = randomCondition(random, depth - 1);
    if (random.bounded(3) == 0)
      return {QStringLiteral("not (%1)").arg(a.sql), [a](const Row& r) { return negated(a.truth(r)); }};
    const Condition b = randomCondition(random, depth - 1);
    if (random.bounded(2))
      return {QStringLiteral("(%1 and %2)").arg(a.sql, b.sql),
              [a, b](const Row& r) { return bothTrue(a.truth(r), b.truth(r)); }};
    return {QStringLiteral("(%1 or %2)").arg(a.sql, b.sql),
            [a, b](const Row& r) { return eitherTrue(a.truth(r), b.truth(r)); }};
  }
  const double k = (int(random.bounded(41)) - 20) / 4.0;
  const QString text = Texts[random.bounded(int(Texts.size()))];
  const QDateTime day(FirstDay.addDays(random.bounded(60)), QTime(0, 0));
  const QString date = QStringLiteral("date '%1'").arg(day.toString("yyyy-MM-dd"));
  const int days = int(random.bounded(7)) - 3;
  switch (random.bounded(9)) {
  case 0: return {QStringLiteral("n %1 %2").arg(op).arg(k), [=](const Row& r) { return compared(r.n, op, k); }};
  case 1: return {QStringLiteral("s %1 '%2'").arg(op, text), [=](const Row& r) { return compared(r.s, op, text); }};
  case 2: return {QStringLiteral("d %1 %2").arg(op, date), [=](const Row& r) { return compared(r.d, op, day); }};
  case 3:
    return {QStringLiteral("n * 2 + 1 %1 %2").arg(op).arg(k),
            [=](const Row& r) { return compared(mapped<double>(r.n, [](double v) { return v * 2 + 1; }), op, k); }};
  case 4:
    return {QStringLiteral("d + %1 %2 %3").arg(days).arg(op, date), [=](const Row& r) {
              return compared(mapped<QDateTime>(r.d, [=](const QDateTime& v) { return v.addDays(days); }), op, day);
            }};
  case 5:
    return {QStringLiteral("n - '%1' %2 0").arg(k).arg(op),
            [=](const Row& r) { return compared(mapped<double>(r.n, [=](double v) { return v - k; }), op, 0.0); }};
  case 6: {
    const double high = k + random.bounded(10) / 4.0;
    return {QStringLiteral("n between %1 and %2").arg(k).arg(high),
            [=](const Row& r) { return bothTrue(compared(r.n, ">=", k), compared(r.n, "<=", high)); }};
  }
  case 7:
    return {QStringLiteral("s like '%1%'").arg(text.left(1)), [=](const Row& r) {
              return r.s ? (r.s->startsWith(text.left(1)) ? Truth::True : Truth::False) : Truth::Unknown;
            }};
  default: {
    const bool none = random.bounded(2);
    const int column = int(random.bounded(3));
    return {QStringLiteral("%1 is %2null").arg(QStringList{"n", "s", "d"}[column], none ? "" : "not "),
            [=](const Row& r) {
              const bool isNull = column == 0 ? !r.n : column == 1 ? !r.s : !r.d;
              return isNull == none ? Truth::True : Truth::False;
            }};
  }
  }
}

// The IDs of rows for which the condition is true, in order.
inline QStringList idsWhere(const std::vector<Row>& rows, const Condition& c) {
  QStringList ids;
  for (const Row& r : rows)
    if (c.truth(r) == Truth::True)
      ids << QString::number(r.id);
  return ids;
}

} // namespace ReferenceConditions
