// The DDL of indexes, views, sequences, comments, drops, users and sessions.
#include "db/local/Catalogue.h"
#include "db/local/DdlRunner.h"
#include "db/local/IndexExpressions.h"
#include "db/local/LocalConnection.h"
#include "db/local/OracleDate.h"
#include "db/local/SessionWatch.h"

#include <QDateTime>
#include <QFile>

#include <cstring>

namespace {

QString q(const QString& name) { return SqlTranslator::quoteName(name); }

qint64 signedNumber(TokenCursor& t) {
  const bool negative = t.accept(u"-");
  if (!negative)
    t.accept(u"+");
  if (t.peek().kind != SqlToken::Kind::Number)
    TokenCursor::fail(4001);
  const qint64 n = t.next().text.toLongLong();
  return negative ? -n : n;
}

} // namespace

// An index item is a column, or an expression (a descending column is one too): an expression
// is indexed under a hidden column's name, as Oracle does.
void DdlRunner::createIndex(bool unique) {
  auto [ownerText, index] = m_t.qualifiedName(953);
  const QString indexOwner = ownerOr(ownerText);
  m_t.expect(u"ON", 969);
  auto [tableOwnerText, table] = m_t.qualifiedName();
  const QString owner = ownerOr(tableOwnerText.isEmpty() ? ownerText : tableOwnerText);
  requireAccess(owner);
  requireAccess(indexOwner);
  const QString schema = schemaFor(owner, 942);
  struct Item {
    QString key; // the column's name, or the expression's text
    bool expression;
    QString descend;
  };
  std::vector<Item> items;
  const auto& tokens = m_t.tokens();
  m_t.expect(u"(", 906);
  do {
    const size_t begin = m_t.pos();
    for (int depth = 0; !m_t.atEnd();) {
      const SqlToken& p = m_t.peek();
      if (depth == 0 && (p.is(u",") || p.is(u")") || p.is(u"ASC") || p.is(u"DESC")))
        break;
      depth += p.is(u"(") ? 1 : p.is(u")") ? -1 : 0;
      m_t.next();
    }
    const size_t end = m_t.pos();
    if (end == begin)
      TokenCursor::fail(936);
    const bool descending = m_t.accept(u"DESC") || (m_t.accept(u"ASC"), false);
    const bool column = end == begin + 1 && tokens[begin].isName();
    items.push_back({column && !descending ? tokens[begin].name() : IndexExpressions::text(tokens, begin, end),
                     !column || descending, descending ? QStringLiteral("DESC") : QStringLiteral("ASC")});
  } while (m_t.accept(u","));
  m_t.expect(u")", 907);
  skipClauses();
  QStringList keys;
  for (const Item& item : items)
    keys << item.key;
  sqlite3* db = m_c.db();
  inTransaction([&] {
    requireTable(owner, table);
    if (sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.indexes WHERE owner = ?1 AND index_name = ?2"),
                    {indexOwner, index})
            .isValid())
      throw OraError(955, QStringLiteral("name is already used by an existing object"));
    SqliteStmt same(
        db, QStringLiteral(
                "SELECT i.owner, i.index_name FROM CAT.indexes i WHERE i.table_owner = ?1 AND i.table_name = ?2 "
                "AND ?3 = (SELECT group_concat(item, ',') FROM (SELECT coalesce(e.column_expression, k.column_name) "
                "AS item FROM CAT.ind_columns k LEFT JOIN CAT.ind_expressions e ON e.index_owner = k.index_owner "
                "AND e.index_name = k.index_name AND e.column_position = k.column_position WHERE k.index_owner = "
                "i.owner AND k.index_name = i.index_name ORDER BY k.column_position))"));
    same.bindAll({owner, table, keys.join(u',')});
    if (same.step())
      throw OraError(1408, QStringLiteral("such column list already indexed"));
    sqliteExec(db,
               QStringLiteral("INSERT INTO CAT.indexes(owner, index_name, table_owner, table_name, uniqueness) VALUES "
                              "(?1, ?2, ?3, ?4, ?5)"),
               {indexOwner, index, owner, table, unique ? QStringLiteral("UNIQUE") : QStringLiteral("NONUNIQUE")});
    QStringList terms;
    for (int i = 0; i < int(items.size()); ++i) {
      const Item& item = items[size_t(i)];
      // An expression's length is that of the first column it is computed from, which its text
      // names in quotes.
      const QVariant length = sqliteValue(
          db,
          item.expression ? QStringLiteral("SELECT data_length FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 "
                                           "AND instr(?3, '\"' || column_name || '\"') > 0 ORDER BY "
                                           "instr(?3, '\"' || column_name || '\"') LIMIT 1")
                          : QStringLiteral("SELECT data_length FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 "
                                           "AND column_name = ?3"),
          {owner, table, item.key});
      if (!item.expression && !length.isValid())
        throw OraError(904, QStringLiteral("%1: invalid identifier").arg(q(item.key)));
      const QString column = item.expression ? IndexExpressions::hiddenColumn(db, owner, table) : item.key;
      sqliteExec(
          db,
          QStringLiteral("INSERT INTO CAT.ind_columns(index_owner, index_name, table_owner, table_name, column_name, "
                         "column_position, column_length, descend) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8)"),
          {indexOwner, index, owner, table, column, i + 1, length, item.descend});
      if (item.expression)
        sqliteExec(db,
                   QStringLiteral("INSERT INTO CAT.ind_expressions(index_owner, index_name, table_owner, table_name, "
                                  "column_expression, column_position) VALUES (?1, ?2, ?3, ?4, ?5, ?6)"),
                   {indexOwner, index, owner, table, item.key, i + 1});
      terms << (item.expression ? translateCondition(item.key) : q(item.key)) + u' ' + item.descend;
    }
    try {
      sqliteExec(db, QStringLiteral("CREATE %1INDEX %2.%3 ON %4 (%5)")
                         .arg(unique ? QStringLiteral("UNIQUE ") : QString(), q(schema),
                              q(QStringLiteral("IX$") + index), q(table), terms.join(QStringLiteral(", "))));
    } catch (const SqliteFailure& f) {
      if (f.code == SQLITE_CONSTRAINT_UNIQUE)
        throw OraError(1452, QStringLiteral("cannot CREATE UNIQUE INDEX; duplicate keys found"));
      throw;
    }
  });
}

