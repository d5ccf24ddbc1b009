#include "db/OraSession.h"

#include "db/OraError.h"
#include "db/local/DemoInstance.h"
#include "db/local/LocalEngine.h"
#include "db/oci/OciConnection.h"
#include "db/oci/OciLibrary.h"

namespace {

std::shared_ptr<DbConnection> openBackend(const QString& host, const QString& user, const QString& password,
                                          const DbEnvironment& env) {
  if (host.startsWith(QStringLiteral("local:"), Qt::CaseInsensitive)) {
    const QString name = host.mid(6);
    const QString folder = LocalEngine::folderFor(name, env);
    // A new user's first logon goes to the demo, so it appears the first time it is asked for.
    if (name == DemoInstance::Name) {
      const QString source = DemoInstance::sourceFolder(env);
      DemoInstance::ensure(folder, source);
      DemoInstance::provideNameMasterFiles(source, env.settingsFolder);
    }
    return LocalEngine::connect(folder, user, password);
  }
  const OciSearch search{env.oracleClientFolder, env.programFolder, env.oracleHome, env.loaderSearch};
  OciConnection::Options options;
  options.fetchRows = env.fetchRows;
  return OciConnection::connect(OciLibrary::load(search), host, user, password, options);
}

} // namespace

std::shared_ptr<OraDatabase> OraSession::OpenDatabase(const QString& host, const QString& connect, int) {
  const auto slash = connect.indexOf(u'/');
  const QString user = slash < 0 ? connect : connect.left(slash);
  const QString password = slash < 0 ? QString() : connect.mid(slash + 1);
  auto connection = openBackend(host, user, password, m_env);
  m_connection = connection;
  return std::make_shared<OraDatabase>(std::move(connection));
}

DbConnection& OraSession::connection() {
  if (!m_connection)
    throw OraError(3114, QStringLiteral("not connected to ORACLE"));
  return *m_connection;
}

void OraSession::BeginTrans() { connection().begin(); }
void OraSession::CommitTrans() { connection().commit(); }
void OraSession::Rollback() { connection().rollback(); }

QString OraSession::OipVersionNumber() const {
  return m_connection ? m_connection->clientVersion()
                      : QStringLiteral("%1.%2.%3")
                            .arg(DBSWEEP_VERSION_MAJOR)
                            .arg(DBSWEEP_VERSION_MINOR)
                            .arg(DBSWEEP_VERSION_PATCH);
}
