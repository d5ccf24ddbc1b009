#include "db/local/WideNumbers.h"

#include "db/local/OracleNumber.h"

#include <cmath>

namespace {

int compareTexts(const QByteArray& a, const QByteArray& b) {
  return OracleNumber::Decimal::read(a).compare(OracleNumber::Decimal::read(b));
}

} // namespace

std::optional<double> WideNumbers::carry(double nearest, const QByteArray& text) {
  // A few doubles either way hold any pile-up of one statement's values that differ beyond the
  // seventeenth digit; more is refused.
  constexpr int MaxSteps = 4;
  double c = nearest;
  for (int step = 0; step <= MaxSteps; ++step) {
    if (m_plain.contains(std::bit_cast<quint64>(c)))
      return std::nullopt;
    const auto taken = m_texts.constFind(c);
    if (taken == m_texts.cend())
      break;
    if (*taken == text)
      return c;
    if (step == MaxSteps)
      return std::nullopt;
    c = std::nextafter(c, compareTexts(text, *taken) > 0 ? HUGE_VAL : -HUGE_VAL);
  }
  // The carriers beside c must stand for a smaller and a greater value, or SQLite's order of the
  // doubles would not be the numbers'.
  const auto above = m_texts.upperBound(c);
  if (above != m_texts.cend() && compareTexts(text, *above) >= 0)
    return std::nullopt;
  if (above != m_texts.cbegin() && compareTexts(text, *std::prev(above)) <= 0)
    return std::nullopt;
  m_texts.insert(c, text);
  return c;
}
