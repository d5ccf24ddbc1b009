#pragma once

#include <QDialog>

class FlexGrid;
class MessageBoxes;
class PopPop;
class QLabel;
class QStatusBar;
class RefreshFrame;
struct BDBSWEEP;

// The sessions of the database, refreshed on demand or every few seconds; a click on a row
// asks, then kills that session.
class FDBSWEEP_SS final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_SS)

public:
  // u is the main window's current reference column width in twips; menu is its pop-up menu.
  FDBSWEEP_SS(BDBSWEEP& state, MessageBoxes& boxes, int u, PopPop* menu, QWidget* parent = nullptr);

  // Reads the sessions again.
  void LoadData();

protected:
  void resizeEvent(QResizeEvent* event) override;

private:
  void grdData_Click();
  void paintRow(int row, const QColor& colour);
  void placeUpdateFrame();

  BDBSWEEP& m_state;
  MessageBoxes& m_boxes;
  FlexGrid* m_grdData;
  QLabel* m_lblTable;
  QLabel* m_lblTotal;
  RefreshFrame* m_frmUpd;
  QStatusBar* m_stsDT;
  QSize m_loadSize;     // the window at load
  QSize m_loadGridSize; // the grid at load
};
