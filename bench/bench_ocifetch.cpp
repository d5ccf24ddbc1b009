// Rows through the Oracle backend: how fast query results turn into field values, fetched in
// arrays from the stand-in client library the tests use. No network and no server work is in
// the figure, only this program's side (and the stand-in's copying), so it is the ceiling the
// backend puts on a fast server.
//   bench_ocifetch [rows] [repeats]
#include "MedianTime.h"
#include "OciDoubleServer.h"
#include "db/OraDynaset.h"
#include "db/oci/OciConnection.h"

#include <QCoreApplication>
#include <QFileInfo>

#include <algorithm>
#include <cstdio>
#include <dlfcn.h>

int main(int argc, char* argv[]) {
  QCoreApplication app(argc, argv);
  const int rows = argc > 1 ? std::atoi(argv[1]) : 200000;
  const int repeats = argc > 2 ? std::atoi(argv[2]) : 7;
  void* library = dlopen(OCI_DOUBLE, RTLD_NOW | RTLD_LOCAL);
  auto* server = library ? reinterpret_cast<OciDoubleServer* (*)()>(dlsym(library, "ociDoubleServer"))() : nullptr;
  if (!server) {
    std::fprintf(stderr, "cannot load the stand-in client library: %s\n", dlerror());
    return 1;
  }

  // An order table as the export and the viewers read it: numbers, Japanese text, dates, NULLs.
  OciDoubleAnswer orders;
  orders.columns = {{"JUCHU_NO", 2, 22, 10, 0}, {"KOKYAKU_NM", 1, 120, 0, 0}, {"JUCHU_DT", 12, 7, 0, 0},
                    {"KINGAKU", 2, 22, 12, 2},  {"BIKO", 1, 400, 0, 0},       {"KUBUN", 96, 2, 0, 0}};
  for (int i = 0; i < rows; ++i)
    orders.rows.push_back({std::to_string(100000 + i), "株式会社サンプル商事 第" + std::to_string(i % 97) + "営業所",
                           "2024/03/" + std::to_string(10 + i % 18) + (i % 3 ? " 00:00:00" : " 14:25:31"),
                           std::to_string(i % 5000) + "." + std::to_string(10 + i % 90),
                           i % 4 ? OciDoubleValue() : OciDoubleValue("至急"), "01"});
  const std::string sql = "SELECT * FROM JUCHU";
  server->answers[sql] = orders;

  OciSearch search;
  search.explicitFolder = QFileInfo(QStringLiteral(OCI_DOUBLE)).absolutePath();
  auto connection = OciConnection::connect(OciLibrary::load(search), QStringLiteral("ORCL"), QStringLiteral("scott"),
                                           QStringLiteral("tiger"), {});
  qint64 seen = 0;
  const double read = medianMs(repeats, [&] {
    auto rs = connection->query(QString::fromStdString(sql), OraDynaset::ReadOnly);
    const qint64 n = rs->RecordCount();
    for (qint64 r = 0; r < n; ++r, rs->MoveNext())
      for (int c = 0; c < rs->FieldCount(); ++c)
        seen += rs->Fields(c).isValid();
  });
  // A no-cache count leaves the rows on the server and sends one SELECT COUNT(*): timed alone
  // (its dynaset opened beforehand, a new one each time as the count is kept), with the round
  // trips the stand-in saw. Against a real server the counting itself comes on top.
  OciDoubleAnswer counted;
  counted.columns = {{"COUNT(*)", 2, 22, 0, 0}};
  counted.rows = {{std::to_string(rows)}};
  server->answers["SELECT COUNT(*) FROM (" + sql + ")"] = counted;
  std::vector<double> counts;
  std::ptrdiff_t trips = 0;
  for (int i = 0; i < repeats; ++i) {
    auto rs = connection->query(QString::fromStdString(sql), OraDynaset::NoCache);
    const std::size_t mark = server->log.size();
    QElapsedTimer t;
    t.start();
    seen += rs->RecordCount();
    counts.push_back(double(t.nsecsElapsed()) / 1e6);
    trips = std::count_if(server->log.begin() + std::ptrdiff_t(mark), server->log.end(), [](const std::string& line) {
      return line.starts_with("execute") || line.starts_with("fetch");
    });
  }
  std::sort(counts.begin(), counts.end());
  const double count = counts[counts.size() / 2];
  std::printf("%d rows x 6 columns, 500 rows per fetch (median of %d):\n", rows, repeats);
  std::printf("  read every field (read-only dynaset): %8.1f ms  %9.0f rows/s\n", read, rows / read * 1000);
  std::printf("  count only (no-cache RecordCount):    %8.3f ms  %9td round trip(s)\n", count, trips);
  return seen > 0 ? 0 : 1;
}
