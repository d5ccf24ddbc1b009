#include "OciDoubleHandles.h"

namespace ocidouble {

namespace {
std::map<const void*, std::unique_ptr<Handle>>& handles() {
  static std::map<const void*, std::unique_ptr<Handle>> table;
  return table;
}
} // namespace

OciDoubleServer& state() {
  static OciDoubleServer instance;
  return instance;
}

std::unique_lock<std::mutex> lockServer() { return std::unique_lock(state().mutex); }

void log(std::string line) { state().log.push_back(std::move(line)); }

Handle* lookup(const void* pointer) {
  const auto it = handles().find(pointer);
  return it == handles().end() ? nullptr : it->second.get();
}

Handle* adopt(std::unique_ptr<Handle> handle) {
  Handle* raw = handle.get();
  handles().emplace(raw, std::move(handle));
  ++state().liveHandles;
  return raw;
}

void release(const Handle* handle) {
  // Only an environment is the parent of other handles.
  const auto children = std::erase_if(handles(), [handle](const auto& entry) { return entry.second->env == handle; });
  state().liveHandles -= int(children) + 1;
  handles().erase(handle);
}

ErrorHandle* startCall(OCIError* errhp) {
  ErrorHandle* error = find<ErrorHandle>(errhp);
  if (error) {
    error->code = 0;
    error->text.clear();
  }
  return error;
}

sword fail(ErrorHandle* error, int code, std::string text, sword status) {
  error->code = code;
  error->text = std::move(text);
  return status;
}

sword notConnected(ErrorHandle* error) { return fail(error, 3114, "not connected to ORACLE"); }

bool connected(const ServiceHandle& service) {
  const auto* server = find<ServerHandle>(service.server);
  const auto* session = find<SessionHandle>(service.session);
  return server && server->attached && session && session->begun;
}

} // namespace ocidouble

OCI_DOUBLE_EXPORT OciDoubleServer* ociDoubleServer() { return &ocidouble::state(); }
