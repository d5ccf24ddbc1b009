#pragma once

#include "db/local/OuterJoins.h"
#include "db/local/SqlLexer.h"

#include <QHash>
#include <QList>
#include <QSet>

#include <atomic>
#include <functional>
#include <memory>
#include <optional>

// Turns the Oracle SQL of queries, DML and conditions into SQLite SQL: names are folded and
// quoted, '' becomes NULL, sequences and pseudo-columns become engine functions, other schemas
// are reached through their attached names, and select-list labels are Oracle's. Arithmetic
// becomes engine functions too, as + and - also add days to DATEs and subtract DATEs and all of
// it is decimal; || ranks with + and - and treats NULL as Oracle's does, a text literal compared
// with a number converts to one, and ORDER BY places NULLs where Oracle places them.
class SqlTranslator final {
public:
  struct Context {
    QString user;
    // The SQLite schema name for an owner, attaching it if needed; "" when no such user.
    std::function<QString(const QString& owner)> schemaOf;
    // Places a (+) written on an unqualified column.
    OuterJoins::HasColumn hasColumn;
    // The declared SQLite type of the first column of a probe query, "" when it has none;
    // nullopt when the probe fails, as for a column its FROM items do not have.
    std::function<std::optional<QString>(const QString& sql)> declaredType;
    // Raises the error Oracle raises when the session may not use another schema's table.
    std::function<void(const QString& owner, const QString& table)> checkAccess;
    // The names of the columns of a probe query; nullopt when the probe fails.
    std::function<std::optional<QStringList>(const QString& sql)> columnNames;
    // The statement holds ?N parameters of the engine's own (PL/SQL variables), kept as they are;
    // otherwise a bind variable is ORA-01008, as no value comes with it.
    bool binds = false;
    // Which of the names are those of some table's or view's CHAR or NCHAR columns.
    std::function<QSet<QString>(const QStringList& names)> charColumnNames;
  };

  explicit SqlTranslator(Context context) : m_context(std::move(context)), m_statement(++s_statements) {}

  // Translates tokens [begin, end).
  QString translate(const std::vector<SqlToken>& tokens, size_t begin, size_t end) const;
  QString translate(const std::vector<SqlToken>& tokens) const { return translate(tokens, 0, tokens.size()); }

  // Which columns of the first select list translated are text by the way they are written
  // (TO_CHAR, ||): texts that read like dates, but are no DATE.
  QList<bool> textColumns() const { return m_textColumns->value_or(QList<bool>{}); }

  static QString quoteName(const QString& name);
  static QString quoteText(const QString& text);
  // Oracle's label for a select-list expression written as source: upper case outside string
  // literals, without blanks.
  static QString labelOf(const std::vector<SqlToken>& tokens, size_t begin, size_t end);

private:
  // The columns of a FROM item, as SELECT * names them; nullopt when it is no valid source.
  std::optional<QStringList> columnsOf(const std::vector<SqlToken>& item) const;
  QString token(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  QString selectList(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  QString orderBy(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  QString rowLimits(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  QString declaredType(const std::vector<SqlToken>& t, size_t begin, size_t end) const;
  static std::optional<std::pair<size_t, size_t>> fromItems(const std::vector<SqlToken>& t, size_t at);
  QString scalarSubquery(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  QString assignments(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  std::optional<QString> literalOperands(const std::vector<SqlToken>& t, size_t& i, size_t begin, size_t end) const;
  std::optional<QString> quantified(const std::vector<SqlToken>& t, size_t& i, size_t begin, size_t end) const;
  std::optional<QString> comparison(const std::vector<SqlToken>& t, size_t& i, size_t begin, size_t end) const;
  bool mixesCharAndVarchar(const std::vector<SqlToken>& t, size_t begin, size_t op, size_t end) const;
  std::optional<QString> arithmetic(const std::vector<SqlToken>& t, size_t& i, size_t begin, size_t end) const;
  QString term(const std::vector<SqlToken>& t, size_t begin, size_t end, bool numeric) const;
  bool isTextValue(const std::vector<SqlToken>& t, size_t begin, size_t end) const;

  Context m_context;
  bool m_rownumDone = false; // ROWNUM conditions are already limits
  bool m_probing = false;    // translating a probe, which probes no further
  bool m_rewritten = false;  // translating a rewrite, whose source has been checked
  qint64 m_statement;        // tells one statement's sequence references from another's
  std::shared_ptr<std::optional<QList<bool>>> m_textColumns = std::make_shared<std::optional<QList<bool>>>();
  // The names of the statement, looked up once for all its comparisons: whether CHAR columns
  // have them.
  std::shared_ptr<std::optional<QHash<QString, bool>>> m_charNames =
      std::make_shared<std::optional<QHash<QString, bool>>>();
  static inline std::atomic<qint64> s_statements{0};
};
