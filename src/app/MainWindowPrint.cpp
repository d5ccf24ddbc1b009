// The main window's result print.
#include "app/FDBSWEEP.h"

#include "app/WindowFrame.h"
#include "common/BDBSWEEP.h"

#include <QLineEdit>

void FDBSWEEP::cmdPrint_Click() { m_frame->printResults(*m_printer, m_state.gLastWhere + m_txtAddWhere->text()); }
