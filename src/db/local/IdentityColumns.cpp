#include "db/local/IdentityColumns.h"

#include "db/local/Catalogue.h"
#include "db/local/OracleDate.h"
#include "db/local/SqlTranslator.h"
#include "db/local/Sqlite.h"

namespace IdentityColumns {

namespace {

qint64 signedNumber(TokenCursor& c) {
  const bool negative = c.accept(u"-");
  if (c.peek().kind != SqlToken::Kind::Number)
    TokenCursor::fail(1722);
  const qint64 n = c.next().text.toLongLong();
  return negative ? -n : n;
}

[[noreturn]] void unimplemented() { throw OraError(3001, QStringLiteral("unimplemented feature")); }

} // namespace

Identity parse(TokenCursor& c) {
  Identity identity;
  if (c.accept(u"ALWAYS")) {
    identity.generation = QStringLiteral("ALWAYS");
  } else {
    c.expect(u"BY", 905);
    c.expect(u"DEFAULT", 905);
    if (c.peek().is(u"ON"))
      unimplemented(); // ON NULL
    identity.generation = QStringLiteral("BY DEFAULT");
  }
  c.expect(u"AS", 905);
  c.expect(u"IDENTITY", 905);
  if (c.accept(u"(")) {
    while (!c.accept(u")")) {
      if (c.accept(u"START")) {
        c.expect(u"WITH", 905);
        identity.start = signedNumber(c);
      } else if (c.accept(u"INCREMENT")) {
        c.expect(u"BY", 905);
        identity.step = signedNumber(c);
        if (identity.step == 0)
          throw OraError(4002, QStringLiteral("INCREMENT must be a nonzero integer"));
      } else {
        unimplemented();
      }
    }
  }
  return identity;
}

QString createSequence(sqlite3* db, const QString& owner, const Identity& identity) {
  const QString name = QStringLiteral("ISEQ$$_%1").arg(Catalogue::nextCounter(db, QStringLiteral("ISEQ$$")));
  const bool up = identity.step > 0;
  sqliteExec(db,
             QStringLiteral("INSERT INTO CAT.sequences(owner, sequence_name, min_value, max_value, increment_by, "
                            "cycle_flag, last_number, start_with, cache_size, order_flag) VALUES (?1, ?2, ?3, ?4, ?5, "
                            "'N', ?6, ?6, 20, 'N')"),
             {owner, name, up ? 1 : -9999999999999999LL, up ? 9999999999999999LL : -1, identity.step, identity.start});
  sqliteExec(db, QStringLiteral("INSERT INTO CAT.objects(owner, name, type, created) VALUES (?1, ?2, 'SEQUENCE', ?3)"),
             {owner, name, OracleDate::now()});
  return QStringLiteral("\"%1\".\"%2\".nextval").arg(owner, name);
}

void checkDml(sqlite3* db, const std::vector<SqlToken>& t, size_t targetEnd, const QString& owner,
              const QString& table) {
  QStringList always;
  SqliteStmt s(db, QStringLiteral("SELECT column_name FROM CAT.columns WHERE owner = ?1 AND table_name = ?2 AND "
                                  "identity = 'ALWAYS'"));
  s.bindAll({owner, table});
  while (s.step())
    always << s.text(0);
  if (always.isEmpty())
    return;
  // INSERT without a column list writes every column; with one, the column must not be in it.
  if (t[0].is(u"INSERT")) {
    if (!t[targetEnd].is(u"("))
      throw OraError(32795, QStringLiteral("cannot insert into a generated always identity column"));
    for (size_t i = targetEnd + 1; i < t.size() && !t[i].is(u")"); ++i)
      if (t[i].isName() && always.contains(t[i].name()))
        throw OraError(32795, QStringLiteral("cannot insert into a generated always identity column"));
    return;
  }
  // UPDATE's SET: "column =" where an assignment starts.
  int depth = 0;
  for (size_t i = targetEnd; i + 1 < t.size() && t[i].kind != SqlToken::Kind::End; ++i) {
    depth += t[i].is(u"(") ? 1 : t[i].is(u")") ? -1 : 0;
    if (depth == 0 && t[i].is(u"WHERE"))
      return;
    if (depth == 0 && t[i].isName() && always.contains(t[i].name()) && t[i + 1].is(u"=") &&
        (t[i - 1].is(u"SET") || t[i - 1].is(u",") || t[i - 1].is(u".")))
      throw OraError(32796, QStringLiteral("cannot update a generated always identity column"));
  }
}

} // namespace IdentityColumns
