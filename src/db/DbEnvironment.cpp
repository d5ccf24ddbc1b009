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
  DbEnvironment db{folder, env.value(QStringLiteral("DBSWEEP_DEMO_DIR"))};
  db.oracleClientFolder = env.value(QStringLiteral("DBSWEEP_ORACLE_CLIENT"));
  db.oracleHome = env.value(QStringLiteral("ORACLE_HOME")).trimmed();
  db.loaderSearch = env.value(QStringLiteral("LD_LIBRARY_PATH"));
  bool ok = false;
  const int rows = env.value(QStringLiteral("DBSWEEP_FETCH_ROWS")).toInt(&ok);
  if (ok && rows >= 1 && rows <= 100000)
    db.fetchRows = rows;
  return db;
}
