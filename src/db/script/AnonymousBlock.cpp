#include "db/script/AnonymousBlock.h"

#include "db/OraError.h"
#include "db/script/SqlWords.h"

namespace {

bool isSqlStatement(const QString& word) {
  static const QStringList words{
      QStringLiteral("INSERT"),  QStringLiteral("UPDATE"),   QStringLiteral("DELETE"),    QStringLiteral("MERGE"),
      QStringLiteral("CREATE"),  QStringLiteral("ALTER"),    QStringLiteral("DROP"),      QStringLiteral("TRUNCATE"),
      QStringLiteral("COMMENT"), QStringLiteral("GRANT"),    QStringLiteral("REVOKE"),    QStringLiteral("RENAME"),
      QStringLiteral("COMMIT"),  QStringLiteral("ROLLBACK"), QStringLiteral("SAVEPOINT"), QStringLiteral("LOCK")};
  return words.contains(word);
}

} // namespace

AnonymousBlock::AnonymousBlock(const QString& text, const QList<bool>& code, int firstLine)
    : m_text(text), m_code(code), m_firstLine(firstLine), m_start(skipSpace(0)) {}

QList<ScriptItem> AnonymousBlock::items() const {
  qsizetype pos = m_start;
  QString word = SqlWords::wordAt(m_text, pos).toString().toUpper();
  if (word == u"DECLARE") {
    pos = skipSpace(pos + word.size());
    word = SqlWords::wordAt(m_text, pos).toString().toUpper();
    if (word != u"BEGIN")
      return pos < m_text.size() ? refuse(pos, QStringLiteral("PLS-00103: Encountered the symbol \"%1\": this "
                                                              "console runs blocks that declare nothing")
                                                   .arg(word.isEmpty() ? QString(m_text[pos]) : word))
                                 : refuse(pos, QStringLiteral("PLS-00103: Encountered the symbol \"end-of-file\""));
  }
  pos += word.size();

  // Lines are counted on from the previous statement: counting from the start for each one would
  // take a block of many thousand statements time by the square of its length.
  qsizetype counted = m_start;
  int line = lineAt(m_start);
  QList<ScriptItem> items;
  while (true) {
    const qsizetype begin = skipSpace(pos);
    const qsizetype end = nextSemicolon(begin);
    if (begin >= m_text.size())
      return refuse(begin, QStringLiteral("PLS-00103: Encountered the symbol \"end-of-file\""));
    if (begin == end)
      return refuseSymbol(begin);
    word = SqlWords::wordAt(m_text, begin).toString().toUpper();
    const QStringView statement = QStringView(m_text).mid(begin, end - begin).trimmed();

    if (word == u"END") {
      // END or END label, then nothing more.
      const qsizetype label = skipSpace(begin + word.size());
      const qsizetype rest = skipSpace(label + SqlWords::wordAt(m_text, label).size());
      if (rest < end)
        return refuseSymbol(rest);
      if (end >= m_text.size())
        return refuse(end, QStringLiteral("PLS-00103: Encountered the symbol \"end-of-file\""));
      if (const qsizetype after = skipSpace(end + 1); after < m_text.size())
        return refuseSymbol(after);
      ScriptItem done;
      done.kind = ScriptItem::Kind::BlockEnd;
      done.line = lineAt(m_start);
      items += done;
      return items;
    }
    if (word == u"SELECT" || word == u"WITH")
      return refuse(begin, QStringLiteral("PLS-00428: an INTO clause is expected in this SELECT statement"));
    if (word == u"NULL") {
      if (statement.size() != 4)
        return refuseSymbol(skipSpace(begin + 4));
    } else if (isSqlStatement(word)) {
      ScriptItem item;
      item.text = statement.toString();
      line += int(QStringView(m_text).sliced(counted, begin - counted).count(u'\n'));
      counted = begin;
      item.line = line;
      item.inBlock = true;
      items += item;
    } else {
      return refuseSymbol(begin);
    }
    pos = end + 1;
  }
}

qsizetype AnonymousBlock::skipSpace(qsizetype from) const {
  while (from < m_text.size() && m_text[from].isSpace())
    ++from;
  return from;
}

qsizetype AnonymousBlock::nextSemicolon(qsizetype from) const {
  while (from < m_text.size() && !(m_text[from] == u';' && m_code[from]))
    ++from;
  return from;
}

int AnonymousBlock::lineAt(qsizetype offset) const {
  return m_firstLine + int(QStringView(m_text).left(offset).count(u'\n'));
}

QList<ScriptItem> AnonymousBlock::refuse(qsizetype offset, const QString& error) const {
  // Oracle counts the position from the start of the block it was sent.
  const qsizetype lineStart = QStringView(m_text).left(offset).lastIndexOf(u'\n') + 1;
  const QString text = QStringLiteral("line %1, column %2: %3")
                           .arg(lineAt(offset) - lineAt(m_start) + 1)
                           .arg(offset - lineStart + 1)
                           .arg(error);
  ScriptItem failure;
  failure.kind = ScriptItem::Kind::Failure;
  failure.text = OraError(6550, text).message();
  failure.line = lineAt(m_start);
  return {failure};
}

QList<ScriptItem> AnonymousBlock::refuseSymbol(qsizetype offset) const {
  const QStringView word = SqlWords::wordAt(m_text, offset);
  const QString symbol = !word.isEmpty()          ? word.toString().toUpper()
                         : offset < m_text.size() ? QString(m_text[offset])
                                                  : QStringLiteral("end-of-file");
  return refuse(offset, QStringLiteral("PLS-00103: Encountered the symbol \"%1\": this console runs blocks made "
                                       "only of SQL statements")
                            .arg(symbol));
}
