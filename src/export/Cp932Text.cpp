#include "export/Cp932Text.h"

#include <QString>

namespace {

constexpr const char* Codec = "windows-31j";

// JIS-derived characters and the Microsoft ones CP932 holds in their place.
char16_t folded(char16_t c) {
  switch (c) {
  case u'\u301C': return u'\uFF5E'; // WAVE DASH → FULLWIDTH TILDE
  case u'\u2016': return u'\u2225'; // DOUBLE VERTICAL LINE → PARALLEL TO
  case u'\u2212': return u'\uFF0D'; // MINUS SIGN → FULLWIDTH HYPHEN-MINUS
  case u'\u00A2': return u'\uFFE0'; // CENT SIGN
  case u'\u00A3': return u'\uFFE1'; // POUND SIGN
  case u'\u00AC': return u'\uFFE2'; // NOT SIGN
  case u'\u2014': return u'\u2015'; // EM DASH → HORIZONTAL BAR
  default: return c;
  }
}

bool needsFolding(QStringView text) {
  for (QChar c : text)
    if (folded(c.unicode()) != c.unicode())
      return true;
  return false;
}

} // namespace

Cp932Text::Cp932Text() : m_encoder(Codec, QStringConverter::Flag::Stateless), m_known(0x10000, 0) {}

bool Cp932Text::holds(char32_t c) {
  if (c < 0x80)
    return true;
  if (c > 0xFFFF)
    return false; // CP932 has nothing beyond the basic plane
  std::uint8_t& known = m_known[c];
  if (known == 0) {
    // A converter of its own: the error flag of one that has met a failure stays set.
    QStringEncoder probe(Codec, QStringConverter::Flag::Stateless);
    const char16_t one = folded(char16_t(c));
    const QByteArray bytes = probe.encode(QStringView(&one, 1)); // encodes only once it is a QByteArray
    known = probe.hasError() || bytes.isEmpty() ? 2 : 1;
  }
  return known == 1;
}

qsizetype Cp932Text::firstUnencodable(QStringView text) {
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar c = text[i];
    if (c.unicode() < 0x80)
      continue;
    if (c.isSurrogate())
      return i;
    if (!holds(c.unicode()))
      return i;
  }
  return -1;
}

QByteArray Cp932Text::encode(QStringView text) {
  if (!needsFolding(text))
    return m_encoder.encode(text);
  QString copy = text.toString();
  for (QChar& c : copy)
    c = QChar(folded(c.unicode()));
  return m_encoder.encode(copy);
}
