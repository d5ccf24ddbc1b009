#include "db/oci/OciLibrary.h"

#include "db/OraError.h"
#include "platform/SharedLibrary.h"

#include <QDir>
#include <QVersionNumber>

#include <algorithm>

namespace {

struct Attempt {
  QString where;   // the folder (or search) and what it is
  QString message; // the loader's message for a file that exists but would not load
};

template <typename F> void resolve(void* handle, const char* name, F& target, const QString& path) {
  QString error;
  void* symbol = SharedLibrary::symbol(handle, name, error);
  if (!symbol) {
    throw OraError(0, QStringLiteral("The Oracle client library %1 has no entry point %2 (%3). DBSWEEP needs an Oracle "
                                     "client %4.%5 or later.")
                          .arg(path, QString::fromLatin1(name), error)
                          .arg(OciLibrary::MinimumMajorVersion)
                          .arg(OciLibrary::MinimumMinorVersion));
  }
  target = reinterpret_cast<F>(symbol);
}

std::shared_ptr<const OciClient> bind(void* handle, const QString& path) {
  auto client = std::make_shared<OciClient>();
  client->path = path;
  oci::Api& a = client->api;
  // The version comes first: an old client is better named as old than by a missing symbol.
  resolve(handle, "OCIClientVersion", a.ClientVersion, path);
  oci::sword v[5] = {};
  a.ClientVersion(&v[0], &v[1], &v[2], &v[3], &v[4]);
  client->version = QStringLiteral("%1.%2.%3.%4.%5").arg(v[0]).arg(v[1]).arg(v[2]).arg(v[3]).arg(v[4]);
  if (v[0] < OciLibrary::MinimumMajorVersion ||
      (v[0] == OciLibrary::MinimumMajorVersion && v[1] < OciLibrary::MinimumMinorVersion))
    throw OraError(0, QStringLiteral("The Oracle client library %1 is version %2. DBSWEEP needs an Oracle client %3.%4 "
                                     "or later.")
                          .arg(path, client->version)
                          .arg(OciLibrary::MinimumMajorVersion)
                          .arg(OciLibrary::MinimumMinorVersion));
  resolve(handle, "OCIEnvNlsCreate", a.EnvNlsCreate, path);
  resolve(handle, "OCIHandleAlloc", a.HandleAlloc, path);
  resolve(handle, "OCIHandleFree", a.HandleFree, path);
  resolve(handle, "OCIDescriptorAlloc", a.DescriptorAlloc, path);
  resolve(handle, "OCIDescriptorFree", a.DescriptorFree, path);
  resolve(handle, "OCIErrorGet", a.ErrorGet, path);
  resolve(handle, "OCIAttrSet", a.AttrSet, path);
  resolve(handle, "OCIAttrGet", a.AttrGet, path);
  resolve(handle, "OCIServerAttach", a.ServerAttach, path);
  resolve(handle, "OCIServerDetach", a.ServerDetach, path);
  resolve(handle, "OCISessionBegin", a.SessionBegin, path);
  resolve(handle, "OCISessionEnd", a.SessionEnd, path);
  resolve(handle, "OCIStmtPrepare2", a.StmtPrepare2, path);
  resolve(handle, "OCIStmtRelease", a.StmtRelease, path);
  resolve(handle, "OCIStmtExecute", a.StmtExecute, path);
  resolve(handle, "OCIStmtFetch2", a.StmtFetch2, path);
  resolve(handle, "OCIParamGet", a.ParamGet, path);
  resolve(handle, "OCIDefineByPos2", a.DefineByPos2, path);
  resolve(handle, "OCIBindByPos", a.BindByPos, path);
  resolve(handle, "OCILobGetLength2", a.LobGetLength2, path);
  resolve(handle, "OCILobRead2", a.LobRead2, path);
  resolve(handle, "OCITransCommit", a.TransCommit, path);
  resolve(handle, "OCITransRollback", a.TransRollback, path);
  resolve(handle, "OCIBreak", a.Break, path);
  resolve(handle, "OCIServerVersion", a.ServerVersion, path);
  return client;
}

} // namespace

QStringList OciLibrary::candidatesIn(const QString& folder) {
  const QDir dir(folder);
  const QString base = SharedLibrary::oracleClientName();
  QStringList versioned = dir.entryList({base + QStringLiteral(".*")}, QDir::Files | QDir::System);
  const auto versionOf = [&](const QString& name) { return QVersionNumber::fromString(name.mid(base.size() + 1)); };
  std::sort(versioned.begin(), versioned.end(),
            [&](const QString& a, const QString& b) { return versionOf(a) > versionOf(b); });
  QStringList files;
  if (dir.exists(base))
    files << dir.filePath(base);
  for (const QString& name : versioned)
    files << dir.filePath(name);
  return files;
}

std::shared_ptr<const OciClient> OciLibrary::load(const OciSearch& search) {
  QList<Attempt> attempts;
  const auto tryFolder = [&](const QString& folder, const QString& what) -> std::shared_ptr<const OciClient> {
    if (folder.isEmpty())
      return nullptr;
    Attempt attempt{QDir::toNativeSeparators(folder) + QStringLiteral(" (") + what + u')', {}};
    for (const QString& file : candidatesIn(folder)) {
      QString error;
      if (void* handle = SharedLibrary::open(file, error))
        return bind(handle, file);
      attempt.message = error;
    }
    attempts << attempt;
    return nullptr;
  };

  if (auto client = tryFolder(search.explicitFolder, QStringLiteral("DBSWEEP_ORACLE_CLIENT")))
    return client;
  if (auto client = tryFolder(search.programFolder, QStringLiteral("the program's folder")))
    return client;
  Attempt system{SharedLibrary::systemSearchDescription(search.loaderSearch), {}};
  for (const QString& name : search.systemNames) {
    QString error;
    if (void* handle = SharedLibrary::open(name, error))
      return bind(handle, name);
    // "cannot open shared object file" only says the name is unknown; keep a message that says
    // more, such as a dependency the library found lacks.
    if (system.message.isEmpty() || !error.contains(QStringLiteral("No such file")))
      system.message = error;
  }
  attempts << system;
  if (auto client = tryFolder(search.oracleHome.isEmpty() ? QString() : search.oracleHome + QStringLiteral("/lib"),
                              QStringLiteral("$ORACLE_HOME/lib")))
    return client;
  if (search.oracleHome.isEmpty())
    attempts << Attempt{QStringLiteral("$ORACLE_HOME/lib (ORACLE_HOME is not set)"), {}};

  QString text =
      QStringLiteral("No Oracle client library (%1) could be loaded. Searched:").arg(SharedLibrary::oracleClientName());
  for (const Attempt& a : std::as_const(attempts)) {
    text += QStringLiteral("\n  ") + a.where;
    if (!a.message.isEmpty())
      text += QStringLiteral(": ") + a.message;
  }
  text += QStringLiteral("\nInstall Oracle Instant Client and put its folder on LD_LIBRARY_PATH, or set "
                         "DBSWEEP_ORACLE_CLIENT to that folder.");
  throw OraError(0, text);
}
