#include "jobs/ResultList.h"

#include "widgets/FlexGrid.h"

#include <QFontDatabase>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {

// The colour of a line says what happened, so the line the grid stands on keeps its colours and
// shows a frame instead of the selection's.
class LineDelegate final : public QStyledItemDelegate {
public:
  using QStyledItemDelegate::QStyledItemDelegate;
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QStyleOptionViewItem plain(option);
    const bool current = plain.state & QStyle::State_Selected;
    plain.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
    QStyledItemDelegate::paint(painter, plain, index);
    if (current) {
      painter->save();
      painter->setPen(QPen(option.palette.color(QPalette::Highlight), 2));
      painter->drawRect(option.rect.adjusted(1, 1, -1, -1));
      painter->restore();
    }
  }
};

} // namespace

ResultList::ResultList(FlexGrid* grid) : QObject(grid), m_grid(grid) {
  m_grid->setCols(1);
  m_grid->setFixedRows(1);
  m_grid->setItemDelegate(new LineDelegate(m_grid));
  // The lines are laid out in fields of fixed width: they line up only in a fixed-pitch font,
  // one whose Japanese is twice its Latin width, as the fields count it.
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setFamilies({QStringLiteral("Noto Sans Mono CJK JP"), QStringLiteral("IPAGothic"), font.family()});
  font.setPointSize(9);
  m_grid->setFont(font);
  connect(m_grid, &FlexGrid::Click, this, [this] {
    if (m_grid->MouseRow() >= m_grid->FixedRows())
      Q_EMIT lineClicked(m_grid->Text());
  });
  connect(m_grid, &FlexGrid::MouseDown, this, [this](Qt::MouseButton button, QPoint pos) {
    if (button != Qt::RightButton)
      return;
    // The scroll entries of the menu then act from the line under the pointer.
    if (m_grid->MouseRow() >= m_grid->FixedRows())
      m_grid->setRow(m_grid->MouseRow());
    Q_EMIT menuRequested(m_grid->viewport()->mapToGlobal(pos));
  });
  clear();
}

QColor ResultList::LetterColour(QChar letter) {
  switch (letter.toUpper().unicode()) {
  case u'D': return QColor(0, 0, 0);
  case u'W': return QColor(255, 255, 255);
  case u'Y': return QColor(255, 255, 0);
  case u'R': return QColor(255, 0, 0);
  case u'G': return QColor(0, 255, 0);
  case u'B': return QColor(0, 0, 255);
  case u'M': return QColor(255, 0, 255);
  case u'C': return QColor(0, 255, 255);
  default: return QColor();
  }
}

void ResultList::clear() {
  m_grid->setRows(1);
  m_grid->setRow(0);
  m_grid->setCol(0);
  m_grid->setTextMatrix(0, 0, QStringLiteral("処理結果"));
  m_grid->setCellAlignment(0, 0, Qt::AlignCenter);
}

void ResultList::addItem(const QString& text, const QString& code) {
  const int row = m_grid->Rows();
  m_grid->setRows(row + 1);
  m_grid->setRow(row);
  m_grid->setCol(0);
  m_grid->setTextMatrix(row, 0, text);
  // A one-letter code colours both: it is the first and the last letter at once.
  const QColor back = LetterColour((code + QStringLiteral("  ")).front());
  const QColor fore = LetterColour((QStringLiteral("  ") + code).back());
  if (back.isValid())
    m_grid->setCellBackColor(row, 0, back);
  if (fore.isValid())
    m_grid->setCellForeColor(row, 0, fore);
}

void ResultList::repaint() { m_grid->viewport()->repaint(); }
