#include "db/local/SqlLexer.h"

#include "db/OraError.h"

#include <QStringList>
#include <algorithm>

namespace {

bool wordStart(QChar c) { return c.isLetter(); }
bool wordPart(QChar c) { return c.isLetterOrNumber() || c == u'_' || c == u'$' || c == u'#'; }

} // namespace

std::vector<SqlToken> tokenizeSql(const QString& sql) {
  std::vector<SqlToken> tokens;
  const int n = int(sql.size());
  int line = 1;
  int i = 0;
  const auto at = [&](int k) { return k < n ? sql[k] : QChar(); };
  const auto push = [&](SqlToken::Kind kind, QString text, int start) {
    tokens.push_back(SqlToken{kind, std::move(text), start, i - start, line});
  };
  while (i < n) {
    const QChar c = sql[i];
    if (c == u'\n') {
      ++line;
      ++i;
    } else if (c.isSpace()) {
      ++i;
    } else if (c == u'-' && at(i + 1) == u'-') {
      while (i < n && sql[i] != u'\n')
        ++i;
    } else if (c == u'/' && at(i + 1) == u'*') {
      const int end = int(sql.indexOf(QStringLiteral("*/"), i + 2));
      const int stop = end < 0 ? n : end + 2;
      line += int(QStringView(sql).mid(i, stop - i).count(u'\n'));
      i = stop;
    } else if (c == u'\'' || ((c == u'N' || c == u'n') && at(i + 1) == u'\'')) {
      const int start = i;
      const int startLine = line;
      i += c == u'\'' ? 1 : 2;
      QString value;
      for (;;) {
        if (i >= n)
          throw OraError(1756, QStringLiteral("quoted string not properly terminated"));
        if (sql[i] == u'\'') {
          if (at(i + 1) == u'\'') {
            value += u'\'';
            i += 2;
            continue;
          }
          ++i;
          break;
        }
        if (sql[i] == u'\n')
          ++line;
        value += sql[i++];
      }
      tokens.push_back(SqlToken{SqlToken::Kind::String, value, start, i - start, startLine});
    } else if (c == u'"') {
      const int start = i;
      const int end = int(sql.indexOf(u'"', i + 1));
      if (end < 0 || end == i + 1)
        throw OraError(end < 0 ? 1740 : 1741, end < 0 ? QStringLiteral("missing double quote in identifier")
                                                      : QStringLiteral("illegal zero-length identifier"));
      i = end + 1;
      push(SqlToken::Kind::Quoted, sql.mid(start + 1, end - start - 1), start);
    } else if (wordStart(c)) {
      const int start = i;
      while (i < n && wordPart(sql[i]))
        ++i;
      push(SqlToken::Kind::Word, sql.mid(start, i - start), start);
    } else if (c.isDigit() || (c == u'.' && at(i + 1).isDigit())) {
      const int start = i;
      while (i < n && sql[i].isDigit())
        ++i;
      if (at(i) == u'.' && at(i + 1) != u'.') {
        ++i;
        while (i < n && sql[i].isDigit())
          ++i;
      }
      if ((at(i) == u'e' || at(i) == u'E') &&
          (at(i + 1).isDigit() || ((at(i + 1) == u'+' || at(i + 1) == u'-') && at(i + 2).isDigit()))) {
        i += 2;
        while (i < n && sql[i].isDigit())
          ++i;
      }
      push(SqlToken::Kind::Number, sql.mid(start, i - start), start);
    } else if (c == u':' && (wordStart(at(i + 1)) || at(i + 1).isDigit())) {
      const int start = i++;
      while (i < n && wordPart(sql[i]))
        ++i;
      push(SqlToken::Kind::Bind, sql.mid(start, i - start), start);
    } else if (c == u'(') {
      // "(+)" marks an outer join column; Oracle allows blanks inside it.
      int k = i + 1;
      while (k < n && sql[k].isSpace() && sql[k] != u'\n')
        ++k;
      if (at(k) == u'+') {
        int m = k + 1;
        while (m < n && sql[m].isSpace() && sql[m] != u'\n')
          ++m;
        if (at(m) == u')') {
          const int start = i;
          i = m + 1;
          push(SqlToken::Kind::Symbol, QStringLiteral("(+)"), start);
          continue;
        }
      }
      const int start = i++;
      push(SqlToken::Kind::Symbol, QStringLiteral("("), start);
    } else {
      static const QStringList twoChar = {QStringLiteral("<="), QStringLiteral(">="), QStringLiteral("<>"),
                                          QStringLiteral("!="), QStringLiteral("^="), QStringLiteral("||"),
                                          QStringLiteral(":="), QStringLiteral("=>"), QStringLiteral("..")};
      const QString two = sql.mid(i, 2);
      const int start = i;
      if (twoChar.contains(two)) {
        i += 2;
        push(SqlToken::Kind::Symbol, two, start);
      } else if (QStringLiteral(")=<>+-*/,.;%@|").contains(c)) {
        ++i;
        push(SqlToken::Kind::Symbol, QString(c), start);
      } else {
        throw OraError(911, QStringLiteral("invalid character"));
      }
    }
  }
  tokens.push_back(SqlToken{SqlToken::Kind::End, QString(), n, 0, line});
  return tokens;
}

bool containsToken(const std::vector<SqlToken>& tokens, size_t begin, size_t end, QStringView s) {
  for (size_t i = begin; i < end && i < tokens.size(); ++i)
    if (tokens[i].is(s))
      return true;
  return false;
}

size_t withoutEndTokens(const std::vector<SqlToken>& tokens, size_t begin, size_t end) {
  end = std::min(end, tokens.size());
  while (end > begin && tokens[end - 1].kind == SqlToken::Kind::End)
    --end;
  return end;
}
