#pragma once

#include "viewers/RefreshedList.h"

class PopPop;

// The values of one column of the current table with the number of rows holding each, refreshed
// on demand or every few seconds. A double-click on a value hands it back in gPickedValue and
// closes; closing otherwise leaves gPickedValue as it came in.
class FDBSWEEP_DT final : public RefreshedList {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_DT)

public:
  // u is the main window's current reference column width in twips; menu is its pop-up menu.
  FDBSWEEP_DT(BDBSWEEP& state, MessageBoxes& boxes, int u, PopPop* menu, QWidget* parent = nullptr);

  // Reads the groups again from scratch.
  void LoadData();

private:
  void grdData_DblClick();
};
