#pragma once

#include <QByteArray>
#include <QHash>

#include <bit>

// The exact text of the wide NUMBER values (more digits than a double holds) that a session's
// statement computed, by the nearest double SQLite carries for each. SQLite then compares,
// sorts and groups the values as the numbers they are, and the engine takes the digits back
// where a value is read again or shown. Each statement starts afresh, so that a double read from
// a table is not taken for a value computed long before; and a double computed as a number of
// its own replaces a wide value it equals, as the value computed last is the one more likely
// read next.
class WideNumbers final {
public:
  void remember(double nearest, const QByteArray& text) { m_texts.insert(std::bit_cast<quint64>(nearest), text); }
  void forget(double d) {
    if (!m_texts.isEmpty())
      m_texts.remove(std::bit_cast<quint64>(d));
  }
  const QByteArray* find(double d) const {
    if (m_texts.isEmpty())
      return nullptr;
    const auto it = m_texts.constFind(std::bit_cast<quint64>(d));
    return it == m_texts.cend() ? nullptr : &*it;
  }
  void clear() { m_texts.clear(); }

private:
  QHash<quint64, QByteArray> m_texts;
};
