#include "db/local/OracleNumber.h"

#include "db/OraError.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace OracleNumber {

namespace {

OraError invalidNumber() { return OraError(1722, QStringLiteral("invalid number")); }
OraError invalidModel() { return OraError(1481, QStringLiteral("invalid number format model")); }

bool isDigit(QChar c) { return c >= u'0' && c <= u'9'; }

// Decimal text ("-12.5e3") to a double, in the C locale whatever the process's locale is. A
// value beyond the double's range overflows as Oracle's NUMBER would; one too small is zero.
double toDouble(const QByteArray& text) {
  double d = 0;
  const char* begin = text.constData();
  const char* end = begin + text.size();
  const auto result = std::from_chars(begin + (text.startsWith('-') ? 1 : 0), end, d);
  if (result.ec == std::errc::result_out_of_range) {
    const qsizetype e = text.indexOf('e') >= 0 ? text.indexOf('e') : text.indexOf('E');
    if (e < 0 || text.at(e + 1) != '-')
      throw OraError(1426, QStringLiteral("numeric overflow"));
    return 0;
  }
  return text.startsWith('-') ? -d : d;
}

} // namespace

Decimal Decimal::from(const Value& v) {
  if (v.isWide())
    return read(v.wide);
  Decimal d;
  if (v.isInteger) {
    if (v.integer == 0)
      return d;
    d.m_negative = v.integer < 0;
    // Through unsigned, so that the smallest integer has a magnitude too.
    const quint64 magnitude = d.m_negative ? 0 - quint64(v.integer) : quint64(v.integer);
    d.m_digits = QByteArray::number(magnitude);
    d.m_point = int(d.m_digits.size());
  } else {
    if (!std::isfinite(v.real))
      throw OraError(1426, QStringLiteral("numeric overflow"));
    if (v.real == 0)
      return d;
    // The shortest text that reads back as the same double is the decimal value the user wrote.
    char buf[64];
    const auto end = std::to_chars(buf, buf + sizeof buf, v.real, std::chars_format::scientific).ptr;
    const char* p = buf;
    if (*p == '-') {
      d.m_negative = true;
      ++p;
    }
    for (; p < end && *p != 'e'; ++p)
      if (*p != '.')
        d.m_digits += *p;
    int exponent = 0;
    std::from_chars(p + 1 + (p[1] == '+' ? 1 : 0), end, exponent);
    d.m_point = exponent + 1;
  }
  while (d.m_digits.endsWith('0'))
    d.m_digits.chop(1);
  return d;
}

Decimal Decimal::cut(int places, bool roundUp) const {
  const qsizetype keep = qsizetype(m_point) + places;
  if (keep >= m_digits.size())
    return *this;
  Decimal out;
  if (keep < 0)
    return out;
  out.m_negative = m_negative;
  out.m_point = m_point;
  out.m_digits = m_digits.left(keep);
  if (roundUp && m_digits.at(keep) >= '5') {
    qsizetype i = keep - 1;
    while (i >= 0 && out.m_digits.at(i) == '9')
      out.m_digits[i--] = '0';
    if (i < 0) {
      out.m_digits.prepend('1');
      ++out.m_point;
    } else {
      ++out.m_digits[i];
    }
  }
  while (out.m_digits.endsWith('0'))
    out.m_digits.chop(1);
  if (out.m_digits.isEmpty())
    return Decimal();
  return out;
}

Decimal Decimal::rounded(int places) const { return cut(places, true); }
Decimal Decimal::truncated(int places) const { return cut(places, false); }

Decimal Decimal::negated() const {
  Decimal out = *this;
  out.m_negative = !isZero() && !m_negative;
  return out;
}

Decimal Decimal::shifted(int shift) const {
  Decimal out = *this;
  if (!isZero())
    out.m_point += shift;
  return out;
}

QByteArray Decimal::integerDigits() const {
  if (m_point <= 0)
    return {};
  QByteArray out = m_digits.left(m_point);
  out.append(QByteArray(qMax(0, m_point - int(m_digits.size())), '0'));
  return out;
}

