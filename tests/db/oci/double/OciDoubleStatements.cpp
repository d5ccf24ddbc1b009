// The OCI entry points of the double for statements: prepare, execute, describe, bind, define
// and fetch, answered from the script by the statement's exact text.

#include "OciDoubleHandles.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstring>
#include <set>

using namespace ocidouble;

namespace {

// The next word of a statement from `pos` on, upper-cased, after blanks and opening parentheses.
std::string nextWord(const std::string& text, std::size_t& pos) {
  pos = std::min(text.find_first_not_of(" \t\r\n(", pos), text.size());
  std::string word;
  while (pos < text.size() && std::isalpha(static_cast<unsigned char>(text[pos])))
    word += char(std::toupper(static_cast<unsigned char>(text[pos++])));
  return word;
}

std::string firstWord(const std::string& text) {
  std::size_t pos = 0;
  return nextWord(text, pos);
}

bool isAlterSession(const std::string& text) {
  std::size_t pos = 0;
  return nextWord(text, pos) == "ALTER" && nextWord(text, pos) == "SESSION";
}

ub2 statementType(const std::string& text) {
  static const std::map<std::string, ub2> types = {
      {"SELECT", 1}, {"WITH", 1},  {"UPDATE", 2}, {"DELETE", 3},  {"INSERT", 4}, {"CREATE", 5},
      {"DROP", 6},   {"ALTER", 7}, {"BEGIN", 8},  {"DECLARE", 9}, {"MERGE", 16},
  };
  const auto it = types.find(firstWord(text));
  return it == types.end() ? 0 : it->second;
}

bool changesRows(ub2 type) { return type == 2 || type == 3 || type == 4 || type == 16; }

// Data definition commits the open transaction before it runs, whatever its outcome; session
// and system control (ALTER SESSION, ALTER SYSTEM) does not.
bool commitsImplicitly(const std::string& text) {
  static const std::set<std::string> ddl = {"CREATE",  "DROP",    "TRUNCATE", "GRANT",   "REVOKE", "RENAME",
                                            "COMMENT", "ANALYZE", "AUDIT",    "NOAUDIT", "PURGE",  "FLASHBACK"};
  std::size_t pos = 0;
  const std::string first = nextWord(text, pos);
  if (first != "ALTER")
    return ddl.contains(first);
  const std::string second = nextWord(text, pos);
  return second != "SESSION" && second != "SYSTEM";
}

std::string boundValue(const Bind& bind) {
  if (!bind.value || (bind.indicator && *bind.indicator == IND_NULL))
    return "NULL";
  const auto* chars = reinterpret_cast<const char*>(bind.value);
  const std::size_t size = std::size_t(std::max(bind.size, 0));
  if (bind.type == SQLT_STR)
    return std::string(chars, strnlen(chars, size));
  return std::string(chars, bind.length ? std::min<std::size_t>(*bind.length, size) : size);
}

std::string executeLine(const StatementHandle& statement, ub4 mode) {
  std::string line = "execute " + statement.text;
  for (const auto& [position, bind] : statement.binds)
    line += " bind=" + boundValue(bind);
  if (mode & COMMIT_ON_SUCCESS)
    line += " +commit";
  if (mode & DESCRIBE_ONLY)
    line += " describe";
  return line;
}

template <typename T> void set(T* target, T value) {
  if (target)
    *target = value;
}

// Writes one value into element `index` of a define's arrays; tells whether it was truncated.
bool store(const Define& define, std::size_t index, const OciDoubleValue& value) {
  sb2* indicator = define.indicator ? define.indicator + index : nullptr;
  ub4* length = define.length ? define.length + index : nullptr;
  ub2* code = define.code ? define.code + index : nullptr;
  if (!value) {
    set<sb2>(indicator, IND_NULL);
    set<ub4>(length, 0);
    set<ub2>(code, 1405);
    return false;
  }
  if (define.type == SQLT_CLOB || define.type == SQLT_BLOB) {
    // The element is a locator the caller allocated; the value goes behind it.
    OCILobLocator* locator = nullptr;
    if (define.value)
      std::memcpy(&locator, define.value + index * std::size_t(define.size), sizeof locator);
    if (auto* lob = find<LobHandle>(locator)) {
      lob->data = *value;
      lob->characters = define.type == SQLT_CLOB;
    }
    set<sb2>(indicator, 0);
    set<ub4>(length, ub4(sizeof locator));
    set<ub2>(code, 0);
    return false;
  }
  const bool terminated = define.type == SQLT_STR;
  const std::size_t capacity = std::size_t(std::max<sb8>(define.size - (terminated ? 1 : 0), 0));
  const std::size_t copied = std::min(value->size(), capacity);
  if (define.value) {
    unsigned char* target = define.value + index * std::size_t(define.size);
    std::memcpy(target, value->data(), copied);
    if (terminated && define.size > 0)
      target[copied] = 0;
  }
  const bool truncated = copied < value->size();
  set<sb2>(indicator, !truncated ? 0 : value->size() > 32767 ? -2 : sb2(value->size()));
  set<ub4>(length, ub4(copied));
  set<ub2>(code, truncated ? 1406 : 0);
  return truncated;
}

// Moves up to `nrows` rows from the open cursor into the defines.
sword deliver(StatementHandle& statement, ErrorHandle* error, ub4 nrows) {
  const OciDoubleAnswer& answer = statement.answer;
  const std::size_t columns = answer.columns.size();
  statement.rowsFetched = 0;
  for (const auto& [position, define] : statement.defines)
    if (position == 0 || position > columns)
      return fail(error, 1007, "variable not in select list");
  if (statement.defines.size() < columns)
    return fail(error, 1007, "variable not in select list");

  sword status = SUCCESS;
  bool truncated = false;
  ub4 delivered = 0;
  while (delivered < nrows && statement.nextRow < answer.rows.size()) {
    if (int(statement.nextRow) == answer.fetchErrorAtRow) {
      status = fail(error, answer.error, answer.errorText);
      break;
    }
    // A row shorter than the columns has NULLs in the rest.
    const auto& row = answer.rows[statement.nextRow];
    const auto value = [&row](std::size_t column) { return column < row.size() ? row[column] : OciDoubleValue(); };
    for (std::size_t column = 0; column < columns && status == SUCCESS; ++column)
      if (!value(column) && !statement.defines.at(ub4(column + 1)).indicator)
        status = fail(error, 1405, "fetched column value is NULL");
    if (status != SUCCESS)
      break;
    for (std::size_t column = 0; column < columns; ++column)
      truncated = store(statement.defines.at(ub4(column + 1)), delivered, value(column)) || truncated;
    ++delivered;
    ++statement.nextRow;
  }
  statement.rowsFetched = delivered;
  statement.rowCount += delivered;
  if (status != SUCCESS)
    return status;
  if (delivered < nrows)
    return fail(error, 1403, "no data found", NO_DATA);
  if (truncated)
    return fail(error, 24345, "A Truncation or null fetch error occurred", SUCCESS_WITH_INFO);
  return SUCCESS;
}

void commitPending() {
  state().committedChanges += state().pending;
  state().pending = 0;
}

// Blocks the executing call until another thread breaks it, or gives up after a while so that a
// test that never breaks still ends.
sword waitForBreak(std::unique_lock<std::mutex>& lock, OCIError* errhp) {
  OciDoubleServer& server = state();
  server.executing = true;
  const bool broken =
      server.breakSignal.wait_for(lock, std::chrono::seconds(30), [&server] { return server.broken.load(); });
  server.executing = false;
  server.broken = false;
  // Other threads ran while this call waited and may have freed its error handle.
  ErrorHandle* error = find<ErrorHandle>(errhp);
  if (!error)
    return INVALID_HANDLE;
  return broken ? fail(error, 1013, "user requested cancel of current operation")
                : fail(error, 3113, "end-of-file on communication channel");
}

} // namespace

