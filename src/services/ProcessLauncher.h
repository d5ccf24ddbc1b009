#pragma once

#include <QString>
#include <QStringList>

// Starts another program without waiting for it. The window state is what the user should see
// first; desktops that cannot honour it simply open the program normally.
class ProcessLauncher {
public:
  enum class WindowState { Normal, Minimized, Maximized, Hidden };

  virtual ~ProcessLauncher() = default;
  virtual bool start(const QString& program, const QStringList& arguments, WindowState state) = 0;
};
