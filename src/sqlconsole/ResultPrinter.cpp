#include "sqlconsole/ResultPrinter.h"

#include "db/OraDynaset.h"
#include "sqlconsole/DisplayWidth.h"

#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace {

QString padded(const QString& text, int width, bool right) {
  const QString fill(std::max(0, width - displayWidth(text)), u' ');
  return right ? fill + text : text + fill;
}

// Keeps one row per line on the terminal, whatever the values hold.
QString flattened(QString text) {
  text.replace(QStringLiteral("\r\n"), QStringLiteral(" "));
  for (QChar& c : text) {
    if (c == u'\n' || c == u'\r' || c == u'\t')
      c = u' ';
  }
  return text;
}

void writeLine(QTextStream& out, QString line) {
  qsizetype end = line.size();
  while (end > 0 && line[end - 1] == u' ')
    --end;
  line.truncate(end);
  out << line << '\n';
}

} // namespace

qint64 ResultPrinter::print(OraDynaset& rows, QTextStream& out) const {
  QStringList labels;
  for (int i = 0; i < rows.FieldCount(); ++i)
    labels += rows.FieldName(i);
  return m_format == Format::Csv ? printCsv(rows, labels, out) : printText(rows, labels, out);
}

qint64 ResultPrinter::printText(OraDynaset& rows, const QStringList& labels, QTextStream& out) const {
  const auto columns = labels.size();
  QList<int> widths;
  for (const QString& label : labels)
    widths += displayWidth(label);
  // A column lines up to the right when every value in it is a number, as NUMBER columns do.
  QList<bool> numeric(columns, true);
  QList<bool> anyValue(columns, false);
  QList<QStringList> table;
  for (; !rows.IsEOF(); rows.MoveNext()) {
    QStringList row;
    for (int i = 0; i < columns; ++i) {
      const QVariant value = rows.Fields(i);
      if (value.isValid() && !value.isNull()) {
        anyValue[i] = true;
        numeric[i] = numeric[i] && isNumber(value);
      }
      row += flattened(text(value));
      widths[i] = std::max(widths[i], displayWidth(row.last()));
    }
    table += row;
  }
  if (table.isEmpty()) {
    out << "\nno rows selected\n";
    return 0;
  }

  QString header;
  QString dashes;
  for (int i = 0; i < columns; ++i) {
    const QString gap = i == 0 ? QString() : QStringLiteral(" ");
    header += gap + padded(labels[i], widths[i], numeric[i] && anyValue[i]);
    dashes += gap + QString(widths[i], u'-');
  }
  out << '\n';
  writeLine(out, header);
  writeLine(out, dashes);
  for (const QStringList& row : std::as_const(table)) {
    QString line;
    for (int i = 0; i < columns; ++i)
      line += (i == 0 ? QString() : QStringLiteral(" ")) + padded(row[i], widths[i], numeric[i] && anyValue[i]);
    writeLine(out, line);
  }
  const qint64 count = table.size();
  out << '\n'
      << (count == 1 ? QStringLiteral("1 row selected.") : QStringLiteral("%1 rows selected.").arg(count)) << '\n';
  return count;
}

qint64 ResultPrinter::printCsv(OraDynaset& rows, const QStringList& labels, QTextStream& out) const {
  QStringList fields;
  for (const QString& label : labels)
    fields += csvField(label);
  out << fields.join(u',') << '\n';
  qint64 count = 0;
  for (; !rows.IsEOF(); rows.MoveNext(), ++count) {
    fields.clear();
    for (int i = 0; i < labels.size(); ++i)
      fields += csvField(text(rows.Fields(i)));
    out << fields.join(u',') << '\n';
  }
  return count;
}

QString ResultPrinter::text(const QVariant& value) {
  if (!value.isValid() || value.isNull())
    return {};
  switch (value.metaType().id()) {
  case QMetaType::Double:
  case QMetaType::Float: {
    const double d = value.toDouble();
    if (std::isfinite(d) && d == std::trunc(d) && std::abs(d) < 1e15)
      return QString::number(qint64(d));
    return QString::number(d, 'g', QLocale::FloatingPointShortest);
  }
  case QMetaType::QDateTime: return value.toDateTime().toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"));
  case QMetaType::QDate: return value.toDate().toString(QStringLiteral("yyyy-MM-dd"));
  case QMetaType::QByteArray: return QString::fromLatin1(value.toByteArray().toHex().toUpper());
  default: return value.toString();
  }
}

bool ResultPrinter::isNumber(const QVariant& value) {
  switch (value.metaType().id()) {
  case QMetaType::Int:
  case QMetaType::UInt:
  case QMetaType::LongLong:
  case QMetaType::ULongLong:
  case QMetaType::Long:
  case QMetaType::ULong:
  case QMetaType::Short:
  case QMetaType::UShort:
  case QMetaType::Double:
  case QMetaType::Float: return true;
  default: return false;
  }
}

QString ResultPrinter::csvField(const QString& field) {
  const bool quote = field.contains(u',') || field.contains(u'"') || field.contains(u'\r') || field.contains(u'\n');
  if (!quote)
    return field;
  QString quoted = field;
  quoted.replace(u'"', QStringLiteral("\"\""));
  return u'"' + quoted + u'"';
}
