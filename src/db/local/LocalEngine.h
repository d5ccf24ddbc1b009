#pragma once

#include "db/DbConnection.h"
#include "db/DbEnvironment.h"

#include <memory>

// The embedded Oracle-compatible engine: an instance is a folder holding a catalogue file
// (users, sessions, sequences and the data dictionary) and one SQLite file per schema.
namespace LocalEngine {

// How long a session waits for another's lock before ORA-00054.
inline constexpr int BusyWaitMs = 3000;

// The folder of "local:NAME" (<data>/instances/NAME) or "local:/absolute/folder".
QString folderFor(const QString& nameOrPath, const DbEnvironment& env);

bool instanceExists(const QString& folder);

// Whether a commit waits until the disk holds it. Waiting is off only while an instance is
// built aside, to be thrown away whole if anything stops the build: then thousands of commits
// cost no disk flush, and flushInstance() flushes the result once before it is put in place.
enum class Flushing { On, Off };

// Creates an empty instance whose SYSTEM user (with the DBA privilege) has systemPassword.
// Raises OraError when the folder already holds an instance or cannot be written.
void createInstance(const QString& folder, const QString& systemPassword, Flushing flushing = Flushing::On);

// Logs user on; ORA-12154 for a folder without an instance, ORA-01017 for a wrong user or
// password.
std::shared_ptr<DbConnection> connect(const QString& folder, const QString& user, const QString& password,
                                      Flushing flushing = Flushing::On);

// Writes every file of an instance no session holds open to the disk, and the folder itself.
// Raises OraError naming the file that could not be flushed.
void flushInstance(const QString& folder);

} // namespace LocalEngine