void DdlRunner::createView(bool replace) {
  auto [ownerText, view] = m_t.qualifiedName();
  const QString owner = ownerOr(ownerText);
  requireCreate(owner, QStringLiteral("VIEW"));
  const QString schema = schemaFor(owner);
  QStringList names;
  if (m_t.peek().is(u"("))
    names = parseColumnList();
  m_t.expect(u"AS", 905);
  const size_t from = m_t.pos();
  size_t to = m_t.tokens().size() - 1;
  int depth = 0;
  for (size_t i = from; i < to; ++i) {
    const SqlToken& t = m_t.tokens()[i];
    depth += t.is(u"(") ? 1 : t.is(u")") ? -1 : 0;
    if (depth == 0 && t.is(u"WITH") && (m_t.tokens()[i + 1].is(u"READ") || m_t.tokens()[i + 1].is(u"CHECK"))) {
      to = i;
      break;
    }
  }
  // WITH READ ONLY and WITH CHECK OPTION are constraints of the view, O and V, as in Oracle.
  Constraint restriction;
  if (to + 1 < m_t.tokens().size() - 1) {
    m_t.seek(to + 1);
    restriction.type = m_t.accept(u"READ") ? (m_t.expect(u"ONLY", 933), u'O') : (m_t.expect(u"CHECK", 933), u'V');
    if (restriction.type == u'V')
      m_t.expect(u"OPTION", 933);
    if (m_t.accept(u"CONSTRAINT"))
      restriction.name = m_t.name(904);
    if (!m_t.atEnd())
      TokenCursor::fail(933);
  }
  const QString select = m_c.translator().translate(m_t.tokens(), from, to);
  const QString text = m_t.source(m_sql, from, to);
  QStringList quoted;
  for (const QString& n : names)
    quoted << q(n);
  sqlite3* db = m_c.db();
  inTransaction([&] {
    const auto existing = objectType(owner, view);
    if (existing && (!replace || *existing != u"VIEW"))
      throw OraError(955, QStringLiteral("name is already used by an existing object"));
    if (existing) {
      sqliteExec(db, QStringLiteral("DROP VIEW %1.%2").arg(q(schema), q(view)));
      for (const char* table : {"objects", "views", "columns", "constraints"})
        sqliteExec(db,
                   QStringLiteral("DELETE FROM CAT.%1 WHERE owner = ?1 AND %2 = ?2")
                       .arg(QLatin1String(table), QLatin1String(strcmp(table, "objects") == 0 ? "name"
                                                                : strcmp(table, "views") == 0 ? "view_name"
                                                                                              : "table_name")),
                   {owner, view});
    }
    sqliteExec(db,
               QStringLiteral("CREATE VIEW %1.%2%3 AS %4")
                   .arg(q(schema), q(view),
                        quoted.isEmpty() ? QString() : QStringLiteral(" (%1)").arg(quoted.join(QStringLiteral(", "))),
                        select));
    SqliteStmt probe(db, QStringLiteral("SELECT * FROM %1.%2").arg(q(schema), q(view)));
    sqliteExec(db, QStringLiteral("INSERT INTO CAT.objects(owner, name, type, created) VALUES (?1, ?2, 'VIEW', ?3)"),
               {owner, view, OracleDate::now()});
    sqliteExec(db, QStringLiteral("INSERT INTO CAT.views(owner, view_name, text) VALUES (?1, ?2, ?3)"),
               {owner, view, text});
    if (!restriction.type.isNull()) {
      if (restriction.name.isEmpty())
        restriction.name = newConstraintName(), restriction.generatedName = true;
      addConstraint(owner, view, restriction);
    }
    for (int i = 0; i < probe.columnCount(); ++i) {
      // A column taken straight from a table keeps that column's type; an expression is
      // reported as text.
      OracleType type;
      const QString decl = probe.declaredType(i);
      try {
        const auto tokens = tokenizeSql(decl.isEmpty() ? QStringLiteral("VARCHAR2(4000)") : decl);
        TokenCursor c(tokens);
        type = OracleType::parse(c);
      } catch (const OraError&) {
        const auto tokens = tokenizeSql(QStringLiteral("VARCHAR2(4000)"));
        TokenCursor c(tokens);
        type = OracleType::parse(c);
      }
      addColumn(owner, view, Column{probe.columnName(i), type, QString(), std::nullopt}, i + 1);
    }
  });
}

