#include "db/local/OracleNumber.h"

#include "db/OraError.h"

#include <limits>

namespace OracleNumber {

namespace {

// Unsigned integers as ASCII digits, most significant first.
QByteArray withoutLeadingZeros(QByteArray d) {
  qsizetype i = 0;
  while (i < d.size() && d.at(i) == '0')
    ++i;
  return d.mid(i);
}

int compareMagnitudes(const QByteArray& a, const QByteArray& b) {
  const QByteArray x = withoutLeadingZeros(a);
  const QByteArray y = withoutLeadingZeros(b);
  if (x.size() != y.size())
    return x.size() < y.size() ? -1 : 1;
  return x.compare(y);
}

QByteArray addMagnitudes(const QByteArray& a, const QByteArray& b) {
  QByteArray out;
  int carry = 0;
  for (qsizetype i = a.size() - 1, j = b.size() - 1; i >= 0 || j >= 0 || carry; --i, --j) {
    const int digit = (i >= 0 ? a.at(i) - '0' : 0) + (j >= 0 ? b.at(j) - '0' : 0) + carry;
    out.prepend(char('0' + digit % 10));
    carry = digit / 10;
  }
  return out;
}

// a - b where a is the larger.
QByteArray subtractMagnitudes(const QByteArray& a, const QByteArray& b) {
  QByteArray out = a;
  int borrow = 0;
  for (qsizetype i = a.size() - 1, j = b.size() - 1; i >= 0; --i, --j) {
    int digit = (a.at(i) - '0') - (j >= 0 ? b.at(j) - '0' : 0) - borrow;
    borrow = digit < 0 ? 1 : 0;
    out[i] = char('0' + digit + 10 * borrow);
  }
  return out;
}

QByteArray multiplyMagnitudes(const QByteArray& a, const QByteArray& b) {
  std::vector<int> sums(size_t(a.size() + b.size()), 0);
  for (qsizetype i = a.size() - 1; i >= 0; --i)
    for (qsizetype j = b.size() - 1; j >= 0; --j)
      sums[size_t(i + j + 1)] += (a.at(i) - '0') * (b.at(j) - '0');
  for (size_t k = sums.size() - 1; k > 0; --k) {
    sums[k - 1] += sums[k] / 10;
    sums[k] %= 10;
  }
  QByteArray out;
  for (int digit : sums)
    out += char('0' + digit);
  return out;
}

OraError divisorIsZero() { return OraError(1476, QStringLiteral("divisor is equal to zero")); }

} // namespace

Decimal Decimal::make(bool negative, QByteArray digits, int exponent) {
  digits = withoutLeadingZeros(digits);
  while (digits.endsWith('0')) {
    digits.chop(1);
    ++exponent;
  }
  Decimal d;
  if (digits.isEmpty())
    return d;
  d.m_negative = negative;
  d.m_point = exponent + int(digits.size());
  d.m_digits = digits;
  return d;
}

Decimal Decimal::plus(const Decimal& other) const {
  if (isZero())
    return other;
  if (other.isZero())
    return *this;
  // Both as integers times the same power of ten.
  const int low = qMin(exponent(), other.exponent());
  const QByteArray a = m_digits + QByteArray(exponent() - low, '0');
  const QByteArray b = other.m_digits + QByteArray(other.exponent() - low, '0');
  if (m_negative == other.m_negative)
    return make(m_negative, addMagnitudes(a, b), low);
  const int order = compareMagnitudes(a, b);
  if (order == 0)
    return Decimal();
  return order > 0 ? make(m_negative, subtractMagnitudes(a, b), low)
                   : make(other.m_negative, subtractMagnitudes(b, a), low);
}

Decimal Decimal::times(const Decimal& other) const {
  if (isZero() || other.isZero())
    return Decimal();
  return make(m_negative != other.m_negative, multiplyMagnitudes(m_digits, other.m_digits),
              exponent() + other.exponent());
}

Decimal Decimal::dividedBy(const Decimal& other, int significant) const {
  if (other.isZero())
    throw divisorIsZero();
  if (isZero())
    return Decimal();
  // Long division of the digits, past the last of this number's as far as the digits wanted:
  // each zero brought down then is one place further right.
  const QByteArray& divisor = other.m_digits;
  QByteArray remainder;
  QByteArray quotient;
  int exponentOfLast = exponent() - other.exponent();
  for (qsizetype next = 0;; ++next) {
    if (next >= m_digits.size()) {
      if (remainder.isEmpty() || withoutLeadingZeros(quotient).size() >= significant)
        break;
      --exponentOfLast;
    }
    remainder = withoutLeadingZeros(remainder + (next < m_digits.size() ? m_digits.at(next) : '0'));
    int digit = 0;
    while (compareMagnitudes(remainder, divisor) >= 0) {
      remainder = withoutLeadingZeros(subtractMagnitudes(remainder, divisor));
      ++digit;
    }
    quotient += char('0' + digit);
  }
  return make(m_negative != other.m_negative, quotient, exponentOfLast);
}

Value add(const Value& a, const Value& b) {
  qint64 whole = 0;
  if (a.isInteger && b.isInteger && !__builtin_add_overflow(a.integer, b.integer, &whole))
    return Value::of(whole);
  return Decimal::from(a).plus(Decimal::from(b)).value();
}

Value multiply(const Value& a, const Value& b) {
  qint64 whole = 0;
  if (a.isInteger && b.isInteger && !__builtin_mul_overflow(a.integer, b.integer, &whole))
    return Value::of(whole);
  return Decimal::from(a).times(Decimal::from(b)).value();
}

Value divide(const Value& a, const Value& b) {
  if (b.isInteger ? b.integer == 0 : b.real == 0)
    throw divisorIsZero();
  if (a.isInteger && b.isInteger && b.integer != -1 && a.integer % b.integer == 0)
    return Value::of(a.integer / b.integer);
  // Two digits past the most NUMBER keeps, so that its rounding is the only one.
  return Decimal::from(a).dividedBy(Decimal::from(b), 42).value();
}

Value negate(const Value& v) {
  if (v.isInteger && v.integer != std::numeric_limits<qint64>::min())
    return Value::of(-v.integer);
  if (v.isInteger || v.isWide())
    return Decimal::from(v).negated().value();
  return Value::of(-v.real);
}

int compare(const Value& a, const Value& b) {
  if (a.isInteger && b.isInteger)
    return a.integer < b.integer ? -1 : a.integer > b.integer ? 1 : 0;
  if (!a.isWide() && !b.isWide()) {
    const double x = a.toDouble();
    const double y = b.toDouble();
    if (x != y || (a.isInteger == b.isInteger))
      return x < y ? -1 : x > y ? 1 : 0;
  }
  return Decimal::from(a).compare(Decimal::from(b));
}

} // namespace OracleNumber
