// The main window's job buttons: the plan they work on, read from the target list, the keys and
// the filter rows.
#include "app/FDBSWEEP.h"

#include "app/WindowFrame.h"
#include "common/BDBSWEEP.h"
#include "jobs/JobPlan.h"
#include "jobs/ResultList.h"
#include "widgets/FlexGrid.h"

#include <QLineEdit>
#include <QListWidget>

#include <cmath>

void FDBSWEEP::lstCountClear() { m_frame->results()->clear(); }

void FDBSWEEP::cmdJOB_Click(int index) { m_frame->cmdJOB_Click(index); }

QString FDBSWEEP::countColumn() {
  if (m_grdKey->Rows() < 2)
    return QString();
  m_grdKey->setRow(1);
  m_grdKey->setCol(0);
  bool isNumber = false;
  const double number = m_grdKey->Text().trimmed().toDouble(&isNumber);
  if (!isNumber || !std::isfinite(number))
    return QString();
  return m_state.gColumns.at(0, int(std::floor(number))).trimmed();
}

JobPlan FDBSWEEP::takePlan() {
  JobPlan plan;
  for (int i = 0; i < m_lstTable->count(); ++i) {
    const QListWidgetItem* item = m_lstTable->item(i);
    if (!item->isSelected())
      continue;
    const int r = item->data(Qt::UserRole).toInt();
    plan.targets.append({m_state.gTargets.at(0, r), m_state.gTargets.at(1, r), i + 1});
  }
  plan.countColumn = countColumn();
  plan.filterRows = filterRows();
  plan.addWhere = m_txtAddWhere->text();
  return plan;
}
