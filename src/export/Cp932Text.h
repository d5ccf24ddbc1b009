#pragma once

#include <QByteArray>
#include <QStringView>

#include <cstdint>
#include <vector>

// Text in the Japanese ANSI code page, as files for Windows tools are written. Characters that
// Unicode has twice, once from JIS and once from Microsoft's table (the wave dash and the full-width
// tilde, the minus sign and the full-width hyphen-minus …), go out as the one CP932 holds, as
// Windows itself writes them. Anything else CP932 has no place for is found before writing, so a
// value is never replaced by a stand-in character without the user knowing.
//
// Each character's code is asked of the system's converter once and kept, so that the bulk of an
// export, most of it ASCII, goes out in a plain loop.
class Cp932Text final {
public:
  Cp932Text();

  // The position of the first character text cannot hold, -1 when it can hold all.
  qsizetype firstUnencodable(QStringView text);
  // Characters CP932 cannot hold come out as the converter's stand-in.
  QByteArray encode(QStringView text);

private:
  struct Code {
    std::uint8_t length = 0; // 0: not yet asked; 1 or 2 bytes
    bool held = false;
    std::uint8_t bytes[2] = {};
  };
  const Code& codeOf(char16_t c);

  std::vector<Code> m_codes; // per BMP character
};
