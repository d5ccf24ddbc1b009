#pragma once

// The handles of the OCI double and the bookkeeping every entry point shares. Each handle is a
// heap object with a type tag, kept in one table so that a pointer the caller passes in is
// looked up instead of trusted: a freed, foreign or wrong-type handle is answered with
// INVALID_HANDLE rather than undefined behaviour.

#include "OciDoubleServer.h"
#include "db/oci/OciApi.h"

#include <map>
#include <memory>
#include <mutex>
#include <string>

#define OCI_DOUBLE_EXPORT extern "C" __attribute__((visibility("default")))

namespace ocidouble {

using namespace oci;

struct Handle {
  Handle(ub4 type, const Handle* env) : type(type), env(env) {}
  virtual ~Handle() = default;
  const ub4 type;
  const Handle* const env; // the environment it was allocated under; null for the environment itself
};

struct EnvHandle : Handle {
  static constexpr ub4 kType = HTYPE_ENV;
  EnvHandle() : Handle(kType, nullptr) {}
};

struct ErrorHandle : Handle {
  static constexpr ub4 kType = HTYPE_ERROR;
  using Handle::Handle;
  int code = 0; // 0: no diagnostic from the last call
  std::string text;
};

struct ServerHandle : Handle {
  static constexpr ub4 kType = HTYPE_SERVER;
  using Handle::Handle;
  bool attached = false;
};

struct SessionHandle : Handle {
  static constexpr ub4 kType = HTYPE_SESSION;
  using Handle::Handle;
  std::string user;
  std::string password;
  bool begun = false;
};

struct ServiceHandle : Handle {
  static constexpr ub4 kType = HTYPE_SVCCTX;
  using Handle::Handle;
  const Handle* server = nullptr; // looked up again on use: the caller may have freed it since
  const Handle* session = nullptr;
};

// Define and bind handles belong to their statement, as in OCI: the caller neither allocates
// nor frees them, so they are not counted as live handles.
struct Define {
  unsigned char* value = nullptr;
  sb8 size = 0;
  ub2 type = 0;
  sb2* indicator = nullptr;
  ub4* length = nullptr;
  ub2* code = nullptr;
};

struct Bind {
  const unsigned char* value = nullptr;
  sb4 size = 0;
  ub2 type = 0;
  const sb2* indicator = nullptr;
  const ub2* length = nullptr;
};

struct StatementHandle : Handle {
  static constexpr ub4 kType = HTYPE_STMT;
  using Handle::Handle;
  std::string text;
  ub2 statementType = 0;
  std::map<ub4, Define> defines;
  std::map<ub4, Bind> binds;
  // State of the last execute: the answer is copied, so a test may change the script while a
  // cursor is open without pulling rows from under it.
  OciDoubleAnswer answer;
  bool described = false;
  bool cursorOpen = false;
  std::size_t nextRow = 0;
  ub4 rowCount = 0;
  ub4 rowsFetched = 0;
};

struct ParamHandle : Handle {
  static constexpr ub4 kType = DTYPE_PARAM;
  ParamHandle(const Handle* env, OciDoubleColumn column) : Handle(kType, env), column(std::move(column)) {}
  const OciDoubleColumn column;
};

// A LOB locator: the value it points at, as the last fetch into it left it.
struct LobHandle : Handle {
  static constexpr ub4 kType = DTYPE_LOB;
  using Handle::Handle;
  std::string data;
  bool characters = true; // CLOB or NCLOB: lengths and amounts count characters
};

OciDoubleServer& state(); // the one scripted server
std::unique_lock<std::mutex> lockServer();
// Appends to the server's log, whose lines take these forms:
//   env charset=<id> ncharset=<id> mode=<mode>
//   attach <connect string>                      detach
//   session begin <USER>                         session end | session end commits <n>
//   module <text>    driver <text>    call timeout <ms>    prefetch <rows>
//   prepare <sql>                                release
//   execute <sql>[ bind=<value>]...[ +commit][ describe]   (bind=NULL for a NULL value)
//   implicit commit <n>
//   fetch <rows asked> -> <rows delivered>
//   commit    rollback    break
//   lob prefetch <bytes>    lob round trip   (reading a LOB longer than the prefetch size)
void log(std::string line);

// The table of live handles; callers hold the server lock.
Handle* lookup(const void* pointer);
template <typename T> T* find(const void* pointer) {
  Handle* handle = lookup(pointer);
  return handle && handle->type == T::kType ? static_cast<T*>(handle) : nullptr;
}
Handle* adopt(std::unique_ptr<Handle> handle);
void release(const Handle* handle); // an environment takes every handle under it along

// Looks up the error handle of a call and clears the diagnostic of the previous call.
ErrorHandle* startCall(OCIError* errhp);
// Records an ORA error on the call's error handle and returns `status`.
sword fail(ErrorHandle* error, int code, std::string text, sword status = ERROR);
sword notConnected(ErrorHandle* error);

// A service context over an attached server with a begun session: what SQL and transaction
// calls need.
bool connected(const ServiceHandle& service);

inline std::string textOf(const void* pointer, std::size_t length) {
  return pointer ? std::string(static_cast<const char*>(pointer), length) : std::string();
}

} // namespace ocidouble
