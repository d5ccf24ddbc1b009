#include "db/local/LocalEngine.h"
#include "db/local/OracleDate.h"

#include "db/OraError.h"
#include "db/local/Catalogue.h"
#include "db/local/LocalConnection.h"
#include "db/local/Privileges.h"
#include "platform/SystemInfo.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

namespace LocalEngine {

namespace {

sqlite3* openFile(const QString& path, bool create) {
  sqlite3* db = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | (create ? SQLITE_OPEN_CREATE : 0) | SQLITE_OPEN_FULLMUTEX;
  if (sqlite3_open_v2(path.toUtf8().constData(), &db, flags, nullptr) != SQLITE_OK) {
    const QString message = QString::fromUtf8(sqlite3_errmsg(db));
    sqlite3_close(db);
    throw OraError(1034, QStringLiteral("ORACLE not available (%1: %2)").arg(path, message));
  }
  sqlite3_busy_timeout(db, BusyWaitMs);
  sqlite3_extended_result_codes(db, 1);
  // Double quotes always name something, as in Oracle; never fall back to a string.
  sqlite3_db_config(db, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(db, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  return db;
}

// Opens the catalogue alone, attached as CAT so the same SQL serves every connection.
sqlite3* openCatalogue(const QString& folder) {
  sqlite3* db = openFile(QStringLiteral(":memory:"), true);
  try {
    sqliteExec(db, QStringLiteral("ATTACH DATABASE ?1 AS CAT"), {folder + u'/' + Catalogue::FileName});
  } catch (const SqliteFailure& f) {
    sqlite3_close(db);
    throw OraError(1034, QStringLiteral("ORACLE not available (%1)").arg(f.message));
  }
  return db;
}

// SQLite's level for a database: NORMAL flushes the write-ahead log at checkpoints only, which
// is durable enough for a session's own work; the connection's default is FULL.
QString synchronous(const char* database, Flushing flushing, const char* level) {
  return QStringLiteral("PRAGMA %1.synchronous=%2;")
      .arg(QLatin1String(database), flushing == Flushing::Off ? QLatin1String("OFF") : QLatin1String(level));
}

void makeSchemaFile(const QString& folder, const QString& owner, Flushing flushing) {
  sqlite3* db = openFile(Catalogue::schemaFile(folder, owner), true);
  sqlite3_exec(db, (synchronous("main", flushing, "FULL") + QStringLiteral("PRAGMA journal_mode=WAL")).toUtf8(),
               nullptr, nullptr, nullptr);
  sqlite3_close(db);
}

} // namespace

QString folderFor(const QString& nameOrPath, const DbEnvironment& env) {
  if (nameOrPath.startsWith(u'/'))
    return QDir::cleanPath(nameOrPath);
  return env.dataFolder + QStringLiteral("/instances/") + nameOrPath;
}

bool instanceExists(const QString& folder) { return QFile::exists(folder + u'/' + Catalogue::FileName); }

void createInstance(const QString& folder, const QString& systemPassword, Flushing flushing) {
  if (instanceExists(folder))
    throw OraError(1501, QStringLiteral("CREATE DATABASE failed: an instance already exists in %1").arg(folder));
  if (systemPassword.isEmpty())
    throw OraError(988, QStringLiteral("missing or invalid password(s)"));
  if (!QDir().mkpath(folder))
    throw OraError(1501, QStringLiteral("CREATE DATABASE failed: cannot create the folder %1").arg(folder));
  QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  sqlite3* db = openFile(QStringLiteral(":memory:"), true);
  try {
    sqliteExec(db, QStringLiteral("ATTACH DATABASE ?1 AS CAT"), {folder + u'/' + Catalogue::FileName});
    sqliteExec(db, synchronous("CAT", flushing, "FULL") + QStringLiteral("PRAGMA CAT.journal_mode=WAL"));
    sqliteExec(db, QStringLiteral("BEGIN"));
    Catalogue::create(db);
    sqliteExec(
        db,
        QStringLiteral(
            "INSERT INTO CAT.users(username, password, is_dba, user_id, created) VALUES ('SYSTEM', ?1, 1, 5, ?2)"),
        {Catalogue::hashPassword(systemPassword), OracleDate::now()});
    sqliteExec(db, QStringLiteral("COMMIT"));
  } catch (const SqliteFailure& f) {
    sqlite3_close(db);
    QFile::remove(folder + u'/' + Catalogue::FileName);
    throw OraError(1501, QStringLiteral("CREATE DATABASE failed: %1").arg(f.message));
  }
  sqlite3_close(db);
  makeSchemaFile(folder, QStringLiteral("SYSTEM"), flushing);
}

std::shared_ptr<DbConnection> connect(const QString& folder, const QString& userText, const QString& password,
                                      Flushing flushing) {
  if (!instanceExists(folder))
    throw OraError(12154, QStringLiteral("TNS:could not resolve the connect identifier specified"));
  if (userText.isEmpty() || password.isEmpty())
    throw OraError(password.isEmpty() && !userText.isEmpty() ? 1005 : 1017,
                   password.isEmpty() && !userText.isEmpty()
                       ? QStringLiteral("null password given; logon denied")
                       : QStringLiteral("invalid username/password; logon denied"));
  // Unquoted names fold to upper case; "name" keeps its case.
  const QString user = userText.size() > 2 && userText.startsWith(u'"') && userText.endsWith(u'"')
                           ? userText.mid(1, userText.size() - 2)
                           : userText.toUpper();
  sqlite3* side = openCatalogue(folder);
  bool dba = false;
  try {
    sqliteExec(side, synchronous("CAT", flushing, "FULL"));
    Catalogue::upgrade(side);
    SqliteStmt s(side, QStringLiteral("SELECT password, is_dba FROM CAT.users WHERE username = ?1"));
    s.bind(1, user);
    if (!s.step() || !Catalogue::checkPassword(password, s.text(0)))
      throw OraError(1017, QStringLiteral("invalid username/password; logon denied"));
    dba = s.column(1).toInt() == 1;
    if (!Privileges::holdsSystem(side, user, dba, QStringLiteral("CREATE SESSION")))
      throw OraError(1045, QStringLiteral("user %1 lacks CREATE SESSION privilege; logon denied").arg(user));
  } catch (const SqliteFailure& f) {
    sqlite3_close(side);
    throw OraError(1034, QStringLiteral("ORACLE not available (%1)").arg(f.message));
  } catch (...) {
    sqlite3_close(side);
    throw;
  }
  const QString schema = Catalogue::schemaFile(folder, user);
  if (!QFile::exists(schema))
    makeSchemaFile(folder, user, flushing);
  sqlite3* db = nullptr;
  try {
    db = openFile(schema, false);
    sqliteExec(db, QStringLiteral("ATTACH DATABASE ?1 AS CAT"), {folder + u'/' + Catalogue::FileName});
    sqliteExec(db,
               QStringLiteral("PRAGMA foreign_keys=ON; PRAGMA case_sensitive_like=ON; PRAGMA legacy_alter_table=ON; "
                              "PRAGMA journal_mode=WAL;") +
                   synchronous("main", flushing, "NORMAL") + synchronous("CAT", flushing, "NORMAL"));
    return std::make_shared<LocalConnection>(LocalConnection::Logon{folder, user, dba, flushing == Flushing::On}, db,
                                             side);
  } catch (const SqliteFailure& f) {
    sqlite3_close(db);
    sqlite3_close(side);
    throw OraError(1034, QStringLiteral("ORACLE not available (%1)").arg(f.message));
  }
}

void flushInstance(const QString& folder) {
  QStringList paths;
  for (const QString& file : QDir(folder).entryList(QDir::Files | QDir::Hidden))
    paths << folder + u'/' + file;
  paths << folder;
  for (const QString& path : std::as_const(paths))
    if (!flushToDisk(path))
      throw OraError(1501, QStringLiteral("CREATE DATABASE failed: cannot write %1 to the disk").arg(path));
}

} // namespace LocalEngine
