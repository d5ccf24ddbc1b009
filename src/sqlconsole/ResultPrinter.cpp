#include "sqlconsole/ResultPrinter.h"

#include "db/OraDynaset.h"
#include "sqlconsole/ColumnFormat.h"
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

// A value cut into pieces of at most `width` columns, as SQL*Plus wraps a column it formats.
QStringList wrapped(const QString& text, int width) {
  QStringList pieces;
  QString piece;
  for (const char32_t c : text.toUcs4()) {
    const QString character = QString::fromUcs4(&c, 1);
    if (!piece.isEmpty() && displayWidth(piece) + displayWidth(character) > width)
      pieces += std::exchange(piece, QString());
    piece += character;
  }
  pieces += piece;
  return pieces;
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
  QList<Column> layout;
  for (const QString& label : labels) {
    const ColumnFormat* format = m_layout.columns ? m_layout.columns->find(label) : nullptr;
    const QString heading = format && !format->heading.isEmpty() ? format->heading : label;
    layout += Column{heading, displayWidth(heading), false, format};
  }
  // A column lines up to the right when every value in it is a number, as NUMBER columns do.
  QList<bool> numeric(columns, true);
  QList<bool> anyValue(columns, false);
  QList<QStringList> table;
  for (; !rows.IsEOF(); rows.MoveNext()) {
    QStringList row;
    for (int i = 0; i < columns; ++i) {
      const QVariant value = rows.Fields(i);
      const ColumnFormat* format = layout[i].format;
      const bool present = value.isValid() && !value.isNull();
      if (present) {
        anyValue[i] = true;
        numeric[i] = numeric[i] && isNumber(value);
      }
      row +=
          present && format && !format->numberFormat.isEmpty() ? format->formatNumber(value) : flattened(text(value));
      layout[i].width = std::max(layout[i].width, displayWidth(row.last()));
    }
    table += row;
  }
  if (table.isEmpty()) {
    if (m_layout.feedback > 0)
      out << "\nno rows selected\n";
    return 0;
  }
  for (int i = 0; i < columns; ++i)
    fitToFormat(layout[i], numeric[i] && anyValue[i]);

  const QList<QList<int>> groups = lineGroups(layout);
  QStringList headings;
  for (const QList<int>& group : groups) {
    QStringList heading;
    QStringList dashes;
    for (const int i : group) {
      heading += padded(layout[i].heading, layout[i].width, layout[i].right);
      dashes += QString(layout[i].width, u'-');
    }
    headings << heading.join(u' ') << dashes.join(u' ');
  }
  const qsizetype top = 1 + (m_layout.heading ? headings.size() : 0);
  qsizetype lineOnPage = 0;
  for (const QStringList& row : std::as_const(table)) {
    const QStringList lines = recordLines(row, layout, groups);
    const bool pageFull = m_layout.pageSize > 0 && lineOnPage > top && lineOnPage + lines.size() > m_layout.pageSize;
    if (m_layout.pageSize != 0 && (lineOnPage == 0 || pageFull)) {
      out << '\n';
      if (m_layout.heading) {
        for (const QString& line : std::as_const(headings))
          writeLine(out, line);
      }
      lineOnPage = top;
    }
    for (const QString& line : lines)
      writeLine(out, line);
    lineOnPage += lines.size();
  }
  const qint64 count = table.size();
  if (m_layout.feedback > 0 && count >= m_layout.feedback)
    out << '\n'
        << (count == 1 ? QStringLiteral("1 row selected.") : QStringLiteral("%1 rows selected.").arg(count)) << '\n';
  return count;
}

void ResultPrinter::fitToFormat(Column& column, bool numeric) {
  column.right = numeric;
  if (!column.format)
    return;
  if (column.format->textWidth > 0) {
    // SQL*Plus cuts the heading of a text column to the column's width.
    column.width = column.format->textWidth;
    column.heading = wrapped(column.heading, column.width).value(0);
    column.right = false;
  } else if (!column.format->numberFormat.isEmpty()) {
    column.width = std::max(column.format->numberWidth(), displayWidth(column.heading));
    column.right = true;
  }
}

QList<QList<int>> ResultPrinter::lineGroups(const QList<Column>& layout) const {
  QList<QList<int>> groups(1);
  int used = 0;
  for (int i = 0; i < layout.size(); ++i) {
    if (!groups.last().isEmpty()) {
      if (m_layout.lineSize > 0 && used + 1 + layout[i].width > m_layout.lineSize) {
        groups.append(QList<int>());
        used = 0;
      } else {
        ++used; // the blank between columns
      }
    }
    groups.last() += i;
    used += layout[i].width;
  }
  return groups;
}

QStringList ResultPrinter::recordLines(const QStringList& row, const QList<Column>& layout,
                                       const QList<QList<int>>& groups) {
  QStringList lines;
  for (const QList<int>& group : groups) {
    QList<QStringList> pieces;
    qsizetype height = 1;
    for (const int i : group) {
      pieces +=
          layout[i].format && layout[i].format->textWidth > 0 ? wrapped(row[i], layout[i].width) : QStringList{row[i]};
      height = std::max(height, pieces.last().size());
    }
    for (qsizetype k = 0; k < height; ++k) {
      QStringList line;
      for (qsizetype j = 0; j < group.size(); ++j)
        line += padded(pieces[j].value(k), layout[group[j]].width, layout[group[j]].right);
      lines += line.join(u' ');
    }
  }
  return lines;
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
