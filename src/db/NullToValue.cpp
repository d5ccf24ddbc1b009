#include "db/NullToValue.h"

QVariant NullToValue(const QVariant& value, int mode) {
  if (value.isValid())
    return value;
  switch (mode) {
  case 0: return 0;
  case 1: return QString();
  default: return QStringLiteral("Null");
  }
}
