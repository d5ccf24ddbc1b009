#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Starts another program without waiting for it. The window state is what the user should see
// first; desktops that cannot honour it simply open the program normally.
class ProcessLauncher {
public:
  enum class WindowState { Normal, Minimized, Maximized, Hidden };

  virtual ~ProcessLauncher() = default;
  // standardInput, when not empty, is all the program reads on its standard input: the way to
  // hand it a secret that must not show in the process list.
  virtual bool start(const QString& program, const QStringList& arguments, WindowState state,
                     const QByteArray& standardInput = {}) = 0;
};
