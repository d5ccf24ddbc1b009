#pragma once

#include "viewers/RefreshedList.h"

class PopPop;

// The sessions of the database, refreshed on demand or every few seconds; a click on a row
// asks, then kills that session.
class FDBSWEEP_SS final : public RefreshedList {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_SS)

public:
  // u is the main window's current reference column width in twips; menu is its pop-up menu.
  FDBSWEEP_SS(BDBSWEEP& state, MessageBoxes& boxes, int u, PopPop* menu, QWidget* parent = nullptr);

  // Reads the sessions again.
  void LoadData();

private:
  void grdData_Click();
  void paintRow(int row, const QColor& colour);
};
