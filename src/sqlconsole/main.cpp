#include "sqlconsole/ConsoleProgram.h"

#include <QCoreApplication>

#include <cstdio>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  QTextStream out(stdout);
  QTextStream err(stderr);
  return ConsoleProgram::run(QCoreApplication::arguments().mid(1), QProcessEnvironment::systemEnvironment(),
                             QCoreApplication::applicationDirPath(), out, err);
}
