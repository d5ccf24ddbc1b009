// CREATE and DROP of synonyms. A synonym is a row of CAT.synonyms and, as an object of its
// schema's namespace, of CAT.objects; public ones belong to PUBLIC.
#include "db/local/DdlRunner.h"
#include "db/local/LocalConnection.h"
#include "db/local/OracleDate.h"

namespace {

const QString Public = QStringLiteral("PUBLIC");

} // namespace

void DdlRunner::createSynonym(bool replace, bool isPublic) {
  const auto [ownerText, name] = m_t.qualifiedName();
  if (isPublic && !ownerText.isEmpty())
    TokenCursor::fail(933);
  if (ownerText == Public)
    throw OraError(1886, QStringLiteral("use CREATE PUBLIC SYNONYM statement to create a public synonym"));
  m_t.expect(u"FOR", 905);
  const auto [targetText, target] = m_t.qualifiedName();
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  const QString owner = isPublic ? Public : ownerOr(ownerText);
  if (isPublic)
    m_c.requireSystemPrivilege(u"CREATE PUBLIC SYNONYM");
  else
    requireCreate(owner, QStringLiteral("SYNONYM")), schemaFor(owner);
  // An unqualified object is the creator's, whoever owns the synonym.
  const QString targetOwner = ownerOr(targetText);
  if (targetOwner == owner && target == name)
    throw OraError(1471, QStringLiteral("cannot create a synonym with same name as object"));
  sqlite3* db = m_c.db();
  inTransaction([&] {
    const auto existing = objectType(owner, name);
    if (existing && (!replace || *existing != u"SYNONYM"))
      throw OraError(955, QStringLiteral("name is already used by an existing object"));
    if (existing)
      sqliteExec(db, QStringLiteral("DELETE FROM CAT.synonyms WHERE owner = ?1 AND synonym_name = ?2"), {owner, name});
    else
      sqliteExec(db,
                 QStringLiteral("INSERT INTO CAT.objects(owner, name, type, created) VALUES (?1, ?2, 'SYNONYM', ?3)"),
                 {owner, name, OracleDate::now()});
    sqliteExec(db,
               QStringLiteral("INSERT INTO CAT.synonyms(owner, synonym_name, table_owner, table_name) "
                              "VALUES (?1, ?2, ?3, ?4)"),
               {owner, name, targetOwner, target});
  });
}

void DdlRunner::dropSynonym(bool isPublic) {
  const auto [ownerText, name] = m_t.qualifiedName();
  if (isPublic && !ownerText.isEmpty())
    TokenCursor::fail(933);
  // FORCE matters only to dependent types and tables, which the engine has none of.
  m_t.accept(u"FORCE");
  if (!m_t.atEnd())
    TokenCursor::fail(933);
  const QString owner = isPublic ? Public : ownerOr(ownerText);
  if (isPublic)
    m_c.requireSystemPrivilege(u"DROP PUBLIC SYNONYM");
  else
    requireAccess(owner);
  sqlite3* db = m_c.db();
  inTransaction([&] {
    if (objectType(owner, name) != QStringLiteral("SYNONYM"))
      throw isPublic ? OraError(1432, QStringLiteral("public synonym to be dropped does not exist"))
                     : OraError(1434, QStringLiteral("private synonym to be dropped does not exist"));
    sqliteExec(db, QStringLiteral("DELETE FROM CAT.synonyms WHERE owner = ?1 AND synonym_name = ?2"), {owner, name});
    sqliteExec(db, QStringLiteral("DELETE FROM CAT.objects WHERE owner = ?1 AND name = ?2"), {owner, name});
  });
}
