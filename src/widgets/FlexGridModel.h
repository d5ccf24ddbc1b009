#pragma once

#include <QAbstractTableModel>
#include <QColor>

#include <memory>
#include <vector>

// The cells of a FlexGrid, addressed as the grid addresses them: row 0 is the fixed header row
// (when there is one) and rows 1.. are the body. The model shows body rows as its rows and the
// header row as horizontal header data.
//
// Storage is kept light for big grids: each row's texts live back to back in one string with an
// end offset per cell, and colours or alignments take memory only in rows that have them.
class FlexGridModel final : public QAbstractTableModel {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FlexGridModel)

public:
  explicit FlexGridModel(QObject* parent = nullptr);
  ~FlexGridModel() override;

  int rows() const { return m_rows; }
  int cols() const { return m_cols; }
  int fixedRows() const { return m_fixedRows; }
  int fixedCols() const { return m_fixedCols; }
  void setRows(int rows);
  void setCols(int cols);
  void setFixedRows(int fixed);
  void setFixedCols(int fixed);

  bool contains(int row, int col) const { return row >= 0 && row < m_rows && col >= 0 && col < m_cols; }
  QString text(int row, int col) const;
  QStringView textView(int row, int col) const;
  void setText(int row, int col, const QString& text);

  QColor backColor(int row, int col) const;
  void setBackColor(int row, int col, const QColor& color);
  QColor foreColor(int row, int col) const;
  void setForeColor(int row, int col, const QColor& color);
  // 0 means the grid's general rule: numbers to the right, text to the left.
  Qt::Alignment alignment(int row, int col) const;
  void setAlignment(int row, int col, Qt::Alignment alignment);
  Qt::Alignment columnAlignment(int col) const;
  void setColumnAlignment(int col, Qt::Alignment alignment);

  // Empties every cell and drops every colour and alignment; the size stays.
  void clear();

  // Stable sort of rows firstRow..lastRow by the columns firstCol..lastCol, left to right. Each
  // pair of cells compares as numbers when both are numbers; numbers come before text; text
  // compares by character code.
  void sortRows(int firstRow, int lastRow, int firstCol, int lastCol, bool descending);

  // Whether the grid's general alignment and its sort treat text as a number.
  static bool parseNumber(QStringView text, double* value);

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

private:
  struct CellStyle {
    QColor back;
    QColor fore;
    Qt::Alignment alignment;
  };
  using RowStyle = std::vector<CellStyle>;

  quint32 start(int row, int col) const { return col == 0 ? 0 : m_ends[size_t(row) * m_cols + col - 1]; }
  quint32 end(int row, int col) const { return m_ends[size_t(row) * m_cols + col]; }
  void resizeStorage(int rows);
  const CellStyle* style(int row, int col) const;
  CellStyle& styleFor(int row, int col);
  void changed(int row, int col);
  void flushChanges();

  int m_rows = 0;
  int m_cols = 0;
  int m_fixedRows = 1;
  int m_fixedCols = 0;
  std::vector<QString> m_text;                    // one per row, cells back to back
  std::vector<quint32> m_ends;                    // rows x cols end offsets into m_text[row]
  std::vector<std::unique_ptr<RowStyle>> m_style; // null for rows without colours or alignments
  std::vector<Qt::Alignment> m_colAlignment;

  // Changed cells are announced once per event-loop turn, as one rectangle: filling a big grid
  // cell by cell must not cost a signal per cell.
  bool m_flushPending = false;
  bool m_headerChanged = false;
  int m_top = 0, m_left = 0, m_bottom = -1, m_right = -1;
};
