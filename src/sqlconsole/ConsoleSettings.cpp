#include "sqlconsole/ConsoleSettings.h"

#include <algorithm>
#include <functional>

namespace {

// Takes an option's value off the front of the words; a handler returns an error text or nothing.
using Handler = std::function<QString(ConsoleSettings&, QStringList&)>;

struct Option {
  QLatin1StringView name;
  // SQL*Plus accepts a name cut down to this many letters.
  qsizetype shortest;
  Handler apply;
};

QString takeWord(QStringList& words) { return words.isEmpty() ? QString() : words.takeFirst().toUpper(); }

Handler onOff(QLatin1StringView name, bool ConsoleSettings::*member) {
  return [name, member](ConsoleSettings& settings, QStringList& words) {
    const QString value = takeWord(words);
    if (value != u"ON" && value != u"OFF")
      return QStringLiteral("SP2-0265: %1 must be set to ON or OFF").arg(QString(name).toLower());
    settings.*member = value == u"ON";
    return QString();
  };
}

Handler number(QLatin1StringView name, int ConsoleSettings::*member, int minimum, int maximum) {
  return [=](ConsoleSettings& settings, QStringList& words) {
    const QString value = takeWord(words);
    bool ok = false;
    const int n = value.toInt(&ok);
    if (!ok || n < minimum || n > maximum)
      return QStringLiteral("SP2-0267: %1 option %2 out of range (%3 through %4)")
          .arg(QString(name).toLower(), value)
          .arg(minimum)
          .arg(maximum);
    settings.*member = n;
    return QString();
  };
}

QString setFeedback(ConsoleSettings& settings, QStringList& words) {
  const QString value = takeWord(words);
  bool ok = false;
  const int n = value.toInt(&ok);
  if (value == u"ON" || value == u"OFF")
    settings.feedback = value == u"ON" ? 1 : 0;
  else if (ok && n >= 0 && n <= 50000)
    settings.feedback = n;
  else
    return QStringLiteral("SP2-0268: feedback option not a valid number");
  return {};
}

QString setDefine(ConsoleSettings& settings, QStringList& words) {
  const QString value = takeWord(words);
  if (value == u"ON" || value == u"OFF")
    settings.define = value == u"ON" ? QChar(u'&') : QChar();
  else if (value.size() == 1 && !value[0].isLetterOrNumber() && !value[0].isSpace())
    settings.define = value[0];
  else
    return QStringLiteral("SP2-0272: define character cannot be alphanumeric or whitespace");
  return {};
}

// ON or OFF, then SIZE n and FORMAT WRAPPED|WORD_WRAPPED|TRUNCATED, which this console takes
// and needs not: its buffer has no limit and its lines are never cut.
QString setServerOutput(ConsoleSettings& settings, QStringList& words) {
  const QString value = takeWord(words);
  if (value != u"ON" && value != u"OFF")
    return QStringLiteral("SP2-0265: serveroutput must be set to ON or OFF");
  settings.serverOutput = value == u"ON";
  while (!words.isEmpty() && (words.front().toUpper() == u"SIZE" || words.front().toUpper().startsWith(u"FOR"))) {
    words.removeFirst();
    takeWord(words);
  }
  return {};
}

// This console writes every line without trailing blanks already.
QString alwaysOn(ConsoleSettings&, QStringList& words) {
  takeWord(words);
  return {};
}

const QList<Option>& options() {
  using L = QLatin1StringView;
  static const QList<Option> table{
      {L("LINESIZE"), 3, number(L("LINESIZE"), &ConsoleSettings::lineSize, 1, 32767)},
      {L("PAGESIZE"), 5, number(L("PAGESIZE"), &ConsoleSettings::pageSize, 0, 50000)},
      {L("HEADING"), 3, onOff(L("HEADING"), &ConsoleSettings::heading)},
      {L("FEEDBACK"), 4, setFeedback},
      {L("ECHO"), 4, onOff(L("ECHO"), &ConsoleSettings::echo)},
      {L("TIMING"), 4, onOff(L("TIMING"), &ConsoleSettings::timing)},
      {L("SERVEROUTPUT"), 9, setServerOutput},
      {L("VERIFY"), 3, onOff(L("VERIFY"), &ConsoleSettings::verify)},
      {L("DEFINE"), 3, setDefine},
      {L("TERMOUT"), 4, onOff(L("TERMOUT"), &ConsoleSettings::termout)},
      {L("TRIMOUT"), 4, alwaysOn},
      {L("TRIMSPOOL"), 5, alwaysOn},
      {L("NUMWIDTH"), 3, number(L("NUMWIDTH"), &ConsoleSettings::numWidth, 2, 50)},
      {L("TAB"), 3, onOff(L("TAB"), &ConsoleSettings::tab)},
  };
  return table;
}

} // namespace

QStringList ConsoleSettings::set(QStringList words) {
  QStringList errors;
  while (!words.isEmpty()) {
    const QString name = words.takeFirst();
    const QString upper = name.toUpper();
    const auto option = std::find_if(options().begin(), options().end(), [&upper](const Option& o) {
      return upper.size() >= o.shortest && o.name.startsWith(upper);
    });
    if (option == options().end()) {
      // SQL*Plus gives up on the rest of the line here too.
      errors += QStringLiteral("SP2-0158: unknown SET option \"%1\"").arg(name);
      break;
    }
    if (const QString error = option->apply(*this, words); !error.isEmpty())
      errors += error;
  }
  return errors;
}
