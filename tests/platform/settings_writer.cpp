// Writes count values named prefix0.. into the file store, as a second DBSWEEP would.
#include "platform/FileRegistry.h"

#include <QString>

#include <cstdlib>

int main(int argc, char* argv[]) {
  if (argc != 4)
    return 2;
  FileRegistry store(QString::fromLocal8Bit(argv[1]));
  const QString prefix = QString::fromLocal8Bit(argv[2]);
  const int count = std::atoi(argv[3]);
  const QString path = QStringLiteral("SOFTWARE\\JVK\\DBSWEEP\\Settings");
  try {
    for (int i = 0; i < count; ++i)
      store.write(RegistryBackend::HKeyLocalMachine, path, prefix + QString::number(i), QString::number(i * 7));
  } catch (const RegistryError&) {
    return 1;
  }
  return 0;
}
