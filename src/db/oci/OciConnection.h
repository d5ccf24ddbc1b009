#pragma once

#include "db/DbConnection.h"
#include "db/OraError.h"
#include "db/oci/OciLibrary.h"

#include <QByteArray>

#include <atomic>
#include <memory>
#include <optional>

class OciConnection;

// One prepared statement, released when it goes.
class OciStatement final {
public:
  OciStatement(OciConnection& connection, const QString& sql);
  ~OciStatement();
  OciStatement(const OciStatement&) = delete;
  OciStatement& operator=(const OciStatement&) = delete;

  oci::OCIStmt* handle() const { return m_handle; }
  oci::ub2 type() const;
  // Runs it: a query brings its first iters rows with the execute (0: all come by fetching);
  // anything else runs for iters 1. Outside an explicit transaction a statement other than a
  // query commits on success (a query must not: committing would end a SELECT … FOR UPDATE
  // before its rows are fetched, its own or that of another dynaset still open).
  void execute(oci::ub4 iters);
  qint64 rowCount() const;
  template <typename T> T attribute(oci::ub4 attr) const;

private:
  OciConnection& m_connection;
  oci::OCIStmt* m_handle = nullptr;
};

// A session on an Oracle server through the client library. The session's NLS settings are
// fixed at logon, so dates and numbers read the same as on an embedded instance.
class OciConnection final : public DbConnection, public std::enable_shared_from_this<OciConnection> {
public:
  struct Options {
    int fetchRows = 500;                  // rows per round trip, at most
    qint64 fetchBytes = 16 * 1024 * 1024; // and at most this much buffer per query
    qint64 longBytes = 1024 * 1024;       // LONG and LONG RAW values are read up to this size
    int lobPrefetchBytes = 64 * 1024;     // LOB data up to this size comes with the rows
  };

  // Attaches to host (a net service name or an Easy Connect string) and logs on. Raises
  // OraError when that fails; nothing is left open then.
  static std::shared_ptr<OciConnection> connect(std::shared_ptr<const OciClient> client, const QString& host,
                                                const QString& user, const QString& password, Options options);
  ~OciConnection() override;
  OciConnection(const OciConnection&) = delete;
  OciConnection& operator=(const OciConnection&) = delete;

  std::unique_ptr<OraDynaset> query(const QString& sql, int options) override;
  qint64 execute(const QString& sql) override;
  void begin() override;
  void commit() override;
  void rollback() override;
  QString serverVersion() override { return m_serverVersion; }
  QString clientVersion() override { return m_client->version; }
  void interrupt() override;
  bool setCallTimeout(int milliseconds) override;

  // For statements and dynasets.
  const oci::Api& api() const { return m_client->api; }
  oci::OCIEnv* environment() const { return m_env; }
  oci::OCISvcCtx* service() const { return m_service; }
  oci::OCIError* errors() const { return m_error; }
  const Options& options() const { return m_options; }
  bool inTransaction() const { return m_inTransaction; }
  // The error behind a failed status (nothing for success, with or without information, and
  // for OCI_NO_DATA); marks the connection lost on the errors that end a session.
  std::optional<OraError> failure(oci::sword status);
  // Returns the status unless failure() has an error for it, which it raises.
  oci::sword check(oci::sword status);
  // Marks a call that may run long (an execute, a fetch) for interrupt() to break.
  class Call final {
  public:
    explicit Call(OciConnection& c) : m_c(c) { ++m_c.m_calls; }
    ~Call() { --m_c.m_calls; }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

  private:
    OciConnection& m_c;
  };
  // Raises ORA-03114 once the session is lost, without another round trip.
  void checkAlive() const;
  bool lost() const { return m_lost; }

private:
  OciConnection(std::shared_ptr<const OciClient> client, Options options);
  void open(const QString& host, const QString& user, const QString& password);
  void allocate(void** handle, oci::ub4 type);
  void setText(void* handle, oci::ub4 type, oci::ub4 attribute, const QByteArray& text);
  void close();

  std::shared_ptr<const OciClient> m_client;
  Options m_options;
  oci::OCIEnv* m_env = nullptr;
  oci::OCIError* m_error = nullptr;
  oci::OCIError* m_breakError = nullptr; // OCIBreak comes from another thread: its own handle
  oci::OCIServer* m_server = nullptr;
  oci::OCISvcCtx* m_service = nullptr;
  oci::OCISession* m_session = nullptr;
  bool m_attached = false;
  bool m_loggedOn = false;
  bool m_inTransaction = false;
  std::atomic<bool> m_lost{false};
  std::atomic<int> m_calls{0};
  QString m_serverVersion;
};
