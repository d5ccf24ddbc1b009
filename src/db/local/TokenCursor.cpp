#include "db/local/TokenCursor.h"

QString TokenCursor::textOf(int error) {
  switch (error) {
  case 900: return QStringLiteral("invalid SQL statement");
  case 901: return QStringLiteral("invalid CREATE command");
  case 902: return QStringLiteral("invalid datatype");
  case 903: return QStringLiteral("invalid table name");
  case 904: return QStringLiteral("invalid identifier");
  case 905: return QStringLiteral("missing keyword");
  case 906: return QStringLiteral("missing left parenthesis");
  case 907: return QStringLiteral("missing right parenthesis");
  case 922: return QStringLiteral("missing or invalid option");
  case 925: return QStringLiteral("missing INTO keyword");
  case 933: return QStringLiteral("SQL command not properly ended");
  case 940: return QStringLiteral("invalid ALTER command");
  case 950: return QStringLiteral("invalid DROP option");
  case 953: return QStringLiteral("missing or invalid index name");
  case 987: return QStringLiteral("missing or invalid username(s)");
  case 993: return QStringLiteral("missing GRANT keyword");
  case 994: return QStringLiteral("missing OPTION keyword");
  case 2000: return QStringLiteral("missing ( keyword");
  default: return QStringLiteral("syntax error");
  }
}
