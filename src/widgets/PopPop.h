#pragma once

#include <QMenu>
#include <QPointer>

#include <array>

class QAbstractScrollArea;

// The pop-up menu of the browser's lists and grids: select or deselect every target, scroll the
// control it was opened on, or cancel. It remembers that control until it is opened again.
class PopPop final : public QMenu {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(PopPop)

public:
  explicit PopPop(QWidget* parent);

  // Shows the menu at globalPos for target; the two selection entries only make sense on the
  // target list and are disabled elsewhere. Returns at once.
  void open(QAbstractScrollArea* target, bool selectionEntries, const QPoint& globalPos);

  QAction* popMenu(int index) const { return m_popMenu[size_t(index)]; }
  QAction* popScroll(int index) const { return m_popScroll[size_t(index)]; }
  // The control the menu was last opened on.
  QAbstractScrollArea* target() const { return m_target; }

Q_SIGNALS:
  // "全て選択" (true) or "全て解除" (false) was chosen.
  void selectAll(bool selected);

private:
  QPointer<QAbstractScrollArea> m_target;
  std::array<QAction*, 2> m_popMenu{};
  std::array<QAction*, 4> m_popScroll{};
};