QByteArray Decimal::fractionDigits(int places) const {
  QByteArray out;
  for (int i = 0; i < places; ++i) {
    const qsizetype at = qsizetype(m_point) + i;
    out += at >= 0 && at < m_digits.size() ? m_digits.at(at) : '0';
  }
  return out;
}

Decimal Decimal::read(QByteArrayView text) {
  bool negative = false;
  if (!text.isEmpty() && (text.front() == '-' || text.front() == '+')) {
    negative = text.front() == '-';
    text = text.sliced(1);
  }
  QByteArray digits;
  int exponent = 0;
  qsizetype i = 0;
  for (bool point = false; i < text.size() && text[i] != 'e' && text[i] != 'E'; ++i) {
    if (text[i] == '.')
      point = true;
    else {
      digits += text[i];
      exponent -= point ? 1 : 0;
    }
  }
  if (i < text.size()) {
    // An exponent far beyond NUMBER's range only needs to stay far beyond it.
    const QByteArrayView e = text.sliced(i + 1);
    const bool down = e.startsWith('-');
    const QByteArrayView magnitude = e.sliced(down || e.startsWith('+') ? 1 : 0);
    int n = 0;
    for (const char c : magnitude)
      n = qMin(n * 10 + (c - '0'), 100000);
    exponent += down ? -n : n;
  }
  return make(negative, digits, exponent);
}

Value Decimal::value() const {
  if (isZero())
    return Value::of(qint64(0));
  // Base-100 digits, twenty of them: a first pair holding one digit leaves 39 for the rest.
  const int kept = (m_point % 2 == 0 ? 40 : 39) - m_point;
  if (int(m_digits.size()) - m_point > kept)
    return rounded(kept).value();
  if (m_point > 126)
    throw OraError(1426, QStringLiteral("numeric overflow"));
  if (m_point < -129)
    return Value::of(qint64(0));
  const QByteArray sign = m_negative ? QByteArray("-") : QByteArray();
  if (m_digits.size() <= m_point && m_point <= 19) {
    qint64 n = 0;
    const QByteArray whole = sign + integerDigits();
    if (std::from_chars(whole.constData(), whole.constData() + whole.size(), n).ec == std::errc())
      return Value::of(n);
  }
  const double nearest = toDouble(sign + m_digits + 'e' + QByteArray::number(exponent()));
  // A double holds the value when its shortest text has the same digits.
  if (m_digits.size() <= 17 && from(Value::of(nearest)).m_digits == m_digits)
    return Value::of(nearest);
  return Value::ofWide(text().toLatin1(), nearest);
}

int Decimal::compare(const Decimal& other) const {
  if (m_negative != other.m_negative)
    return m_negative ? -1 : 1;
  const Decimal difference = plus(other.negated());
  return difference.isZero() ? 0 : difference.m_negative ? -1 : 1;
}

QString Decimal::text() const {
  if (isZero())
    return QStringLiteral("0");
  QByteArray out = m_negative ? "-" : "";
  const int size = int(m_digits.size());
  if (m_point <= 0)
    out += '.' + QByteArray(-m_point, '0') + m_digits;
  else if (m_point >= size)
    out += m_digits + QByteArray(m_point - size, '0');
  else
    out += m_digits.left(m_point) + '.' + m_digits.mid(m_point);
  // Oracle switches to scientific notation where the plain form would not fit 64 characters.
  if (out.size() > 64) {
    const int exponent = m_point - 1;
    out = (m_negative ? "-" : "") + m_digits.left(1) + (size > 1 ? '.' + m_digits.mid(1) : QByteArray()) + 'E' +
          (exponent < 0 ? '-' : '+') + QByteArray::number(std::abs(exponent)).rightJustified(2, '0');
  }
  return QString::fromLatin1(out);
}

