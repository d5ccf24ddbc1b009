#include "db/local/DdlRunner.h"
#include "db/local/LocalConnection.h"

namespace {

QString q(const QString& name) { return SqlTranslator::quoteName(name); }

bool holdsValues(sqlite3* db, const QString& schema, const QString& table, const QString& column) {
  return sqliteValue(
             db, QStringLiteral("SELECT 1 FROM %1.%2 WHERE %3 IS NOT NULL LIMIT 1").arg(q(schema), q(table), q(column)))
      .isValid();
}

// A condition's text with one column name replaced, token by token.
QString renamedIn(const QString& condition, const QString& from, const QString& to) {
  QString out = condition;
  const std::vector<SqlToken> tokens = tokenizeSql(condition);
  for (auto t = tokens.rbegin(); t != tokens.rend(); ++t)
    if (t->isName() && t->name() == from)
      out.replace(t->pos, t->length, q(to));
  return out;
}

} // namespace

// MODIFY (column [type] [DEFAULT expr] [[CONSTRAINT name] NOT NULL | NULL], ...): Oracle changes a
// column's type only as far as its values allow, and NOT NULL only where no row holds a NULL.
void DdlRunner::modifyColumns(const QString& owner, const QString& table, const QString& schema) {
  sqlite3* db = m_c.db();
  const bool grouped = m_t.accept(u"(");
  struct Change {
    QString name;
    std::optional<OracleType> type;
    std::optional<QString> defaultText;
    std::optional<bool> notNull;
    QString constraintName;
  };
  std::vector<Change> changes;
  do {
    Change c;
    c.name = m_t.name(904);
    const auto stops = [&] {
      const SqlToken& p = m_t.peek();
      return m_t.atEnd() || p.is(u",") || p.is(u")") || p.is(u"DEFAULT") || p.is(u"NOT") || p.is(u"NULL") ||
             p.is(u"CONSTRAINT");
    };
    if (!stops())
      c.type = OracleType::parse(m_t);
    if (m_t.accept(u"DEFAULT")) {
      const size_t from = m_t.pos();
      int depth = 0;
      while (!m_t.atEnd() && !(depth == 0 && (m_t.peek().is(u",") || m_t.peek().is(u")") || m_t.peek().is(u"NOT") ||
                                              m_t.peek().is(u"NULL") || m_t.peek().is(u"CONSTRAINT")))) {
        depth += m_t.peek().is(u"(") ? 1 : m_t.peek().is(u")") ? -1 : 0;
        m_t.next();
      }
      c.defaultText = m_t.source(m_sql, from, m_t.pos()).trimmed();
    }
    if (m_t.accept(u"CONSTRAINT"))
      c.constraintName = m_t.name(904);
    if (m_t.accept(u"NOT")) {
      m_t.expect(u"NULL", 905);
      c.notNull = true;
    } else if (m_t.accept(u"NULL")) {
      c.notNull = false;
    }
    changes.push_back(c);
  } while (grouped && m_t.accept(u","));
  if (grouped)
    m_t.expect(u")", 907);
  if (!m_t.atEnd())
    TokenCursor::fail(933);

  inTransaction([&] {
    std::optional<Constraint> validating;
    for (const Change& c : changes) {
      SqliteStmt col(db, QStringLiteral("SELECT data_type, data_length, data_precision, data_scale, nullable, "
                                        "char_length FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND "
                                        "column_name = ?3"));
      col.bindAll({owner, table, c.name});
      if (!col.step())
        throw OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(c.name));
      if (c.type) {
        const OracleType& t = *c.type;
        const bool filled = holdsValues(db, schema, table, c.name);
        if (t.dataType != col.text(0) && filled)
          throw OraError(1439, QStringLiteral("column to be modified must be empty to change datatype"));
        const auto lower = [](const QVariant& now, const QVariant& was) {
          return !was.isNull() && (now.isNull() ? false : now.toLongLong() < was.toLongLong());
        };
        if (t.dataType == u"NUMBER" && filled && (lower(t.precision, col.column(2)) || lower(t.scale, col.column(3))))
          throw OraError(1440, QStringLiteral("column to be modified must be empty to decrease precision or scale"));
        if (t.charLength > 0 && t.charLength < col.column(5).toLongLong() &&
            sqliteValue(
                db,
                QStringLiteral("SELECT 1 FROM %1.%2 WHERE length(%3) > ?1 LIMIT 1").arg(q(schema), q(table), q(c.name)),
                {t.charLength})
                .isValid())
          throw OraError(1441, QStringLiteral("cannot decrease column length because some value is too big"));
        sqliteExec(db,
                   QStringLiteral("UPDATE CAT.columns SET data_type = ?4, data_length = ?5, data_precision = ?6, "
                                  "data_scale = ?7, char_length = ?8, declared = ?9 WHERE owner = ?1 AND "
                                  "table_name = ?2 AND column_name = ?3"),
                   {owner, table, c.name, t.dataType, t.dataLength, t.precision, t.scale, t.charLength, t.sqliteType});
      }
      if (c.defaultText)
        sqliteExec(db,
                   QStringLiteral("UPDATE CAT.columns SET data_default = ?4 WHERE owner = ?1 AND table_name = ?2 AND "
                                  "column_name = ?3"),
                   {owner, table, c.name, c.defaultText->isEmpty() ? QVariant() : QVariant(*c.defaultText)});
      if (c.notNull) {
        const bool nullable = col.text(4) == u"Y";
        if (*c.notNull && !nullable)
          throw OraError(1442, QStringLiteral("column to be modified to NOT NULL is already NOT NULL"));
        if (!*c.notNull && nullable)
          throw OraError(1451, QStringLiteral("column to be modified to NULL cannot be modified to NULL"));
        if (*c.notNull) {
          Constraint k;
          k.name = c.constraintName.isEmpty() ? newConstraintName() : c.constraintName;
          k.generatedName = c.constraintName.isEmpty();
          k.type = u'C';
          k.columns = {c.name};
          k.condition = q(c.name) + QStringLiteral(" IS NOT NULL");
          addConstraint(owner, table, k);
          validating = k;
        } else {
          SqliteStmt own(db, QStringLiteral("SELECT k.constraint_name FROM CAT.constraints k JOIN CAT.cons_columns c "
                                            "ON c.owner = k.owner AND c.constraint_name = k.constraint_name WHERE "
                                            "k.owner = ?1 AND k.table_name = ?2 AND c.column_name = ?3 AND "
                                            "k.constraint_type = 'C' AND k.search_condition = ?4"));
          own.bindAll({owner, table, c.name, q(c.name) + QStringLiteral(" IS NOT NULL")});
          if (!own.step()) // NOT NULL as part of the primary key
            throw OraError(1451, QStringLiteral("column to be modified to NULL cannot be modified to NULL"));
          const QString name = own.text(0);
          own.reset();
          removeConstraint(owner, name);
        }
      }
    }
    rebuild(owner, table, schema, validating ? &*validating : nullptr);
  });
}

