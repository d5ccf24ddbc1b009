#include "jobs/JobInputGate.h"

#include <QApplication>
#include <QCloseEvent>
#include <QWidget>

namespace {

bool isUserInput(QEvent::Type type) {
  switch (type) {
  case QEvent::MouseButtonPress:
  case QEvent::MouseButtonRelease:
  case QEvent::MouseButtonDblClick:
  case QEvent::KeyPress:
  case QEvent::KeyRelease:
  case QEvent::Shortcut:
  case QEvent::ContextMenu:
  case QEvent::DragEnter:
  case QEvent::DragMove:
  case QEvent::Drop:
  case QEvent::TouchBegin:
  case QEvent::TouchUpdate:
  case QEvent::TouchEnd:
  case QEvent::TabletPress:
  case QEvent::TabletRelease: return true;
  default: return false;
  }
}

} // namespace

JobInputGate::JobInputGate() {
  for (QWidget* window : QApplication::topLevelWidgets())
    m_windows.emplace_back(window);
  qApp->installEventFilter(this);
}

JobInputGate::~JobInputGate() { qApp->removeEventFilter(this); }

bool JobInputGate::guards(QObject* watched) const {
  const auto* widget = qobject_cast<QWidget*>(watched);
  if (!widget)
    return false;
  const QWidget* window = widget->window();
  for (const QPointer<QWidget>& guarded : m_windows)
    if (guarded == window)
      return true;
  return false;
}

bool JobInputGate::eventFilter(QObject* watched, QEvent* event) {
  const QEvent::Type type = event->type();
  if (type == QEvent::ShortcutOverride && guards(watched)) {
    // Claimed by the widget, so no shortcut fires; the key press that follows is dropped.
    event->accept();
    return true;
  }
  if (type == QEvent::Close && event->spontaneous() && guards(watched)) {
    event->ignore();
    return true;
  }
  if (isUserInput(type) && guards(watched))
    return true;
  return QObject::eventFilter(watched, event);
}
