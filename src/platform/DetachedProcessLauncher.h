#pragma once

#include "services/ProcessLauncher.h"

// Starts programs as detached processes, so they outlive this one.
class DetachedProcessLauncher final : public ProcessLauncher {
public:
  bool start(const QString& program, const QStringList& arguments, WindowState state,
             const QByteArray& standardInput = {}) override;
};
