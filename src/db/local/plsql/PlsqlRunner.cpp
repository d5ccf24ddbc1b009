#include "db/local/plsql/PlsqlRunner.h"

#include "db/local/LocalConnection.h"
#include "db/local/MergeStatement.h"
#include "db/local/MultiTableInsert.h"
#include "db/local/OracleDate.h"
#include "db/local/OracleDateTime.h"
#include "db/local/OracleTimestamp.h"
#include "db/local/plsql/PlsqlParser.h"

#include <QScopeGuard>

#include <cmath>

using namespace Plsql;

namespace {

// The implicit cursor's attributes and the error functions of handlers.
enum FixedSlot { IsOpen, Found, NotFound, RowCount, SqlCode, SqlErrm, FixedSlots };
// A cursor's attributes, in the order of their slots.
const QStringList Attributes{QStringLiteral("ISOPEN"), QStringLiteral("FOUND"), QStringLiteral("NOTFOUND"),
                             QStringLiteral("ROWCOUNT")};

// An error of the kind Oracle's compiler finds: no handler takes it.
struct CompileFailure {
  OraError error;
};

struct Predefined {
  int number;
  const char* text;
};

const QHash<QString, Predefined>& predefined() {
  static const QHash<QString, Predefined> names{
      {QStringLiteral("NO_DATA_FOUND"), {1403, "no data found"}},
      {QStringLiteral("TOO_MANY_ROWS"), {1422, "exact fetch returns more than requested number of rows"}},
      {QStringLiteral("ZERO_DIVIDE"), {1476, "divisor is equal to zero"}},
      {QStringLiteral("DUP_VAL_ON_INDEX"), {1, "unique constraint (.) violated"}},
      {QStringLiteral("VALUE_ERROR"), {6502, "PL/SQL: numeric or value error"}},
      {QStringLiteral("INVALID_NUMBER"), {1722, "invalid number"}},
      {QStringLiteral("PROGRAM_ERROR"), {6501, "PL/SQL: program error"}},
      {QStringLiteral("TIMEOUT_ON_RESOURCE"), {51, "timeout occurred while waiting for a resource"}},
  };
  return names;
}

SqlToken word(const QString& text) { return SqlToken{SqlToken::Kind::Word, text, 0, 0, 0}; }
SqlToken symbol(const QString& text) { return SqlToken{SqlToken::Kind::Symbol, text, 0, 0, 0}; }

OraError valueError(const QString& detail) {
  return OraError(6502, QStringLiteral("PL/SQL: numeric or value error: ") + detail);
}

} // namespace

PlsqlRunner::PlsqlRunner(LocalConnection& connection, const std::vector<SqlToken>& tokens, const QString& sql)
    : m_c(connection), m_t(tokens), m_sql(sql) {
  m_variables.resize(FixedSlots);
  m_scopes.emplace_back();
  for (int i = IsOpen; i <= RowCount; ++i)
    m_scopes.back().variables.insert(QStringLiteral("SQL%") + Attributes[i], i);
  m_scopes.back().variables.insert(QStringLiteral("SQLCODE"), SqlCode);
  m_scopes.back().variables.insert(QStringLiteral("SQLERRM"), SqlErrm);
  m_variables[IsOpen].type.kind = Type::Kind::Boolean;
  m_variables[IsOpen].value = 0;
  m_variables[Found].type.kind = Type::Kind::Boolean;
  m_variables[NotFound].type.kind = Type::Kind::Boolean;
  m_variables[RowCount].type.kind = Type::Kind::Integer;
  m_variables[SqlCode].value = 0;
  m_variables[SqlErrm].type.kind = Type::Kind::Text;
  m_variables[SqlErrm].value = QStringLiteral("ORA-0000: normal, successful completion");
}

PlsqlRunner::~PlsqlRunner() = default;

void PlsqlRunner::compile() { m_block = PlsqlParser(m_t, m_sql).parse(); }

void PlsqlRunner::run() {
  try {
    runBlock(*m_block);
  } catch (const CompileFailure& f) {
    throw f.error;
  } catch (const OraError& e) {
    if (!m_failed)
      throw;
    throw OraError(e.number(), e.text() + QStringLiteral("\nORA-06512: at line %1").arg(m_t[m_failedAt].line));
  } catch (const SqliteFailure& f) {
    throw m_c.oracleError(f);
  }
}

PlsqlRunner::Flow PlsqlRunner::runBlock(const Block& block) {
  const size_t variables = m_variables.size();
  m_scopes.emplace_back();
  const auto leave = qScopeGuard([&] {
    m_scopes.pop_back();
    m_variables.resize(variables);
  });
  // An error in the declarations goes to the block around, not to this block's handlers.
  for (const Declaration& d : block.declarations)
    declare(d);
  try {
    return runAll(block.body);
  } catch (const OraError& e) {
    for (const Handler& h : block.handlers) {
      if (!handles(h, e))
        continue;
      const QVariant code = m_variables[SqlCode].value, message = m_variables[SqlErrm].value;
      const bool user = e.number() == 6510 && !m_raised.isEmpty();
      m_variables[SqlCode].value = user ? 1 : e.number() == 1403 ? 100 : -e.number();
      m_variables[SqlErrm].value = user ? QStringLiteral("User-Defined Exception") : e.message();
      m_failed = false;
      const QString handled = std::exchange(m_handled, std::exchange(m_raised, {}));
      const auto restore = qScopeGuard([&] {
        m_variables[SqlCode].value = code;
        m_variables[SqlErrm].value = message;
        m_handled = handled;
      });
      return runAll(h.body);
    }
    throw;
  }
}

