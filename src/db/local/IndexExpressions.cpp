#include "db/local/IndexExpressions.h"

#include "db/local/SqlTranslator.h"
#include "db/local/Sqlite.h"

#include <QSet>

namespace IndexExpressions {

namespace {

// The words of an expression that are no column names: keywords and pseudo-columns.
bool isKeyword(const SqlToken& t) {
  static const QSet<QString> words = {
      QStringLiteral("CASE"),    QStringLiteral("WHEN"),         QStringLiteral("THEN"),
      QStringLiteral("ELSE"),    QStringLiteral("END"),          QStringLiteral("AND"),
      QStringLiteral("OR"),      QStringLiteral("NOT"),          QStringLiteral("NULL"),
      QStringLiteral("IS"),      QStringLiteral("IN"),           QStringLiteral("LIKE"),
      QStringLiteral("AS"),      QStringLiteral("BETWEEN"),      QStringLiteral("ESCAPE"),
      QStringLiteral("SYSDATE"), QStringLiteral("SYSTIMESTAMP"), QStringLiteral("CURRENT_DATE"),
      QStringLiteral("USER"),    QStringLiteral("UID"),          QStringLiteral("ROWNUM"),
      QStringLiteral("ROWID"),   QStringLiteral("LEVEL"),        QStringLiteral("SELECT"),
      QStringLiteral("FROM"),    QStringLiteral("WHERE"),        QStringLiteral("DISTINCT"),
      QStringLiteral("EXISTS"),  QStringLiteral("ALL"),          QStringLiteral("ANY")};
  return t.kind == SqlToken::Kind::Word && words.contains(t.upper());
}

bool isWordLike(const SqlToken& t) { return t.kind != SqlToken::Kind::Symbol && t.kind != SqlToken::Kind::End; }

} // namespace

QString text(const std::vector<SqlToken>& t, size_t begin, size_t end) {
  QString out;
  for (size_t k = begin; k < end; ++k) {
    if (k > begin && isWordLike(t[k]) && isWordLike(t[k - 1]))
      out += u' ';
    const SqlToken& tok = t[k];
    const bool call = k + 1 < end && t[k + 1].is(u"(");
    switch (tok.kind) {
    case SqlToken::Kind::String: out += SqlTranslator::quoteText(tok.text); break;
    case SqlToken::Kind::Quoted: out += SqlTranslator::quoteName(tok.text); break;
    case SqlToken::Kind::Word:
      out += call || isKeyword(tok) ? tok.upper() : SqlTranslator::quoteName(tok.upper());
      break;
    default: out += tok.text;
    }
  }
  return out;
}

QString hiddenColumn(sqlite3* db, const QString& owner, const QString& table) {
  const qint64 last =
      sqliteValue(
          db,
          QStringLiteral("SELECT max(coalesce((SELECT max(column_id) FROM CAT.columns WHERE owner = ?1 AND "
                         "table_name = ?2), 0), coalesce((SELECT max(CAST(substr(column_name, 7, 5) AS INTEGER)) "
                         "FROM CAT.ind_columns WHERE table_owner = ?1 AND table_name = ?2 AND column_name GLOB "
                         "'SYS_NC[0-9][0-9][0-9][0-9][0-9]$'), 0))"),
          {owner, table})
          .toLongLong();
  return QStringLiteral("SYS_NC%1$").arg(last + 1, 5, 10, QChar(u'0'));
}

} // namespace IndexExpressions
