#include "viewers/RefreshedList.h"

#include "viewers/RefreshFrame.h"
#include "widgets/FlexGrid.h"
#include "widgets/FollowResize.h"
#include "widgets/Twips.h"

#include <QLabel>
#include <QStatusBar>

RefreshedList::RefreshedList(BDBSWEEP& state, MessageBoxes& boxes, int refreshSeconds, QWidget* parent)
    : QDialog(parent), m_state(state), m_boxes(boxes), m_grdData(new FlexGrid(this)), m_lblTable(new QLabel(this)),
      m_lblTotal(new QLabel(this)), m_frmUpd(new RefreshFrame(refreshSeconds, this)), m_stsDT(new QStatusBar(this)) {
  m_grdData->setObjectName(QStringLiteral("grdData"));
  m_lblTable->setObjectName(QStringLiteral("lblTable"));
  m_lblTotal->setObjectName(QStringLiteral("lblTotal"));
  m_stsDT->setObjectName(QStringLiteral("stsDT"));
  m_stsDT->setSizeGripEnabled(true);
  m_lblTotal->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
}

void RefreshedList::layoutDone() {
  m_loadSize = size();
  m_loadGridSize = m_grdData->size();
  placeBelowGrid();
}

void RefreshedList::placeBelowGrid() {
  m_stsDT->setGeometry(0, height() - m_stsDT->sizeHint().height(), width(), m_stsDT->sizeHint().height());
  m_frmUpd->move(m_grdData->x(), m_grdData->geometry().bottom() + 1 + twipsToPixelsY(this, 20));
  const int left = m_frmUpd->geometry().right() + 1 + twipsToPixelsX(this, 60);
  m_lblTotal->setGeometry(left, m_frmUpd->y(), std::max(0, m_grdData->geometry().right() + 1 - left),
                          m_frmUpd->height());
}

void RefreshedList::resizeEvent(QResizeEvent* event) {
  QDialog::resizeEvent(event);
  if (m_loadSize.isEmpty())
    return;
  FollowWindowResize(*m_grdData, m_loadGridSize, m_loadSize, size());
  placeBelowGrid();
}