bool PlsqlRunner::handles(const Handler& h, const OraError& e) const {
  for (const QString& name : h.names) {
    if (name == u"OTHERS")
      return true;
    bool declared = false;
    for (const Scope& s : m_scopes)
      declared = declared || s.exceptions.contains(name);
    if (declared) {
      if (e.number() == 6510 && m_raised == name)
        return true;
    } else if (const auto known = predefined().constFind(name); known != predefined().constEnd()) {
      if (known->number == e.number())
        return true;
    } else {
      compileError(h.at, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(name));
    }
  }
  return false;
}

void PlsqlRunner::declare(const Declaration& d) {
  Scope& scope = m_scopes.back();
  if (scope.variables.contains(d.name) || scope.cursors.contains(d.name) || scope.exceptions.contains(d.name))
    compileError(d.at, QStringLiteral("PLS-00371: at most one declaration for '%1' is permitted").arg(d.name));
  if (d.kind == Declaration::Kind::Cursor) {
    Cursor c;
    c.query = d.value;
    c.attributes = int(m_variables.size());
    for (int i = IsOpen; i <= RowCount; ++i)
      declareVariable(d.name + u'%' + Attributes[i], m_variables[size_t(i)].type);
    m_variables[size_t(c.attributes)].value = 0;
    m_scopes.back().cursors.insert(d.name, c);
    return;
  }
  if (d.kind == Declaration::Kind::Exception) {
    scope.exceptions.insert(d.name);
    return;
  }
  if (d.rowType) {
    // table%ROWTYPE or cursor%ROWTYPE: a record of the columns.
    QStringList fields, types;
    if (d.anchor.end == d.anchor.begin + 1 && findCursor(m_t[d.anchor.begin].name())) {
      columnsOf(compiled(findCursor(m_t[d.anchor.begin].name())->query, Mode::Sql), fields, types);
    } else {
      const QString owner = d.anchor.end == d.anchor.begin + 3 ? m_t[d.anchor.begin].name() : m_c.user();
      const QString table = m_t[d.anchor.end - 1].name();
      SqliteStmt columns(m_c.db(), QStringLiteral("SELECT column_name, declared FROM CAT.columns WHERE owner = ?1 "
                                                  "AND table_name = ?2 ORDER BY column_id"));
      columns.bindAll({owner, table});
      while (columns.step())
        fields << columns.text(0), types << columns.text(1).section(u'(', 0, 0);
      if (fields.isEmpty())
        compileError(d.anchor.begin, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(table));
    }
    declareRecord(d.name, fields, types);
    return;
  }
  Type type = d.type;
  if (!d.anchor.empty())
    type = anchoredType(d.anchor);
  try {
    const QVariant initial = d.value.empty()
                                 ? QVariant()
                                 : evaluate(d.value, type.kind == Type::Kind::Boolean ? Mode::Condition : Mode::Value);
    const int slot = declareVariable(d.name, type);
    assign(slot, initial, d.value.empty() ? nullptr : typeOf(d.value));
    m_variables[size_t(slot)].constant = d.constant;
    m_variables[size_t(slot)].notNull = d.notNull;
  } catch (const OraError&) {
    if (!m_failed) {
      m_failed = true;
      m_failedAt = d.at;
    }
    throw;
  }
}

int PlsqlRunner::declareVariable(const QString& name, const Type& type) {
  Variable v;
  v.type = type;
  m_variables.push_back(v);
  const int slot = int(m_variables.size() - 1);
  m_scopes.back().variables.insert(name, slot);
  return slot;
}

PlsqlRunner::Flow PlsqlRunner::runAll(const Statements& list) {
  for (const auto& s : list)
    if (const Flow flow = runOne(*s); flow != Flow::Next)
      return flow;
  return Flow::Next;
}

PlsqlRunner::Flow PlsqlRunner::runOne(const Statement& s) {
  try {
    switch (s.kind) {
    case Statement::Kind::Null: break;
    case Statement::Kind::Assign: {
      const int slot = target(s.name, s.at);
      const bool boolean = m_variables[size_t(slot)].type.kind == Type::Kind::Boolean;
      assign(slot, evaluate(s.a, boolean ? Mode::Condition : Mode::Value), typeOf(s.a));
      break;
    }
    case Statement::Kind::If:
      for (const Branch& b : s.branches)
        if (isTrue(b.condition))
          return runAll(b.body);
      return runAll(s.body);
    case Statement::Kind::ForRange: return forRange(s);
    case Statement::Kind::ForQuery: return forQuery(s);
    case Statement::Kind::While: return runLoop(s.body, [&] { return isTrue(s.a); });
    case Statement::Kind::Loop: return runLoop(s.body, [] { return true; });
    case Statement::Kind::Exit:
    case Statement::Kind::Continue:
      if (s.a.empty() || isTrue(s.a))
        return s.kind == Statement::Kind::Exit ? Flow::Exit : Flow::Continue;
      break;
    case Statement::Kind::Nested: return runBlock(*s.block);
    case Statement::Kind::Sql: runSql(s); break;
    case Statement::Kind::SelectInto: selectInto(s); break;
    case Statement::Kind::Execute: executeImmediate(s); break;
    case Statement::Kind::Call: call(s); break;
    case Statement::Kind::Raise: raise(s); break;
    case Statement::Kind::Return: return Flow::Return;
    case Statement::Kind::Open:
    case Statement::Kind::Fetch:
    case Statement::Kind::Close: cursorStatement(s); break;
    }
  } catch (const OraError&) {
    if (!m_failed) {
      m_failed = true;
      m_failedAt = s.at;
    }
    throw;
  } catch (const SqliteFailure& f) {
    m_failed = true;
    m_failedAt = s.at;
    throw m_c.oracleError(f);
  }
  return Flow::Next;
}

