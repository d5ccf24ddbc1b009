#include "db/local/TextFunctions.h"

#include "db/local/FunctionCall.h"

namespace {

using FunctionCall::Call;
using FunctionCall::Chars;
using FunctionCall::entry;
using FunctionCall::fromChars;
using FunctionCall::Function;
using OracleNumber::Value;

// TRANSLATE(text, from, to): each character of from becomes the one at its place in to, or
// goes when to is shorter.
void translate(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const Chars from = c.chars(1);
  const Chars to = c.chars(2);
  Chars out;
  for (const uint ch : c.chars(0)) {
    const qsizetype at = from.indexOf(ch);
    if (at < 0)
      out.append(ch);
    else if (at < to.size())
      out.append(to[at]);
  }
  c.set(fromChars(out.constData(), out.size()));
}

// Words are runs of letters and digits: the first of each upper case, the others lower.
void initcap(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  Chars s = c.chars(0);
  bool inWord = false;
  for (uint& ch : s) {
    ch = inWord ? QChar::toLower(char32_t(ch)) : QChar::toUpper(char32_t(ch));
    inWord = QChar::isLetterOrNumber(char32_t(ch));
  }
  c.set(fromChars(s.constData(), s.size()));
}

// The byte functions count the UTF-8 bytes of the database character set, AL32UTF8.
void lengthb(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  c.set(Value::of(qint64(c.utf8(0).size())));
}

// A character cut by the first or last byte taken leaves a blank for each of its bytes taken.
void substrb(Call& c) {
  if (c.anyNull())
    return c.setNull();
  const QByteArray s = c.utf8(0);
  const qint64 size = s.size();
  const auto part = c.substringRange(size);
  if (!part)
    return c.setNull();
  const qint64 last = part->first + part->second;
  const auto isContinuation = [&](qint64 at) { return at < size && (uchar(s[at]) & 0xC0) == 0x80; };
  QByteArray out;
  qint64 at = part->first;
  for (; at < last && isContinuation(at); ++at)
    out += ' ';
  qint64 end = last;
  while (end > at && isContinuation(end))
    --end; // the character starting at end reaches past the last byte taken
  out += s.mid(at, end - at);
  out += QByteArray(last - end, ' ');
  c.set(QString::fromUtf8(out));
}

void instrb(Call& c) {
  if (c.anyNull())
    return c.setNull();
  c.setPosition(c.utf8(0), c.utf8(1));
}

// ASCII and CHR: a character's code in the database character set, the bytes of its UTF-8 form
// read as one number (é is 50089).
void ascii(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  const Chars s = c.chars(0);
  const QByteArray bytes = fromChars(s.constData(), 1).toUtf8();
  qint64 code = 0;
  for (const char b : bytes)
    code = code * 256 + uchar(b);
  c.set(Value::of(code));
}

void chr(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  qint64 code = c.integer(0);
  if (code < 0 || code > 0xFFFFFFFFLL)
    throw OraError(1428, QStringLiteral("argument '%1' is out of range").arg(code));
  QByteArray bytes;
  do {
    bytes.prepend(char(code & 0xFF));
    code >>= 8;
  } while (code > 0);
  c.set(QString::fromUtf8(bytes));
}

// NCHR(n): the character of code n in the national character set, UTF-16 (a pair of surrogates
// for one beyond the BMP).
void nchr(Call& c) {
  if (c.isNull(0))
    return c.setNull();
  const qint64 code = c.integer(0);
  if (code < 0 || code > 0xFFFFFFFFLL)
    throw OraError(1428, QStringLiteral("argument '%1' is out of range").arg(code));
  QString s;
  if (code > 0xFFFF)
    s = QString(QChar(char16_t(code >> 16))) + QChar(char16_t(code & 0xFFFF));
  else
    s = QString(QChar(char16_t(code)));
  c.set(s);
}

// dbsweep_trim(mode, character, text): TRIM(LEADING | TRAILING | BOTH character FROM text).
void trimFrom(Call& c) {
  if (c.isNull(1) || c.isNull(2))
    return c.setNull();
  const Chars set = c.chars(1);
  if (set.size() != 1)
    throw OraError(30001, QStringLiteral("trim set should have only one character"));
  const QString mode = c.text(0);
  const Chars s = c.chars(2);
  qsizetype begin = 0;
  qsizetype end = s.size();
  while (mode != u"TRAILING" && begin < end && s[begin] == set[0])
    ++begin;
  while (mode != u"LEADING" && end > begin && s[end - 1] == set[0])
    --end;
  c.set(fromChars(s.constData() + begin, end - begin));
}

} // namespace

namespace TextFunctions {

void registerAll(sqlite3* db, const SessionSettings* settings) {
  static const Function functions[] = {
      {"TRANSLATE", 3, entry<translate>},   {"INITCAP", 1, entry<initcap>},
      {"LENGTHB", 1, entry<lengthb>},       {"SUBSTRB", 2, entry<substrb>},
      {"SUBSTRB", 3, entry<substrb>},       {"INSTRB", 2, entry<instrb>},
      {"INSTRB", 3, entry<instrb>},         {"INSTRB", 4, entry<instrb>},
      {"ASCII", 1, entry<ascii>},           {"CHR", 1, entry<chr>}, {"NCHR", 1, entry<nchr>},
      {"dbsweep_trim", 3, entry<trimFrom>},
  };
  FunctionCall::registerAll(db, settings, functions);
}

} // namespace TextFunctions
