// A second process holding a session. With a table and an id: logs on, leaves an insert pending
// and waits for a line on standard input, then makes one more call and prints how it went.
// With a statement: logs on, runs it and prints how it went.
//   engine_session FOLDER USER PASSWORD TABLE ID
//   engine_session FOLDER USER PASSWORD STATEMENT
#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "db/local/LocalEngine.h"

#include <QCoreApplication>

#include <cstdio>
#include <iostream>
#include <string>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  if (argc != 5 && argc != 6)
    return 2;
  try {
    OraDatabase db(LocalEngine::connect(argv[1], argv[2], argv[3]));
    if (argc == 5) {
      db.ExecuteSQL(QString::fromLocal8Bit(argv[4]));
      std::puts("DONE");
      return 0;
    }
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