void DdlRunner::createSequence() {
  auto [ownerText, name] = m_t.qualifiedName();
  const QString owner = ownerOr(ownerText);
  requireCreate(owner, QStringLiteral("SEQUENCE"));
  schemaFor(owner);
  qint64 increment = 1;
  std::optional<qint64> start, low, high;
  bool cycle = false;
  bool ordered = false;
  qint64 cache = 20;
  while (!m_t.atEnd()) {
    if (m_t.accept(u"START")) {
      m_t.expect(u"WITH", 905);
      start = signedNumber(m_t);
    } else if (m_t.accept(u"INCREMENT")) {
      m_t.expect(u"BY", 905);
      increment = signedNumber(m_t);
      if (increment == 0)
        throw OraError(4002, QStringLiteral("INCREMENT must be a nonzero integer"));
    } else if (m_t.accept(u"MAXVALUE")) {
      high = signedNumber(m_t);
    } else if (m_t.accept(u"MINVALUE")) {
      low = signedNumber(m_t);
    } else if (m_t.accept(u"CYCLE")) {
      cycle = true;
    } else if (m_t.accept(u"CACHE")) {
      cache = signedNumber(m_t);
      if (cache < 2)
        throw OraError(4010, QStringLiteral("the number of values to CACHE must be greater than 1"));
    } else if (m_t.accept(u"NOCACHE")) {
      cache = 0;
    } else if (m_t.accept(u"ORDER")) {
      ordered = true;
    } else if (m_t.accept(u"NOMAXVALUE") || m_t.accept(u"NOMINVALUE") || m_t.accept(u"NOCYCLE") ||
               m_t.accept(u"NOORDER")) {
    } else {
      TokenCursor::fail(933);
    }
  }
  const qint64 lowValue = low.value_or(increment > 0 ? 1 : -999999999999999999LL);
  const qint64 highValue = high.value_or(increment > 0 ? 999999999999999999LL : -1);
  const qint64 first = start.value_or(increment > 0 ? lowValue : highValue);
  if (lowValue >= highValue)
    throw OraError(4005, QStringLiteral("INCREMENT must be less than MAXVALUE minus MINVALUE"));
  if (first < lowValue || first > highValue)
    throw OraError(first < lowValue ? 4006 : 4008, first < lowValue
                                                       ? QStringLiteral("START WITH cannot be less than MINVALUE")
                                                       : QStringLiteral("START WITH cannot be more than MAXVALUE"));
  inTransaction([&] {
    if (objectType(owner, name))
      throw OraError(955, QStringLiteral("name is already used by an existing object"));
    sqliteExec(m_c.db(),
               QStringLiteral("INSERT INTO CAT.objects(owner, name, type, created) VALUES (?1, ?2, 'SEQUENCE', ?3)"),
               {owner, name, OracleDate::now()});
    sqliteExec(m_c.db(),
               QStringLiteral(
                   "INSERT INTO CAT.sequences(owner, sequence_name, min_value, max_value, increment_by, cycle_flag, "
                   "last_number, start_with, cache_size, order_flag) VALUES (?1, ?2, ?3, ?4, ?5, ?6, ?7, ?7, ?8, ?9)"),
               {owner, name, lowValue, highValue, increment, cycle ? QStringLiteral("Y") : QStringLiteral("N"), first,
                cache, ordered ? QStringLiteral("Y") : QStringLiteral("N")});
  });
}