PlsqlRunner::Flow PlsqlRunner::runLoop(const Statements& body, const std::function<bool()>& more) {
  while (more()) {
    const Flow flow = runAll(body);
    if (flow == Flow::Exit)
      break;
    if (flow == Flow::Return)
      return flow;
    m_c.checkAlive();
  }
  return Flow::Next;
}

PlsqlRunner::Flow PlsqlRunner::forRange(const Statement& s) {
  Type integer;
  integer.kind = Type::Kind::Integer;
  const auto bound = [&](Range r) {
    const QVariant v = converted(evaluate(r), integer, typeOf(r));
    if (v.isNull())
      throw OraError(6502, QStringLiteral("PL/SQL: numeric or value error"));
    return v.toLongLong();
  };
  const qint64 low = bound(s.a), high = bound(s.b);
  m_scopes.emplace_back();
  const size_t variables = m_variables.size();
  const auto leave = qScopeGuard([&] {
    m_scopes.pop_back();
    m_variables.resize(variables);
  });
  const int slot = declareVariable(s.name, integer);
  m_variables[size_t(slot)].constant = true;
  qint64 i = s.reverse ? high : low;
  return runLoop(s.body, [&] {
    if (s.reverse ? i < low : i > high)
      return false;
    m_variables[size_t(slot)].value = i;
    i += s.reverse ? -1 : 1;
    return true;
  });
}

PlsqlRunner::Flow PlsqlRunner::forQuery(const Statement& s) {
  Compiled& query = compiled(s.into.isEmpty() ? s.a : cursor(s.into[0], s.at).query, Mode::Sql);
  QStringList labels, types;
  columnsOf(query, labels, types);
  // The rows are read before the loop runs, as Oracle's cursor reads as of its opening, whatever
  // the loop then changes.
  const auto rows = queryRows(query);
  m_scopes.emplace_back();
  const size_t variables = m_variables.size();
  const auto leave = qScopeGuard([&] {
    m_scopes.pop_back();
    m_variables.resize(variables);
  });
  declareRecord(s.name, labels, types);
  const std::vector<int> fields = m_scopes.back().records.value(s.name);
  auto row = rows.begin();
  return runLoop(s.body, [&] {
    if (row == rows.end())
      return false;
    for (size_t i = 0; i < row->size(); ++i)
      m_variables[size_t(fields[i])].value = (*row)[i];
    ++row;
    return true;
  });
}

void PlsqlRunner::declareRecord(const QString& name, const QStringList& fields, const QStringList& types) {
  std::vector<int> slots;
  for (qsizetype i = 0; i < fields.size(); ++i)
    slots.push_back(declareVariable(name + u'.' + fields[i], typeNamed(types[i])));
  m_scopes.back().records.insert(name, slots);
}

PlsqlRunner::Cursor* PlsqlRunner::findCursor(const QString& name) {
  for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope)
    if (const auto it = scope->cursors.find(name); it != scope->cursors.end())
      return &*it;
  return nullptr;
}

PlsqlRunner::Cursor& PlsqlRunner::cursor(const QString& name, size_t at) {
  Cursor* c = findCursor(name);
  if (!c)
    compileError(at, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(name));
  return *c;
}

// OPEN, FETCH and CLOSE of an explicit cursor, and its attributes.
void PlsqlRunner::cursorStatement(const Statement& s) {
  Cursor& c = cursor(s.name, s.at);
  const auto attribute = [&](int which) -> QVariant& { return m_variables[size_t(c.attributes + which)].value; };
  if (s.kind == Statement::Kind::Open) {
    if (c.open)
      throw OraError(6511, QStringLiteral("PL/SQL: cursor already open"));
    c.rows = queryRows(compiled(c.query, Mode::Sql));
    c.next = 0;
    c.open = true;
    attribute(IsOpen) = 1;
    attribute(Found) = attribute(NotFound) = QVariant();
    attribute(RowCount) = 0;
    return;
  }
  if (!c.open)
    throw OraError(1001, QStringLiteral("invalid cursor"));
  if (s.kind == Statement::Kind::Close) {
    c.open = false;
    c.rows.clear();
    attribute(IsOpen) = 0;
    return;
  }
  const std::vector<int> into = targets(s.into, s.at);
  const bool found = c.next < c.rows.size();
  if (found) {
    const std::vector<QVariant>& row = c.rows[c.next++];
    if (row.size() != into.size())
      compileError(s.at, row.size() > into.size() ? QStringLiteral("PLS-00913: too many values")
                                                  : QStringLiteral("PLS-00914: not enough values"));
    for (size_t i = 0; i < into.size(); ++i)
      assign(into[i], row[i]);
  }
  attribute(Found) = found ? 1 : 0;
  attribute(NotFound) = found ? 0 : 1;
  attribute(RowCount) = qint64(c.next);
}

