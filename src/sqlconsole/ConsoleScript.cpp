#include "sqlconsole/ConsoleScript.h"

#include "db/script/ScriptReader.h"
#include "platform/Terminal.h"
#include "sqlconsole/ConsoleCommands.h"
#include "sqlconsole/ConsoleOutput.h"
#include "sqlconsole/ConsoleRunner.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace {

// SQL*Plus's own limit, which also stops a script that runs itself.
constexpr int kMaxDepth = 20;

bool isRemark(const QString& line) {
  const QStringList words = ConsoleCommands::words(QStringView(line).left(12));
  return !words.isEmpty() && ConsoleCommands::abbreviates(words[0], QLatin1StringView("REMARK"), 3);
}

} // namespace

QString ConsoleScript::prompt(const ScriptReader& reader) {
  return reader.inStatement() ? QStringLiteral("%1  ").arg(reader.nextStatementLine(), 3) : QStringLiteral("SQL> ");
}

std::optional<QString> ConsoleScript::read(const QString& path, QString& error) {
  QString file = path;
  if (!QFileInfo::exists(file) && QFileInfo(file).suffix().isEmpty())
    file += QStringLiteral(".sql");
  QFile input(file);
  if (!input.open(QIODevice::ReadOnly)) {
    error = QStringLiteral("SP2-0310: unable to open file \"%1\"").arg(path);
    return std::nullopt;
  }
  return QString::fromUtf8(input.readAll());
}

void ConsoleScript::run(const NextLine& next, const Source& source) {
  ScriptReader reader;
  ConsoleOutput& output = m_runner.output();
  while (!m_runner.stopped() && !reader.stopped()) {
    const std::optional<QString> line = next(reader);
    if (!line)
      break;
    output.setTerminal(m_runner.settings().termout || source.typed);
    if (m_runner.settings().echo && !source.typed)
      output.printLine(prompt(reader) + *line);
    const int statementLine = reader.inStatement() ? reader.nextStatementLine() : 1;
    const QString text = isRemark(*line) ? *line : substituted(*line);
    if (!reader.inStatement() && (runNested(text, source) || ConsoleCommands::run(text, m_runner))) {
      // The reader still counts the line, so that errors name the right one.
      reader.addLine(QString());
      continue;
    }
    if (text != *line)
      m_changes += Change{statementLine, *line, text};
    reader.addLine(text);
    // The ';' that ends a statement is no part of it, nor of the lines SET VERIFY lists.
    if (!reader.inStatement() && !m_changes.isEmpty() && m_changes.last().before == *line) {
      for (QString* shown : {&m_changes.last().before, &m_changes.last().after}) {
        while (!shown->isEmpty() && shown->back().isSpace())
          shown->chop(1);
        if (shown->endsWith(u';'))
          shown->chop(1);
      }
    }
    for (const ScriptItem& item : reader.takeItems()) {
      if (item.kind != ScriptItem::Kind::Prompt && item.kind != ScriptItem::Kind::ErrorMode)
        showChanges();
      if (!m_runner.run(item, source.name))
        break;
    }
    if (!reader.inStatement())
      m_changes.clear();
  }
  if (!m_runner.stopped()) {
    reader.finish();
    for (const ScriptItem& item : reader.takeItems())
      m_runner.run(item, source.name);
  }
}

bool ConsoleScript::runNested(const QString& line, const Source& source) {
  QStringList words = ConsoleCommands::words(line);
  if (words.isEmpty())
    return false;
  QString folder;
  if (words[0].startsWith(QStringLiteral("@@"))) {
    folder = source.folder;
    words[0].remove(0, 2);
  } else if (words[0].startsWith(u'@')) {
    words[0].remove(0, 1);
  } else if (ConsoleCommands::abbreviates(words[0], QLatin1StringView("START"), 3)) {
    words.removeFirst();
  } else {
    return false;
  }
  if (!words.isEmpty() && words[0].isEmpty()) // "@ file.sql"
    words.removeFirst();
  if (words.value(0).isEmpty()) {
    m_runner.commandError(QStringLiteral("SP2-1506: START, @ or @@ command has no arguments"));
    return true;
  }
  if (m_depth + 1 >= kMaxDepth) {
    m_runner.commandError(
        QStringLiteral("SP2-0309: SQL*Plus command procedures may only be nested to a depth of %1.").arg(kMaxDepth));
    return true;
  }
  const QString path = folder.isEmpty() ? words[0] : QDir(folder).filePath(words[0]);
  QString error;
  const std::optional<QString> script = read(path, error);
  if (!script) {
    m_runner.commandError(error);
    return true;
  }
  ConsoleScript(m_runner, m_depth + 1).runFile(*script, path, words.mid(1), QFileInfo(path).fileName());
  return true;
}

void ConsoleScript::runFile(const QString& text, const QString& path, const QStringList& arguments,
                            const QString& name) {
  for (qsizetype i = 0; i < arguments.size(); ++i) {
    QString ignored;
    m_runner.substitution().define(QStringLiteral("%1 = %2").arg(i + 1).arg(arguments[i]), ignored);
  }
  QStringList lines = text.split(u'\n');
  // A last line's end is no further, empty line.
  if (lines.size() > 1 && lines.last().isEmpty())
    lines.removeLast();
  qsizetype index = 0;
  const NextLine next = [&lines, &index](const ScriptReader&) {
    return index < lines.size() ? std::optional<QString>(lines[index++]) : std::nullopt;
  };
  run(next, Source{QFileInfo(path).absolutePath(), name, false});
}

QString ConsoleScript::substituted(const QString& line) {
  return m_runner.substitution().substitute(line, m_runner.settings().define, [](const QString& name) {
    return Terminal::ask(QStringLiteral("Enter value for %1: ").arg(name));
  });
}

void ConsoleScript::showChanges() {
  if (m_runner.settings().verify && !m_runner.csv()) {
    for (const Change& change : std::as_const(m_changes))
      m_runner.output().print(
          QStringLiteral("old%1: %2\nnew%1: %3\n").arg(change.line, 4).arg(change.before, change.after));
  }
  m_changes.clear();
}
