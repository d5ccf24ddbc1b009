#include "jobs/ResultLineText.h"

#include <QLocale>

namespace ResultLineText {

namespace {

// The nine spaces the right-aligned fields are padded with before they are cut.
const QString Spaces = QStringLiteral("         ");

QString dateTime(const QDateTime& when) { return when.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss")); }

QString line(const QString& id, const QString& status, const QString& name) {
  return TableField(id) + u':' + status + u':' + name;
}

} // namespace

QString StartLine(const QDateTime& when) { return QStringLiteral("開始: ") + dateTime(when); }
QString EndLine(const QDateTime& when) { return QStringLiteral("終了: ") + dateTime(when); }

QString ElapsedLine(double elapsed) {
  const QString seconds = QString::number(elapsed, 'g', QLocale::FloatingPointShortest);
  return QStringLiteral("所要時間(Sec) ") + (QStringLiteral("        ") + seconds).right(8);
}

QString Thousands(qint64 n) {
  QString text = QString::number(n);
  const qsizetype firstDigit = n < 0 ? 1 : 0;
  for (qsizetype at = text.size() - 3; at > firstDigit; at -= 3)
    text.insert(at, u',');
  return text;
}

QString TableField(const QString& id) { return id.leftJustified(16, u' ', true); }
QString CountField(qint64 count) { return (Spaces + Thousands(count) + u'件').right(10); }
QString OkField() { return (Spaces + QStringLiteral("OK")).right(8); }
QString ErrorField(int number) { return QStringLiteral("Err") + (Spaces + QString::number(number)).right(5); }

QString CountLine(const QString& id, qint64 count, const QString& name) { return line(id, CountField(count), name); }
QString OkLine(const QString& id, const QString& name) { return line(id, OkField(), name); }
QString FailureLine(const QString& id, int number, const QString& name) {
  return line(id, ErrorField(number), name);
}

} // namespace ResultLineText
