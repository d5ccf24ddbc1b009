#pragma once

#include <QStringList>
#include <QTextStream>
#include <QVariant>

struct ColumnFormat;
class ColumnFormats;
class OraDynaset;

// How query results are laid out as text, as SET and COLUMN left it.
struct ResultLayout {
  // Columns of a line; 0: a row stays on one line however wide.
  int lineSize = 0;
  // Lines of a page (a blank line, the headings, rows); 0: no headings; -1: no page breaks.
  int pageSize = -1;
  bool heading = true;
  // Row counts from this on are reported; 0: none.
  int feedback = 1;
  const ColumnFormats* columns = nullptr;
};

// Writes the rows of a query either as SQL*Plus lays them out (a header, a line of dashes per
// column, aligned rows, then "N rows selected.") or as RFC 4180 CSV for other programs.
class ResultPrinter final {
public:
  enum class Format { Text, Csv };

  explicit ResultPrinter(Format format, ResultLayout layout = {}) : m_format(format), m_layout(layout) {}

  // Prints every row from the dynaset's current position to its end; returns how many.
  qint64 print(OraDynaset& rows, QTextStream& out) const;

  // A field as text: Null is empty, whole numbers print without a decimal point.
  static QString text(const QVariant& value);
  static bool isNumber(const QVariant& value);
  static QString csvField(const QString& field);

private:
  struct Column {
    QString heading;
    int width = 0;
    bool right = false;
    const ColumnFormat* format = nullptr;
  };

  static void fitToFormat(Column& column, bool numeric);
  // Columns that share a line when a row is wider than the line size.
  QList<QList<int>> lineGroups(const QList<Column>& layout) const;
  static QStringList recordLines(const QStringList& row, const QList<Column>& layout, const QList<QList<int>>& groups);
  qint64 printText(OraDynaset& rows, const QStringList& labels, QTextStream& out) const;
  qint64 printCsv(OraDynaset& rows, const QStringList& labels, QTextStream& out) const;

  Format m_format;
  ResultLayout m_layout;
};