OCI_DOUBLE_EXPORT sword OCIStmtPrepare2(OCISvcCtx* svchp, OCIStmt** stmthp, OCIError* errhp, const OraText* stmttext,
                                        ub4 stmtLen, const OraText*, ub4, ub4, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* service = find<ServiceHandle>(svchp);
  if (!error || !service || !stmthp)
    return INVALID_HANDLE;
  auto statement = std::make_unique<StatementHandle>(HTYPE_STMT, service->env);
  statement->text = textOf(stmttext, stmtLen);
  statement->statementType = statementType(statement->text);
  log("prepare " + statement->text);
  *stmthp = reinterpret_cast<OCIStmt*>(adopt(std::move(statement)));
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIStmtRelease(OCIStmt* stmthp, OCIError* errhp, const OraText*, ub4, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* statement = find<StatementHandle>(stmthp);
  if (!error || !statement)
    return INVALID_HANDLE;
  log("release");
  release(statement);
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIStmtExecute(OCISvcCtx* svchp, OCIStmt* stmtp, OCIError* errhp, ub4 iters, ub4,
                                       const OCISnapshot*, OCISnapshot*, ub4 mode) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* service = find<ServiceHandle>(svchp);
  auto* statement = find<StatementHandle>(stmtp);
  if (!error || !service || !statement)
    return INVALID_HANDLE;
  if (!connected(*service))
    return notConnected(error);
  log(executeLine(*statement, mode));

  statement->described = statement->cursorOpen = false;
  statement->nextRow = 0;
  statement->rowCount = statement->rowsFetched = 0;
  const auto found = state().answers.find(statement->text);
  if (found == state().answers.end() && !isAlterSession(statement->text))
    return fail(error, 900, "invalid SQL statement");
  statement->answer = found == state().answers.end() ? OciDoubleAnswer() : found->second;
  const OciDoubleAnswer& answer = statement->answer;
  const bool query = statement->statementType == STMT_SELECT; // Oracle decides by the statement, not by its rows
  const bool failsAtExecute = answer.error != 0 && answer.fetchErrorAtRow < 0;

  if (mode & DESCRIBE_ONLY) {
    if (failsAtExecute)
      return fail(error, answer.error, answer.errorText);
    statement->described = true;
    return SUCCESS;
  }
  if (!query && iters == 0)
    return fail(error, 24333, "zero iteration count");
  if (commitsImplicitly(statement->text) && state().pending > 0) {
    log("implicit commit " + std::to_string(state().pending));
    commitPending();
  }
  if (answer.waitForBreak)
    return waitForBreak(lock, errhp);
  if (failsAtExecute)
    return fail(error, answer.error, answer.errorText);

  sword status = SUCCESS;
  if (query) {
    statement->described = statement->cursorOpen = true;
    // Iterations on a query fetch that many rows into the defines straight away.
    if (iters > 0)
      status = deliver(*statement, error, iters);
  } else {
    statement->rowCount = answer.rowsProcessed;
    if (changesRows(statement->statementType))
      state().pending += int(answer.rowsProcessed);
  }
  if (status != ERROR && (mode & COMMIT_ON_SUCCESS))
    commitPending();
  return status;
}

#ifndef OCI_DOUBLE_WITHOUT_FETCH2
OCI_DOUBLE_EXPORT sword OCIStmtFetch2(OCIStmt* stmthp, OCIError* errhp, ub4 nrows, ub2 orientation, sb4, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  auto* statement = find<StatementHandle>(stmthp);
  if (!error || !statement)
    return INVALID_HANDLE;
  sword status = SUCCESS;
  statement->rowsFetched = 0;
  if (orientation != FETCH_NEXT && orientation != DEFAULT)
    status = fail(error, 24391, "invalid fetch operation");
  else if (!statement->cursorOpen)
    status = fail(error, 1002, "fetch out of sequence");
  else if (nrows == 0)
    statement->cursorOpen = false; // fetching no rows cancels the cursor
  else
    status = deliver(*statement, error, nrows);
  log("fetch " + std::to_string(nrows) + " -> " + std::to_string(statement->rowsFetched));
  return status;
}
#endif

OCI_DOUBLE_EXPORT sword OCIParamGet(const void* hndlp, ub4 htype, OCIError* errhp, void** parmdpp, ub4 pos) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  const auto* statement = htype == HTYPE_STMT ? find<StatementHandle>(hndlp) : nullptr;
  if (!error || !statement || !parmdpp)
    return INVALID_HANDLE;
  const auto& columns = statement->answer.columns;
  if (!statement->described || pos == 0 || pos > columns.size())
    return fail(error, 24334, "no descriptor for this position");
  *parmdpp = adopt(std::make_unique<ParamHandle>(statement->env, columns[pos - 1]));
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIDefineByPos2(OCIStmt* stmtp, OCIDefine** defnpp, OCIError* errhp, ub4 position, void* valuep,
                                        sb8 valueSz, ub2 dty, void* indp, ub4* rlenp, ub2* rcodep, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  auto* statement = find<StatementHandle>(stmtp);
  if (!error || !statement || !defnpp)
    return INVALID_HANDLE;
  switch (dty) {
  case SQLT_CHR:
  case SQLT_STR:
  case SQLT_LNG:
  case SQLT_AFC:
  case SQLT_BIN:
  case SQLT_LBI:
  case SQLT_CLOB:
  case SQLT_BLOB: break;
  default: return fail(error, 932, "inconsistent datatypes");
  }
  Define& define = statement->defines[position];
  define = {static_cast<unsigned char*>(valuep), valueSz, dty, static_cast<sb2*>(indp), rlenp, rcodep};
  *defnpp = reinterpret_cast<OCIDefine*>(&define);
  return SUCCESS;
}

OCI_DOUBLE_EXPORT sword OCIBindByPos(OCIStmt* stmtp, OCIBind** bindpp, OCIError* errhp, ub4 position, void* valuep,
                                     sb4 valueSz, ub2 dty, void* indp, ub2* alenp, ub2*, ub4, ub4*, ub4) {
  auto lock = lockServer();
  ErrorHandle* error = startCall(errhp);
  auto* statement = find<StatementHandle>(stmtp);
  if (!error || !statement || !bindpp)
    return INVALID_HANDLE;
  if (position == 0)
    return fail(error, 1036, "illegal variable name/number");
  // The script states the values it expects as text, so only character binds are read.
  if (dty != SQLT_STR && dty != SQLT_CHR)
    return fail(error, 932, "inconsistent datatypes");
  Bind& bind = statement->binds[position];
  bind = {static_cast<const unsigned char*>(valuep), valueSz, dty, static_cast<const sb2*>(indp), alenp};
  *bindpp = reinterpret_cast<OCIBind*>(&bind);
  return SUCCESS;
}
