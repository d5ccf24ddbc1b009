#pragma once

#include "widgets/FlexGridModel.h"
#include "widgets/ScrollMove.h"

#include <QTableView>

// The grid every window uses. Rows and columns are counted as the windows count them: Rows
// includes the fixed header row 0, TextMatrix(0, c) is a column heading and body rows start at
// 1. Row/Col is the current cell and RowSel/ColSel the other corner of the selected range;
// setting Row or Col collapses the selection onto the current cell. Clicking a heading selects
// that whole column (shift-click extends across columns), ready for Sort.
class FlexGrid final : public QTableView {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FlexGrid)

public:
  enum class SortOrder { GenericAscending = 1, GenericDescending = 2 };

  explicit FlexGrid(QWidget* parent = nullptr);

  int Rows() const { return m_model->rows(); }
  void setRows(int rows);
  int Cols() const { return m_model->cols(); }
  void setCols(int cols);
  int FixedRows() const { return m_model->fixedRows(); }
  void setFixedRows(int fixed);
  int FixedCols() const { return m_model->fixedCols(); }
  void setFixedCols(int fixed) { m_model->setFixedCols(fixed); }

  int Row() const { return m_row; }
  void setRow(int row);
  int Col() const { return m_col; }
  void setCol(int col);
  int RowSel() const { return m_rowSel; }
  void setRowSel(int row);
  int ColSel() const { return m_colSel; }
  void setColSel(int col);

  QString TextMatrix(int row, int col) const { return m_model->text(row, col); }
  void setTextMatrix(int row, int col, const QString& text) { m_model->setText(row, col, text); }
  // The current cell's text.
  QString Text() const { return TextMatrix(m_row, m_col); }
  void setText(const QString& text) { setTextMatrix(m_row, m_col, text); }

  // An invalid colour means the grid's default.
  QColor CellBackColor(int row, int col) const { return m_model->backColor(row, col); }
  void setCellBackColor(int row, int col, const QColor& c) { m_model->setBackColor(row, col, c); }
  QColor CellForeColor(int row, int col) const { return m_model->foreColor(row, col); }
  void setCellForeColor(int row, int col, const QColor& c) { m_model->setForeColor(row, col, c); }
  Qt::Alignment CellAlignment(int row, int col) const { return m_model->alignment(row, col); }
  void setCellAlignment(int row, int col, Qt::Alignment a) { m_model->setAlignment(row, col, a); }
  Qt::Alignment ColAlignment(int col) const { return m_model->columnAlignment(col); }
  void setColAlignment(int col, Qt::Alignment a) { m_model->setColumnAlignment(col, a); }

  // Column widths in twips.
  int ColWidth(int col) const;
  void setColWidth(int col, int twips);

  // The cell under the mouse at the last press or move, -1 outside the cells.
  int MouseRow() const { return m_mouseRow; }
  int MouseCol() const { return m_mouseCol; }

  // Begins a manual drag of the current row: it leaves the grid once the mouse moves with the
  // button still down, showing the current cell's text, and carries kind to the drop target. A
  // release without moving ends it unused.
  void Drag(const QString& kind);
  // Whether rows dragged within this window may be dropped here (DragDrop reports them).
  void setDropTarget(bool on);

  void Clear() { m_model->clear(); }
  // Sorts the selected rows (every body row when one row is selected) by the selected columns.
  void Sort(SortOrder order);
  void Scroll(ScrollMove move) { ScrollVertically(this, move); }

  FlexGridModel* gridModel() const { return m_model; }

Q_SIGNALS:
  void Click();
  void DblClick();
  void MouseDown(Qt::MouseButton button, QPoint pos);
  void RowColChange();
  void SelChange();
  void DragDrop();

protected:
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

private:
  QModelIndex toIndex(int row, int col) const;
  void setSelection(int row, int col, int rowSel, int colSel);
  void showSelection();
  void takeSelectionFromView();
  void headingPressed(int col);
  void trackMouse(const QPoint& pos);
  void applyColumnWidths();
  void startArmedDrag();

  FlexGridModel* m_model;
  int m_row = 1, m_col = 0, m_rowSel = 1, m_colSel = 0;
  int m_mouseRow = -1, m_mouseCol = -1;
  bool m_showing = false;
  QString m_dragKind; // a drag begun and waiting for the mouse to move
  QPoint m_pressPos;
  std::vector<int> m_colTwips; // -1 = never set
};