void DdlRunner::comment() {
  m_t.expect(u"ON", 905);
  const bool onTable = m_t.accept(u"TABLE");
  if (!onTable)
    m_t.expect(u"COLUMN", 905);
  QStringList parts{m_t.name()};
  while (m_t.accept(u"."))
    parts << m_t.name(904);
  m_t.expect(u"IS", 905);
  if (m_t.peek().kind != SqlToken::Kind::String)
    TokenCursor::fail(933);
  const QString text = m_t.next().text;
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  const qsizetype objectParts = onTable ? 1 : 2;
  if (parts.size() < objectParts || parts.size() > objectParts + 1)
    TokenCursor::fail(onTable ? 903 : 904);
  const QString owner = ownerOr(parts.size() > objectParts ? parts[0] : QString());
  const QString table = parts[parts.size() - objectParts];
  const QString column = onTable ? QString() : parts.last();
  requireAccess(owner);
  sqlite3* db = m_c.db();
  inTransaction([&] {
    const auto type = objectType(owner, table);
    if (!type || (*type != u"TABLE" && *type != u"VIEW"))
      throw OraError(942, QStringLiteral("table or view does not exist"));
    if (!onTable &&
        !sqliteValue(
             db, QStringLiteral("SELECT 1 FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND column_name = ?3"),
             {owner, table, column})
             .isValid())
      throw OraError(904, QStringLiteral("%1: invalid identifier").arg(q(column)));
    // An empty comment is Null: Oracle stores '' as Null.
    if (text.isEmpty())
      sqliteExec(db,
                 QStringLiteral("DELETE FROM CAT.comments WHERE owner = ?1 AND table_name = ?2 AND column_name = ?3"),
                 {owner, table, column});
    else
      sqliteExec(
          db,
          QStringLiteral(
              "INSERT OR REPLACE INTO CAT.comments(owner, table_name, column_name, comments) VALUES (?1, ?2, ?3, ?4)"),
          {owner, table, column, text});
  });
}

