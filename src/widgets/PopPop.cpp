#include "widgets/PopPop.h"

#include "widgets/ScrollMove.h"

#include <QAbstractScrollArea>

PopPop::PopPop(QWidget* parent) : QMenu(QStringLiteral("MENU"), parent) {
  setObjectName(QStringLiteral("PopPop"));
  const auto entry = [this](const QString& name, const QString& caption) {
    QAction* action = addAction(caption);
    action->setObjectName(name);
    return action;
  };
  m_popMenu[0] = entry(QStringLiteral("popMenu_0"), QStringLiteral("全て選択"));
  m_popMenu[1] = entry(QStringLiteral("popMenu_1"), QStringLiteral("全て解除"));
  connect(m_popMenu[0], &QAction::triggered, this, [this] { Q_EMIT selectAll(true); });
  connect(m_popMenu[1], &QAction::triggered, this, [this] { Q_EMIT selectAll(false); });
  const QStringList scrolls = {QStringLiteral("上スクロール"), QStringLiteral("下スクロール"),
                               QStringLiteral("最上行スクロール"), QStringLiteral("最下行スクロール")};
  const ScrollMove moves[] = {ScrollMove::PageUp, ScrollMove::PageDown, ScrollMove::Top, ScrollMove::Bottom};
  for (int i = 0; i < 4; ++i) {
    m_popScroll[size_t(i)] = entry(QStringLiteral("popScroll_%1").arg(i), scrolls[i]);
    connect(m_popScroll[size_t(i)], &QAction::triggered, this, [this, move = moves[i]] {
      if (auto* area = qobject_cast<QAbstractScrollArea*>(m_target.data()))
        ScrollVertically(area, move);
    });
  }
  addSeparator()->setObjectName(QStringLiteral("sepa"));
  // Choosing it closes the menu, which is all it is for.
  entry(QStringLiteral("popCancel"), QStringLiteral("ｷｬﾝｾﾙ"));
}

void PopPop::open(QAbstractScrollArea* target, bool selectionEntries, const QPoint& globalPos) {
  m_popMenu[0]->setEnabled(selectionEntries);
  m_popMenu[1]->setEnabled(selectionEntries);
  m_target = target;
  popup(globalPos);
}
