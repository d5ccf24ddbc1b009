#pragma once

#include <QSize>
#include <QWidget>

#include <algorithm>

// Grows or shrinks widget by as much as its window has changed since both were sized at load,
// never below nothing: how the viewers' grids follow their windows.
inline void FollowWindowResize(QWidget& widget, QSize widgetAtLoad, QSize windowAtLoad, QSize windowNow) {
  const QSize change = windowNow - windowAtLoad;
  widget.resize(std::max(0, widgetAtLoad.width() + change.width()),
                std::max(0, widgetAtLoad.height() + change.height()));
}
