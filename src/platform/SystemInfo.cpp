#include "platform/SystemInfo.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <vector>

QString processOwnerLogonName() {
  passwd pw{};
  passwd* found = nullptr;
  long size = sysconf(_SC_GETPW_R_SIZE_MAX);
  std::vector<char> buffer(size > 0 ? size_t(size) : 16384);
  if (getpwuid_r(geteuid(), &pw, buffer.data(), buffer.size(), &found) == 0 && found)
    return QString::fromLocal8Bit(found->pw_name).trimmed();
  return qEnvironmentVariable("LOGNAME", qEnvironmentVariable("USER")).trimmed();
}

QString programFolder() { return QCoreApplication::applicationDirPath(); }

bool processIsRunning(qint64 pid) { return pid <= 0 || ::kill(pid_t(pid), 0) == 0 || errno != ESRCH; }

bool flushToDisk(const QString& path) {
  const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
  if (fd < 0)
    return false;
  const bool flushed = ::fsync(fd) == 0;
  ::close(fd);
  return flushed;
}