void DdlRunner::drop() {
  if (m_t.accept(u"USER"))
    return dropUser();
  const bool isPublic = m_t.accept(u"PUBLIC");
  if (isPublic)
    m_t.expect(u"SYNONYM", 950);
  if (isPublic || m_t.accept(u"SYNONYM"))
    return dropSynonym(isPublic);
  const QString kind =
      m_t.peek().is(u"TABLE") || m_t.peek().is(u"VIEW") || m_t.peek().is(u"INDEX") || m_t.peek().is(u"SEQUENCE")
          ? m_t.next().upper()
          : (TokenCursor::fail(950), QString());
  auto [ownerText, name] = m_t.qualifiedName(kind == u"INDEX" ? 953 : 903);
  const QString owner = ownerOr(ownerText);
  requireAccess(owner);
  const QString schema = schemaFor(owner, 942);
  sqlite3* db = m_c.db();
  if (kind == u"TABLE") {
    bool cascade = false;
    while (!m_t.atEnd()) {
      if (m_t.accept(u"CASCADE"))
        m_t.expect(u"CONSTRAINTS", 905), cascade = true;
      else if (!m_t.accept(u"PURGE"))
        TokenCursor::fail(933);
    }
    inTransaction([&] {
      requireTable(owner, name);
      SqliteStmt children(
          db, QStringLiteral(
                  "SELECT c.owner, c.constraint_name, c.table_name FROM CAT.constraints c JOIN CAT.constraints p "
                  "ON p.owner = c.r_owner AND p.constraint_name = c.r_constraint_name "
                  "WHERE p.owner = ?1 AND p.table_name = ?2 AND NOT (c.owner = ?1 AND c.table_name = ?2)"));
      children.bindAll({owner, name});
      QList<QStringList> dependants;
      while (children.step())
        dependants << QStringList{children.text(0), children.text(1), children.text(2)};
      if (!dependants.isEmpty() && !cascade)
        throw OraError(2449, QStringLiteral("unique/primary keys in table referenced by foreign keys"));
      for (const QStringList& d : dependants) {
        removeConstraint(d[0], d[1]);
        if (d[0] == owner)
          rebuild(owner, d[2], schema, nullptr);
      }
      dropTable(owner, name);
      sqliteExec(db, QStringLiteral("DROP TABLE %1.%2").arg(q(schema), q(name)));
    });
  } else if (kind == u"VIEW") {
    if (!m_t.atEnd())
      TokenCursor::fail(933);
    inTransaction([&] {
      if (objectType(owner, name) != QStringLiteral("VIEW"))
        throw OraError(942, QStringLiteral("table or view does not exist"));
      dropTable(owner, name);
      sqliteExec(db, QStringLiteral("DELETE FROM CAT.views WHERE owner = ?1 AND view_name = ?2"), {owner, name});
      sqliteExec(db, QStringLiteral("DROP VIEW %1.%2").arg(q(schema), q(name)));
    });
  } else if (kind == u"INDEX") {
    inTransaction([&] {
      SqliteStmt s(db, QStringLiteral("SELECT sqlite FROM CAT.indexes WHERE owner = ?1 AND index_name = ?2"));
      s.bindAll({owner, name});
      if (!s.step())
        throw OraError(1418, QStringLiteral("specified index does not exist"));
      if (sqliteValue(db,
                      QStringLiteral(
                          "SELECT 1 FROM CAT.constraints WHERE owner = ?1 AND index_name = ?2 AND status = 'ENABLED'"),
                      {owner, name})
              .isValid())
        throw OraError(2429, QStringLiteral("cannot drop index used for enforcement of unique/primary key"));
      const bool inSqlite = s.column(0).toInt() == 1;
      // A statement still reading would make SQLite refuse to drop the index as locked.
      s.reset();
      for (const char* dictionary : {"ind_columns", "ind_expressions"})
        sqliteExec(db,
                   QStringLiteral("DELETE FROM CAT.%1 WHERE index_owner = ?1 AND index_name = ?2")
                       .arg(QLatin1String(dictionary)),
                   {owner, name});
      sqliteExec(db, QStringLiteral("DELETE FROM CAT.indexes WHERE owner = ?1 AND index_name = ?2"), {owner, name});
      if (inSqlite)
        sqliteExec(db, QStringLiteral("DROP INDEX %1.%2").arg(q(schema), q(QStringLiteral("IX$") + name)));
    });
  } else {
    inTransaction([&] {
      if (objectType(owner, name) != QStringLiteral("SEQUENCE"))
        throw OraError(2289, QStringLiteral("sequence does not exist"));
      sqliteExec(db, QStringLiteral("DELETE FROM CAT.sequences WHERE owner = ?1 AND sequence_name = ?2"),
                 {owner, name});
      sqliteExec(db, QStringLiteral("DELETE FROM CAT.objects WHERE owner = ?1 AND name = ?2"), {owner, name});
    });
  }
}

