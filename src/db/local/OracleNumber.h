#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <utility>

// Oracle's NUMBER on top of SQLite's two numeric types: conversions from and to text, and the
// number format models of TO_CHAR and TO_NUMBER. Errors are raised as OraError.
namespace OracleNumber {

// A number as SQLite holds it: an integer when it is one, else a double. A value that neither
// holds exactly (1/3 to 40 digits, an integer of 30 digits) is wide: it travels through SQLite as
// its text, and real is only its nearest double.
struct Value {
  bool isInteger = true;
  qint64 integer = 0;
  double real = 0;
  QByteArray wide; // Oracle's text of a wide value ("" when not wide)

  static Value of(qint64 i) { return {true, i, 0, {}}; }
  static Value of(double d) { return {false, 0, d, {}}; }
  static Value ofWide(QByteArray text, double nearest) { return {false, 0, nearest, std::move(text)}; }
  bool isWide() const { return !wide.isEmpty(); }
  double toDouble() const { return isInteger ? double(integer) : real; }
  bool isNegative() const { return isInteger ? integer < 0 : real < 0; }
};

// A value as decimal digits, so that rounding happens in base ten as with Oracle's NUMBER: a
// double 2.675 is 2.67499999… in binary, yet its shortest text, and Oracle's value, is 2.675.
// The value is 0.d1d2d3… × 10^point.
class Decimal final {
public:
  static Decimal from(const Value& v);
  // The exact value of a number's text in the form parse accepts.
  static Decimal read(QByteArrayView text);

  bool isZero() const { return m_digits.isEmpty(); }
  bool isNegative() const { return m_negative; }
  // Digits left of the decimal point; negative or zero for a value below one.
  int point() const { return m_point; }
  const QByteArray& digits() const { return m_digits; }

  // Keeps places digits after the decimal point (negative: zeroes that many before it).
  Decimal rounded(int places) const;
  Decimal truncated(int places) const;
  Decimal negated() const;
  // Multiplied by ten to the power of shift.
  Decimal shifted(int shift) const;

  // The integer digits ("" below one) and exactly places digits of the fraction.
  QByteArray integerDigits() const;
  QByteArray fractionDigits(int places) const;

  // Exact sums and products: the decimal digits of both, as NUMBER keeps them.
  Decimal plus(const Decimal& other) const;
  Decimal times(const Decimal& other) const;
  // The quotient to significant digits, cut rather than rounded beyond them.
  Decimal dividedBy(const Decimal& other, int significant) const;
  int compare(const Decimal& other) const;

  // The value as NUMBER keeps it: 40 significant digits at most (39 when the first pair of
  // digits in base 100 holds one), ORA-01426 from 1E126 on, zero below 1E-130.
  Value value() const;
  // As TO_CHAR prints a number without a format model: "1.5", ".5", "-3".
  QString text() const;

private:
  Decimal cut(int places, bool roundUp) const;
  // The value digits × 10^exponent, digits as ASCII with any leading or trailing zeros.
  static Decimal make(bool negative, QByteArray digits, int exponent);
  int exponent() const { return m_point - int(m_digits.size()); }

  bool m_negative = false;
  QByteArray m_digits; // no leading or trailing zeros; empty for zero
  int m_point = 0;
};

// A number written as Oracle accepts it: sign, digits, decimal point, exponent, blanks around;
// exact to the digits NUMBER keeps.
std::optional<Value> parse(QStringView text);
// As parse, raising ORA-01722 for text that is no number.
Value fromText(QStringView text);
// As TO_CHAR prints a number without a format model.
QString toText(const Value& v);

// Oracle's arithmetic on NUMBER, in decimal where SQLite's doubles are binary: 0.1 + 0.2 is 0.3
// and 0.3 / 0.1 is 3. A division by zero is ORA-01476.
Value add(const Value& a, const Value& b);
Value multiply(const Value& a, const Value& b);
Value divide(const Value& a, const Value& b);
Value negate(const Value& v);
int compare(const Value& a, const Value& b);

// TO_CHAR(number, format) and TO_NUMBER(text, format); ORA-01481 for a model they cannot read.
QString format(const Value& v, QStringView model);
Value parse(QStringView text, QStringView model);

} // namespace OracleNumber
