#pragma once

#include "db/local/SqlLexer.h"
#include "db/local/plsql/PlsqlTree.h"

// Reads an anonymous block ([DECLARE ...] BEGIN ... [EXCEPTION ...] END;) into its tree. What
// PL/SQL cannot say is ORA-06550 with the PLS error Oracle's compiler gives, before anything
// runs; PL/SQL this engine does not run (stored units' statements, cursor parameters,
// collections, CASE statements, labels, GOTO, FORALL) is ORA-03001.
class PlsqlParser final {
public:
  PlsqlParser(const std::vector<SqlToken>& tokens, const QString& sql) : m_t(tokens), m_sql(sql) {}

  std::unique_ptr<Plsql::Block> parse();

  // ORA-06550 for the token at: "line L, column C:" and the PLS error on the next line.
  [[noreturn]] static void compileError(const std::vector<SqlToken>& tokens, const QString& sql, size_t at,
                                        const QString& error);

private:
  std::unique_ptr<Plsql::Block> block();
  void declarations(Plsql::Block& block);
  Plsql::Type type(Plsql::Declaration& d);
  Plsql::Statements statements(std::initializer_list<QStringView> stops);
  std::unique_ptr<Plsql::Statement> statement();
  void loopBody(Plsql::Statement& s);
  void ifStatement(Plsql::Statement& s);
  void forStatement(Plsql::Statement& s);
  void sqlStatement(Plsql::Statement& s);
  void executeImmediate(Plsql::Statement& s);
  void call(Plsql::Statement& s);
  QStringList names();

  // The tokens up to the first of stops outside brackets and CASE ... END; the cursor is left
  // on the stop.
  Plsql::Range until(std::initializer_list<QStringView> stops);
  const SqlToken& peek(size_t ahead = 0) const;
  bool accept(QStringView word);
  void expect(QStringView word);
  QString name();
  [[noreturn]] void unexpected() const;
  [[noreturn]] void unsupported() const;

  const std::vector<SqlToken>& m_t;
  const QString& m_sql;
  size_t m_pos = 0;
  int m_loops = 0; // loops around the statement being read
};
