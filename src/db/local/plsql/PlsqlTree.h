#pragma once

#include "db/local/OracleType.h"

#include <QStringList>

#include <memory>
#include <vector>

// An anonymous block as its parser leaves it: statements whose expressions and SQL stay token
// ranges of the block's text, evaluated by the engine's SQL when they run.
namespace Plsql {

// Tokens [begin, end) of the block.
struct Range {
  size_t begin = 0, end = 0;
  bool empty() const { return begin >= end; }
};

struct Type {
  enum class Kind { Number, Integer, Text, Date, Boolean };
  Kind kind = Kind::Number;
  qint64 length = 0;         // Text: the most characters it holds
  bool fixed = false;        // CHAR: padded with blanks to its length
  QVariant precision, scale; // Number, when declared
};

struct Statement;
using Statements = std::vector<std::unique_ptr<Statement>>;

struct Declaration {
  enum class Kind { Variable, Cursor, Exception };
  Kind kind = Kind::Variable;
  QString name;
  size_t at = 0; // its first token
  Type type;
  Range anchor;         // name%TYPE or table.column%TYPE, resolved when the block runs
  bool rowType = false; // the anchor is table%ROWTYPE or cursor%ROWTYPE: a record
  bool constant = false;
  bool notNull = false;
  Range value; // the default, or the cursor's query
};

struct Handler {
  size_t at = 0;     // its WHEN
  QStringList names; // exception names; OTHERS catches any
  Statements body;
};

struct Block {
  std::vector<Declaration> declarations;
  Statements body;
  std::vector<Handler> handlers;
};

struct Branch {
  Range condition;
  Statements body;
};

struct Statement {
  enum class Kind {
    Null,
    Assign,     // name := a
    If,         // branches, then body as ELSE
    ForRange,   // FOR name IN [REVERSE] a .. b LOOP body
    ForQuery,   // FOR name IN (a) | cursor name LOOP body
    While,      // WHILE a LOOP body
    Loop,       // LOOP body
    Exit,       // EXIT [WHEN a]
    Continue,   // CONTINUE [WHEN a]
    Nested,     // block
    Sql,        // a: INSERT, UPDATE, DELETE, MERGE, COMMIT, ROLLBACK, SAVEPOINT
    SelectInto, // a: the query without its INTO clause; into: the targets
    Execute,    // EXECUTE IMMEDIATE a [INTO into] [USING arguments]
    Call,       // name(arguments): DBMS_OUTPUT.*, RAISE_APPLICATION_ERROR
    Raise,      // RAISE [name]
    Return,
    Open,  // OPEN name
    Fetch, // FETCH name INTO into
    Close  // CLOSE name
  };
  Kind kind = Kind::Null;
  size_t at = 0; // its first token, for the line an error reports
  QString name;
  Range a, b;
  bool reverse = false;
  std::vector<Branch> branches;
  Statements body;
  std::unique_ptr<Block> block;
  QStringList into;
  std::vector<Range> arguments;
};

} // namespace Plsql
