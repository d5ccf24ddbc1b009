#pragma once

#include <QDialog>

#include <array>
#include <memory>

class FlexGrid;
class MessageBoxes;
class OraDynaset;
class QLabel;
class QPushButton;
class StatementRunner;
struct BDBSWEEP;

// The rows of one table under the current filter, read-only: the query the data button left in
// gLastSql on the table in gInfoTable. Rows are read 500 at a time, asking before each further
// 500; the total always counts every row of the query. The first rows show as soon as the window
// does, however big the table.
class FDBSWEEP_ED final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_ED)

public:
  // showIds: headings are column IDs (the main window's 項目ID表示) rather than display names.
  FDBSWEEP_ED(BDBSWEEP& state, MessageBoxes& boxes, StatementRunner& statements, bool showIds,
              QWidget* parent = nullptr);
  ~FDBSWEEP_ED() override;

  // Runs the query and fills the grid; done once when the window first shows.
  void LoadData();

protected:
  void showEvent(QShowEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

private:
  void cmdSort_Click(int index);
  void sizeColumns(int columns);
  // Reads up to count rows into the grid after its last row; false once the rows have run out.
  bool readRows(OraDynaset& rows, int count, int columns);
  void placeBottomRow();

  BDBSWEEP& m_state;
  MessageBoxes& m_boxes;
  StatementRunner& m_statements;
  bool m_showIds;
  bool m_loaded = false;
  FlexGrid* m_grdED;
  QLabel* m_lblTable;
  QLabel* m_lblTotal;
  std::array<QPushButton*, 3> m_cmdSort{};
  QSize m_loadSize;     // the window at load
  QSize m_loadGridSize; // the grid at load
};
