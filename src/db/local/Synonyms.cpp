#include "db/local/Synonyms.h"

#include "db/OraError.h"
#include "db/local/SqlTranslator.h"
#include "db/local/Sqlite.h"

#include <QSet>

#include <optional>

namespace Synonyms {

namespace {

const QString Public = QStringLiteral("PUBLIC");

struct Object {
  QString owner, name;
  bool operator==(const Object&) const = default;
};

size_t qHash(const Object& o, size_t seed = 0) { return ::qHash(o.owner, seed) ^ ::qHash(o.name, seed); }

// What owner.name is: its type ("" when there is no such object) and, for a synonym, the object
// it names.
struct Entry {
  QString type;
  Object target;
};

Entry entryOf(sqlite3* db, const Object& o) {
  SqliteStmt s(db, QStringLiteral("SELECT o.type, s.table_owner, s.table_name FROM CAT.objects o LEFT JOIN "
                                  "CAT.synonyms s ON s.owner = o.owner AND s.synonym_name = o.name "
                                  "WHERE o.owner = ?1 AND o.name = ?2"));
  s.bindAll({o.owner, o.name});
  if (!s.step())
    return {};
  return {s.text(0), {s.text(1), s.text(2)}};
}

// The object the synonym at stands for, through the synonyms on the way. A name a synonym gives
// that its schema does not hold is looked for among the public synonyms, as Oracle does.
Object follow(sqlite3* db, Object at, Entry entry) {
  QSet<Object> seen;
  for (;;) {
    if (seen.contains(at))
      throw OraError(1775, QStringLiteral("looping chain of synonyms"));
    seen.insert(at);
    const Object next = entry.target;
    entry = entryOf(db, next);
    if (entry.type.isEmpty()) {
      at = {Public, next.name};
      entry = entryOf(db, at);
      if (entry.type.isEmpty())
        throw OraError(980, QStringLiteral("synonym translation is no longer valid"));
      continue;
    }
    if (entry.type != u"SYNONYM")
      return next;
    at = next;
  }
}

// What [owner.]name stands for when it is a synonym.
std::optional<Object> synonymTarget(sqlite3* db, const QString& user, const QString& owner, const QString& name) {
  Object at{owner.isEmpty() ? user : owner, name};
  Entry entry = entryOf(db, at);
  if (entry.type.isEmpty() && owner.isEmpty()) {
    at.owner = Public;
    entry = entryOf(db, at);
  }
  if (entry.type != u"SYNONYM")
    return std::nullopt;
  return follow(db, at, entry);
}


// Words that end a FROM list at their depth.
bool endsFromList(const SqlToken& t) {
  return t.isOneOf({u"WHERE",     u"GROUP",     u"HAVING", u"ORDER",   u"CONNECT", u"START",  u"UNION",
                     u"INTERSECT", u"MINUS",     u"FETCH",  u"OFFSET",  u"FOR",     u"SELECT", u"SET",
                     u"VALUES",    u"RETURNING", u"PIVOT",  u"UNPIVOT", u"MODEL",   u"WINDOW"});
}

// Words that may follow a table's name where an alias could stand.
bool followsName(const SqlToken& t) {
  return endsFromList(t) ||
         t.isOneOf({u"FROM", u"JOIN", u"INNER", u"LEFT", u"RIGHT", u"FULL", u"CROSS", u"NATURAL", u"OUTER", u"ON",
                     u"USING", u"PARTITION", u"SAMPLE", u"WITH", u"LOG", u"WHEN", u"THEN", u"ELSE"});
}

bool isSequenceCall(const SqlToken& t) { return t.is(u"NEXTVAL") || t.is(u"CURRVAL"); }

size_t afterGroup(const std::vector<SqlToken>& t, size_t open) {
  int depth = 0;
  for (size_t k = open; k < t.size(); ++k) {
    depth += t[k].is(u"(") ? 1 : t[k].is(u")") ? -1 : 0;
    if (depth == 0)
      return k + 1;
  }
  return t.size();
}

// The names of the WITH clause's queries, which hide any object of the same name.
QSet<QString> queryNames(const std::vector<SqlToken>& t) {
  QSet<QString> names;
  for (size_t k = 1; k + 2 < t.size(); ++k) {
    if (!t[k].isName() || !(t[k - 1].is(u"WITH") || t[k - 1].is(u",")))
      continue;
    size_t j = k + 1;
    if (t[j].is(u"("))
      j = afterGroup(t, j);
    if (j + 1 < t.size() && t[j].is(u"AS") && t[j + 1].is(u"("))
      names.insert(t[k].name());
  }
  return names;
}

// A name [owner.]name written from at to end.
struct Written {
  QString owner, name;
  size_t end;
};

std::optional<Written> tableAt(const std::vector<SqlToken>& t, size_t at) {
  if (at >= t.size() || !t[at].isName() || followsName(t[at]))
    return std::nullopt;
  Written w{QString(), t[at].name(), at + 1};
  if (at + 2 < t.size() && t[at + 1].is(u".") && t[at + 2].isName())
    w = {t[at].name(), t[at + 2].name(), at + 3};
  // A call (TABLE(...), a package's function) is no table.
  if (w.end < t.size() && t[w.end].is(u"("))
    return std::nullopt;
  return w;
}

// seq.NEXTVAL or owner.seq.CURRVAL at at, the name ending before the last dot.
std::optional<Written> sequenceAt(const std::vector<SqlToken>& t, size_t at) {
  if (!t[at].isName() || (at > 0 && t[at - 1].is(u".")) || at + 2 >= t.size() || !t[at + 1].is(u"."))
    return std::nullopt;
  if (isSequenceCall(t[at + 2]))
    return Written{QString(), t[at].name(), at + 1};
  if (at + 4 < t.size() && t[at + 2].isName() && t[at + 3].is(u".") && isSequenceCall(t[at + 4]))
    return Written{t[at].name(), t[at + 2].name(), at + 3};
  return std::nullopt;
}

void append(std::vector<SqlToken>& out, const SqlToken& at, const Object& o) {
  out.push_back(SqlToken{SqlToken::Kind::Quoted, o.owner, at.pos, at.length, at.line});
  out.push_back(SqlToken{SqlToken::Kind::Symbol, QStringLiteral("."), at.pos, 0, at.line});
  out.push_back(SqlToken{SqlToken::Kind::Quoted, o.name, at.pos, at.length, at.line});
}

bool holds(sqlite3* db, const QString& schema, const QString& name) {
  return sqliteValue(db, QStringLiteral("SELECT 1 FROM %1.sqlite_master WHERE name = ?1").arg(schema), {name})
      .isValid();
}

// SQLite looks for an unqualified name in every schema the session opened; Oracle only in the
// session's own (and the dictionary's), so a name only another schema holds does not exist.
void refuseOtherSchemas(sqlite3* db, const QString& name, const QStringList& attached) {
  if (holds(db, QStringLiteral("main"), name) || holds(db, QStringLiteral("temp"), name))
    return;
  for (const QString& schema : attached)
    if (holds(db, SqlTranslator::quoteName(schema), name))
      throw OraError(942, QStringLiteral("table or view does not exist"));
}

} // namespace

std::vector<SqlToken> resolve(sqlite3* db, const QString& user, const std::vector<SqlToken>& t,
                              const QStringList& attached) {
  const bool synonyms = sqliteValue(db, QStringLiteral("SELECT 1 FROM CAT.synonyms LIMIT 1")).isValid();
  if (!synonyms && attached.isEmpty())
    return t;
  const QSet<QString> withNames = queryNames(t);
  // Per depth of parentheses: within a FROM list; past a select list or RETURNING, where INTO
  // names variables.
  struct Level {
    bool fromList = false;
    bool selected = false;
  };
  std::vector<Level> levels(1);
  std::vector<SqlToken> out;
  out.reserve(t.size() + 8);
  for (size_t k = 0; k < t.size(); ++k) {
    const SqlToken& tok = t[k];
    if (const auto sequence = sequenceAt(t, k)) {
      if (const auto target = synonymTarget(db, user, sequence->owner, sequence->name)) {
        append(out, tok, *target);
        k = sequence->end - 1;
        continue;
      }
    }
    out.push_back(tok);
    if (tok.is(u"(")) {
      levels.emplace_back();
      continue;
    }
    if (tok.is(u")")) {
      if (levels.size() > 1)
        levels.pop_back();
      continue;
    }
    Level& level = levels.back();
    // Where a table's name may follow, and whether it may have an alias there.
    bool table = true, aliased = true;
    if (tok.is(u"FROM")) {
      level.fromList = true;
    } else if (tok.is(u"INTO")) {
      aliased = k > 0 && t[k - 1].is(u"MERGE");
      table = aliased || !level.selected;
    } else if (tok.is(u"UPDATE")) {
      table = !(k > 0 && t[k - 1].is(u"FOR"));
    } else if (!(tok.is(u"JOIN") || tok.is(u"DELETE") || tok.is(u"USING") || (tok.is(u",") && level.fromList))) {
      table = false;
    }
    if (tok.is(u"SELECT") || tok.is(u"RETURNING"))
      level.selected = true;
    if (endsFromList(tok))
      level.fromList = false;
    const auto name = table ? tableAt(t, k + 1) : std::nullopt;
    if (!name || (name->owner.isEmpty() && withNames.contains(name->name)))
      continue;
    const auto target = synonyms ? synonymTarget(db, user, name->owner, name->name) : std::nullopt;
    if (!target) {
      if (name->owner.isEmpty() && !attached.isEmpty())
        refuseOtherSchemas(db, name->name, attached);
      continue;
    }
    append(out, t[k + 1], *target);
    k = name->end - 1;
    const SqlToken& after = t[name->end];
    if (aliased && !after.is(u"AS") && !(after.isName() && !followsName(after)))
      out.push_back(t[name->end - 1]);
  }
  return out;
}

void installViews(sqlite3* db, const QString& user, bool dba) {
  const QString me = u'\'' + QString(user).replace(u'\'', QStringLiteral("''")) + u'\'';
  const QString all =
      QStringLiteral("SELECT owner AS \"OWNER\", synonym_name AS \"SYNONYM_NAME\", table_owner AS \"TABLE_OWNER\", "
                     "table_name AS \"TABLE_NAME\", NULL AS \"DB_LINK\", 0 AS \"ORIGIN_CON_ID\" FROM CAT.synonyms s");
  // The synonyms one may use: one's own, the public ones, and those for objects one was granted.
  QString sql = QStringLiteral("CREATE TEMP VIEW \"ALL_SYNONYMS\" AS %1 WHERE %2 OR owner IN (%3, 'PUBLIC') OR EXISTS "
                               "(SELECT 1 FROM CAT.tab_privs p WHERE p.grantee IN (%3, 'PUBLIC') AND p.owner = "
                               "s.table_owner AND p.table_name = s.table_name);\n")
                    .arg(all, dba ? QStringLiteral("1") : QStringLiteral("0"), me);
  sql += QStringLiteral("CREATE TEMP VIEW \"USER_SYNONYMS\" AS SELECT \"SYNONYM_NAME\", \"TABLE_OWNER\", "
                        "\"TABLE_NAME\", \"DB_LINK\", \"ORIGIN_CON_ID\" FROM (%1) WHERE \"OWNER\" = %2;\n")
             .arg(all, me);
  if (dba)
    sql += QStringLiteral("CREATE TEMP VIEW \"DBA_SYNONYMS\" AS %1;\n").arg(all);
  sqliteExec(db, sql);
}

} // namespace Synonyms
