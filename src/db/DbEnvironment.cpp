#include "db/DbEnvironment.h"

#include <QDir>

DbEnvironment DbEnvironment::from(const QProcessEnvironment& env) {
  QString folder = env.value(QStringLiteral("DBSWEEP_DATA_DIR"));
  if (folder.isEmpty()) {
    QString dataHome = env.value(QStringLiteral("XDG_DATA_HOME"));
    if (dataHome.isEmpty())
      dataHome = env.value(QStringLiteral("HOME"), QDir::homePath()) + QStringLiteral("/.local/share");
    folder = dataHome + QStringLiteral("/dbsweep");
  }
  return {folder, env.value(QStringLiteral("DBSWEEP_DEMO_DIR"))};
}
