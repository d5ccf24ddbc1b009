#pragma once

// What a grid shows, read the way a test compares it, and where to click a cell.
#include "widgets/FlexGrid.h"

#include <QStringList>

inline QPoint cellCenter(FlexGrid& g, int row, int col) { return g.visualRect(g.gridModel()->index(row - 1, col)).center(); }

// The body rows' texts of one column.
inline QStringList column(FlexGrid& g, int col) {
  QStringList texts;
  for (int r = 1; r < g.Rows(); ++r)
    texts << g.TextMatrix(r, col);
  return texts;
}

inline QStringList rowOf(FlexGrid& g, int row) {
  QStringList texts;
  for (int c = 0; c < g.Cols(); ++c)
    texts << g.TextMatrix(row, c);
  return texts;
}