// Removes a table's or view's dictionary rows.
void DdlRunner::dropTable(const QString& owner, const QString& name) {
  sqlite3* db = m_c.db();
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.cons_columns WHERE owner = ?1 AND table_name = ?2"), {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.constraints WHERE owner = ?1 AND table_name = ?2"), {owner, name});
  for (const char* dictionary : {"ind_columns", "ind_expressions"})
    sqliteExec(
        db,
        QStringLiteral("DELETE FROM CAT.%1 WHERE table_owner = ?1 AND table_name = ?2").arg(QLatin1String(dictionary)),
        {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.indexes WHERE table_owner = ?1 AND table_name = ?2"), {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.comments WHERE owner = ?1 AND table_name = ?2"), {owner, name});
  // The sequences of its identity columns go with it.
  for (const char* dictionary : {"sequences", "objects"})
    sqliteExec(db,
               QStringLiteral("DELETE FROM CAT.%1 WHERE owner = ?1 AND %2 IN (SELECT substr(data_default, "
                              "length(owner) + 5, instr(data_default, '.nextval') - length(owner) - 6) FROM "
                              "CAT.columns WHERE owner = ?1 AND table_name = ?2 AND identity IS NOT NULL)")
                   .arg(QLatin1String(dictionary),
                        QLatin1String(strcmp(dictionary, "objects") == 0 ? "name" : "sequence_name")),
               {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.columns WHERE owner = ?1 AND table_name = ?2"), {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.tables WHERE owner = ?1 AND table_name = ?2"), {owner, name});
  sqliteExec(db, QStringLiteral("DELETE FROM CAT.objects WHERE owner = ?1 AND name = ?2"), {owner, name});
}

void DdlRunner::truncate() {
  m_t.expect(u"TABLE", 905);
  auto [ownerText, table] = m_t.qualifiedName();
  const QString owner = ownerOr(ownerText);
  requireAccess(owner);
  const QString schema = schemaFor(owner, 942);
  while (!m_t.atEnd())
    if (!(m_t.accept(u"DROP") || m_t.accept(u"REUSE") || m_t.accept(u"STORAGE")))
      TokenCursor::fail(933);
  inTransaction([&] {
    requireTable(owner, table);
    if (sqliteValue(
            m_c.db(),
            QStringLiteral("SELECT 1 FROM CAT.constraints c JOIN CAT.constraints p ON p.owner = c.r_owner AND "
                           "p.constraint_name = c.r_constraint_name WHERE p.owner = ?1 AND p.table_name = ?2 AND "
                           "c.status = 'ENABLED' AND NOT (c.owner = ?1 AND c.table_name = ?2)"),
            {owner, table})
            .isValid())
      throw OraError(2266, QStringLiteral("unique/primary keys in table referenced by enabled foreign keys"));
    sqliteExec(m_c.db(), QStringLiteral("DELETE FROM %1.%2").arg(q(schema), q(table)));
  });
}

void DdlRunner::createUser() {
  requireDba();
  const QString user = m_t.name(1935);
  m_t.expect(u"IDENTIFIED", 905);
  m_t.expect(u"BY", 905);
  if (!m_t.peek().isName() && m_t.peek().kind != SqlToken::Kind::String)
    TokenCursor::fail(988);
  const QString password = m_t.next().text;
  skipClauses();
  inTransaction([&] {
    if (sqliteValue(m_c.db(), QStringLiteral("SELECT 1 FROM CAT.users WHERE username = ?1"), {user}).isValid())
      throw OraError(1920, QStringLiteral("user name '%1' conflicts with another user or role name").arg(user));
    sqliteExec(m_c.db(),
               QStringLiteral("INSERT INTO CAT.users(username, password, is_dba, user_id, created) "
                              "SELECT ?1, ?2, 0, coalesce(max(user_id), 100) + 1, ?3 FROM CAT.users"),
               {user, Catalogue::hashPassword(password), OracleDate::now()});
    sqlite3* file = nullptr;
    if (sqlite3_open_v2(Catalogue::schemaFile(m_c.folder(), user).toUtf8().constData(), &file,
                        SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr) != SQLITE_OK) {
      sqlite3_close(file);
      throw OraError(
          1119, QStringLiteral("error in creating database file '%1'").arg(Catalogue::schemaFile(m_c.folder(), user)));
    }
    sqlite3_exec(file, m_c.flushing() ? "PRAGMA journal_mode=WAL" : "PRAGMA synchronous=OFF; PRAGMA journal_mode=WAL",
                 nullptr, nullptr, nullptr);
    sqlite3_close(file);
  });
}

