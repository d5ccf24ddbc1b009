#include "app/PasswordScramble.h"

#include <QList>

namespace {

// The scalar values the shift walks through: U+0001..U+D7FF then U+E000..U+10FFFF.
constexpr qint64 SurrogateFirst = 0xD800;
constexpr qint64 SurrogateCount = 0x800;
constexpr qint64 CycleLength = 0x110000 - SurrogateCount - 1;

// Position of a scalar value in the cycle, 0-based.
qint64 positionOf(char32_t c) { return (c < SurrogateFirst ? qint64(c) : qint64(c) - SurrogateCount) - 1; }

char32_t scalarAt(qint64 position) {
  const qint64 v = position + 1;
  return char32_t(v < SurrogateFirst ? v : v + SurrogateCount);
}

QList<char32_t> scalarsOf(const QString& text) {
  QList<char32_t> out;
  out.reserve(text.size());
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text.at(i);
    if (c.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate()) {
      out.append(QChar::surrogateToUcs4(c, text.at(i + 1)));
      ++i;
    } else if (c.isSurrogate()) {
      out.append(QChar::ReplacementCharacter);
    } else {
      out.append(c.unicode());
    }
  }
  return out;
}

// Moves character i (1-based) by direction * i places.
QString shifted(const QString& text, int direction) {
  const QList<char32_t> scalars = scalarsOf(text);
  QString out;
  out.reserve(text.size());
  for (qsizetype i = 0; i < scalars.size(); ++i) {
    const char32_t c = scalars.at(i);
    if (c == 0) {
      out += QChar(u'\0');
      continue;
    }
    qint64 position = (positionOf(c) + direction * ((i + 1) % CycleLength)) % CycleLength;
    if (position < 0)
      position += CycleLength;
    // Appended unit by unit: a conversion from UTF-32 would take a moved U+FEFF for a byte
    // order mark and drop it.
    const char32_t moved = scalarAt(position);
    if (QChar::requiresSurrogates(moved)) {
      out += QChar(QChar::highSurrogate(moved));
      out += QChar(QChar::lowSurrogate(moved));
    } else {
      out += QChar(char16_t(moved));
    }
  }
  return out;
}

} // namespace

QString ScramblePassword(const QString& p) { return shifted(p, 1); }

QString UnscramblePassword(const QString& s) { return shifted(s, -1); }
