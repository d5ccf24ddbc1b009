// A second process holding a session: logs on, leaves an insert pending and waits for a line
// on standard input, then makes one more call and prints how it went.
//   engine_session FOLDER USER PASSWORD TABLE ID
#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "db/local/LocalEngine.h"

#include <QCoreApplication>

#include <cstdio>
#include <iostream>
#include <string>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  if (argc != 6)
    return 2;
  try {
    OraDatabase db(LocalEngine::connect(argv[1], argv[2], argv[3]));
    db.connection().begin();
    db.ExecuteSQL(QStringLiteral("insert into %1 values (%2)").arg(argv[4], argv[5]));
    std::puts("READY");
    std::fflush(stdout);
    std::string line;
    std::getline(std::cin, line);
    db.CreateDynaset(QStringLiteral("select count(*) from dual"), 4)->RecordCount();
    std::puts("ALIVE");
  } catch (const OraError& e) {
    std::puts(e.what());
    return 1;
  }
  return 0;
}