// DROP COLUMN c | DROP (c, ...): its single-column constraints and its indexes go with it; a key
// over several columns, or one other tables point at, keeps it.
void DdlRunner::dropColumns(const QString& owner, const QString& table, const QString& schema) {
  sqlite3* db = m_c.db();
  QStringList names;
  if (m_t.accept(u"COLUMN")) {
    names << m_t.name(904);
  } else {
    m_t.expect(u"(", 906);
    do
      names << m_t.name(904);
    while (m_t.accept(u","));
    m_t.expect(u")", 907);
  }
  m_t.accept(u"CASCADE") && m_t.accept(u"CONSTRAINTS");
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  inTransaction([&] {
    const qint64 count =
        sqliteValue(db, QStringLiteral("SELECT count(*) FROM CAT.columns WHERE owner = ?1 AND table_name = ?2"),
                    {owner, table})
            .toLongLong();
    if (names.size() >= count)
      throw OraError(12983, QStringLiteral("cannot drop all columns in a table"));
    for (const QString& name : names) {
      if (!sqliteValue(db,
                       QStringLiteral("SELECT 1 FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND "
                                      "column_name = ?3"),
                       {owner, table, name})
               .isValid())
        throw OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(name));
      SqliteStmt cons(db, QStringLiteral("SELECT k.constraint_name, k.constraint_type, (SELECT count(*) FROM "
                                         "CAT.cons_columns a WHERE a.owner = k.owner AND a.constraint_name = "
                                         "k.constraint_name), EXISTS (SELECT 1 FROM CAT.constraints r WHERE "
                                         "r.r_owner = k.owner AND r.r_constraint_name = k.constraint_name) FROM "
                                         "CAT.constraints k JOIN CAT.cons_columns c ON c.owner = k.owner AND "
                                         "c.constraint_name = k.constraint_name WHERE k.owner = ?1 AND "
                                         "k.table_name = ?2 AND c.column_name = ?3"));
      cons.bindAll({owner, table, name});
      QStringList dropping;
      while (cons.step()) {
        if (cons.column(3).toInt() == 1)
          throw OraError(12992, QStringLiteral("cannot drop parent key column"));
        if (cons.column(2).toInt() > 1)
          throw OraError(12991, QStringLiteral("column is referenced in a multi-column constraint"));
        dropping << cons.text(0);
      }
      cons.reset();
      for (const QString& k : dropping)
        removeConstraint(owner, k);
      // Function-based indexes name it, quoted, in their expressions.
      SqliteStmt idx(db, QStringLiteral("SELECT index_name FROM CAT.ind_columns WHERE table_owner = ?1 AND "
                                        "table_name = ?2 AND column_name = ?3 UNION SELECT index_name FROM "
                                        "CAT.ind_expressions WHERE table_owner = ?1 AND table_name = ?2 AND "
                                        "instr(column_expression, '\"' || ?3 || '\"') > 0"));
      idx.bindAll({owner, table, name});
      QStringList indexes;
      while (idx.step())
        indexes << idx.text(0);
      idx.reset();
      for (const QString& i : indexes) {
        for (const char* dictionary : {"ind_columns", "ind_expressions"})
          sqliteExec(db,
                     QStringLiteral("DELETE FROM CAT.%1 WHERE index_owner = ?1 AND index_name = ?2")
                         .arg(QLatin1StringView(dictionary)),
                     {owner, i});
        sqliteExec(db, QStringLiteral("DELETE FROM CAT.indexes WHERE owner = ?1 AND index_name = ?2"), {owner, i});
        sqliteExec(db, QStringLiteral("DELETE FROM CAT.objects WHERE owner = ?1 AND name = ?2 AND type = 'INDEX'"),
                   {owner, i});
        sqliteExec(db, QStringLiteral("DROP INDEX IF EXISTS %1.%2").arg(q(schema), q(QStringLiteral("IX$") + i)));
      }
      for (const char* dictionary : {"columns", "comments"})
        sqliteExec(db,
                   QStringLiteral("DELETE FROM CAT.%1 WHERE owner = ?1 AND table_name = ?2 AND column_name = ?3")
                       .arg(QLatin1StringView(dictionary)),
                   {owner, table, name});
    }
    // The columns after it move up, as COLUMN_ID has no gaps.
    SqliteStmt left(db, QStringLiteral("SELECT column_name FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 "
                                       "ORDER BY column_id"));
    left.bindAll({owner, table});
    QStringList order;
    while (left.step())
      order << left.text(0);
    left.reset();
    for (qsizetype i = 0; i < order.size(); ++i)
      sqliteExec(db,
                 QStringLiteral("UPDATE CAT.columns SET column_id = ?4 WHERE owner = ?1 AND table_name = ?2 AND "
                                "column_name = ?3"),
                 {owner, table, order[i], i + 1});
    rebuild(owner, table, schema, nullptr);
  });
}

