#pragma once

#include "db/OraError.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OracleNumber.h"
#include "db/local/OracleTimestamp.h"
#include "db/local/SessionSettings.h"
#include "db/local/SqliteNumber.h"

#include <QList>
#include <QString>

#include <algorithm>
#include <cctype>
#include <optional>
#include <span>
#include <utility>

#include <sqlite3.h>

// What the engine's SQL functions share: the arguments of a call as Oracle converts them, the
// result, and the registration of a table of functions.
namespace FunctionCall {

using OracleDateTime::DateTime;
using OracleNumber::Value;

// Positions and lengths count characters, not UTF-16 units: a character beyond the BMP is one.
using Chars = QList<uint>;

inline QString fromChars(const uint* begin, qsizetype count) {
  return QString::fromUcs4(reinterpret_cast<const char32_t*>(begin), count);
}

// The arguments of one call, converted as Oracle converts implicitly, and its result.
class Call final {
public:
  Call(sqlite3_context* ctx, int argc, sqlite3_value** argv) : m_ctx(ctx), m_argc(argc), m_argv(argv) {}

  int count() const { return m_argc; }
  // '' is NULL to Oracle.
  bool isNull(int i) const {
    const int type = sqlite3_value_type(m_argv[i]);
    return type == SQLITE_NULL || (type == SQLITE_TEXT && sqlite3_value_bytes(m_argv[i]) == 0);
  }
  bool anyNull() const {
    for (int i = 0; i < m_argc; ++i)
      if (isNull(i))
        return true;
    return false;
  }
  bool isNumber(int i) const {
    const int type = sqlite3_value_type(m_argv[i]);
    return type == SQLITE_INTEGER || type == SQLITE_FLOAT;
  }

  // The UTF-8 of a text argument as SQLite holds it, without a copy; nullopt for any other value.
  std::optional<QByteArrayView> textView(int i) const {
    if (sqlite3_value_type(m_argv[i]) != SQLITE_TEXT)
      return std::nullopt;
    return QByteArrayView(reinterpret_cast<const char*>(sqlite3_value_text(m_argv[i])), sqlite3_value_bytes(m_argv[i]));
  }
  QByteArray utf8(int i) const {
    if (sqlite3_value_type(m_argv[i]) == SQLITE_INTEGER)
      return QByteArray::number(sqlite3_value_int64(m_argv[i]));
    if (isNumber(i))
      return OracleNumber::toText(number(i)).toUtf8();
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(m_argv[i]));
    const QByteArray utf8(text, sqlite3_value_bytes(m_argv[i]));
    if (OracleTimestamp::isCarriedInterval(utf8))
      return OracleTimestamp::shown(QString::fromUtf8(utf8)).toUtf8();
    return utf8;
  }
  // A number, and an interval, as TO_CHAR prints it.
  QString text(int i) const { return QString::fromUtf8(utf8(i)); }
  Chars chars(int i) const { return text(i).toUcs4(); }

  Value number(int i) const { return SqliteNumber::read(m_argv[i], session().wideNumbers); }
  // Oracle truncates the fraction of a position, length or count.
  qint64 integer(int i) const {
    const Value v = number(i);
    if (v.isInteger)
      return v.integer;
    return qint64(std::clamp(std::trunc(v.real), -9.0e18, 9.0e18));
  }

  // Whether a value could be a DATE in its stored form, which starts with the year and a slash:
  // a cheap test before the full parse, for functions called once per row of a big walk.
  bool mayBeDate(int i) const {
    if (sqlite3_value_type(m_argv[i]) != SQLITE_TEXT || sqlite3_value_bytes(m_argv[i]) < 5)
      return false;
    const auto* s = reinterpret_cast<const char*>(sqlite3_value_text(m_argv[i]));
    return isdigit(uchar(s[0])) && isdigit(uchar(s[1])) && isdigit(uchar(s[2])) && isdigit(uchar(s[3])) && s[4] == '/';
  }
  std::optional<DateTime> storedDate(int i) const {
    if (sqlite3_value_type(m_argv[i]) != SQLITE_TEXT)
      return std::nullopt;
    return OracleDateTime::parseStored(text(i));
  }
  std::optional<OracleTimestamp::Timestamp> storedTimestamp(int i) const {
    if (sqlite3_value_type(m_argv[i]) != SQLITE_TEXT)
      return std::nullopt;
    const auto v = OracleTimestamp::read(text(i));
    if (!v || !std::holds_alternative<OracleTimestamp::Timestamp>(*v))
      return std::nullopt;
    return std::get<OracleTimestamp::Timestamp>(*v);
  }
  // A DATE, or a TIMESTAMP where a DATE is wanted, as TRUNC and ROUND take one.
  std::optional<DateTime> storedDateOrTimestamp(int i) const {
    if (const auto d = storedDate(i))
      return d;
    if (const auto t = storedTimestamp(i))
      return OracleTimestamp::toDate(*t);
    return std::nullopt;
  }
  DateTime date(int i) const {
    if (isNumber(i))
      throw OraError(932, QStringLiteral("inconsistent datatypes: expected DATE got NUMBER"));
    return session().date(text(i));
  }
  const SessionSettings& session() const {
    static const SessionSettings defaults;
    const auto* settings = static_cast<const SessionSettings*>(sqlite3_user_data(m_ctx));
    return settings ? *settings : defaults;
  }

