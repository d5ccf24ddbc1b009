#pragma once

#include <QByteArray>
#include <QStringEncoder>
#include <QStringView>

#include <cstdint>
#include <vector>

// Text in the Japanese ANSI code page, as files for Windows tools are written. Characters that
// Unicode has twice, once from JIS and once from Microsoft's table (the wave dash and the full-width
// tilde, the minus sign and the full-width hyphen-minus …), go out as the one CP932 holds, as
// Windows itself writes them. Anything else CP932 has no place for is found before writing, so a
// value is never replaced by a stand-in character without the user knowing.
class Cp932Text final {
public:
  Cp932Text();

  // The position of the first character text cannot hold, -1 when it can hold all.
  qsizetype firstUnencodable(QStringView text);
  QByteArray encode(QStringView text);

private:
  bool holds(char32_t c);

  QStringEncoder m_encoder;
  std::vector<std::uint8_t> m_known; // per BMP character: 0 not yet asked, 1 held, 2 not held
};
