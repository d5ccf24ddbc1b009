#include "widgets/ScrollMove.h"

#include <QAbstractScrollArea>
#include <QScrollBar>

void ScrollVertically(QAbstractScrollArea* area, ScrollMove move) {
  QScrollBar* bar = area->verticalScrollBar();
  switch (move) {
  case ScrollMove::PageUp: bar->triggerAction(QAbstractSlider::SliderPageStepSub); break;
  case ScrollMove::PageDown: bar->triggerAction(QAbstractSlider::SliderPageStepAdd); break;
  case ScrollMove::Top: bar->triggerAction(QAbstractSlider::SliderToMinimum); break;
  case ScrollMove::Bottom: bar->triggerAction(QAbstractSlider::SliderToMaximum); break;
  }
}
