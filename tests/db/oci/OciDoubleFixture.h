#pragma once

#include "double/OciDoubleServer.h"

#include "db/oci/OciConnection.h"
#include "db/oci/OciLibrary.h"

#include <QFileInfo>
#include <QTest>

#include <dlfcn.h>

// The test double of the Oracle client: its folder, and its scripted server as the backend
// will see it once it loads the same file.
namespace OciDouble {

inline QString folder() { return QFileInfo(QStringLiteral(OCI_DOUBLE)).absolutePath(); }

inline OciDoubleServer& server() {
  void* handle = dlopen(OCI_DOUBLE, RTLD_NOW | RTLD_LOCAL);
  if (!handle)
    qFatal("cannot load the OCI double: %s", dlerror());
  auto get = reinterpret_cast<OciDoubleServer* (*)()>(dlsym(handle, "ociDoubleServer"));
  if (!get)
    qFatal("the OCI double has no ociDoubleServer()");
  return *get();
}

// A search that can only find the double (the system's own search is given a name no system
// has, so an Oracle client installed on the machine cannot answer instead).
inline OciSearch search() {
  OciSearch s;
  s.explicitFolder = folder();
  s.systemNames = {QStringLiteral("libclntsh-absent-for-tests.so")};
  return s;
}

inline OciDoubleColumn column(const char* name, unsigned short type, unsigned short size) {
  return OciDoubleColumn{name, type, size, 0, 0};
}

inline bool logHas(const std::vector<std::string>& log, const std::string& line) {
  return std::find(log.begin(), log.end(), line) != log.end();
}

inline std::vector<std::string> logFrom(size_t first) {
  auto& s = server();
  std::lock_guard lock(s.mutex);
  return {s.log.begin() + qsizetype(std::min(first, s.log.size())), s.log.end()};
}

} // namespace OciDouble
