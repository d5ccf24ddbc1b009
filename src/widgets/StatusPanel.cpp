#include "widgets/StatusPanel.h"

#include <QMouseEvent>

StatusPanel::StatusPanel(QWidget* parent) : QLabel(parent) {
  setFrameStyle(QFrame::Panel | QFrame::Sunken);
  setContentsMargins(4, 0, 4, 0);
}

void StatusPanel::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->position().toPoint()))
    Q_EMIT Click();
  QLabel::mouseReleaseEvent(event);
}

void StatusPanel::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton)
    Q_EMIT DblClick();
  QLabel::mouseDoubleClickEvent(event);
}