std::optional<Value> parse(QStringView text) {
  const QStringView s = text.trimmed();
  qsizetype i = 0;
  const qsizetype n = s.size();
  if (i < n && (s[i] == u'+' || s[i] == u'-'))
    ++i;
  qsizetype digits = 0;
  bool point = false;
  for (; i < n; ++i) {
    if (isDigit(s[i]))
      ++digits;
    else if (s[i] == u'.' && !point)
      point = true;
    else
      break;
  }
  if (digits == 0)
    return std::nullopt;
  const qsizetype mantissaEnd = i;
  if (i < n && (s[i] == u'e' || s[i] == u'E')) {
    ++i;
    if (i < n && (s[i] == u'+' || s[i] == u'-'))
      ++i;
    const qsizetype first = i;
    while (i < n && isDigit(s[i]))
      ++i;
    if (i == first)
      return std::nullopt;
  }
  if (i != n)
    return std::nullopt;
  const QByteArray ascii = s.toLatin1();
  if (!point && mantissaEnd == n) {
    qint64 v = 0;
    const char* begin = ascii.constData() + (ascii.startsWith('+') ? 1 : 0);
    const auto r = std::from_chars(begin, ascii.constData() + ascii.size(), v);
    if (r.ec == std::errc())
      return Value::of(v);
  }
  // Numbers such as "3.0" or "1e3" are whole: they become integers, as Oracle makes no difference.
  return Decimal::read(ascii).value();
}

QString toText(const Value& v) {
  if (v.isInteger)
    return QString::number(v.integer);
  // The common case without building the digits one by one: a double's shortest plain text,
  // without the zero Oracle leaves out before the point.
  const double magnitude = std::fabs(v.real);
  if (!v.isWide() && magnitude >= 1e-30 && magnitude < 1e30) {
    char buf[80];
    const char* end = std::to_chars(buf, buf + sizeof buf, v.real, std::chars_format::fixed).ptr;
    char* begin = buf;
    if (magnitude < 1) { // "0.5" or "-0.5": the sign, if any, moves onto the zero
      ++begin;
      if (v.real < 0)
        *begin = '-';
    }
    return QString::fromLatin1(begin, end - begin);
  }
  return Decimal::from(v).text();
}

Value fromText(QStringView text) {
  const auto v = parse(text);
  if (!v)
    throw invalidNumber();
  return *v;
}

namespace {

// One number format model, read once for TO_CHAR or TO_NUMBER.
struct Model {
  enum class Sign { Auto, Leading, Trailing, Minus, Brackets };

  bool fm = false;
  bool blankZero = false;
  bool dollar = false;
  bool point = false;
  bool scientific = false;
  bool textMinimum = false;
  Sign sign = Sign::Auto;
  QString integer; // '9', '0' and ',' left of the decimal point
  QString fraction;
  int hex = 0;
  bool hexLower = false;