std::vector<int> PlsqlRunner::targets(const QStringList& names, size_t at) const {
  if (names.size() == 1)
    for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope)
      if (const auto it = scope->records.constFind(names[0]); it != scope->records.constEnd())
        return *it;
  std::vector<int> slots;
  for (const QString& name : names)
    slots.push_back(target(name, at));
  return slots;
}

SqliteStmt& PlsqlRunner::prepared(Compiled& c) {
  if (!c.statement) {
    try {
      c.statement = std::make_unique<SqliteStmt>(m_c.db(), c.sqlite);
    } catch (const SqliteFailure& f) {
      throw m_c.oracleError(f);
    }
  }
  return *c.statement;
}

void PlsqlRunner::columnsOf(Compiled& c, QStringList& labels, QStringList& types) {
  SqliteStmt& stmt = prepared(c);
  for (int i = 0; i < stmt.columnCount(); ++i) {
    labels << stmt.columnName(i).toUpper();
    types << stmt.declaredType(i).section(u'(', 0, 0).toUpper();
  }
}

std::vector<std::vector<QVariant>> PlsqlRunner::queryRows(Compiled& c, const QVariantList& given) {
  SqliteStmt& stmt = prepared(c);
  stmt.reset();
  stmt.bindAll(c.slots.empty() ? given : values(c.slots));
  std::vector<std::vector<QVariant>> rows;
  try {
    while (stmt.step()) {
      const QVariantList row = stmt.row();
      rows.emplace_back(row.begin(), row.end());
    }
  } catch (const SqliteFailure& f) {
    stmt.reset();
    throw m_c.oracleError(f);
  }
  stmt.reset();
  return rows;
}

void PlsqlRunner::selectInto(const Statement& s) {
  Compiled& c = compiled(s.a, Mode::Sql, s.b);
  const std::vector<int> into = targets(s.into, s.at);
  const auto rows = queryRows(c);
  // More rows than one still count as one, as Oracle counts them.
  setRowCount(qMin<qint64>(qint64(rows.size()), 1));
  if (rows.empty())
    throw OraError(1403, QStringLiteral("no data found"));
  if (rows.size() > 1)
    throw OraError(1422, QStringLiteral("exact fetch returns more than requested number of rows"));
  if (rows[0].size() != into.size())
    compileError(s.b.begin, rows[0].size() > into.size() ? QStringLiteral("PLS-00913: too many values")
                                                         : QStringLiteral("PLS-00914: not enough values"));
  for (size_t i = 0; i < into.size(); ++i)
    assign(into[i], rows[0][i]);
}

void PlsqlRunner::setRowCount(qint64 rows) {
  m_variables[RowCount].value = rows;
  m_variables[Found].value = rows > 0 ? 1 : 0;
  m_variables[NotFound].value = rows > 0 ? 0 : 1;
}

void PlsqlRunner::runSql(const Statement& s) {
  const SqlToken& first = m_t[s.a.begin];
  if (first.is(u"MERGE") || MultiTableInsert::isOne(m_t, s.a.begin)) {
    Compiled& c = compiled(s.a, Mode::Sql);
    setRowCount(first.is(u"MERGE") ? MergeStatement(m_c, c.tokens, values(c.slots)).run()
                                   : MultiTableInsert(m_c, c.tokens, values(c.slots)).run());
    return;
  }
  if (!(first.is(u"INSERT") || first.is(u"UPDATE") || first.is(u"DELETE"))) {
    std::vector<SqlToken> tokens(m_t.begin() + qsizetype(s.a.begin), m_t.begin() + qsizetype(s.a.end));
    tokens.push_back(SqlToken{SqlToken::Kind::End, {}, int(m_sql.size()), 0, tokens.back().line});
    m_c.runStatement(tokens, m_sql);
    return;
  }
  Compiled& c = compiled(s.a, Mode::Sql);
  // The translation waits for the first run: a table the block creates on the way exists by then.
  auto it = m_dml.find(s.a.begin);
  if (it == m_dml.end())
    it = m_dml.emplace(s.a.begin, m_c.translateDml(c.tokens, true)).first;
  setRowCount(m_c.runDml(it->second, values(c.slots)));
}

