#include "export/Cp932Text.h"

#include <QStringEncoder>

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

} // namespace

Cp932Text::Cp932Text() : m_codes(0x10000) {}

const Cp932Text::Code& Cp932Text::codeOf(char16_t c) {
  Code& code = m_codes[c];
  if (code.length == 0) {
    // A converter of its own: the error flag of one that has met a failure stays set. A lone
    // surrogate is no character at all.
    QStringEncoder probe(Codec, QStringConverter::Flag::Stateless);
    const char16_t one = folded(c);
    const QByteArray bytes = probe.encode(QStringView(&one, 1)); // encodes only once it is a QByteArray
    code.held = !probe.hasError() && !bytes.isEmpty() && !QChar::isSurrogate(c);
    code.length = bytes.size() == 1 ? 1 : 2;
    code.bytes[0] = bytes.isEmpty() ? '?' : std::uint8_t(bytes[0]);
    code.bytes[1] = bytes.size() > 1 ? std::uint8_t(bytes[1]) : 0;
  }
  return code;
}

qsizetype Cp932Text::firstUnencodable(QStringView text) {
  for (qsizetype i = 0; i < text.size(); ++i) {
    const char16_t c = text[i].unicode();
    if (c >= 0x80 && !codeOf(c).held)
      return i;
  }
  return -1;
}

QByteArray Cp932Text::encode(QStringView text) {
  QByteArray out(text.size() * 2, Qt::Uninitialized);
  char* to = out.data();
  for (const QChar ch : text) {
    const char16_t c = ch.unicode();
    if (c < 0x80) {
      *to++ = char(c);
      continue;
    }
    const Code& code = codeOf(c);
    *to++ = char(code.bytes[0]);
    if (code.length == 2)
      *to++ = char(code.bytes[1]);
  }
  out.truncate(to - out.data());
  return out;
}
