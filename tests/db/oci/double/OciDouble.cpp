// The OCI entry points of the double for the environment, handles, attributes, diagnostics,
// the connection, transactions and interrupts. Statements are in OciDoubleStatements.cpp.

#include "OciDoubleHandles.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

using namespace ocidouble;

namespace {

template <typename T> sword put(void* attributep, ub4* sizep, T value) {
  std::memcpy(attributep, &value, sizeof value);
  if (sizep)
    *sizep = sizeof value;
  return SUCCESS;
}

sword illegalAttribute(ErrorHandle* error) { return fail(error, 24315, "illegal attribute type"); }
sword missingValue(ErrorHandle* error) { return fail(error, 21560, "argument 3 is null, invalid, or out of range"); }

sword setServiceAttribute(ServiceHandle& service, void* attributep, ub4 attrtype, ErrorHandle* error) {
  switch (attrtype) {
  case ATTR_SERVER:
  case ATTR_SESSION: {
    const Handle* handle = lookup(attributep);
    if (!handle || handle->type != (attrtype == ATTR_SERVER ? HTYPE_SERVER : HTYPE_SESSION))
      return INVALID_HANDLE;
    (attrtype == ATTR_SERVER ? service.server : service.session) = handle;
    return SUCCESS;
  }
  case ATTR_CALL_TIMEOUT:
    // Clients before 18c do not know this attribute.
    if (state().clientVersion[0] < 18)
      return illegalAttribute(error);
    log("call timeout " + std::to_string(*static_cast<const ub4*>(attributep)));
    return SUCCESS;
  default: return SUCCESS;
  }
}

sword setSessionAttribute(SessionHandle& session, void* attributep, ub4 size, ub4 attrtype) {
  const std::string text = textOf(attributep, size);
  switch (attrtype) {
  case ATTR_USERNAME: session.user = text; break;
  case ATTR_PASSWORD: session.password = text; break;
  case ATTR_MODULE: log("module " + text); break;
  case ATTR_DRIVER_NAME: log("driver " + text); break;
  case ATTR_DEFAULT_LOBPREFETCH_SIZE:
    state().lobPrefetch = *static_cast<const ub4*>(attributep);
    log("lob prefetch " + std::to_string(state().lobPrefetch));
    break;
  default: break;
  }
  return SUCCESS;
}

sword getStatementAttribute(const StatementHandle& statement, void* attributep, ub4* sizep, ub4 attrtype,
                            ErrorHandle* error) {
  switch (attrtype) {
  case ATTR_STMT_TYPE: return put<ub2>(attributep, sizep, statement.statementType);
  case ATTR_PARAM_COUNT:
    return put<ub4>(attributep, sizep, statement.described ? ub4(statement.answer.columns.size()) : 0);
  case ATTR_ROW_COUNT: return put<ub4>(attributep, sizep, statement.rowCount);
  case ATTR_ROWS_FETCHED: return put<ub4>(attributep, sizep, statement.rowsFetched);
  default: return illegalAttribute(error);
  }
}

sword getParamAttribute(const ParamHandle& param, void* attributep, ub4* sizep, ub4 attrtype, ErrorHandle* error) {
  const OciDoubleColumn& column = param.column;
  switch (attrtype) {
  case ATTR_DATA_TYPE: return put<ub2>(attributep, sizep, column.type);
  case ATTR_DATA_SIZE: return put<ub2>(attributep, sizep, column.size);
  case ATTR_PRECISION: return put<sb2>(attributep, sizep, column.precision);
  case ATTR_SCALE: return put<sb1>(attributep, sizep, column.scale);
  case ATTR_CHARSET_FORM: return put<ub1>(attributep, sizep, column.charsetForm);
  case ATTR_CHAR_SIZE:
    return put<ub2>(attributep, sizep, column.type == SQLT_CHR || column.type == SQLT_AFC ? column.size : 0);
  case ATTR_NAME:
    // The text stays owned by the descriptor, as in OCI: valid until the descriptor is freed.
    *static_cast<const OraText**>(attributep) = reinterpret_cast<const OraText*>(column.name.data());
    if (sizep)
      *sizep = ub4(column.name.size());
    return SUCCESS;
  default: return illegalAttribute(error);
  }
}

} // namespace

// ---- Environment and handles ----

