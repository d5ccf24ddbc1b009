#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The desktop's tool that shows the machine's hardware and system (the counterpart of Windows'
// system information), found among the programs of the search path.
struct SystemInfoTool {
  QString program;
  QStringList arguments;
};

// The first tool installed, looked for in folders (the PATH when empty); nothing when none is.
std::optional<SystemInfoTool> FindSystemInfoTool(const QStringList& folders = {});
