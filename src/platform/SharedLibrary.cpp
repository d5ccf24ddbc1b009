#include "platform/SharedLibrary.h"

#include <QFile>

#include <dlfcn.h>

namespace {

QString lastError() {
  const char* message = dlerror();
  return message ? QString::fromLocal8Bit(message) : QStringLiteral("unknown error");
}

} // namespace

void* SharedLibrary::open(const QString& nameOrPath, QString& error) {
  dlerror();
  // Everything resolved now, so a missing dependency shows at once, not at the first call.
  void* library = dlopen(QFile::encodeName(nameOrPath).constData(), RTLD_NOW | RTLD_LOCAL);
  if (!library)
    error = lastError();
  return library;
}

void* SharedLibrary::symbol(void* library, const char* name, QString& error) {
  dlerror();
  void* entry = dlsym(library, name);
  if (!entry)
    error = lastError();
  return entry;
}

QString SharedLibrary::oracleClientName() { return QStringLiteral("libclntsh.so"); }

QStringList SharedLibrary::oracleClientSystemNames() {
  QStringList names{oracleClientName()};
  for (const char* version : {"23.1", "21.1", "20.1", "19.1", "18.1", "12.1"})
    names << oracleClientName() + u'.' + QString::fromLatin1(version);
  return names;
}

QString SharedLibrary::systemSearchDescription(const QString& loaderSearch) {
  return QStringLiteral("the system library search (LD_LIBRARY_PATH=%1, /etc/ld.so.cache)")
      .arg(loaderSearch.isEmpty() ? QStringLiteral("(not set)") : loaderSearch);
}