OCI_DOUBLE_EXPORT sword OCIEnvNlsCreate(OCIEnv** envhpp, ub4 mode, void*, void* (*malocfp)(void*, size_t),
                                        void* (*ralocfp)(void*, void*, size_t), void (*mfreefp)(void*, void*),
                                        size_t xtramemSz, void**, ub2 charset, ub2 ncharset) {
  auto lock = lockServer();
  if (!envhpp)
    return INVALID_HANDLE;
  // The double keeps its own memory: callbacks and user memory are not offered.
  if (malocfp || ralocfp || mfreefp || xtramemSz)
    return ERROR;
  log("env charset=" + std::to_string(charset) + " ncharset=" + std::to_string(ncharset) +
      " mode=" + std::to_string(mode));
  *envhpp = reinterpret_cast<OCIEnv*>(adopt(std::make_unique<EnvHandle>()));
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIHandleAlloc(const void* parenth, void** hndlpp, ub4 type, size_t xtramemSz, void**) {
  auto lock = lockServer();
  const auto* env = find<EnvHandle>(parenth);
  if (!env || !hndlpp)
    return INVALID_HANDLE;
  if (xtramemSz)
    return ERROR;
  std::unique_ptr<Handle> handle;
  switch (type) {
  case HTYPE_ERROR: handle = std::make_unique<ErrorHandle>(type, env); break;
  case HTYPE_SVCCTX: handle = std::make_unique<ServiceHandle>(type, env); break;
  case HTYPE_SERVER: handle = std::make_unique<ServerHandle>(type, env); break;
  case HTYPE_SESSION: handle = std::make_unique<SessionHandle>(type, env); break;
  default: return ERROR; // statement handles come from OCIStmtPrepare2
  }
  *hndlpp = adopt(std::move(handle));
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIHandleFree(void* hndlp, ub4 type) {
  auto lock = lockServer();
  const Handle* handle = lookup(hndlp);
  if (!handle || handle->type != type || type == DTYPE_PARAM)
    return INVALID_HANDLE;
  release(handle);
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIDescriptorAlloc(const void* parenth, void** descpp, ub4 type, size_t xtramemSz, void**) {
  auto lock = lockServer();
  const auto* env = find<EnvHandle>(parenth);
  if (!env || !descpp)
    return INVALID_HANDLE;
  if (xtramemSz || type != DTYPE_LOB)
    return ERROR; // parameter descriptors come from OCIParamGet
  *descpp = adopt(std::make_unique<LobHandle>(type, env));
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIDescriptorFree(void* descp, ub4 type) {
  auto lock = lockServer();
  const Handle* descriptor = lookup(descp);
  if (!descriptor || descriptor->type != type || (type != DTYPE_PARAM && type != DTYPE_LOB))
    return INVALID_HANDLE;
  release(descriptor);
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIErrorGet(void* hndlp, ub4 recordno, OraText*, sb4* errcodep, OraText* bufp, ub4 bufsiz,
                                    ub4 type) {
  auto lock = lockServer();
  const auto* error = type == HTYPE_ERROR ? find<ErrorHandle>(hndlp) : nullptr;
  if (!error)
    return INVALID_HANDLE;
  if (recordno != 1 || error->code == 0)
    return NO_DATA;
  if (errcodep)
    *errcodep = error->code;
  if (bufp && bufsiz)
    std::snprintf(reinterpret_cast<char*>(bufp), bufsiz, "ORA-%05d: %s\n", error->code, error->text.c_str());
  return SUCCESS;
}

// ---- Attributes ----

OCI_DOUBLE_EXPORT sword OCIAttrSet(void* trgthndlp, ub4 trghndltyp, void* attributep, ub4 size, ub4 attrtype,
                                   OCIError* errhp) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  Handle* target = lookup(trgthndlp);
  if (!error || !target || target->type != trghndltyp)
    return INVALID_HANDLE;
  if (!attributep)
    return missingValue(error);
  switch (target->type) {
  case HTYPE_SVCCTX: return setServiceAttribute(static_cast<ServiceHandle&>(*target), attributep, attrtype, error);
  case HTYPE_SESSION: return setSessionAttribute(static_cast<SessionHandle&>(*target), attributep, size, attrtype);
  case HTYPE_STMT:
    if (attrtype == ATTR_PREFETCH_ROWS)
      log("prefetch " + std::to_string(*static_cast<const ub4*>(attributep)));
    return SUCCESS;
  default: return SUCCESS;
  }
}

OCI_DOUBLE_EXPORT sword OCIAttrGet(const void* trgthndlp, ub4 trghndltyp, void* attributep, ub4* sizep, ub4 attrtype,
                                   OCIError* errhp) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const Handle* target = lookup(trgthndlp);
  if (!error || !target || target->type != trghndltyp)
    return INVALID_HANDLE;
  if (!attributep)
    return missingValue(error);
  switch (target->type) {
  case HTYPE_STMT:
    return getStatementAttribute(static_cast<const StatementHandle&>(*target), attributep, sizep, attrtype, error);
  case DTYPE_PARAM:
    return getParamAttribute(static_cast<const ParamHandle&>(*target), attributep, sizep, attrtype, error);
  default: return illegalAttribute(error);
  }
}

// ---- Connection ----

OCI_DOUBLE_EXPORT sword OCIServerAttach(OCIServer* srvhp, OCIError* errhp, const OraText* dblink, sb4 dblinkLen, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  auto* server = find<ServerHandle>(srvhp);
  if (!error || !server)
    return INVALID_HANDLE;
  const std::string link = textOf(dblink, std::size_t(std::max(dblinkLen, 0)));
  log("attach " + link);
  if (server->attached)
    return fail(error, 24309, "already connected to a server");
  const auto& services = state().services;
  if (std::find(services.begin(), services.end(), link) == services.end())
    return fail(error, 12154, "TNS:could not resolve the connect identifier specified");
  server->attached = true;
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIServerDetach(OCIServer* srvhp, OCIError* errhp, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  auto* server = find<ServerHandle>(srvhp);
  if (!error || !server)
    return INVALID_HANDLE;
  if (!server->attached)
    return notConnected(error);
  log("detach");
  server->attached = false;
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCISessionBegin(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4 credt, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* service = find<ServiceHandle>(svchp);
  auto* session = find<SessionHandle>(usrhp);
  if (!error || !service || !session)
    return INVALID_HANDLE;
  const auto* server = find<ServerHandle>(service->server);
  if (!server || !server->attached)
    return fail(error, 24327, "need explicit attach before authenticating a user");
  std::string user = session->user;
  std::transform(user.begin(), user.end(), user.begin(), [](unsigned char c) { return char(std::toupper(c)); });
  const auto& passwords = state().passwords;
  const auto known = passwords.find(user);
  // Only database credentials exist here: there is no operating system account to log on with.
  if (credt != CRED_RDBMS || known == passwords.end() || known->second != session->password)
    return fail(error, 1017, "invalid username/password; logon denied");
  session->begun = true;
  log("session begin " + user);
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCISessionEnd(OCISvcCtx* svchp, OCIError* errhp, OCISession* usrhp, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* service = find<ServiceHandle>(svchp);
  if (!error || !service || (usrhp && !find<SessionHandle>(usrhp)))
    return INVALID_HANDLE;
  auto* session = find<SessionHandle>(usrhp ? static_cast<const void*>(usrhp) : service->session);
  if (!session || !session->begun)
    return notConnected(error);
  // Ending a session commits its open transaction.
  if (state().pending > 0) {
    log("session end commits " + std::to_string(state().pending));
    state().committedChanges += state().pending;
    state().pending = 0;
  } else {
    log("session end");
  }
  session->begun = false;
  return SUCCESS;
}

// ---- Transactions ----

namespace {

sword endTransaction(OCISvcCtx* svchp, OCIError* errhp, bool commit) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* service = find<ServiceHandle>(svchp);
  if (!error || !service)
    return INVALID_HANDLE;
  if (!connected(*service))
    return notConnected(error);
  log(commit ? "commit" : "rollback");
  if (commit)
    state().committedChanges += state().pending;
  state().pending = 0;
  return SUCCESS;
}

} // namespace

OCI_DOUBLE_EXPORT sword OCITransCommit(OCISvcCtx* svchp, OCIError* errhp, ub4) {
  return endTransaction(svchp, errhp, true);
}

OCI_DOUBLE_EXPORT sword OCITransRollback(OCISvcCtx* svchp, OCIError* errhp, ub4) {
  return endTransaction(svchp, errhp, false);
}

// ---- Interrupts ----

OCI_DOUBLE_EXPORT sword OCIBreak(void* hndlp, OCIError* errhp) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const Handle* handle = lookup(hndlp);
  if (!error || !handle || (handle->type != HTYPE_SVCCTX && handle->type != HTYPE_SERVER))
    return INVALID_HANDLE;
  log("break");
  state().broken = true;
  state().breakSignal.notify_all();
  return SUCCESS;
}

// ---- Versions ----

OCI_DOUBLE_EXPORT sword OCIServerVersion(void* hndlp, OCIError* errhp, OraText* bufp, ub4 bufsz, ub1 hndltype) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const Handle* handle = lookup(hndlp);
  if (!error || !handle || handle->type != hndltype || (hndltype != HTYPE_SVCCTX && hndltype != HTYPE_SERVER))
    return INVALID_HANDLE;
  const auto* server = hndltype == HTYPE_SERVER ? static_cast<const ServerHandle*>(handle)
                                                : find<ServerHandle>(static_cast<const ServiceHandle*>(handle)->server);
  if (!server || !server->attached)
    return notConnected(error);
  if (bufp && bufsz)
    std::snprintf(reinterpret_cast<char*>(bufp), bufsz, "%s", state().banner.c_str());
  return SUCCESS;
}

OCI_DOUBLE_EXPORT void OCIClientVersion(sword* majorVersion, sword* minorVersion, sword* updateNum, sword* patchNum,
                                        sword* portUpdateNum) {
  auto lock = lockServer();
  sword* targets[] = {majorVersion, minorVersion, updateNum, patchNum, portUpdateNum};
  for (int i = 0; i < 5; ++i)
    if (targets[i])
      *targets[i] = state().clientVersion[i];
}
