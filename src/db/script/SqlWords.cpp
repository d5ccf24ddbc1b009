#include "db/script/SqlWords.h"

bool SqlWords::isNameChar(QChar c) { return c.isLetterOrNumber() || c == u'_' || c == u'$' || c == u'#'; }

QStringView SqlWords::wordAt(QStringView text, qsizetype from) {
  qsizetype end = from;
  while (end < text.size() && isNameChar(text[end]))
    ++end;
  return text.mid(from, end - from);
}

qsizetype SqlWords::readLeading(QStringView text, qsizetype from, int count, QStringList& words) {
  qsizetype i = from;
  while (words.size() < count) {
    while (i < text.size() && text[i].isSpace())
      ++i;
    const QStringView word = wordAt(text, i);
    if (word.isEmpty())
      break;
    words += word.toString().toUpper();
    i += word.size();
  }
  return i;
}

QStringList SqlWords::leading(QStringView text, int count) {
  QStringList words;
  readLeading(text, 0, count, words);
  return words;
}
