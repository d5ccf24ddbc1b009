// The count job over 20 tables of 50,000 rows on the embedded engine, as the main window runs
// it (statements off the calling thread, one no-cache result set per table), against the same
// counts asked of SQLite directly on the same schema file.
//   bench_countjob [tables] [rows per table] [repeats]
#include "BenchInstance.h"
#include "JobBench.h"
#include "MedianTime.h"
#include "common/BDBSWEEP.h"
#include "db/local/Catalogue.h"
#include "jobs/CountJob.h"
#include "jobs/JobPlan.h"
#include "jobs/JobReport.h"
#include "jobs/StatementRunner.h"
#include "platform/SystemClock.h"

#include <QCoreApplication>

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

namespace {

QString tableName(int i) { return QStringLiteral("T%1").arg(i + 1, 2, 10, QChar(u'0')); }

// The count SQLite gives for each statement, summed.
qint64 countDirectly(sqlite3* db, const QStringList& statements) {
  qint64 total = 0;
  for (const QString& sql : statements) {
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(db, sql.toUtf8().constData(), -1, &stmt, nullptr) != SQLITE_OK ||
        sqlite3_step(stmt) != SQLITE_ROW) {
      std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(db));
      std::exit(1);
    }
    total += sqlite3_column_int64(stmt, 0);
    sqlite3_finalize(stmt);
  }
  return total;
}

// The rows the job's count lines report, summed.
qint64 linesTotal(const QStringList& lines) {
  qint64 total = 0;
  for (const QString& line : lines) {
    QString field = line.section(u':', 1, 1);
    if (field.endsWith(u'件'))
      total += field.chopped(1).remove(u',').trimmed().toLongLong();
  }
  return total;
}

} // namespace

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int tables = argc > 1 ? std::atoi(argv[1]) : 20;
  const int rows = argc > 2 ? std::atoi(argv[2]) : 50000;
  const int repeats = argc > 3 ? std::atoi(argv[3]) : 7;

  const BenchInstance instance;
  auto database = std::make_shared<OraDatabase>(instance.logOn(QStringLiteral("system")));
  const auto create = [&](int i) {
    database->ExecuteSQL(
        QStringLiteral("create table %1 (ID number(10), SHOP varchar2(8), QTY number)").arg(tableName(i)));
  };
  create(0);
  database->connection().begin();
  for (int r = 0; r < rows; ++r)
    database->ExecuteSQL(QStringLiteral("insert into T01 values (%1, 'S%2', %3)").arg(r).arg(r % 97).arg(r % 13));
  database->connection().commit();
  for (int i = 1; i < tables; ++i) {
    create(i);
    database->ExecuteSQL(QStringLiteral("insert into %1 select * from T01").arg(tableName(i)));
  }

  sqlite3* direct = nullptr;
  const QString file = Catalogue::schemaFile(instance.folder, QStringLiteral("SYSTEM"));
  if (sqlite3_open_v2(file.toUtf8().constData(), &direct, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
    std::fprintf(stderr, "cannot open %s\n", qPrintable(file));
    return 1;
  }

  BDBSWEEP state;
  state.gDatabase = database;
  SystemClock clock;
  TextSink sink;
  OffThreadStatements statements;
  QueuedAnswers boxes;
  JobContext context{state, sink, statements, clock, boxes};

  std::printf("%d tables x %d rows, median of %d runs     count job    SQLite direct   ratio\n", tables, rows,
              repeats);
  const struct {
    const char* name;
    QString addWhere;
    QString directWhere;
  } cases[] = {
      {"every row", QString(), QString()},
      {"rows of one shop", QStringLiteral("SHOP = 'S7'"), QStringLiteral(" WHERE \"SHOP\" = 'S7'")},
  };
  for (const auto& c : cases) {
    JobPlan plan;
    plan.countColumn = QStringLiteral("ID");
    plan.addWhere = c.addWhere;
    QStringList directSql;
    for (int i = 0; i < tables; ++i) {
      plan.targets.append({tableName(i), QString(), i + 1});
      directSql << QStringLiteral("select count(*) from \"%1\"%2").arg(tableName(i), c.directWhere);
    }
    qint64 jobTotal = 0;
    qint64 directTotal = 0;
    // Alternated run by run, so both see the same machine.
    std::vector<double> jobTimes, directTimes;
    for (int r = 0; r < repeats; ++r) {
      state.gJobTimer = std::make_unique<clsTimer>(clock);
      jobTimes.push_back(msOf([&] { RunCountJob(plan, context); }));
      jobTotal = linesTotal(sink.lines);
      directTimes.push_back(msOf([&] { directTotal = countDirectly(direct, directSql); }));
    }
    const double job = median(jobTimes);
    const double ref = median(directTimes);
    if (jobTotal != directTotal) {
      std::fprintf(stderr, "the counts differ: job %lld, SQLite %lld\n", jobTotal, directTotal);
      return 1;
    }
    std::printf("%-42s %9.2f ms   %9.2f ms   %.2f×   (%lld rows counted)\n", c.name, job, ref, job / ref,
                jobTotal);
  }
  sqlite3_close(direct);
  return 0;
}
