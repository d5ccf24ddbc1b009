#include "sqlconsole/DisplayWidth.h"

#include <QList>

#include <algorithm>
#include <array>
#include <utility>

namespace {

// East Asian Width W and F ranges (Unicode's EastAsianWidth.txt, merged into blocks).
constexpr std::array<std::pair<char32_t, char32_t>, 19> kWide{{
    {0x1100, 0x115F},   // Hangul Jamo initial consonants
    {0x231A, 0x231B},   // watch, hourglass
    {0x2329, 0x232A},   // angle brackets
    {0x2E80, 0x303E},   // CJK radicals, Kangxi, ideographic description, CJK symbols and punctuation
    {0x3041, 0x33FF},   // Hiragana, Katakana, Bopomofo, Hangul compatibility Jamo, Kanbun, CJK compatibility
    {0x3400, 0x4DBF},   // CJK extension A
    {0x4E00, 0x9FFF},   // CJK unified ideographs
    {0xA000, 0xA4CF},   // Yi
    {0xA960, 0xA97F},   // Hangul Jamo extended A
    {0xAC00, 0xD7A3},   // Hangul syllables
    {0xF900, 0xFAFF},   // CJK compatibility ideographs
    {0xFE10, 0xFE19},   // vertical forms
    {0xFE30, 0xFE6F},   // CJK compatibility forms, small forms
    {0xFF00, 0xFF60},   // full-width forms
    {0xFFE0, 0xFFE6},   // full-width signs
    {0x1F300, 0x1F64F}, // pictographs, emoticons
    {0x1F900, 0x1F9FF}, // supplemental pictographs
    {0x20000, 0x2FFFD}, // CJK extensions B to F, compatibility supplement
    {0x30000, 0x3FFFD}, // CJK extension G
}};

int widthOf(char32_t c) {
  if (c < 0x20 || (c >= 0x7F && c < 0xA0))
    return 0;
  switch (QChar::category(c)) {
  case QChar::Mark_NonSpacing:
  case QChar::Mark_Enclosing:
  case QChar::Other_Format: return 0;
  default: break;
  }
  const auto wide = std::find_if(kWide.begin(), kWide.end(),
                                 [c](const auto& range) { return c >= range.first && c <= range.second; });
  return wide == kWide.end() ? 1 : 2;
}

} // namespace

int displayWidth(QStringView text) {
  int width = 0;
  for (const char32_t c : text.toUcs4())
    width += widthOf(c);
  return width;
}
