#include "platform/SystemInfo.h"

#include <QCoreApplication>

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
