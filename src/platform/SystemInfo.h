#pragma once

#include <QString>

// The login name of the user who owns this process, trimmed of spaces.
QString processOwnerLogonName();

// The folder the running executable lives in.
QString programFolder();

// False only when no process with this id exists any more (one of another user counts as running).
bool processIsRunning(qint64 pid);

// Writes what the system still holds of a file, or of a folder's entries, to the disk. False when
// the path cannot be opened or the disk refuses.
bool flushToDisk(const QString& path);
