#include "widgets/GuardedApplication.h"

#include "db/OraError.h"
#include "services/OraErrorBox.h"

#include <QDebug>

GuardedApplication::GuardedApplication(int& argc, char** argv) : QApplication(argc, argv) {}

bool GuardedApplication::notify(QObject* receiver, QEvent* event) {
  try {
    return QApplication::notify(receiver, event);
  } catch (const OraError& e) {
    qWarning().noquote() << "dbsweep:" << e.message();
    if (m_boxes)
      ShowOraError(*m_boxes, e);
    return false;
  }
}
