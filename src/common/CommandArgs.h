#pragma once

#include <QStringList>

// The words of a command line: count() of them, word(1) .. word(count()). Asking for a word that
// is not there gives "".
class CommandArgs final {
public:
  CommandArgs() = default;
  explicit CommandArgs(QStringList words) : m_words(std::move(words)) {}

  int count() const { return int(m_words.size()); }
  QString word(int n) const { return n >= 1 && n <= count() ? m_words[n - 1] : QString(); }

private:
  QStringList m_words;
};
