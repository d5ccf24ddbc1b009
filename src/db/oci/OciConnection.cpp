#include "db/oci/OciConnection.h"

#include "db/oci/OciDynaset.h"
#include "db/oci/OciText.h"

#include <QCoreApplication>

using namespace oci;

// ---- OciStatement ----

OciStatement::OciStatement(OciConnection& connection, const QString& sql) : m_connection(connection) {
  connection.checkAlive();
  const QByteArray text = sql.toUtf8();
  connection.check(connection.api().StmtPrepare2(connection.service(), &m_handle, connection.errors(),
                                                 reinterpret_cast<const OraText*>(text.constData()), ub4(text.size()),
                                                 nullptr, 0, NTV_SYNTAX, DEFAULT));
}

OciStatement::~OciStatement() {
  if (m_handle)
    m_connection.api().StmtRelease(m_handle, m_connection.errors(), nullptr, 0, DEFAULT);
}

template <typename T> T OciStatement::attribute(ub4 attr) const {
  T value{};
  m_connection.check(m_connection.api().AttrGet(m_handle, HTYPE_STMT, &value, nullptr, attr, m_connection.errors()));
  return value;
}
template ub2 OciStatement::attribute<ub2>(ub4) const;
template ub4 OciStatement::attribute<ub4>(ub4) const;

ub2 OciStatement::type() const { return attribute<ub2>(ATTR_STMT_TYPE); }

void OciStatement::execute(ub4 iters) {
  m_connection.checkAlive();
  const ub4 mode = m_connection.inTransaction() || type() == STMT_SELECT ? DEFAULT : COMMIT_ON_SUCCESS;
  const OciConnection::Call call(m_connection);
  m_connection.check(m_connection.api().StmtExecute(m_connection.service(), m_handle, m_connection.errors(), iters, 0,
                                                    nullptr, nullptr, mode));
}

qint64 OciStatement::rowCount() const { return attribute<ub4>(ATTR_ROW_COUNT); }

// ---- OciConnection ----

OciConnection::OciConnection(std::shared_ptr<const OciClient> client, Options options)
    : m_client(std::move(client)), m_options(options) {}

std::shared_ptr<OciConnection> OciConnection::connect(std::shared_ptr<const OciClient> client, const QString& host,
                                                      const QString& user, const QString& password, Options options) {
  std::shared_ptr<OciConnection> connection(new OciConnection(std::move(client), options));
  connection->open(host, user, password);
  return connection;
}

OciConnection::~OciConnection() { close(); }

std::optional<OraError> OciConnection::failure(sword status) {
  if (status == SUCCESS || status == SUCCESS_WITH_INFO || status == NO_DATA)
    return std::nullopt;
  if (status == INVALID_HANDLE)
    return OraError(0, QStringLiteral("The Oracle client rejected a handle (OCI_INVALID_HANDLE)."));
  if (status != ERROR)
    return OraError(0, QStringLiteral("Unexpected OCI status %1.").arg(status));
  sb4 code = 0;
  OraText buffer[3072] = {};
  if (api().ErrorGet(m_error, 1, nullptr, &code, buffer, sizeof buffer, HTYPE_ERROR) != SUCCESS)
    return OraError(0, QStringLiteral("The Oracle client reported an error without a message."));
  if (OciText::sessionLost(code))
    m_lost = true;
  return OraError(code, OciText::errorText(QString::fromUtf8(reinterpret_cast<const char*>(buffer)), code));
}

sword OciConnection::check(sword status) {
  if (auto error = failure(status))
    throw *error;
  return status;
}

void OciConnection::checkAlive() const {
  if (m_lost)
    throw OraError(3114, QStringLiteral("not connected to ORACLE"));
}

void OciConnection::allocate(void** handle, ub4 type) {
  if (api().HandleAlloc(m_env, handle, type, 0, nullptr) != SUCCESS)
    throw OraError(0, QStringLiteral("The Oracle client could not allocate a handle (type %1).").arg(type));
}

void OciConnection::setText(void* handle, ub4 type, ub4 attribute, const QByteArray& text) {
  check(api().AttrSet(handle, type, const_cast<char*>(text.constData()), ub4(text.size()), attribute, m_error));
}

