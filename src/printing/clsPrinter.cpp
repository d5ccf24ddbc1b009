#include "printing/clsPrinter.h"

clsPrinter::clsPrinter() : m_font(QStringLiteral("ＭＳ ゴシック"), 10) {}
