#include "services/OraErrorBox.h"

#include "db/OraError.h"
#include "services/MessageBoxes.h"

void ShowOraError(MessageBoxes& boxes, const OraError& error) {
  boxes.show(error.message(), QStringLiteral("エラー"), MessageBoxes::Buttons::Ok, MessageBoxes::Icon::Critical);
}