void DdlRunner::renameColumn(const QString& owner, const QString& table, const QString& schema) {
  sqlite3* db = m_c.db();
  const QString from = m_t.name(904);
  m_t.expect(u"TO", 946);
  const QString to = m_t.name(904);
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  inTransaction([&] {
    const auto has = [&](const QString& name) {
      return sqliteValue(db,
                         QStringLiteral("SELECT 1 FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND "
                                        "column_name = ?3"),
                         {owner, table, name})
          .isValid();
    };
    if (!has(from))
      throw OraError(904, QStringLiteral("\"%1\": invalid identifier").arg(from));
    if (has(to))
      throw OraError(957, QStringLiteral("duplicate column name"));
    for (const char* dictionary : {"columns", "comments", "cons_columns"})
      sqliteExec(db,
                 QStringLiteral("UPDATE CAT.%1 SET column_name = ?4 WHERE owner = ?1 AND table_name = ?2 AND "
                                "column_name = ?3")
                     .arg(QLatin1StringView(dictionary)),
                 {owner, table, from, to});
    sqliteExec(db,
               QStringLiteral("UPDATE CAT.ind_columns SET column_name = ?4 WHERE table_owner = ?1 AND table_name = ?2 "
                              "AND column_name = ?3"),
               {owner, table, from, to});
    SqliteStmt expressions(db, QStringLiteral("SELECT rowid, column_expression FROM CAT.ind_expressions WHERE "
                                              "table_owner = ?1 AND table_name = ?2"));
    expressions.bindAll({owner, table});
    QList<QVariantList> renamed;
    while (expressions.step())
      renamed << QVariantList{expressions.column(0), renamedIn(expressions.text(1), from, to)};
    expressions.reset();
    for (const QVariantList& e : renamed)
      sqliteExec(db, QStringLiteral("UPDATE CAT.ind_expressions SET column_expression = ?2 WHERE rowid = ?1"), e);
    // Check conditions name the column in their text.
    SqliteStmt checks(db, QStringLiteral("SELECT constraint_name, search_condition FROM CAT.constraints WHERE "
                                         "owner = ?1 AND table_name = ?2 AND constraint_type = 'C'"));
    checks.bindAll({owner, table});
    QList<QStringList> conditions;
    while (checks.step())
      conditions << QStringList{checks.text(0), renamedIn(checks.text(1), from, to)};
    checks.reset();
    for (const QStringList& c : conditions)
      sqliteExec(db,
                 QStringLiteral("UPDATE CAT.constraints SET search_condition = ?3 WHERE owner = ?1 AND "
                                "constraint_name = ?2"),
                 {owner, c[0], c[1]});
    rebuild(owner, table, schema, nullptr, {{to, from}});
  });
}

