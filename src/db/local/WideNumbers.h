#pragma once

#include <QByteArray>
#include <QMap>
#include <QSet>

#include <bit>
#include <optional>

// The exact text of the wide NUMBER values (more digits than a double holds) that a session's
// statement computed, by the double SQLite carries for each. SQLite then compares, sorts and
// groups the values as the numbers they are, and the engine takes the digits back where a value
// is read again or shown. Each statement starts afresh, so that a double read from a table is not
// taken for a value computed long before.
//
// Every value has a carrier of its own, in the order of the values: one whose nearest double is
// taken moves a double or two aside (1E22 + 1 beside 1E22 + 2). A carrier is never the double of
// a number of 15 digits or fewer (see Decimal::value); where one of 16 or 17 digits the statement
// computed meets a wide value, the two cannot be told apart and the statement is refused.
class WideNumbers final {
public:
  // The double text travels as, near nearest; none when no double keeps it in order.
  std::optional<double> carry(double nearest, const QByteArray& text);
  // Whether d may stand for itself, a number of 16 or 17 digits (long) or fewer: false when a
  // wide value travels as d.
  bool rememberPlain(double d, bool isLong) {
    if (!m_texts.isEmpty() && m_texts.contains(d))
      return false;
    if (isLong)
      m_plain.insert(std::bit_cast<quint64>(d));
    return true;
  }
  const QByteArray* find(double d) const {
    if (m_texts.isEmpty())
      return nullptr;
    const auto it = m_texts.constFind(d);
    return it == m_texts.cend() ? nullptr : &*it;
  }
  void clear() {
    m_texts.clear();
    m_plain.clear();
  }

private:
  QMap<double, QByteArray> m_texts;
  QSet<quint64> m_plain;
};
