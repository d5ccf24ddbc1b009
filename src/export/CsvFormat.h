#pragma once

#include "db/OraError.h"

#include <QList>
#include <QString>
#include <QVariant>

class TextTable;

// How the export writes one table's rows as delimited text.
struct CsvOptions {
  QString separator = QStringLiteral(",");
  bool header = false;
  // Put around character data; "" leaves it bare. Values are written as they are, never escaped.
  QString stringSeparator = QStringLiteral("\"");
};

// What a column's data type makes of its values in the text.
enum class CsvField {
  TypeName, // binary and large-object data: the type's name stands in for every value
  Bare,     // numbers, dates and LONG text: the value as it is, Null as 0
  Quoted,   // everything else: between string separators, Null as nothing
};

struct CsvColumn {
  QString id;
  QString type;
  CsvField field = CsvField::Quoted;
};

// The kind of field for a data type name as the dictionary spells it (exact, case-sensitive).
CsvField CsvFieldOf(const QString& type);

// The columns of a column description (ID in field 0, data type in field 2, rows 1..n).
QList<CsvColumn> CsvColumns(const TextTable& columnInfo);

// The column IDs joined by the separator, without a line end.
QString CsvHeaderLine(const QList<CsvColumn>& columns, const CsvOptions& options);

// The text a Bare field shows for a value: numbers in their shortest general form, dates as
// the date alone at midnight and with the time otherwise, Null as 0.
QString CsvBareText(const QVariant& value);
// The same, appended to line without a text of its own in between.
void AppendCsvBare(QString& line, const QVariant& value);
// A character value's text appended to line: a text value as it is, anything else as its text.
void AppendCsvText(QString& line, const QVariant& value);

// Appends one row's values as one line without its end. For each field read,
// fieldWritten(column index, first, end) tells where the value's text lies in line (string
// separators not included). A description with
// more columns than the row has values throws, as reading a column the query lacks does.
template <typename FieldWritten>
void AppendCsvRow(QString& line, const QVariantList& values, const QList<CsvColumn>& columns,
                  const CsvOptions& options, FieldWritten&& fieldWritten) {
  const qsizetype lineStart = line.size();
  for (int j = 0; j < columns.size(); ++j) {
    const CsvColumn& column = columns[j];
    if (column.field == CsvField::TypeName) {
      line += column.type;
    } else {
      if (j >= values.size())
        throw OraError(1007, QStringLiteral("variable not in select list"));
      const QVariant& value = values[j];
      if (column.field == CsvField::Bare) {
        const qsizetype first = line.size();
        AppendCsvBare(line, value);
        fieldWritten(j, first, line.size());
      } else {
        line += options.stringSeparator;
        const qsizetype first = line.size();
        AppendCsvText(line, value);
        fieldWritten(j, first, line.size());
        line += options.stringSeparator;
      }
    }
    line += options.separator;
  }
  // The separator after the last field goes.
  if (line.size() > lineStart)
    line.chop(options.separator.size());
}
