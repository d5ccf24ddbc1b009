#include "db/local/plsql/PlsqlParser.h"

#include "db/OraError.h"
#include "db/local/TokenCursor.h"

using namespace Plsql;

void PlsqlParser::compileError(const std::vector<SqlToken>& tokens, const QString& sql, size_t at,
                               const QString& error) {
  const SqlToken& t = tokens[std::min(at, tokens.size() - 1)];
  const qsizetype lineStart = t.pos > 0 ? sql.lastIndexOf(u'\n', t.pos - 1) + 1 : 0;
  throw OraError(6550, QStringLiteral("line %1, column %2:\n%3").arg(t.line).arg(t.pos - lineStart + 1).arg(error));
}

std::unique_ptr<Block> PlsqlParser::parse() {
  auto b = block();
  if (peek().kind != SqlToken::Kind::End)
    unexpected();
  return b;
}

std::unique_ptr<Block> PlsqlParser::block() {
  auto b = std::make_unique<Block>();
  if (accept(u"DECLARE"))
    declarations(*b);
  expect(u"BEGIN");
  b->body = statements({u"EXCEPTION", u"END"});
  if (accept(u"EXCEPTION")) {
    do {
      Handler h;
      h.at = m_pos;
      expect(u"WHEN");
      do
        h.names << name();
      while (accept(u"OR"));
      expect(u"THEN");
      h.body = statements({u"WHEN", u"END"});
      b->handlers.push_back(std::move(h));
    } while (peek().is(u"WHEN"));
  }
  expect(u"END");
  if (peek().isName())
    ++m_pos; // the block's label
  expect(u";");
  return b;
}

void PlsqlParser::declarations(Block& b) {
  while (!peek().is(u"BEGIN")) {
    if (peek().isOneOf({u"TYPE", u"SUBTYPE", u"PROCEDURE", u"FUNCTION", u"PRAGMA"}))
      unsupported();
    Declaration d;
    d.at = m_pos;
    if (accept(u"CURSOR")) {
      d.kind = Declaration::Kind::Cursor;
      d.name = name();
      if (peek().is(u"("))
        unsupported(); // cursor parameters
      expect(u"IS");
      d.value = until({u";"});
    } else {
      d.name = name();
      if (accept(u"EXCEPTION")) {
        d.kind = Declaration::Kind::Exception;
      } else {
        d.constant = accept(u"CONSTANT");
        d.type = type(d);
        if (accept(u"NOT")) {
          expect(u"NULL");
          d.notNull = true;
        }
        if (accept(u":=") || accept(u"DEFAULT")) {
          d.value = until({u";"});
          if (d.value.empty())
            unexpected();
        } else if (d.constant || d.notNull) {
          compileError(m_t, m_sql, d.at,
                       d.constant ? QStringLiteral("PLS-00322: declaration of a constant '%1' must contain an "
                                                   "initialization assignment")
                                        .arg(d.name)
                                  : QStringLiteral("PLS-00218: a variable declared NOT NULL must have an "
                                                   "initialization assignment"));
        }
      }
    }
    expect(u";");
    b.declarations.push_back(std::move(d));
  }
}

