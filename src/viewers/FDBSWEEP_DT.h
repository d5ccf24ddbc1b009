#pragma once

#include <QDialog>

class FlexGrid;
class MessageBoxes;
class PopPop;
class QLabel;
class QStatusBar;
class RefreshFrame;
struct BDBSWEEP;

// The values of one column of the current table with the number of rows holding each, refreshed
// on demand or every few seconds. A double-click on a value hands it back in gPickedValue and
// closes; closing otherwise leaves gPickedValue as it came in.
class FDBSWEEP_DT final : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_DT)

public:
  // u is the main window's current reference column width in twips; menu is its pop-up menu.
  FDBSWEEP_DT(BDBSWEEP& state, MessageBoxes& boxes, int u, PopPop* menu, QWidget* parent = nullptr);

  // Reads the groups again from scratch.
  void LoadData();

protected:
  void resizeEvent(QResizeEvent* event) override;

private:
  void grdData_DblClick();
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