  void setNull() { sqlite3_result_null(m_ctx); }
  void set(const QString& text) { setUtf8(text.toUtf8()); }
  void setUtf8(const QByteArray& utf8) {
    if (utf8.isEmpty())
      return setNull();
    sqlite3_result_text(m_ctx, utf8.constData(), int(utf8.size()), SQLITE_TRANSIENT);
  }
  void set(const Value& v) { SqliteNumber::result(m_ctx, v, session().wideNumbers); }
  void set(const DateTime& d) { set(OracleDateTime::stored(d)); }

  void setArgument(int i) {
    if (isNull(i))
      setNull();
    else
      sqlite3_result_value(m_ctx, m_argv[i]);
  }
  // The part SUBSTR and SUBSTRB take of a value of size units (characters or bytes), from
  // arguments 1 and 2: its first unit, counted from 0, and how many; none when that is nothing.
  // A start of 0 is 1, a negative one counts from the end.
  std::optional<std::pair<qint64, qint64>> substringRange(qint64 size) const {
    qint64 start = integer(1);
    if (start == 0)
      start = 1;
    else if (start < 0)
      start += size + 1;
    if (start < 1 || start > size)
      return std::nullopt;
    qint64 length = size - start + 1;
    if (m_argc == 3) {
      const qint64 wanted = integer(2);
      if (wanted < 1)
        return std::nullopt;
      length = qMin(length, wanted);
    }
    return std::pair{start - 1, length};
  }
  // INSTR and INSTRB over units of s: where the occurrence-th (argument 3) sub starts, searching
  // from argument 2 (negative: backwards from that far from the end), 1-based; 0 when it is not.
  template <typename Units> void setPosition(const Units& s, const Units& sub) {
    const qint64 position = m_argc > 2 ? integer(2) : 1;
    const qint64 occurrence = m_argc > 3 ? integer(3) : 1;
    if (occurrence < 1)
      throw OraError(1428, QStringLiteral("argument '%1' is out of range").arg(occurrence));
    const qint64 size = s.size();
    const qint64 width = sub.size();
    const auto matchesAt = [&](qint64 at) { return std::equal(sub.begin(), sub.end(), s.begin() + at); };
    qint64 found = 0;
    if (position > 0) {
      for (qint64 at = position - 1; at + width <= size; ++at)
        if (matchesAt(at) && ++found == occurrence)
          return set(Value::of(at + 1));
    } else if (position < 0) {
      // Backwards from the unit |position| from the end, matches may start there.
      for (qint64 at = qMin(size + position, size - width); at >= 0; --at)
        if (matchesAt(at) && ++found == occurrence)
          return set(Value::of(at + 1));
    }
    set(Value::of(qint64(0)));
  }
  // Argument i in the type of argument model, as DECODE, GREATEST and LEAST return it.
  void setArgumentAs(int i, int model) {
    if (isNull(i))
      setNull();
    else if (isNumber(model))
      set(number(i));
    else
      set(text(i));
  }

private:
  sqlite3_context* m_ctx;
  int m_argc;
  sqlite3_value** m_argv;
};

// F as a SQLite function: an OraError it raises becomes the call's failure, "ORA-nnnnn: text",
// which the engine raises as that error again.
template <void (*F)(Call&)> void entry(sqlite3_context* ctx, int argc, sqlite3_value** argv) {
  try {
    Call call(ctx, argc, argv);
    F(call);
  } catch (const OraError& e) {
    sqlite3_result_error(ctx, e.what(), -1);
  }
}

struct Function {
  const char* name;
  int args; // -1: any number, checked by the function
  void (*call)(sqlite3_context*, int, sqlite3_value**);
  bool deterministic = true;
};

// Registers functions under their names; they read the session's settings.
void registerAll(sqlite3* db, const SessionSettings* settings, std::span<const Function> functions);

} // namespace FunctionCall
