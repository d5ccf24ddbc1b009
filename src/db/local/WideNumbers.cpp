#include "db/local/WideNumbers.h"

#include "db/local/OracleNumber.h"

#include <cmath>

namespace {

using OracleNumber::Decimal;

int compareTexts(const QByteArray& a, const QByteArray& b) { return Decimal::read(a).compare(Decimal::read(b)); }

// The digits of a double's shortest text: the number it is.
Decimal shortest(double d) { return Decimal::from(OracleNumber::Value::of(d)); }

// Whether d is the double of a number of 15 digits or fewer, which no wide value may travel as.
bool isShort(double d) { return shortest(d).digits().size() <= 15; }

double step(double d, int direction) { return std::nextafter(d, direction > 0 ? HUGE_VAL : -HUGE_VAL); }

// Whether a short number's double lies strictly between from and to: a carrier beyond it would
// sort the value on the wrong side of that number.
bool crossesShort(double from, double to) {
  if (from == to)
    return false;
  for (double d = step(from, to > from ? 1 : -1); d != to; d = step(d, to > from ? 1 : -1))
    if (isShort(d))
      return true;
  return false;
}

} // namespace

bool WideNumbers::fits(double c, const QByteArray& text) const {
  if (m_texts.contains(c))
    return false;
  const auto above = m_texts.upperBound(c);
  if (above != m_texts.cend() && compareTexts(text, above->text) >= 0)
    return false;
  return above == m_texts.cbegin() || compareTexts(text, std::prev(above)->text) > 0;
}

std::optional<double> WideNumbers::carry(double nearest, const QByteArray& text) {
  // A value read back from SQLite comes with its carrier.
  if (const auto it = m_texts.constFind(nearest); it != m_texts.cend() && !it->plain && it->text == text)
    return nearest;
  // The doubles to try: on the value's side of the number its nearest double is, which keeps
  // that double for the number (round(1/3, 16) beside 1/3), the second first, so that a value
  // between that comes later still finds one. Where a short number's double is next to the
  // nearest on that side (999.826574074074 below 999.8265740740741, with 999.826574074074074…
  // between them), only the nearest itself is left.
  const int side = Decimal::read(text).compare(shortest(nearest));
  const double first = step(nearest, side);
  const double second = step(first, side);
  const double third = step(second, side);
  const double candidates[] = {second, first, third, step(third, side), nearest};
  for (const double c : candidates) {
    if (const auto it = m_texts.constFind(c); it != m_texts.cend() && !it->plain && it->text == text)
      return c;
    if (isShort(c) || crossesShort(nearest, c))
      continue;
    if (fits(c, text)) {
      m_texts.insert(c, {text, false});
      return c;
    }
  }
  return std::nullopt;
}

bool WideNumbers::rememberPlain(double d) {
  if (const auto it = m_texts.constFind(d); it != m_texts.cend())
    return it->plain;
  // Only a number of 16 or 17 digits can sit among carriers; it keeps its place in their order.
  if (isShort(d))
    return true;
  const QByteArray text = shortest(d).text().toLatin1();
  if (!fits(d, text))
    return false;
  m_texts.insert(d, {text, true});
  return true;
}
