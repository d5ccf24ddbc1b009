#pragma once

#include <QHash>
#include <QString>
#include <QVariant>

// What COLUMN name FORMAT ... HEADING ... asks of one column of query results.
struct ColumnFormat final {
  // FORMAT An: the column is n wide and longer values go on on the next lines.
  int textWidth = 0;
  // FORMAT 999,990.99 and the like; empty when the column has no number format.
  QString numberFormat;
  // HEADING 'text'; empty keeps the column's name.
  QString heading;

  // The columns a number format takes: its characters and one for the sign.
  int numberWidth() const;
  // A value in the number format: digits, group commas, a decimal point, a leading '$' and
  // zeros from a '0' on; '#' all over when it does not fit. Right-aligned to numberWidth().
  QString formatNumber(const QVariant& value) const;
};

// COLUMN and CLEAR COLUMNS: formats by column name, in upper case.
class ColumnFormats final {
public:
  // COLUMN name [FORMAT f] [HEADING text] [CLEAR]; returns an error text.
  QString define(const QStringList& words);
  void clear() { m_formats.clear(); }
  const ColumnFormat* find(const QString& column) const;

private:
  QHash<QString, ColumnFormat> m_formats;
};