// EXECUTE IMMEDIATE text [INTO ...] [USING ...]: the text is parsed when it runs; its
// placeholders take the USING values by position.
void PlsqlRunner::executeImmediate(const Statement& s) {
  const QVariant statement = evaluate(s.a);
  const QString text = statement.toString();
  std::vector<SqlToken> tokens = tokenizeSql(text);
  if (tokens.front().kind == SqlToken::Kind::End)
    throw OraError(900, QStringLiteral("invalid SQL statement"));
  const bool block = tokens.front().is(u"BEGIN") || tokens.front().is(u"DECLARE");
  if (!block && tokens.size() >= 2 && tokens[tokens.size() - 2].is(u";"))
    throw OraError(911, QStringLiteral("invalid character"));
  QVariantList arguments;
  for (const Range& r : s.arguments)
    arguments << evaluate(r);
  qsizetype placeholders = 0;
  for (SqlToken& t : tokens)
    if (t.kind == SqlToken::Kind::Bind)
      t.text = QStringLiteral("?%1").arg(++placeholders);
  if (placeholders > arguments.size())
    throw OraError(1008, QStringLiteral("not all variables bound"));
  if (placeholders < arguments.size())
    throw OraError(1006, QStringLiteral("bind variable does not exist"));
  const SqlToken& first = tokens.front();
  if (!s.into.isEmpty()) {
    if (!(first.is(u"SELECT") || first.is(u"WITH")))
      throw OraError(1007, QStringLiteral("variable not in select list"));
    Compiled c;
    c.sqlite = m_c.translator(true).translate(m_c.resolveSynonyms(tokens));
    const std::vector<int> into = targets(s.into, s.at);
    auto rows = queryRows(c, arguments);
    if (rows.empty())
      throw OraError(1403, QStringLiteral("no data found"));
    if (rows.size() > 1)
      throw OraError(1422, QStringLiteral("exact fetch returns more than requested number of rows"));
    if (rows[0].size() != into.size())
      throw OraError(rows[0].size() < into.size() ? 1007 : 932, rows[0].size() < into.size()
                                                                    ? QStringLiteral("variable not in select list")
                                                                    : QStringLiteral("inconsistent datatypes"));
    for (size_t i = 0; i < into.size(); ++i)
      assign(into[i], rows[0][i]);
    setRowCount(1);
    return;
  }
  qint64 rows = 0;
  if (first.is(u"SELECT") || first.is(u"WITH")) {
    // A query with nowhere to put its rows is not run at all, as in Oracle.
  } else if (first.is(u"MERGE")) {
    rows = MergeStatement(m_c, tokens, arguments).run();
  } else if (MultiTableInsert::isOne(tokens)) {
    rows = MultiTableInsert(m_c, tokens, arguments).run();
  } else if (first.is(u"INSERT") || first.is(u"UPDATE") || first.is(u"DELETE")) {
    rows = m_c.runDml(m_c.translateDml(tokens, true), arguments);
  } else if (placeholders > 0) {
    throw OraError(1027, QStringLiteral("bind variables not allowed for data definition operations"));
  } else {
    rows = m_c.runStatement(tokens, text);
  }
  setRowCount(rows);
}

void PlsqlRunner::call(const Statement& s) {
  const auto argument = [&](qsizetype i) {
    return i < qsizetype(s.arguments.size()) ? evaluate(s.arguments[size_t(i)]) : QVariant();
  };
  const auto arity = [&](qsizetype low, qsizetype high) {
    if (qsizetype(s.arguments.size()) < low || qsizetype(s.arguments.size()) > high)
      compileError(s.at, QStringLiteral("PLS-00306: wrong number or types of arguments in call to '%1'")
                             .arg(s.name.section(u'.', -1)));
  };
  if (s.name == u"RAISE_APPLICATION_ERROR") {
    arity(2, 3);
    const qint64 number = argument(0).toLongLong();
    if (number > -20000 || number < -20999)
      throw OraError(
          21000, QStringLiteral("error number argument to raise_application_error of %1 is out of range").arg(number));
    throw OraError(int(-number), text(argument(1), typeOf(s.arguments[1])));
  }
  if (s.name == u"DBMS_OUTPUT.PUT_LINE" || s.name == u"DBMS_OUTPUT.PUT") {
    arity(1, 1);
    m_c.putOutput(text(argument(0), typeOf(s.arguments[0])), s.name == u"DBMS_OUTPUT.PUT_LINE");
  } else if (s.name == u"DBMS_OUTPUT.NEW_LINE") {
    arity(0, 0);
    m_c.putOutput({}, true);
  } else if (s.name == u"DBMS_OUTPUT.ENABLE" || s.name == u"DBMS_OUTPUT.DISABLE") {
    m_c.setOutputEnabled(s.name == u"DBMS_OUTPUT.ENABLE");
  }
}

void PlsqlRunner::raise(const Statement& s) {
  if (s.name.isEmpty()) {
    // RAISE alone passes on the error its handler took.
    const int code = m_variables[SqlCode].value.toInt();
    if (code == 0)
      compileError(s.at, QStringLiteral("PLS-00367: a RAISE statement with no exception name must be inside an "
                                        "exception handler"));
    const QString message = m_variables[SqlErrm].value.toString();
    if (code == 1 && message == u"User-Defined Exception") {
      m_raised = m_handled;
      throw OraError(6510, QStringLiteral("PL/SQL: unhandled user-defined exception"));
    }
    throw OraError(code == 100 ? 1403 : -code, message.section(QStringLiteral(": "), 1));
  }
  for (const Scope& scope : m_scopes)
    if (scope.exceptions.contains(s.name)) {
      m_raised = s.name;
      throw OraError(6510, QStringLiteral("PL/SQL: unhandled user-defined exception"));
    }
  if (const auto known = predefined().constFind(s.name); known != predefined().constEnd())
    throw OraError(known->number, QString::fromLatin1(known->text));
  compileError(s.at, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(s.name));
}

// Values ------------------------------------------------------------------------------------

