#pragma once

// The scripted "server" behind the OCI test double (a shared library that stands in for the
// Oracle client). A test reaches it by loading the double itself and calling
// ociDoubleServer(); the backend under test loads the same file and talks OCI to it. The
// double answers statements by their exact text, so a test states the SQL it expects the
// backend to send.

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

struct OciDoubleColumn {
  std::string name;
  unsigned short type = 1; // SQLT_* code the describe reports (1 VARCHAR2, 2 NUMBER, 12 DATE, 112 CLOB …)
  unsigned short size = 0; // OCI_ATTR_DATA_SIZE in bytes
  short precision = 0;
  signed char scale = 0;
  unsigned char charsetForm = 1; // 2 for NCHAR, NVARCHAR2 and NCLOB
};

using OciDoubleValue = std::optional<std::string>; // nullopt is NULL; text or raw bytes otherwise

struct OciDoubleAnswer {
  // A query's columns and rows (values as the server sends them under the session's NLS
  // settings); empty columns for a statement without rows.
  std::vector<OciDoubleColumn> columns;
  std::vector<std::vector<OciDoubleValue>> rows;
  unsigned rowsProcessed = 0; // OCI_ATTR_ROW_COUNT after executing a statement without rows
  int error = 0;              // ORA number raised by OCIStmtExecute (0: none)
  std::string errorText;      // text after "ORA-nnnnn: "
  int fetchErrorAtRow = -1;   // 0-based row at which OCIStmtFetch2 raises `error` instead
  bool waitForBreak = false;  // OCIStmtExecute blocks until OCIBreak, then fails with ORA-01013
};

struct OciDoubleServer {
  std::mutex mutex;

  // Client library.
  int clientVersion[5] = {19, 3, 0, 0, 0};
  // Server: attach accepts these connect strings; OCIServerVersion returns the banner.
  std::vector<std::string> services = {"ORCL"};
  static constexpr const char* kBanner =
      "Oracle Database 19c Enterprise Edition Release 19.0.0.0.0 - Production\nVersion 19.3.0.0.0";
  std::string banner = kBanner;
  std::map<std::string, std::string> passwords = {{"SCOTT", "tiger"}}; // user (upper case) → password
  // LOB data up to this many bytes comes with the rows (the session's default LOB prefetch
  // size); reading a longer LOB's length or data costs a round trip, logged as "lob round trip".
  unsigned lobPrefetch = 0;
  // Statements by exact text; any other text fails with ORA-00900.
  std::map<std::string, OciDoubleAnswer> answers;

  // What happened, one line per event (see the double's source for the forms).
  std::vector<std::string> log;
  // Changes made in the open transaction and not yet committed or rolled back.
  int pending = 0;
  int committedChanges = 0;
  // Handles allocated and not yet freed (a handle freed with its parent counts as freed).
  int liveHandles = 0;

  // Break handshake for waitForBreak statements.
  std::atomic<bool> executing{false};
  std::atomic<bool> broken{false};
  std::condition_variable breakSignal;

  void reset() {
    std::lock_guard lock(mutex);
    clientVersion[0] = 19;
    clientVersion[1] = 3;
    clientVersion[2] = clientVersion[3] = clientVersion[4] = 0;
    services = {"ORCL"};
    banner = kBanner;
    passwords = {{"SCOTT", "tiger"}};
    answers.clear();
    log.clear();
    pending = committedChanges = liveHandles = 0;
    lobPrefetch = 0;
    executing = false;
    broken = false;
  }
};

extern "C" OciDoubleServer* ociDoubleServer();
