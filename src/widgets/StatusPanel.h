#pragma once

#include <QLabel>

// One panel of a status bar that answers clicks and double-clicks, as the panels of the main
// window's status bar do.
class StatusPanel final : public QLabel {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(StatusPanel)

public:
  explicit StatusPanel(QWidget* parent = nullptr);

Q_SIGNALS:
  void Click();
  void DblClick();

protected:
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
};
