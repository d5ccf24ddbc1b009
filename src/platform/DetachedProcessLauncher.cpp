#include "platform/DetachedProcessLauncher.h"

#include <QProcess>

#include <fcntl.h>
#include <unistd.h>

namespace {

// A pipe already holding data and closed for writing: the reader gets the data, then the end.
// Only the read end is returned; -1 when the pipe could not be made or filled.
int filledPipe(const QByteArray& data) {
  int fds[2];
  if (pipe2(fds, O_CLOEXEC) != 0)
    return -1;
  // Small data fits into the pipe's buffer, so writing before anyone reads cannot block.
  const bool written = data.size() < 4096 && write(fds[1], data.constData(), size_t(data.size())) == data.size();
  close(fds[1]);
  if (!written) {
    close(fds[0]);
    return -1;
  }
  return fds[0];
}

} // namespace

bool DetachedProcessLauncher::start(const QString& program, const QStringList& arguments, WindowState,
                                    const QByteArray& standardInput) {
  QProcess process;
  process.setProgram(program);
  process.setArguments(arguments);
  int input = -1;
  if (!standardInput.isEmpty()) {
    input = filledPipe(standardInput);
    if (input < 0)
      return false;
    // Qt opens the standard input file itself; the descriptor's own name reopens the pipe.
    process.setStandardInputFile(QStringLiteral("/proc/self/fd/%1").arg(input));
  }
  const bool started = process.startDetached();
  if (input >= 0)
    close(input);
  return started;
}
