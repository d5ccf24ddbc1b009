#include "db/script/ScriptReader.h"

#include "db/script/SqlWords.h"

#include <QRegularExpression>

namespace {

// SQL*Plus lets commands be shortened down to a minimum, e.g. PRO for PROMPT.
bool abbreviates(const QString& word, QLatin1StringView command, qsizetype minimum) {
  return word.size() >= minimum && word.size() <= command.size() && command.startsWith(word);
}

std::optional<int> exitCodeOf(const QString& word) {
  if (word == u"SUCCESS")
    return 0;
  if (word == u"FAILURE")
    return 1;
  if (word == u"WARNING")
    return 2;
  bool ok = false;
  const int code = word.toInt(&ok);
  return ok ? std::optional<int>(code) : std::nullopt;
}

QString upperWord(const QStringList& words, qsizetype index) {
  return index < words.size() ? words[index].toUpper() : QString();
}

// EXIT's words, which WHENEVER SQLERROR EXIT shares: a status and COMMIT or ROLLBACK.
void readExitWords(const QStringList& words, qsizetype from, ScriptItem& item) {
  for (qsizetype i = from; i < words.size(); ++i) {
    const QString word = upperWord(words, i);
    if (word == u"COMMIT" || word == u"ROLLBACK")
      item.commit = word == u"COMMIT";
    else if (word == u"SQL.SQLCODE")
      item.sqlCode = true;
    else
      item.exitCode = exitCodeOf(word);
  }
}

} // namespace

void ScriptReader::addLine(QStringView line) {
  if (m_stopped)
    return;
  ++m_line;
  if (m_line == 1 && line.startsWith(QChar(0xFEFF)))
    line = line.mid(1);
  if (line.endsWith(u'\r'))
    line.chop(1);

  if (!inStatement() && runCommand(line))
    return;
  if (m_scanner.inCode()) {
    const QStringView trimmed = line.trimmed();
    if (trimmed == u"/") {
      endStatement(true);
      return;
    }
    if (trimmed == u"." && !m_text.isEmpty()) {
      endStatement(false);
      return;
    }
  }

  const SqlScanner::Line scanned = m_scanner.feed(line);
  const bool blank = scanned.text.trimmed().isEmpty();
  if (m_text.isEmpty()) {
    if (blank)
      return; // a comment between statements
    m_startLine = m_line;
  }
  const qsizetype lineStart = m_text.size();
  m_text += scanned.text + u'\n';
  m_code += scanned.code;
  m_code += false;

  if (!m_scanner.inCode() || inPlsqlUnit())
    return;
  qsizetype last = scanned.text.size() - 1;
  while (last >= 0 && scanned.text[last].isSpace())
    --last;
  if (last >= 0 && scanned.text[last] == u';') {
    m_text[lineStart + last] = u' ';
    endStatement(true);
  }
}

void ScriptReader::finish() {
  if (m_stopped)
    return;
  if (!m_text.trimmed().isEmpty())
    queue(ScriptItem::Kind::Unterminated, {}, lineAt(0));
  clearStatement();
  m_stopped = true;
}

QList<ScriptItem> ScriptReader::takeItems() { return std::exchange(m_items, {}); }

QList<ScriptItem> ScriptReader::read(QStringView script) {
  ScriptReader reader;
  for (const QStringView line : script.split(u'\n'))
    reader.addLine(line);
  reader.finish();
  return reader.takeItems();
}

