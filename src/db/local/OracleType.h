#pragma once

#include "db/local/TokenCursor.h"

#include <QVariant>

// A column's Oracle data type as the dictionary reports it.
struct OracleType final {
  QString dataType;      // "VARCHAR2", "NUMBER", "TIMESTAMP(6)" ...
  qint64 dataLength = 0; // in bytes
  QVariant precision;    // Null when not fixed
  QVariant scale;
  qint64 charLength = 0; // characters, for character types
  QString sqliteType;    // the declaration given to SQLite (its affinity follows Oracle's kind)

  // Parses a type at the cursor (ORA-00902 for an unknown one).
  static OracleType parse(TokenCursor& c);
};
