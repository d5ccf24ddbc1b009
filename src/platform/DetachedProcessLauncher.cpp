#include "platform/DetachedProcessLauncher.h"

#include <QProcess>

bool DetachedProcessLauncher::start(const QString& program, const QStringList& arguments, WindowState) {
  return QProcess::startDetached(program, arguments);
}
