#pragma once

#include <QString>
#include <QStringList>

// A two-dimensional text array indexed (field, row), as the catalogue tables are: field 0 is the
// ID and field 1 the display name, and row r matches row r of a grid, so row 0 (the grid's
// header row) stays empty. Reading outside the table gives "".
class TextTable final {
public:
  explicit TextTable(int width = 2) : m_width(width) { redim(0); }

  // Re-creates the table as 0..width-1 x 0..upper, every entry empty.
  void redim(int upper) {
    m_upper = upper;
    m_cells = QStringList(qsizetype(m_width) * (upper + 1));
  }
  int upper() const { return m_upper; }
  int width() const { return m_width; }

  QString at(int field, int row) const { return inside(field, row) ? m_cells[index(field, row)] : QString(); }
  void set(int field, int row, const QString& text) {
    if (inside(field, row))
      m_cells[index(field, row)] = text;
  }

private:
  bool inside(int field, int row) const { return field >= 0 && field < m_width && row >= 0 && row <= m_upper; }
  qsizetype index(int field, int row) const { return qsizetype(row) * m_width + field; }

  int m_width;
  int m_upper = 0;
  QStringList m_cells;
};
