#pragma once

#include <QString>
#include <QStringList>

// Libraries loaded at run time by name or path, kept for the life of the process.
namespace SharedLibrary {

// The library (a path, or a bare name for the system's own search), or nullptr with the
// loader's message in error.
void* open(const QString& nameOrPath, QString& error);
// An entry point of a library open() returned, or nullptr with the loader's message in error.
void* symbol(void* library, const char* name, QString& error);

// The Oracle client library's file name, and the names the system's own search is asked for:
// the plain name, then the versioned names Instant Client installs without a plain link.
QString oracleClientName();
QStringList oracleClientSystemNames();
// Where the system's own search looks, for messages ("LD_LIBRARY_PATH and /etc/ld.so.cache").
QString systemSearchDescription(const QString& loaderSearch);

} // namespace SharedLibrary
