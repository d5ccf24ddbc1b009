#pragma once

#include <QByteArray>
#include <QMap>

#include <optional>

// The exact text of the wide NUMBER values (more digits than a double holds) that a session's
// statement computed, by the double SQLite carries for each. SQLite then compares, sorts and
// groups the values as the numbers they are, and the engine takes the digits back where a value
// is read again or shown. Each statement starts afresh, so that a double read from a table is not
// taken for a value computed long before.
//
// Every value has a carrier of its own, in the order of the values, a double or two aside from
// its nearest, on its side of the number that double is: that number (0.3 beside 0.3 + 1E-38,
// ROUND(1/3, 16) beside 1/3) keeps its double. A carrier is never the double of a number of 15
// digits or fewer, and the numbers of 16 or 17 digits the statement computed keep their place
// among the carriers; where no double is left in order, the statement is refused.
class WideNumbers final {
public:
  // The double text travels as, near nearest; none when no double keeps it in order.
  std::optional<double> carry(double nearest, const QByteArray& text);
  // Whether d may stand for itself: false when a wide value travels as d, or a number of 16 or
  // 17 digits would break the order of the carriers around it.
  bool rememberPlain(double d);
  const QByteArray* find(double d) const {
    if (m_texts.isEmpty())
      return nullptr;
    const auto it = m_texts.constFind(d);
    return it == m_texts.cend() || it->plain ? nullptr : &it->text;
  }
  void clear() { m_texts.clear(); }

private:
  struct Entry {
    QByteArray text;
    bool plain = false; // a number of 16 or 17 digits standing for itself
  };
  // Whether text may stand at c: c free and the values beside it smaller and greater.
  bool fits(double c, const QByteArray& text) const;

  QMap<double, Entry> m_texts;
};
