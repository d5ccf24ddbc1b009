#include "export/CsvFormat.h"

#include "browser/TextTable.h"

#include <QDateTime>

#include <charconv>

CsvField CsvFieldOf(const QString& type) {
  if (type == u"RAW" || type == u"LOB" || type == u"LONG RAW" || type == u"BLOB" || type == u"CLOB")
    return CsvField::TypeName;
  if (type == u"NUMBER" || type == u"DATE" || type == u"LONG")
    return CsvField::Bare;
  return CsvField::Quoted;
}

QList<CsvColumn> CsvColumns(const TextTable& columnInfo) {
  QList<CsvColumn> columns;
  for (int j = 1; j <= columnInfo.upper(); ++j) {
    const QString type = columnInfo.at(2, j);
    columns.append({columnInfo.at(0, j), type, CsvFieldOf(type)});
  }
  return columns;
}

QString CsvHeaderLine(const QList<CsvColumn>& columns, const CsvOptions& options) {
  QString line;
  for (const CsvColumn& column : columns)
    line += column.id + options.separator;
  if (!line.isEmpty())
    line.chop(options.separator.size());
  return line;
}

void AppendCsvBare(QString& line, const QVariant& value) {
  // Numbers, the bulk of most tables, go in without a text of their own.
  char digits[32];
  std::to_chars_result end{};
  switch (value.typeId()) {
  case QMetaType::LongLong: end = std::to_chars(digits, digits + sizeof digits, value.toLongLong()); break;
  case QMetaType::Int: end = std::to_chars(digits, digits + sizeof digits, value.toInt()); break;
  case QMetaType::Double: end = std::to_chars(digits, digits + sizeof digits, value.toDouble()); break;
  default: line += CsvBareText(value); return;
  }
  line += QLatin1StringView(digits, end.ptr - digits);
}

void AppendCsvText(QString& line, const QVariant& value) {
  if (value.typeId() == QMetaType::QString)
    line += *static_cast<const QString*>(value.constData());
  else if (value.isValid())
    line += value.toString();
}

QString CsvBareText(const QVariant& value) {
  if (!value.isValid())
    return QStringLiteral("0");
  switch (value.typeId()) {
  case QMetaType::Double: return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
  case QMetaType::QDateTime: {
    const QDateTime at = value.toDateTime();
    return at.time() == QTime(0, 0) ? at.toString(QStringLiteral("yyyy/MM/dd"))
                                    : at.toString(QStringLiteral("yyyy/MM/dd HH:mm:ss"));
  }
  case QMetaType::QString: {
    // A date in its full text form reads as the date alone when it falls on midnight.
    const QString text = value.toString();
    static const QString midnight = QStringLiteral(" 00:00:00");
    if (text.size() == 19 && text.endsWith(midnight) && text[4] == u'/' && text[7] == u'/' && text[0].isDigit())
      return text.left(10);
    return text;
  }
  default: return value.toString();
  }
}
