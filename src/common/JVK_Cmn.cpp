#include "common/JVK_Cmn.h"

#include "platform/SystemInfo.h"

#include <QStringEncoder>

CommandArgs SplitCommandLine(const QString& line, int maxWords) {
  QStringList words;
  bool inWord = false;
  for (QChar c : line) {
    if (c == u' ' || c == u'\t') {
      inWord = false;
      continue;
    }
    if (!inWord) {
      if (words.size() == maxWords)
        break;
      words.append(QString());
      inWord = true;
    }
    words.last() += c;
  }
  return CommandArgs(words);
}

QString JapaneseWeekday(const QDate& date) {
  static const char16_t* const names[] = {u"月曜日", u"火曜日", u"水曜日", u"木曜日", u"金曜日", u"土曜日", u"日曜日"};
  const int day = date.dayOfWeek(); // 1 = Monday .. 7 = Sunday
  return day >= 1 ? QString::fromUtf16(names[day - 1]) : QString();
}

qint32 AnsiByteLength(const QString& text) {
  // ICU's CP932 converter substitutes a two-byte character for anything it cannot hold, which is
  // the count wanted for those characters.
  QStringEncoder encoder("windows-31j", QStringConverter::Flag::Stateless);
  const QByteArray bytes = encoder.encode(text);
  return qint32(bytes.size());
}

double MaxDouble(double a, double b) { return b > a ? b : a; }

double MinDouble(double a, double b) { return b < a ? b : a; }

QString GetWindowsUserName() { return processOwnerLogonName(); }