QVariant PlsqlRunner::evaluate(Range r, Mode mode) {
  if (r.end == r.begin + 1) {
    const SqlToken& t = m_t[r.begin];
    if (t.kind == SqlToken::Kind::String)
      return t.text.isEmpty() ? QVariant() : QVariant(t.text);
    if (t.kind == SqlToken::Kind::Number && !t.text.contains(u'.') && !t.text.contains(u'e', Qt::CaseInsensitive) &&
        t.text.size() < 18)
      return t.text.toLongLong();
    if (t.is(u"NULL"))
      return {};
    if (t.is(u"TRUE") || t.is(u"FALSE"))
      return t.is(u"TRUE") ? 1 : 0;
    if (t.isName())
      if (const int slot = lookup(t.name()); slot >= 0)
        return m_variables[size_t(slot)].value;
  }
  Compiled& c = compiled(r, mode);
  const auto rows = queryRows(c);
  return rows.empty() ? QVariant() : rows[0][0];
}

bool PlsqlRunner::isTrue(Range r) {
  const QVariant v = evaluate(r, Mode::Condition);
  return v.isValid() && !v.isNull() && v.toLongLong() != 0;
}

PlsqlRunner::Compiled& PlsqlRunner::compiled(Range r, Mode mode, Range skip) {
  const quint64 key = quint64(r.begin) * 4 + quint64(mode);
  if (const auto it = m_compiled.find(key); it != m_compiled.end())
    return it->second;
  Compiled c;
  const std::vector<SqlToken> body = substituted(r, mode, c.slots, skip);
  const SqlToken end{SqlToken::Kind::End, {}, int(m_sql.size()), 0, m_t[r.begin].line};
  if (mode == Mode::Sql) {
    c.tokens = body;
    c.tokens.push_back(end);
  } else {
    c.tokens = {word(QStringLiteral("SELECT"))};
    if (mode == Mode::Condition) {
      // Three-valued: 1, 0 or NULL, as a PL/SQL BOOLEAN.
      c.tokens.insert(c.tokens.end(),
                      {word(QStringLiteral("CASE")), word(QStringLiteral("WHEN")), symbol(QStringLiteral("("))});
      c.tokens.insert(c.tokens.end(), body.begin(), body.end());
      c.tokens.insert(c.tokens.end(),
                      {symbol(QStringLiteral(")")), word(QStringLiteral("THEN")),
                       SqlToken{SqlToken::Kind::Number, QStringLiteral("1"), 0, 0, 0}, word(QStringLiteral("WHEN")),
                       word(QStringLiteral("NOT")), symbol(QStringLiteral("("))});
      // The condition again, its parameters numbered on.
      const std::vector<int> once = c.slots;
      for (SqlToken t : body) {
        if (t.kind == SqlToken::Kind::Bind)
          t.text = QStringLiteral("?%1").arg(t.text.mid(1).toInt() + int(once.size()));
        c.tokens.push_back(t);
      }
      c.slots.insert(c.slots.end(), once.begin(), once.end());
      c.tokens.insert(c.tokens.end(),
                      {symbol(QStringLiteral(")")), word(QStringLiteral("THEN")),
                       SqlToken{SqlToken::Kind::Number, QStringLiteral("0"), 0, 0, 0}, word(QStringLiteral("END"))});
    } else {
      c.tokens.insert(c.tokens.end(), body.begin(), body.end());
    }
    c.tokens.insert(c.tokens.end(), {word(QStringLiteral("FROM")), word(QStringLiteral("DUAL")), end});
  }
  if (mode != Mode::Sql || m_t[r.begin].is(u"SELECT") || m_t[r.begin].is(u"WITH")) {
    try {
      c.sqlite = m_c.translator(true).translate(m_c.resolveSynonyms(c.tokens));
    } catch (const OraError& e) {
      // A name SQL does not know, in a PL/SQL expression, is an undeclared identifier.
      if (mode != Mode::Sql && e.number() == 904)
        compileError(r.begin,
                     QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(e.text().section(u'"', 1, 1)));
      throw;
    }
    if (mode != Mode::Sql) {
      try {
        c.statement = std::make_unique<SqliteStmt>(m_c.db(), c.sqlite);
      } catch (const SqliteFailure& f) {
        const OraError e = m_c.oracleError(f);
        if (e.number() == 904)
          compileError(r.begin,
                       QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(e.text().section(u'"', 1, 1)));
        throw e;
      }
    }
  }
  return m_compiled.emplace(key, std::move(c)).first->second;
}

