#pragma once

#include "services/MessageBoxes.h"

class QWidget;

// Shows each box as a modal QMessageBox over the active window.
class QtMessageBoxes final : public MessageBoxes {
public:
  using MessageBoxes::show;
  Answer show(const Box& box) override;
};
