#pragma once

#include <QStringList>
#include <QTextStream>
#include <QVariant>

class OraDynaset;

// Writes the rows of a query either as SQL*Plus lays them out (a header, a line of dashes per
// column, aligned rows, then "N rows selected.") or as RFC 4180 CSV for other programs.
class ResultPrinter final {
public:
  enum class Format { Text, Csv };

  explicit ResultPrinter(Format format) : m_format(format) {}

  // Prints every row from the dynaset's current position to its end; returns how many.
  qint64 print(OraDynaset& rows, QTextStream& out) const;

  // A field as text: Null is empty, whole numbers print without a decimal point.
  static QString text(const QVariant& value);
  static bool isNumber(const QVariant& value);
  static QString csvField(const QString& field);

private:
  qint64 printText(OraDynaset& rows, const QStringList& labels, QTextStream& out) const;
  qint64 printCsv(OraDynaset& rows, const QStringList& labels, QTextStream& out) const;

  Format m_format;
};