// The tokens of r with each variable as a ?N parameter. In SQL a name that is a column of a table
// the statement names stays the column, as Oracle resolves it.
std::vector<SqlToken> PlsqlRunner::substituted(Range r, Mode mode, std::vector<int>& slots, Range skip) const {
  std::vector<SqlToken> out;
  const auto parameter = [&](int slot, const SqlToken& at) {
    slots.push_back(slot);
    out.push_back(SqlToken{SqlToken::Kind::Bind, QStringLiteral("?%1").arg(slots.size()), at.pos, at.length, at.line});
  };
  for (size_t i = r.begin; i < r.end; ++i) {
    if (i == skip.begin && !skip.empty()) {
      i = skip.end - 1;
      continue;
    }
    const SqlToken& t = m_t[i];
    if (t.kind == SqlToken::Kind::Bind)
      throw OraError(1008, QStringLiteral("not all variables bound"));
    const bool qualified = i > r.begin && m_t[i - 1].is(u".");
    if (!t.isName() || qualified) {
      out.push_back(t);
      continue;
    }
    const QString name = t.name();
    // SQL%ROWCOUNT and the attributes of explicit cursors.
    if (i + 2 < r.end && m_t[i + 1].is(u"%") && m_t[i + 2].isName()) {
      const int slot = lookup(name + u'%' + m_t[i + 2].name());
      const bool cursor =
          std::any_of(m_scopes.begin(), m_scopes.end(), [&](const Scope& s) { return s.cursors.contains(name); });
      if (slot < 0)
        compileError(i + 2, name == u"SQL" || cursor
                                ? QStringLiteral("PLS-00103: Encountered the symbol \"%1\"").arg(m_t[i + 2].name())
                                : QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(name));
      parameter(slot, t);
      i += 2;
      continue;
    }
    if (mode != Mode::Sql && (name == u"TRUE" || name == u"FALSE")) {
      out.push_back(SqlToken{SqlToken::Kind::Number, name == u"TRUE" ? QStringLiteral("1") : QStringLiteral("0"), t.pos,
                             t.length, t.line});
      continue;
    }
    if (i + 2 < r.end && m_t[i + 1].is(u".") && m_t[i + 2].isName()) {
      bool record = false;
      for (const Scope& s : m_scopes)
        record = record || s.records.contains(name);
      // r.field
      if (record) {
        const int slot = lookup(name + u'.' + m_t[i + 2].name());
        if (slot < 0)
          compileError(i + 2, QStringLiteral("PLS-00302: component '%1' must be declared").arg(m_t[i + 2].name()));
        parameter(slot, t);
        i += 2;
        continue;
      }
    }
    const int slot = i + 1 < r.end && m_t[i + 1].is(u"(") ? -1 : lookup(name);
    if (slot < 0 || (mode == Mode::Sql && isColumnOfStatement(name, r, i)))
      out.push_back(t);
    else
      parameter(slot, t);
  }
  return out;
}

bool PlsqlRunner::isColumnOfStatement(const QString& name, Range r, size_t at) const {
  // The target's columns are out of reach in INSERT's VALUES.
  if (m_t[r.begin].is(u"INSERT")) {
    int depth = 0;
    for (size_t i = r.begin; i < at; ++i) {
      depth += m_t[i].is(u"(") ? 1 : m_t[i].is(u")") ? -1 : 0;
      if (depth == 0 && m_t[i].is(u"VALUES"))
        return false;
    }
  }
  for (size_t i = r.begin; i < r.end; ++i) {
    if (!m_t[i].isName() || (i > r.begin && m_t[i - 1].is(u".") && !(i > r.begin + 1 && m_t[i - 2].isName())))
      continue;
    const bool owned = i + 2 < r.end && m_t[i + 1].is(u".") && m_t[i + 2].isName();
    const QString owner = owned ? m_t[i].name() : m_c.user();
    const QString table = owned ? m_t[i + 2].name() : m_t[i].name();
    if (sqliteValue(m_c.db(),
                    QStringLiteral("SELECT 1 FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND "
                                   "column_name = ?3"),
                    {owner, table, name})
            .isValid())
      return true;
  }
  return false;
}

QVariantList PlsqlRunner::values(const std::vector<int>& slots) const {
  QVariantList list;
  list.reserve(qsizetype(slots.size()));
  for (int slot : slots)
    list << m_variables[size_t(slot)].value;
  return list;
}

void PlsqlRunner::assign(int slot, const QVariant& value, const Type* from) {
  Variable& v = m_variables[size_t(slot)];
  v.value = converted(value, v.type, from);
  if (v.notNull && v.value.isNull())
    throw OraError(6502, QStringLiteral("PL/SQL: numeric or value error"));
}

QVariant PlsqlRunner::converted(const QVariant& value, const Type& to, const Type* from) {
  if (!value.isValid() || value.isNull())
    return {};
  const bool isText = value.typeId() == QMetaType::QString;
  switch (to.kind) {
  case Type::Kind::Boolean: return value;
  case Type::Kind::Text: {
    QString s = text(value, from);
    if (to.length > 0 && s.size() > to.length)
      throw valueError(QStringLiteral("character string buffer too small"));
    if (to.fixed && s.size() < to.length)
      s = s.leftJustified(int(to.length));
    return s;
  }
  case Type::Kind::Date:
    if (isText && OracleDate::hasStoredShape(value.toString()))
      return value;
    if (!isText)
      throw OraError(6502, QStringLiteral("PL/SQL: numeric or value error"));
    return sqlValue(QStringLiteral("SELECT TO_DATE(:1) FROM DUAL"), value);
  case Type::Kind::Number:
  case Type::Kind::Integer: break;
  }
  QVariant number = value;
  if (isText) {
    try {
      number = sqlValue(QStringLiteral("SELECT TO_NUMBER(:1) FROM DUAL"), value);
    } catch (const OraError& e) {
      if (e.number() == 1722)
        throw valueError(QStringLiteral("character to number conversion error"));
      throw;
    }
  }
  if (to.kind == Type::Kind::Integer) {
    number = sqlValue(QStringLiteral("SELECT ROUND(:1) FROM DUAL"), number);
    if (std::abs(number.toDouble()) > 2147483647.0)
      throw OraError(1426, QStringLiteral("numeric overflow"));
    return number.toLongLong();
  }
  if (to.scale.isValid() && !to.scale.isNull())
    number = sqlValue(QStringLiteral("SELECT ROUND(:1, %1) FROM DUAL").arg(to.scale.toInt()), number);
  if (to.precision.isValid() && !to.precision.isNull() &&
      std::abs(number.toDouble()) >= std::pow(10.0, to.precision.toInt() - to.scale.toInt()))
    throw valueError(QStringLiteral("number precision too large"));
  return number;
}