void DdlRunner::alterUser() {
  const QString user = m_t.name(1935);
  if (user != m_c.user())
    requireDba();
  m_t.expect(u"IDENTIFIED", 905);
  m_t.expect(u"BY", 905);
  const QString password = m_t.next().text;
  skipClauses();
  inTransaction([&] {
    sqliteExec(m_c.db(), QStringLiteral("UPDATE CAT.users SET password = ?2 WHERE username = ?1"),
               {user, Catalogue::hashPassword(password)});
    if (sqlite3_changes(m_c.db()) == 0)
      throw OraError(1918, QStringLiteral("user '%1' does not exist").arg(user));
  });
}

void DdlRunner::dropUser() {
  requireDba();
  const QString user = m_t.name(1935);
  const bool cascade = m_t.accept(u"CASCADE");
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  if (user == m_c.user())
    throw OraError(1940, QStringLiteral("cannot drop a user that is currently connected"));
  sqlite3* db = m_c.db();
  inTransaction([&] {
    if (!sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.users WHERE username = ?1"), {user}).isValid())
      throw OraError(1918, QStringLiteral("user '%1' does not exist").arg(user));
    SessionWatch::removeDeadSessions(db);
    if (sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.sessions WHERE username = ?1"), {user}).isValid())
      throw OraError(1940, QStringLiteral("cannot drop a user that is currently connected"));
    if (!cascade && sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.objects WHERE owner = ?1"), {user}).isValid())
      throw OraError(1922, QStringLiteral("CASCADE must be specified to drop '%1'").arg(user));
    for (const char* sql :
         {"DELETE FROM CAT.constraints WHERE r_owner = ?1 AND owner <> ?1",
          "DELETE FROM CAT.cons_columns WHERE owner = ?1", "DELETE FROM CAT.constraints WHERE owner = ?1",
          "DELETE FROM CAT.ind_columns WHERE index_owner = ?1 OR table_owner = ?1",
          "DELETE FROM CAT.ind_expressions WHERE index_owner = ?1 OR table_owner = ?1",
          "DELETE FROM CAT.indexes WHERE owner = ?1 OR table_owner = ?1", "DELETE FROM CAT.comments WHERE owner = ?1",
          "DELETE FROM CAT.columns WHERE owner = ?1", "DELETE FROM CAT.tables WHERE owner = ?1",
          "DELETE FROM CAT.views WHERE owner = ?1", "DELETE FROM CAT.sequences WHERE owner = ?1",
          "DELETE FROM CAT.synonyms WHERE owner = ?1", "DELETE FROM CAT.objects WHERE owner = ?1",
          "DELETE FROM CAT.tab_privs WHERE ?1 IN (grantee, owner, grantor)",
          "DELETE FROM CAT.sys_privs WHERE grantee = ?1", "DELETE FROM CAT.role_privs WHERE grantee = ?1",
          "DELETE FROM CAT.users WHERE username = ?1"})
      sqliteExec(db, QString::fromLatin1(sql), {user});
  });
  const QString file = Catalogue::schemaFile(m_c.folder(), user);
  for (const QString& suffix : {QString(), QStringLiteral("-wal"), QStringLiteral("-shm")})
    QFile::remove(file + suffix);
}

void DdlRunner::alterSystem() {
  if (!(m_t.accept(u"KILL") && m_t.accept(u"SESSION")))
    throw OraError(2065, QStringLiteral("illegal option for ALTER SYSTEM"));
  requireDba();
  if (m_t.peek().kind != SqlToken::Kind::String)
    throw OraError(26, QStringLiteral("missing or invalid session ID"));
  const QStringList ids = m_t.next().text.split(u',');
  m_t.accept(u"IMMEDIATE");
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  bool sidOk = false, serialOk = false;
  const qint64 sid = ids.value(0).trimmed().toLongLong(&sidOk);
  const qint64 serial = ids.value(1).trimmed().toLongLong(&serialOk);
  if (ids.size() < 2 || !sidOk || !serialOk)
    throw OraError(26, QStringLiteral("missing or invalid session ID"));
  // Killing a session is not DDL: the killer's own pending work stays pending.
  try {
    m_c.killSession(sid, serial);
  } catch (const SqliteFailure& f) {
    throw m_c.oracleError(f);
  }
}
