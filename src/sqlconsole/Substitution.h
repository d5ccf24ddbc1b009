#pragma once

#include <QMap>
#include <QString>

#include <functional>
#include <optional>

// SQL*Plus substitution variables: DEFINE, UNDEFINE and the &name, &&name references that are
// replaced in a line before the line is read as a command or as part of a statement.
class Substitution final {
public:
  // Asks the user for a variable that has no value; none at the end of input.
  using Ask = std::function<std::optional<QString>(const QString& name)>;

  // The line with its references replaced; `prefix` is the SET DEFINE character. &name uses a
  // defined value or else asks each time; &&name asks once and defines what it got. A '.' right
  // after the name ends it and is dropped, so that "&t._old" can join a value to more text.
  QString substitute(QStringView line, QChar prefix, const Ask& ask);

  // DEFINE [name [= value]]: the text DEFINE shows, or an error text in `error`.
  QString define(QStringView arguments, QString& error);
  // UNDEFINE name ...
  void undefine(const QStringList& names);

private:
  QMap<QString, QString> m_values;
};
