#pragma once

#include <QVariant>

// A field value that may be Null: Null becomes 0 (mode 0), "" (mode 1) or "Null" (any other
// mode); any other value comes back unchanged.
QVariant NullToValue(const QVariant& value, int mode);