Type PlsqlParser::type(Declaration& d) {
  Type t;
  const SqlToken& word = peek();
  if (!word.isName())
    unexpected();
  // name%TYPE or table.column%TYPE takes the type of what it names.
  const size_t anchorEnd = peek(1).is(u"%") ? 1 : peek(1).is(u".") && peek(3).is(u"%") ? 3 : 0;
  if (anchorEnd) {
    d.anchor = {m_pos, m_pos + anchorEnd};
    m_pos += anchorEnd + 1;
    d.rowType = accept(u"ROWTYPE");
    if (!d.rowType)
      expect(u"TYPE");
    return t;
  }
  if (word.is(u"BOOLEAN")) {
    ++m_pos;
    t.kind = Type::Kind::Boolean;
    return t;
  }
  if (word.isOneOf({u"PLS_INTEGER", u"BINARY_INTEGER", u"SIMPLE_INTEGER", u"NATURAL", u"POSITIVE"})) {
    ++m_pos;
    t.kind = Type::Kind::Integer;
    return t;
  }
  if (word.isOneOf({u"VARCHAR2", u"VARCHAR", u"CHAR", u"CHARACTER", u"NVARCHAR2", u"NCHAR", u"STRING"})) {
    ++m_pos;
    t.kind = Type::Kind::Text;
    t.fixed = word.is(u"CHAR") || word.is(u"CHARACTER") || word.is(u"NCHAR");
    t.length = 1;
    if (accept(u"(")) {
      if (peek().kind != SqlToken::Kind::Number)
        unexpected();
      t.length = m_t[m_pos++].text.toLongLong();
      if (!accept(u"CHAR"))
        accept(u"BYTE");
      expect(u")");
    } else if (!t.fixed) {
      compileError(m_t, m_sql, m_pos,
                   QStringLiteral("PLS-00215: String length constraints must be in range (1 .. 32767)"));
    }
    if (t.length < 1 || t.length > 32767)
      compileError(m_t, m_sql, m_pos - 1,
                   QStringLiteral("PLS-00215: String length constraints must be in range (1 .. 32767)"));
    return t;
  }
  if (word.is(u"CLOB")) {
    ++m_pos;
    t.kind = Type::Kind::Text;
    return t;
  }
  const size_t at = m_pos;
  TokenCursor c(m_t, m_pos);
  OracleType parsed;
  try {
    parsed = OracleType::parse(c);
  } catch (const OraError&) {
    compileError(m_t, m_sql, at, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(word.name()));
  }
  m_pos = c.pos();
  if (parsed.dataType == u"NUMBER" || parsed.dataType == u"FLOAT" || parsed.dataType.startsWith(u"BINARY_")) {
    t.precision = parsed.precision;
    t.scale = parsed.scale;
  } else if (parsed.dataType == u"DATE") {
    t.kind = Type::Kind::Date;
  } else {
    m_pos = at;
    unsupported();
  }
  return t;
}

Statements PlsqlParser::statements(std::initializer_list<QStringView> stops) {
  Statements list;
  while (!peek().isOneOf(stops)) {
    if (peek().kind == SqlToken::Kind::End)
      unexpected();
    list.push_back(statement());
  }
  if (list.empty())
    unexpected(); // PL/SQL wants at least NULL;
  return list;
}

std::unique_ptr<Statement> PlsqlParser::statement() {
  auto s = std::make_unique<Statement>();
  s->at = m_pos;
  const SqlToken& word = peek();
  if (word.is(u"<<") || word.is(u"<") || word.isOneOf({u"CASE", u"FORALL", u"GOTO", u"PIPE"}))
    unsupported();
  if (accept(u"NULL")) {
    s->kind = Statement::Kind::Null;
  } else if (word.is(u"IF")) {
    ifStatement(*s);
    return s;
  } else if (word.is(u"FOR")) {
    forStatement(*s);
    return s;
  } else if (accept(u"WHILE")) {
    s->kind = Statement::Kind::While;
    s->a = until({u"LOOP"});
    loopBody(*s);
    return s;
  } else if (word.is(u"LOOP")) {
    s->kind = Statement::Kind::Loop;
    loopBody(*s);
    return s;
  } else if (word.isOneOf({u"OPEN", u"FETCH", u"CLOSE"}) && peek(1).isName()) {
    s->kind = word.is(u"OPEN")    ? Statement::Kind::Open
              : word.is(u"FETCH") ? Statement::Kind::Fetch
                                  : Statement::Kind::Close;
    ++m_pos;
    s->name = name();
    if (s->kind == Statement::Kind::Open && peek().is(u"("))
      unsupported(); // cursor parameters
    if (s->kind == Statement::Kind::Fetch) {
      if (peek().is(u"BULK"))
        unsupported();
      expect(u"INTO");
      s->into = names();
    }
  } else if (word.is(u"EXIT") || word.is(u"CONTINUE")) {
    s->kind = word.is(u"EXIT") ? Statement::Kind::Exit : Statement::Kind::Continue;
    if (m_loops == 0)
      compileError(m_t, m_sql, m_pos,
                   QStringLiteral("PLS-00376: illegal EXIT/CONTINUE statement; it must appear inside a loop"));
    ++m_pos;
    if (peek().isName() && !peek().is(u"WHEN"))
      unsupported(); // a label
    if (accept(u"WHEN"))
      s->a = until({u";"});
  } else if (word.is(u"BEGIN") || word.is(u"DECLARE")) {
    s->kind = Statement::Kind::Nested;
    s->block = block();
    return s;
  } else if (word.isOneOf({u"SELECT", u"WITH", u"INSERT", u"UPDATE", u"DELETE", u"MERGE", u"COMMIT", u"ROLLBACK",
                            u"SAVEPOINT", u"LOCK", u"SET"})) {
    sqlStatement(*s);
  } else if (word.is(u"EXECUTE") && peek(1).is(u"IMMEDIATE")) {
    executeImmediate(*s);
  } else if (accept(u"RAISE")) {
    s->kind = Statement::Kind::Raise;
    if (peek().isName())
      s->name = name();
  } else if (accept(u"RETURN")) {
    s->kind = Statement::Kind::Return;
  } else if (word.isName() && !word.isOneOf({u"CREATE", u"ALTER", u"DROP", u"TRUNCATE", u"GRANT", u"REVOKE",
                                              u"COMMENT", u"RENAME", u"END", u"ELSE", u"ELSIF", u"WHEN", u"THEN"})) {
    if (peek(1).is(u":=") || (peek(1).is(u".") && peek(3).is(u":="))) {
      s->kind = Statement::Kind::Assign;
      s->name = name();
      if (accept(u"."))
        s->name += u'.' + name(); // a record's field
      ++m_pos;
      s->a = until({u";"});
      if (s->a.empty())
        unexpected();
    } else {
      call(*s);
    }
  } else {
    unexpected();
  }
  expect(u";");
  return s;
}