bool ScriptReader::runCommand(QStringView line) {
  const QStringView trimmed = line.trimmed();
  if (trimmed.isEmpty())
    return true;
  static const QRegularExpression space(QStringLiteral("\\s+"));
  // SQL*Plus commands may carry a stray ';' ("exit;"); PROMPT text keeps it.
  QStringView bare = trimmed;
  while (bare.endsWith(u';'))
    bare.chop(1);
  const QStringList words = bare.toString().split(space, Qt::SkipEmptyParts);
  const QString command = upperWord(words, 0);
  if (command.isEmpty())
    return false;

  if (abbreviates(command, QLatin1StringView("REMARK"), 3) || abbreviates(command, QLatin1StringView("SPOOL"), 3))
    return true;
  if (abbreviates(command, QLatin1StringView("PROMPT"), 3)) {
    const qsizetype word = trimmed.indexOf(space);
    queue(ScriptItem::Kind::Prompt, word < 0 ? QString() : trimmed.mid(word).trimmed().toString(), m_line);
    return true;
  }
  if (command == u"SET") {
    // SET TRANSACTION, SET ROLE and SET CONSTRAINTS are SQL, not SQL*Plus settings.
    static const QStringList sql{QStringLiteral("TRANSACTION"), QStringLiteral("ROLE"), QStringLiteral("CONSTRAINT"),
                                 QStringLiteral("CONSTRAINTS")};
    return !sql.contains(upperWord(words, 1));
  }
  if (command == u"WHENEVER") {
    if (upperWord(words, 1) == u"SQLERROR") {
      queue(ScriptItem::Kind::ErrorMode, {}, m_line);
      m_items.last().continueOnError = upperWord(words, 2) == u"CONTINUE";
      if (!m_items.last().continueOnError)
        readExitWords(words, 3, m_items.last());
    }
    return true;
  }
  if (command == u"EXIT" || command == u"QUIT") {
    queue(ScriptItem::Kind::Exit, {}, m_line);
    readExitWords(words, 1, m_items.last());
    m_stopped = true;
    return true;
  }
  return false;
}

bool ScriptReader::inPlsqlUnit() {
  // The first words (upper-cased already) are read on as lines come in, not again for every
  // line: a statement whose first line is very long would otherwise take time by the square of
  // its length.
  if (m_words.size() < 5 && m_wordsEnd == m_readTo)
    m_wordsEnd = SqlWords::readLeading(m_text, m_wordsEnd, 5, m_words);
  m_readTo = m_text.size();
  const QString first = m_words.value(0);
  if (first == u"BEGIN" || first == u"DECLARE")
    return true;
  if (first != u"CREATE")
    return false;
  qsizetype i = 1;
  if (m_words.value(i) == u"OR" && m_words.value(i + 1) == u"REPLACE")
    i += 2;
  static const QStringList editions{QStringLiteral("EDITIONABLE"), QStringLiteral("NONEDITIONABLE")};
  if (editions.contains(m_words.value(i)))
    ++i;
  static const QStringList units{QStringLiteral("PROCEDURE"), QStringLiteral("FUNCTION"), QStringLiteral("PACKAGE"),
                                 QStringLiteral("TRIGGER"),   QStringLiteral("TYPE"),     QStringLiteral("LIBRARY")};
  return units.contains(m_words.value(i));
}

void ScriptReader::endStatement(bool run) {
  if (m_text.isEmpty()) {
    if (run)
      m_items += m_previous;
    return;
  }
  m_previous = itemsOfStatement();
  clearStatement();
  m_scanner.reset();
  if (run)
    m_items += m_previous;
}

void ScriptReader::clearStatement() {
  m_text.clear();
  m_code.clear();
  m_words.clear();
  m_wordsEnd = 0;
  m_readTo = 0;
}

QList<ScriptItem> ScriptReader::itemsOfStatement() const {
  qsizetype start = 0;
  while (start < m_text.size() && m_text[start].isSpace())
    ++start;
  ScriptItem item;
  item.text = m_text.trimmed();
  item.line = lineAt(start);
  return {item};
}

int ScriptReader::lineAt(qsizetype offset) const {
  return m_startLine + int(QStringView(m_text).left(offset).count(u'\n'));
}

void ScriptReader::queue(ScriptItem::Kind kind, const QString& text, int line) {
  ScriptItem item;
  item.kind = kind;
  item.text = text;
  item.line = line;
  m_items += item;
}