// A statement of the engine's SQL with one value, prepared once for the block.
QVariant PlsqlRunner::sqlValue(const QString& oracleSql, const QVariant& argument) {
  auto& stmt = m_conversions[oracleSql];
  if (!stmt) {
    std::vector<SqlToken> tokens = tokenizeSql(oracleSql);
    stmt = std::make_shared<SqliteStmt>(m_c.db(), m_c.translator(true).translate(tokens));
  }
  stmt->reset();
  stmt->bind(1, argument);
  try {
    const QVariant v = stmt->step() ? stmt->column(0) : QVariant();
    stmt->reset();
    return v;
  } catch (const SqliteFailure& f) {
    stmt->reset();
    throw m_c.oracleError(f);
  }
}

// A value as text, as Oracle converts it: numbers in their shortest form, DATEs in the session's
// format.
QString PlsqlRunner::text(const QVariant& value, const Type* from) {
  if (!value.isValid() || value.isNull())
    return {};
  if (value.typeId() == QMetaType::QString) {
    const QString s = OracleTimestamp::shown(value.toString());
    if ((from && from->kind == Type::Kind::Text) || !OracleDate::hasStoredShape(s))
      return s;
    if (const auto date = OracleDateTime::parseStored(s))
      return m_c.settings().dateText(*date);
    return s;
  }
  if (from && from->kind == Type::Kind::Boolean)
    return value.toLongLong() ? QStringLiteral("TRUE") : QStringLiteral("FALSE");
  return sqlValue(QStringLiteral("SELECT TO_CHAR(:1) FROM DUAL"), value).toString();
}

// The type an expression is known to have without running it: that of a lone variable.
const Type* PlsqlRunner::typeOf(Range r) const {
  int slot = -1;
  if (r.end == r.begin + 1 && m_t[r.begin].isName())
    slot = lookup(m_t[r.begin].name());
  else if (r.end == r.begin + 3 && m_t[r.begin + 1].is(u".") && m_t[r.begin].isName() && m_t[r.begin + 2].isName())
    slot = lookup(m_t[r.begin].name() + u'.' + m_t[r.begin + 2].name());
  return slot >= 0 ? &m_variables[size_t(slot)].type : nullptr;
}

// The kind of value a column of a SQLite declared type holds.
Type PlsqlRunner::typeNamed(const QString& sqlType) {
  Type t;
  if (sqlType == u"DATE")
    t.kind = Type::Kind::Date;
  else if (sqlType.contains(u"CHAR") || sqlType == u"CLOB")
    t.kind = Type::Kind::Text;
  return t;
}

// What name%TYPE or table.column%TYPE stands for.
Type PlsqlRunner::anchoredType(Range r) const {
  if (const Type* variable = typeOf(r))
    return *variable;
  const QString name = m_t[r.begin].name() + (r.end == r.begin + 3 ? u'.' + m_t[r.begin + 2].name() : QString());
  if (r.end != r.begin + 3)
    compileError(r.begin, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(name));
  SqliteStmt s(m_c.db(), QStringLiteral("SELECT data_type, char_length, data_precision, data_scale FROM CAT.columns "
                                        "WHERE owner = ?1 AND table_name = ?2 AND column_name = ?3"));
  s.bindAll({m_c.user(), m_t[r.begin].name(), m_t[r.begin + 2].name()});
  if (!s.step())
    compileError(r.begin, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(name));
  Type t;
  const QString type = s.text(0);
  if (type == u"DATE") {
    t.kind = Type::Kind::Date;
  } else if (type.contains(u"CHAR") || type == u"CLOB") {
    t.kind = Type::Kind::Text;
    t.length = s.column(1).toLongLong();
    t.fixed = type == u"CHAR" || type == u"NCHAR";
  } else if (type == u"NUMBER" || type == u"FLOAT") {
    t.precision = s.column(2);
    t.scale = s.column(3);
  } else {
    throw OraError(3001, QStringLiteral("unimplemented feature"));
  }
  return t;
}

// Names ---------------------------------------------------------------------------------------

int PlsqlRunner::lookup(const QString& name) const {
  for (auto scope = m_scopes.rbegin(); scope != m_scopes.rend(); ++scope)
    if (const auto it = scope->variables.constFind(name); it != scope->variables.constEnd())
      return *it;
  return -1;
}

int PlsqlRunner::target(const QString& name, size_t at) const {
  const int slot = lookup(name);
  if (slot < 0)
    compileError(at, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(name));
  if (m_variables[size_t(slot)].constant)
    compileError(at, QStringLiteral("PLS-00363: expression '%1' cannot be used as an assignment target").arg(name));
  return slot;
}

void PlsqlRunner::compileError(size_t at, const QString& error) const {
  try {
    PlsqlParser::compileError(m_t, m_sql, at, error);
  } catch (const OraError& e) {
    throw CompileFailure{e};
  }
}