void PlsqlParser::ifStatement(Statement& s) {
  s.kind = Statement::Kind::If;
  expect(u"IF");
  do {
    Branch b;
    b.condition = until({u"THEN"});
    if (b.condition.empty())
      unexpected();
    expect(u"THEN");
    b.body = statements({u"ELSIF", u"ELSE", u"END"});
    s.branches.push_back(std::move(b));
  } while (accept(u"ELSIF"));
  if (accept(u"ELSE"))
    s.body = statements({u"END"});
  expect(u"END");
  expect(u"IF");
  expect(u";");
}

void PlsqlParser::forStatement(Statement& s) {
  expect(u"FOR");
  s.name = name();
  expect(u"IN");
  if (peek().is(u"(") && (peek(1).is(u"SELECT") || peek(1).is(u"WITH"))) {
    s.kind = Statement::Kind::ForQuery;
    ++m_pos;
    s.a = until({u")"});
    expect(u")");
  } else if (peek().isName() && peek(1).is(u"LOOP") && !peek().is(u"REVERSE")) {
    s.kind = Statement::Kind::ForQuery;
    s.into << name(); // the cursor
  } else {
    s.kind = Statement::Kind::ForRange;
    s.reverse = accept(u"REVERSE");
    s.a = until({u".."});
    expect(u"..");
    s.b = until({u"LOOP"});
    if (s.a.empty() || s.b.empty())
      unexpected();
  }
  loopBody(s);
}

void PlsqlParser::loopBody(Statement& s) {
  expect(u"LOOP");
  ++m_loops;
  s.body = statements({u"END"});
  --m_loops;
  expect(u"END");
  expect(u"LOOP");
  if (peek().isName())
    ++m_pos; // the loop's label
  expect(u";");
}

void PlsqlParser::sqlStatement(Statement& s) {
  s.kind = Statement::Kind::Sql;
  s.a = until({u";"});
  const bool query = m_t[s.a.begin].is(u"SELECT") || m_t[s.a.begin].is(u"WITH");
  int depth = 0;
  for (size_t i = s.a.begin; i < s.a.end; ++i) {
    depth += m_t[i].is(u"(") ? 1 : m_t[i].is(u")") ? -1 : 0;
    if (depth == 0 && (m_t[i].is(u"RETURNING") || m_t[i].is(u"BULK")))
      unsupported();
    if (query && depth == 0 && m_t[i].is(u"INTO") && s.kind == Statement::Kind::Sql) {
      s.kind = Statement::Kind::SelectInto;
      m_pos = i + 1;
      s.into = names();
      s.b = {i, m_pos};
      if (!peek().is(u"FROM"))
        unexpected();
      i = m_pos - 1;
    }
  }
  m_pos = s.a.end;
  if (query && s.kind != Statement::Kind::SelectInto)
    compileError(m_t, m_sql, s.a.begin,
                 QStringLiteral("PLS-00428: an INTO clause is expected in this SELECT statement"));
}

