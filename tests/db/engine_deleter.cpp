// A session that deletes a table's rows one by one inside a transaction, as the delete job does
// through an updatable dynaset, for a test to kill at any moment. It prints its "sid,serial#",
// the number of rows, the number deleted so far after each row, then "ALL"; it then holds the
// uncommitted deletes until standard input ends, and exits without committing.
//   engine_deleter FOLDER USER PASSWORD TABLE
#include "db/OraDatabase.h"
#include "db/OraError.h"
#include "db/local/LocalEngine.h"

#include <QCoreApplication>

#include <cstdio>
#include <iostream>
#include <string>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  if (argc != 5)
    return 2;
  try {
    OraDatabase db(LocalEngine::connect(argv[1], argv[2], argv[3]));
    const auto self = db.CreateDynaset(
        QStringLiteral("select sid || ',' || serial# from v$session where status = 'ACTIVE'"), OraDynaset::ReadOnly);
    std::printf("SESSION %s\n", self->Fields(0).toString().toUtf8().constData());
    db.connection().begin();
    const auto rows = db.CreateDynaset(QStringLiteral("select * from %1").arg(argv[4]), OraDynaset::Updatable);
    const qint64 n = rows->RecordCount();
    std::printf("ROWS %lld\n", n);
    std::fflush(stdout);
    for (qint64 i = 1; i <= n; ++i) {
      rows->Delete();
      rows->MoveNext();
      std::printf("%lld\n", i);
      std::fflush(stdout);
    }
    std::puts("ALL");
    std::fflush(stdout);
    std::string line;
    std::getline(std::cin, line);
  } catch (const OraError& e) {
    std::puts(e.what());
    return 1;
  }
  return 0;
}
