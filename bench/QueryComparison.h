#pragma once

#include "MedianTime.h"
#include "db/OraDatabase.h"
#include "db/local/Catalogue.h"

#include <QCryptographicHash>

#include <sqlite3.h>

#include <cstdio>
#include <cstdlib>

// Times one Oracle query on the embedded engine against the SQLite query a developer would write
// by hand for the same answer, on the same schema file, alternating run by run so that both see
// the same machine; every row and field is read, and both answers must be the same rows in the
// same order. Prints the medians and their ratio.
class QueryComparison final {
public:
  QueryComparison(OraDatabase& db, const QString& folder, const QString& owner) : m_db(db) {
    const QString file = Catalogue::schemaFile(folder, owner);
    if (sqlite3_open_v2(file.toUtf8().constData(), &m_direct, SQLITE_OPEN_READONLY, nullptr) != SQLITE_OK) {
      std::fprintf(stderr, "cannot open %s\n", qPrintable(file));
      std::exit(1);
    }
  }
  ~QueryComparison() { sqlite3_close(m_direct); }
  QueryComparison(const QueryComparison&) = delete;
  QueryComparison& operator=(const QueryComparison&) = delete;

  void run(const char* name, const QString& oracle, const QString& sqlite, int repeats) {
    std::vector<double> engineTimes, directTimes;
    QByteArray engineDigest, directDigest;
    qint64 rows = 0;
    for (int r = 0; r < repeats; ++r) {
      engineTimes.push_back(msOf([&] { engineDigest = viaEngine(oracle, rows); }));
      directTimes.push_back(msOf([&] { directDigest = direct(sqlite); }));
    }
    if (engineDigest != directDigest) {
      std::fprintf(stderr, "%s: the engine's rows differ from SQLite's\n", name);
      std::exit(1);
    }
    const double engine = median(engineTimes);
    const double ref = median(directTimes);
    std::printf("%-34s %10.1f ms  %10.1f ms   %.2f×   (%lld rows)\n", name, engine, ref, engine / ref, rows);
  }

private:
  QByteArray viaEngine(const QString& sql, qint64& rows) {
    QCryptographicHash digest(QCryptographicHash::Sha1);
    auto d = m_db.CreateDynaset(sql, OraDynaset::ReadOnly | OraDynaset::NoCache);
    rows = 0;
    for (; !d->IsEOF(); d->MoveNext(), ++rows)
      for (int c = 0; c < d->FieldCount(); ++c)
        digest.addData(d->Fields(c).toString().toUtf8() + '|');
    return digest.result();
  }

  QByteArray direct(const QString& sql) {
    QCryptographicHash digest(QCryptographicHash::Sha1);
    sqlite3_stmt* stmt = nullptr;
    if (sqlite3_prepare_v2(m_direct, sql.toUtf8().constData(), -1, &stmt, nullptr) != SQLITE_OK) {
      std::fprintf(stderr, "sqlite: %s\n", sqlite3_errmsg(m_direct));
      std::exit(1);
    }
    while (sqlite3_step(stmt) == SQLITE_ROW)
      for (int c = 0; c < sqlite3_column_count(stmt); ++c)
        digest.addData(QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(stmt, c)),
                                         sqlite3_column_bytes(stmt, c))
                           .toUtf8() +
                       '|');
    sqlite3_finalize(stmt);
    return digest.result();
  }

  OraDatabase& m_db;
  sqlite3* m_direct = nullptr;
};
