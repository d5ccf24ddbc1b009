#pragma once

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

class ConsoleRunner;
class ScriptReader;

// Reads a script line by line as SQL*Plus does: replaces substitution variables (listing the
// changed lines of a statement as old/new with SET VERIFY ON), echoes script lines with SET
// ECHO ON, runs the console's own commands and nested scripts (@file, @@file, START file), and
// hands the rest to a ScriptReader whose statements the runner runs.
class ConsoleScript final {
public:
  // The next line; the reader tells a prompt whether a statement is being typed. None at the end.
  using NextLine = std::function<std::optional<QString>(const ScriptReader& reader)>;

  struct Source {
    // Where @@ finds its scripts.
    QString folder;
    // How errors name a nested script; empty for the first one.
    QString name;
    // Typed at a terminal: never echoed, and SET TERMOUT OFF does not hide what it prints.
    bool typed = false;
  };

  explicit ConsoleScript(ConsoleRunner& runner, int depth = 0) : m_runner(runner), m_depth(depth) {}

  // Runs the lines until they end or the run stops.
  void run(const NextLine& next, const Source& source);

  // Runs a script file's text, read from path; the arguments are its &1, &2 ...; name names it
  // in error messages.
  void runFile(const QString& text, const QString& path, const QStringList& arguments, const QString& name);

  // A script file's text; SQL*Plus's @name finds name.sql. Sets error when it cannot be read.
  static std::optional<QString> read(const QString& path, QString& error);

  // The prompt SQL*Plus shows for the next line: "SQL> " or the statement's next line number.
  static QString prompt(const ScriptReader& reader);

private:
  struct Change {
    int line;
    QString before;
    QString after;
  };

  bool runNested(const QString& line, const Source& source);
  QString substituted(const QString& line);
  void showChanges();

  ConsoleRunner& m_runner;
  int m_depth;
  QList<Change> m_changes;
};