  int slots() const { return int(integer.count(u'9') + integer.count(u'0')); }
  // The characters of a result without FM: the model's positions and the sign's.
  int width() const {
    int w = int(integer.size() + fraction.size()) + (point ? 1 : 0) + (dollar ? 1 : 0) + hex + (scientific ? 4 : 0);
    return w + (sign == Sign::Brackets ? 2 : 1);
  }
};

Model readModel(QStringView text) {
  Model m;
  qsizetype i = 0;
  const qsizetype n = text.size();
  const auto at = [&](QStringView word) { return text.mid(i).startsWith(word, Qt::CaseInsensitive); };
  if (at(u"FM")) {
    m.fm = true;
    i += 2;
  }
  const QStringView rest = text.mid(i);
  if (rest.compare(u"TM", Qt::CaseInsensitive) == 0 || rest.compare(u"TM9", Qt::CaseInsensitive) == 0 ||
      rest.compare(u"TME", Qt::CaseInsensitive) == 0) {
    m.textMinimum = true;
    return m;
  }
  const qsizetype start = i;
  bool digits = false;
  for (; i < n; ++i) {
    const QChar c = text[i].toUpper();
    if (m.scientific && !(c == u'S' || c == u'M' || c == u'P'))
      throw invalidModel();
    if ((c == u'9' || c == u'0') && m.hex == 0) {
      (m.point ? m.fraction : m.integer) += c;
      digits = true;
    } else if (c == u',' || c == u'G') {
      if (m.point || !digits || m.hex)
        throw invalidModel();
      m.integer += u',';
    } else if (c == u'.' || c == u'D') {
      if (m.point || m.hex)
        throw invalidModel();
      m.point = true;
    } else if (c == u'$' && !m.dollar) {
      m.dollar = true;
    } else if (c == u'B' && !m.blankZero) {
      m.blankZero = true;
    } else if (c == u'S' && i == start && m.sign == Model::Sign::Auto) {
      m.sign = Model::Sign::Leading;
    } else if (c == u'S' && i == n - 1 && digits && m.sign == Model::Sign::Auto) {
      m.sign = Model::Sign::Trailing;
    } else if (at(u"MI") && i == n - 2 && digits && m.sign == Model::Sign::Auto) {
      m.sign = Model::Sign::Minus;
      ++i;
    } else if (at(u"PR") && i == n - 2 && digits && m.sign == Model::Sign::Auto) {
      m.sign = Model::Sign::Brackets;
      ++i;
    } else if (at(u"EEEE") && digits && !m.scientific) {
      m.scientific = true;
      i += 3;
    } else if (c == u'X' && !m.point && !m.integer.contains(u'9') && !m.integer.contains(u',')) {
      ++m.hex;
      m.hexLower = text[i] == u'x';
    } else {
      throw invalidModel();
    }
  }
  if (m.hex && (m.sign != Model::Sign::Auto || m.dollar || m.scientific))
    throw invalidModel();
  return m;
}

QString withSign(const Model& m, const QString& body, bool negative) {
  QString out;
  switch (m.sign) {
  case Model::Sign::Auto: out = negative ? u'-' + body : body; break;
  case Model::Sign::Leading: out = (negative ? u'-' : u'+') + body; break;
  case Model::Sign::Trailing: out = body + (negative ? u'-' : u'+'); break;
  case Model::Sign::Minus: out = body + (negative ? u'-' : u' '); break;
  case Model::Sign::Brackets: out = negative ? u'<' + body + u'>' : u' ' + body + u' '; break;
  }
  return m.fm ? out.trimmed() : out.rightJustified(m.width(), u' ');
}

QString formatHex(const Model& m, const Value& v) {
  const QString overflow(m.width(), u'#');
  if (v.isNegative())
    return overflow;
  const Value whole = Decimal::from(v).rounded(0).value();
  if (!whole.isInteger)
    return overflow;
  QString digits = QString::number(whole.integer, 16);
  if (!m.hexLower)
    digits = digits.toUpper();
  const int size = int(m.integer.size()) + m.hex;
  if (digits.size() > size)
    return overflow;
  digits = digits.rightJustified(size, m.integer.isEmpty() ? u' ' : u'0');
  return m.fm ? digits.trimmed() : u' ' + digits;
}

QString formatScientific(const Model& m, const Decimal& d) {
  const int places = int(m.fraction.size());
  int exponent = d.isZero() ? 0 : d.point() - 1;
  Decimal mantissa = d.shifted(-exponent).rounded(places);
  if (mantissa.point() > 1) { // 9.96 became 10.0
    ++exponent;
    mantissa = d.shifted(-exponent).rounded(places);
  }
  QString body = QString::fromLatin1(mantissa.isZero() ? QByteArray("0") : mantissa.integerDigits());
  if (m.point)
    body += u'.' + QString::fromLatin1(mantissa.fractionDigits(places));
  body += QStringLiteral("E%1%2").arg(QChar(exponent < 0 ? u'-' : u'+')).arg(std::abs(exponent), 2, 10, QChar(u'0'));
  return withSign(m, body, mantissa.isNegative());
}

} // namespace