// RENAME t TO u and ALTER TABLE t RENAME TO u: the dictionary follows the table under its new name.
void DdlRunner::renameTable(const QString& owner, const QString& table, const QString& schema, const QString& to) {
  sqlite3* db = m_c.db();
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  inTransaction([&] {
    if (objectType(owner, to))
      throw OraError(955, QStringLiteral("name is already used by an existing object"));
    sqliteExec(db, QStringLiteral("UPDATE CAT.objects SET name = ?3 WHERE owner = ?1 AND name = ?2"),
               {owner, table, to});
    for (const char* dictionary : {"tables", "columns", "comments", "constraints", "cons_columns", "tab_privs"})
      sqliteExec(db,
                 QStringLiteral("UPDATE CAT.%1 SET table_name = ?3 WHERE owner = ?1 AND table_name = ?2")
                     .arg(QLatin1StringView(dictionary)),
                 {owner, table, to});
    for (const char* dictionary : {"indexes", "ind_columns", "ind_expressions"})
      sqliteExec(db,
                 QStringLiteral("UPDATE CAT.%1 SET table_name = ?3 WHERE table_owner = ?1 AND table_name = ?2")
                     .arg(QLatin1StringView(dictionary)),
                 {owner, table, to});
    sqliteExec(db, QStringLiteral("ALTER TABLE %1.%2 RENAME TO %3").arg(q(schema), q(table), q(to)));
  });
}
