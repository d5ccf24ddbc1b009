#include "sqlconsole/ColumnFormat.h"

#include <QRegularExpression>

#include <cmath>

int ColumnFormat::numberWidth() const { return int(numberFormat.size()) + 1; }

QString ColumnFormat::formatNumber(const QVariant& value) const {
  bool ok = false;
  const double number = value.toDouble(&ok);
  if (!ok)
    return value.toString();
  const qsizetype point = numberFormat.indexOf(u'.');
  const QStringView whole = QStringView(numberFormat).left(point < 0 ? numberFormat.size() : point);
  const int decimals = point < 0 ? 0 : int(numberFormat.size() - point - 1);
  const QString digits = QString::number(std::abs(number), 'f', decimals);
  const qsizetype digitsPoint = digits.indexOf(u'.');
  QString integer = digits.left(digitsPoint < 0 ? digits.size() : digitsPoint);
  if (integer == u"0")
    integer.clear();

  const qsizetype slots = whole.count(u'9') + whole.count(u'0');
  if (integer.size() > slots)
    return QString(numberWidth(), u'#');
  // From the first '0' of the format on, missing digits print as zeros.
  qsizetype forced = 0;
  while (forced < whole.size() && whole[forced] != u'0')
    ++forced;
  QString text;
  qsizetype slot = 0;
  bool started = false;
  const qsizetype firstDigit = slots - integer.size();
  for (qsizetype i = 0; i < whole.size(); ++i) {
    const QChar c = whole[i];
    if (c == u'9' || c == u'0') {
      if (slot >= firstDigit) {
        text += integer[slot - firstDigit];
        started = true;
      } else if (i >= forced) {
        text += u'0';
        started = true;
      }
      ++slot;
    } else if (c == u',' && started) {
      text += u',';
    }
  }
  if (decimals > 0)
    text += digits.mid(digitsPoint);
  else if (text.isEmpty())
    text = QStringLiteral("0");
  if (whole.startsWith(u'$'))
    text.prepend(u'$');
  if (number < 0 && text.contains(QRegularExpression(QStringLiteral("[1-9]"))))
    text.prepend(u'-');
  return text.rightJustified(numberWidth());
}

QString ColumnFormats::define(const QStringList& words) {
  if (words.isEmpty())
    return QStringLiteral("SP2-0045: * no column name given");
  const QString name = words[0].toUpper();
  ColumnFormat format = m_formats.value(name);
  for (qsizetype i = 1; i < words.size(); ++i) {
    const QString clause = words[i].toUpper();
    if (clause == u"CLEAR" || clause == u"CLE") {
      m_formats.remove(name);
      return {};
    }
    if (i + 1 >= words.size())
      return QStringLiteral("SP2-0158: unknown COLUMN option \"%1\"").arg(words[i]);
    const QString value = words[++i];
    static const QRegularExpression text(QStringLiteral("^[Aa](\\d+)$"));
    static const QRegularExpression number(QStringLiteral("^\\$?[9,]*[90,]*(\\.[90]+)?$"));
    if (clause.startsWith(QStringLiteral("FOR")) && QStringLiteral("FORMAT").startsWith(clause)) {
      if (const auto match = text.match(value); match.hasMatch() && match.captured(1).toInt() > 0) {
        format.textWidth = match.captured(1).toInt();
        format.numberFormat.clear();
      } else if (number.match(value).hasMatch() && value.contains(QRegularExpression(QStringLiteral("[90]")))) {
        format.numberFormat = value;
        format.textWidth = 0;
      } else {
        return QStringLiteral("SP2-0246: Illegal FORMAT string \"%1\"").arg(value);
      }
    } else if (clause.startsWith(QStringLiteral("HEA")) && QStringLiteral("HEADING").startsWith(clause)) {
      format.heading = value;
    } else {
      return QStringLiteral("SP2-0158: unknown COLUMN option \"%1\"").arg(words[i - 1]);
    }
  }
  m_formats.insert(name, format);
  return {};
}

const ColumnFormat* ColumnFormats::find(const QString& column) const {
  const auto it = m_formats.constFind(column.toUpper());
  return it == m_formats.cend() ? nullptr : &*it;
}