void PlsqlParser::executeImmediate(Statement& s) {
  s.kind = Statement::Kind::Execute;
  m_pos += 2;
  s.a = until({u"INTO", u"USING", u";"});
  if (s.a.empty())
    unexpected();
  if (accept(u"INTO"))
    s.into = names();
  if (accept(u"USING")) {
    do {
      accept(u"IN");
      const Range r = until({u",", u";"});
      if (r.empty())
        unexpected();
      s.arguments.push_back(r);
    } while (accept(u","));
  }
}

void PlsqlParser::call(Statement& s) {
  s.kind = Statement::Kind::Call;
  const size_t at = m_pos;
  s.name = name();
  while (accept(u"."))
    s.name += u'.' + name();
  if (accept(u"(")) {
    if (!peek().is(u")")) {
      do
        s.arguments.push_back(until({u",", u")"}));
      while (accept(u","));
    }
    expect(u")");
  }
  static const QStringList known{QStringLiteral("DBMS_OUTPUT.PUT_LINE"), QStringLiteral("DBMS_OUTPUT.PUT"),
                                 QStringLiteral("DBMS_OUTPUT.NEW_LINE"), QStringLiteral("DBMS_OUTPUT.ENABLE"),
                                 QStringLiteral("DBMS_OUTPUT.DISABLE"),  QStringLiteral("RAISE_APPLICATION_ERROR")};
  if (known.contains(s.name))
    return;
  if (s.name.startsWith(u"DBMS_") || s.name.startsWith(u"UTL_")) {
    m_pos = at;
    unsupported(); // Oracle's supplied packages other than DBMS_OUTPUT
  }
  compileError(m_t, m_sql, at, QStringLiteral("PLS-00201: identifier '%1' must be declared").arg(s.name));
}

QStringList PlsqlParser::names() {
  QStringList list;
  do {
    QString n = name();
    if (accept(u"."))
      n += u'.' + name();
    list << n;
  } while (accept(u","));
  return list;
}

Range PlsqlParser::until(std::initializer_list<QStringView> stops) {
  const size_t begin = m_pos;
  int depth = 0, cases = 0;
  for (;; ++m_pos) {
    const SqlToken& t = peek();
    if (t.kind == SqlToken::Kind::End || (depth == 0 && t.is(u";") && !t.isOneOf(stops)))
      unexpected();
    if (depth == 0 && cases == 0 && t.isOneOf(stops))
      return {begin, m_pos};
    if (t.is(u"("))
      ++depth;
    else if (t.is(u")") && --depth < 0)
      unexpected();
    else if (t.is(u"CASE"))
      ++cases;
    else if (t.is(u"END") && cases > 0)
      --cases;
  }
}

const SqlToken& PlsqlParser::peek(size_t ahead) const {
  return m_pos + ahead < m_t.size() ? m_t[m_pos + ahead] : m_t.back();
}

bool PlsqlParser::accept(QStringView word) {
  if (!peek().is(word))
    return false;
  ++m_pos;
  return true;
}

void PlsqlParser::expect(QStringView word) {
  if (!accept(word))
    unexpected();
}

QString PlsqlParser::name() {
  if (!peek().isName())
    unexpected();
  return m_t[m_pos++].name();
}

void PlsqlParser::unexpected() const {
  const SqlToken& t = peek();
  const QString symbol = t.kind == SqlToken::Kind::End    ? QStringLiteral("end-of-file")
                         : t.kind == SqlToken::Kind::Word ? t.upper()
                                                          : t.text;
  compileError(m_t, m_sql, m_pos, QStringLiteral("PLS-00103: Encountered the symbol \"%1\"").arg(symbol));
}

void PlsqlParser::unsupported() const { throw OraError(3001, QStringLiteral("unimplemented feature")); }
