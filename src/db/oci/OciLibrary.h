#pragma once

#include "db/oci/OciApi.h"
#include "platform/SharedLibrary.h"

#include <QString>
#include <QStringList>

#include <memory>

// Where to look for the Oracle client library, in this order: an explicit folder (setting or
// DBSWEEP_ORACLE_CLIENT), the program's folder, the system's own search (LD_LIBRARY_PATH and
// the ld.so cache), then $ORACLE_HOME/lib.
struct OciSearch {
  QString explicitFolder;
  QString programFolder;
  QString oracleHome;
  QString loaderSearch; // LD_LIBRARY_PATH as it was, for the message when nothing is found
  // Library names the system search tries.
  QStringList systemNames = SharedLibrary::oracleClientSystemNames();
};

// The loaded client: its entry points and what it is.
struct OciClient {
  oci::Api api;
  QString path;    // the file loaded, or the bare name the system search found
  QString version; // "19.3.0.0.0"
};

namespace OciLibrary {

// The oldest client whose entry points we use (OCIDefineByPos2 came with 12.1).
inline constexpr int MinimumMajorVersion = 12;
inline constexpr int MinimumMinorVersion = 1;

// Loads the first client library found. A library that cannot be found, cannot be loaded,
// lacks an entry point or is too old raises OraError with a text naming the library, the
// folders searched and the loader's own message. The library stays loaded for the rest of the
// process: unloading Oracle's client is not safe while its threads may still run.
std::shared_ptr<const OciClient> load(const OciSearch& search);

// The library files of one folder in the order they are tried: libclntsh.so, then versioned
// names, newest first.
QStringList candidatesIn(const QString& folder);

} // namespace OciLibrary
