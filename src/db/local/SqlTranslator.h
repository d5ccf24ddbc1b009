#pragma once

#include "db/local/OuterJoins.h"
#include "db/local/SqlLexer.h"

#include <functional>
#include <optional>

// Turns the Oracle SQL of queries, DML and conditions into SQLite SQL: names are folded and
// quoted, '' becomes NULL, sequences and pseudo-columns become engine functions, other schemas
// are reached through their attached names, and select-list labels are Oracle's. Binary + and -
// become engine functions too, as they also add days to DATEs and subtract DATEs; || ranks with
// them and treats NULL as Oracle's does, and ORDER BY places NULLs where Oracle places them.
class SqlTranslator final {
public:
  struct Context {
    QString user;
    // The SQLite schema name for an owner, attaching it if needed; "" when no such user.
    std::function<QString(const QString& owner)> schemaOf;
    // Places a (+) written on an unqualified column.
    OuterJoins::HasColumn hasColumn;
  };

  explicit SqlTranslator(Context context) : m_context(std::move(context)) {}

  // Translates tokens [begin, end).
  QString translate(const std::vector<SqlToken>& tokens, size_t begin, size_t end) const;
  QString translate(const std::vector<SqlToken>& tokens) const { return translate(tokens, 0, tokens.size()); }

  static QString quoteName(const QString& name);
  static QString quoteText(const QString& text);
  // Oracle's label for a select-list expression written as source: upper case outside string
  // literals, without blanks.
  static QString labelOf(const std::vector<SqlToken>& tokens, size_t begin, size_t end);

private:
  QString token(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  QString selectList(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  QString orderBy(const std::vector<SqlToken>& t, size_t& i, size_t end) const;
  std::optional<QString> additive(const std::vector<SqlToken>& t, size_t& i, size_t begin, size_t end) const;

  Context m_context;
  bool m_rownumDone = false; // ROWNUM conditions are already limits
};