void OciConnection::open(const QString& host, const QString& user, const QString& password) {
  try {
    if (api().EnvNlsCreate(&m_env, THREADED, nullptr, nullptr, nullptr, nullptr, 0, nullptr, AL32UTF8, AL32UTF8) !=
            SUCCESS ||
        !m_env)
      throw OraError(0, QStringLiteral("The Oracle client could not create its environment (%1).").arg(m_client->path));
    allocate(reinterpret_cast<void**>(&m_error), HTYPE_ERROR);
    allocate(reinterpret_cast<void**>(&m_breakError), HTYPE_ERROR);
    allocate(reinterpret_cast<void**>(&m_server), HTYPE_SERVER);
    allocate(reinterpret_cast<void**>(&m_service), HTYPE_SVCCTX);
    allocate(reinterpret_cast<void**>(&m_session), HTYPE_SESSION);

    const QByteArray link = host.toUtf8();
    check(api().ServerAttach(m_server, m_error, reinterpret_cast<const OraText*>(link.constData()), sb4(link.size()),
                             DEFAULT));
    m_attached = true;
    check(api().AttrSet(m_service, HTYPE_SVCCTX, m_server, 0, ATTR_SERVER, m_error));
    setText(m_session, HTYPE_SESSION, ATTR_USERNAME, user.toUtf8());
    setText(m_session, HTYPE_SESSION, ATTR_PASSWORD, password.toUtf8());
    // Shown in V$SESSION, so a DBA can tell this program's sessions from others.
    setText(m_session, HTYPE_SESSION, ATTR_MODULE, QByteArrayLiteral("DBSWEEP"));
    setText(m_session, HTYPE_SESSION, ATTR_DRIVER_NAME,
            QStringLiteral("DBSWEEP : %1").arg(QCoreApplication::applicationVersion()).left(30).toUtf8());
    // LOB values up to this size travel with their rows, so reading them costs no round trip.
    ub4 lobPrefetch = ub4(m_options.lobPrefetchBytes);
    check(api().AttrSet(m_session, HTYPE_SESSION, &lobPrefetch, 0, ATTR_DEFAULT_LOBPREFETCH_SIZE, m_error));
    check(api().AttrSet(m_service, HTYPE_SVCCTX, m_session, 0, ATTR_SESSION, m_error));
    check(api().SessionBegin(m_service, m_error, m_session, CRED_RDBMS, DEFAULT));
    m_loggedOn = true;

    OciStatement settings(*this, OciText::sessionSettingsSql());
    settings.execute(1);

    OraText banner[1024] = {};
    check(api().ServerVersion(m_service, m_error, banner, sizeof banner, ub1(HTYPE_SVCCTX)));
    m_serverVersion = OciText::releaseFromBanner(QString::fromUtf8(reinterpret_cast<const char*>(banner)));
  } catch (...) {
    close();
    throw;
  }
}

void OciConnection::close() {
  if (!m_env)
    return;
  if (m_loggedOn && !m_lost) {
    // Ending a session commits its open transaction: whatever was not committed is undone
    // first, as closing without a commit means.
    api().TransRollback(m_service, m_error, DEFAULT);
    api().SessionEnd(m_service, m_error, m_session, DEFAULT);
  }
  if (m_attached && !m_lost)
    api().ServerDetach(m_server, m_error, DEFAULT);
  // Freeing the environment frees every handle allocated under it.
  api().HandleFree(m_env, HTYPE_ENV);
  m_env = nullptr;
  m_loggedOn = m_attached = false;
}

std::unique_ptr<OraDynaset> OciConnection::query(const QString& sql, int options) {
  return OciDynaset::open(shared_from_this(), sql, options);
}

qint64 OciConnection::execute(const QString& sql) {
  OciStatement statement(*this, sql);
  const bool isQuery = statement.type() == STMT_SELECT;
  statement.execute(isQuery ? 0 : 1);
  return isQuery ? 0 : statement.rowCount();
}

void OciConnection::begin() {
  checkAlive();
  m_inTransaction = true;
}

void OciConnection::commit() {
  checkAlive();
  check(api().TransCommit(m_service, m_error, DEFAULT));
  m_inTransaction = false;
}

void OciConnection::rollback() {
  checkAlive();
  check(api().TransRollback(m_service, m_error, DEFAULT));
  m_inTransaction = false;
}

void OciConnection::interrupt() {
  // A break with no call running would stop the next call instead.
  if (m_service && !m_lost && m_calls > 0)
    api().Break(m_service, m_breakError);
}

bool OciConnection::setCallTimeout(int milliseconds) {
  checkAlive();
  ub4 value = ub4(std::max(0, milliseconds));
  // Clients before 18c do not know the attribute and refuse it.
  return api().AttrSet(m_service, HTYPE_SVCCTX, &value, 0, ATTR_CALL_TIMEOUT, m_error) == SUCCESS;
}
