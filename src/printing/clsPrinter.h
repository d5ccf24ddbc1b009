#pragma once

#include <QFont>

// The print object shared by the whole program. Its font is set from the settings at start-up
// and used by every text it draws.
class clsPrinter final {
public:
  clsPrinter();

  QFont& Font() { return m_font; }
  const QFont& Font() const { return m_font; }

private:
  QFont m_font;
};