QString format(const Value& v, QStringView text) {
  const Model m = readModel(text);
  if (m.textMinimum)
    return toText(v);
  if (m.hex)
    return formatHex(m, v);
  const Decimal exact = Decimal::from(v);
  if (m.scientific)
    return formatScientific(m, exact);

  const int places = int(m.fraction.size());
  const Decimal d = exact.rounded(places);
  const QByteArray whole = d.integerDigits();
  if (whole.size() > m.slots())
    return QString(m.width(), u'#');
  if (m.blankZero && d.isZero())
    return m.fm ? QString() : QString(m.width(), u' ');

  // Digits fill the integer positions from the right; a position left of them prints a zero
  // from the leftmost "0" of the model on, and a blank before it.
  const bool blankInteger = m.blankZero && whole.isEmpty();
  const qsizetype firstZero = blankInteger ? -1 : m.integer.indexOf(u'0');
  QString integer = m.integer;
  qsizetype next = whole.size() - 1;
  qsizetype leftmost = integer.size();
  for (qsizetype p = integer.size() - 1; p >= 0; --p) {
    if (integer[p] == u',')
      continue;
    if (next >= 0)
      integer[p] = QChar::fromLatin1(whole.at(next--));
    else if (firstZero >= 0 && p >= firstZero)
      integer[p] = u'0';
    else
      continue;
    leftmost = p;
  }
  // A zero without fraction positions still shows its one digit.
  if (leftmost == integer.size() && !m.point && !blankInteger && m.slots() > 0) {
    leftmost = qMax(integer.lastIndexOf(u'9'), integer.lastIndexOf(u'0'));
    integer[leftmost] = u'0';
  }
  QString body = m.dollar ? QStringLiteral("$") : QString();
  body += integer.mid(leftmost);
  if (m.point) {
    QString fraction = QString::fromLatin1(d.fractionDigits(places));
    // FM drops the trailing zeros that stand in "9" positions after the last "0".
    if (m.fm)
      while (!fraction.isEmpty() && fraction.back() == u'0' && m.fraction[fraction.size() - 1] == u'9')
        fraction.chop(1);
    body += u'.' + fraction;
  }
  return withSign(m, body, d.isNegative());
}

Value parse(QStringView text, QStringView modelText) {
  const Model m = readModel(modelText);
  QStringView s = text.trimmed();
  if (m.textMinimum || m.scientific)
    return fromText(s);
  if (m.hex) {
    if (s.isEmpty() || s.size() > m.hex + m.integer.size())
      throw invalidNumber();
    bool ok = false;
    const quint64 u = s.toULongLong(&ok, 16);
    if (!ok || s.startsWith(u'+') || s.startsWith(u'-'))
      throw invalidNumber();
    return u <= quint64(std::numeric_limits<qint64>::max()) ? Value::of(qint64(u)) : Value::of(double(u));
  }
  const auto takeFront = [&](QChar c) { return s.startsWith(c) ? (s = s.mid(1), true) : false; };
  const auto takeBack = [&](QChar c) { return s.endsWith(c) ? (s.chop(1), true) : false; };
  bool negative = false;
  switch (m.sign) {
  case Model::Sign::Brackets:
    if (s.size() > 1 && s.startsWith(u'<') && s.endsWith(u'>')) {
      s = s.mid(1).chopped(1);
      negative = true;
    }
    break;
  case Model::Sign::Minus: negative = takeBack(u'-'); break;
  case Model::Sign::Trailing:
    negative = takeBack(u'-');
    if (!negative)
      takeBack(u'+');
    break;
  case Model::Sign::Leading:
  case Model::Sign::Auto:
    negative = takeFront(u'-');
    if (!negative)
      takeFront(u'+');
    break;
  }
  if (m.dollar)
    takeFront(u'$');
  QString clean;
  int wholeDigits = 0;
  int fractionDigits = 0;
  bool point = false;
  for (const QChar c : s) {
    if (isDigit(c)) {
      (point ? fractionDigits : wholeDigits) += 1;
      clean += c;
    } else if (c == u',' && !point && m.integer.contains(u',')) {
      continue;
    } else if (c == u'.' && m.point && !point) {
      point = true;
      clean += c;
    } else {
      throw invalidNumber();
    }
  }
  if (wholeDigits + fractionDigits == 0 || wholeDigits > m.slots() || fractionDigits > m.fraction.size())
    throw invalidNumber();
  Value v = fromText(clean);
  if (negative) {
    if (v.isInteger)
      v.integer = -v.integer;
    else
      v.real = -v.real;
  }
  return v;
}

} // namespace OracleNumber
