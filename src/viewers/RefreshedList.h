#pragma once

#include <QDialog>

class FlexGrid;
class MessageBoxes;
class QLabel;
class QStatusBar;
class RefreshFrame;
struct BDBSWEEP;

// A window that lists what the database holds in a grid and refreshes it on demand or every few
// seconds: the group count viewer and the session monitor. It has the title line, the grid, the
// refresh frame with the total beside it and a status bar; the grid follows the window's size
// and the frame and total stay below it.
class RefreshedList : public QDialog {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(RefreshedList)

protected:
  RefreshedList(BDBSWEEP& state, MessageBoxes& boxes, int refreshSeconds, QWidget* parent);

  // Once the window is laid out at its design size: the sizes the grid follows from, and the
  // frame and the status bar in their places.
  void layoutDone();
  void resizeEvent(QResizeEvent* event) override;

  BDBSWEEP& m_state;
  MessageBoxes& m_boxes;
  FlexGrid* m_grdData;
  QLabel* m_lblTable;
  QLabel* m_lblTotal;
  RefreshFrame* m_frmUpd;
  QStatusBar* m_stsDT;

private:
  void placeBelowGrid();

  QSize m_loadSize;     // the window at load
  QSize m_loadGridSize; // the grid at load
};
