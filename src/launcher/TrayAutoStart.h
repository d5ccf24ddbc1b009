#pragma once

#include <QString>

class clsREG;
class MessageBoxes;
class ProcessLauncher;

// The resident tray companion: a separate program beside this one that the desktop can start
// at every logon.

// The companion's full path: it always lives in the running program's folder.
QString TrayProgramPath(const QString& programFolder);

// "ON"/"on": start the companion minimised and register it to start at logon; when it cannot
// be started, say so and register nothing. "OFF"/"off": remove the registration (a running
// companion keeps running). Any other text does nothing.
void SetTrayAutoStart(const QString& mode, clsREG& registry, ProcessLauncher& launcher, MessageBoxes& boxes,
                      const QString& programFolder);

// Whether the companion is registered to start at logon.
bool TrayAutoStartRegistered(clsREG& registry);
