#include "db/script/SqlScanner.h"

#include "db/script/SqlWords.h"

namespace {

QChar closingOf(QChar open) {
  switch (open.unicode()) {
  case u'[': return u']';
  case u'(': return u')';
  case u'{': return u'}';
  case u'<': return u'>';
  default: return open;
  }
}

// q'X...X' (also nq'...'), but not a name that merely ends in q followed by a literal.
bool startsAltQuote(QStringView line, qsizetype i) {
  if (i + 2 >= line.size() || (line[i] != u'q' && line[i] != u'Q') || line[i + 1] != u'\'')
    return false;
  qsizetype before = i - 1;
  if (before >= 0 && (line[before] == u'n' || line[before] == u'N'))
    --before;
  return before < 0 || !SqlWords::isNameChar(line[before]);
}

} // namespace

SqlScanner::Line SqlScanner::feed(QStringView line) {
  Line out;
  out.text.reserve(line.size());
  out.code.reserve(line.size());
  const auto put = [&out](QChar c, bool code) {
    out.text += c;
    out.code += code;
  };
  const qsizetype n = line.size();
  for (qsizetype i = 0; i < n; ++i) {
    const QChar c = line[i];
    const QChar next = i + 1 < n ? line[i + 1] : QChar();
    switch (m_state) {
    case State::Code:
      if (c == u'-' && next == u'-') {
        for (; i < n; ++i)
          put(u' ', false);
      } else if (c == u'/' && next == u'*') {
        const bool hint = i + 2 < n && line[i + 2] == u'+';
        m_state = hint ? State::Hint : State::Comment;
        put(hint ? c : u' ', false);
        put(hint ? next : u' ', false);
        ++i;
      } else if (startsAltQuote(line, i)) {
        m_state = State::AltQuote;
        m_altClose = closingOf(line[i + 2]);
        put(c, false);
        put(next, false);
        put(line[i + 2], false);
        i += 2;
      } else if (c == u'\'') {
        m_state = State::Quote;
        put(c, false);
      } else if (c == u'"') {
        m_state = State::QuotedName;
        put(c, false);
      } else {
        put(c, true);
      }
      break;
    case State::Quote:
      put(c, false);
      if (c == u'\'') {
        if (next == u'\'') {
          put(next, false);
          ++i;
        } else {
          m_state = State::Code;
        }
      }
      break;
    case State::AltQuote:
      put(c, false);
      if (c == m_altClose && next == u'\'') {
        put(next, false);
        ++i;
        m_state = State::Code;
      }
      break;
    case State::QuotedName:
      put(c, false);
      if (c == u'"')
        m_state = State::Code;
      break;
    case State::Comment:
    case State::Hint: {
      const bool hint = m_state == State::Hint;
      const bool closes = c == u'*' && next == u'/';
      put(hint ? c : u' ', false);
      if (closes) {
        put(hint ? next : u' ', false);
        ++i;
        m_state = State::Code;
      }
      break;
    }
    }
  }
  return out;
}
