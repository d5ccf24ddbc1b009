#include "about/SystemInfoTool.h"

#include <QStandardPaths>

std::optional<SystemInfoTool> FindSystemInfoTool(const QStringList& folders) {
  // In the order a user is most likely to have them: the dedicated tools first, then the
  // desktops' settings pages that show the same.
  const SystemInfoTool candidates[] = {
      {QStringLiteral("hardinfo2"), {}},
      {QStringLiteral("hardinfo"), {}},
      {QStringLiteral("kinfocenter"), {}},
      {QStringLiteral("gnome-control-center"), {QStringLiteral("info-overview")}},
      {QStringLiteral("xfce4-about"), {QStringLiteral("--system")}},
  };
  for (const SystemInfoTool& tool : candidates) {
    const QString path = QStandardPaths::findExecutable(tool.program, folders);
    if (!path.isEmpty())
      return SystemInfoTool{path, tool.arguments};
  }
  return std::nullopt;
}
