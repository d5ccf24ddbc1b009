#include "widgets/FlexGrid.h"

#include "widgets/DragKind.h"
#include "widgets/Twips.h"

#include <QApplication>
#include <QHeaderView>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <QPainter>

FlexGrid::FlexGrid(QWidget* parent) : QTableView(parent), m_model(new FlexGridModel(this)) {
  setModel(m_model);
  verticalHeader()->hide();
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 6);
  horizontalHeader()->setSectionsClickable(true);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setStretchLastSection(false);
  setSelectionMode(QAbstractItemView::ContiguousSelection);
  setSelectionBehavior(QAbstractItemView::SelectItems);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setWordWrap(false);
  setCornerButtonEnabled(false);
  m_colTwips.assign(size_t(Cols()), -1);

  // QTableView selects the column on its own when a heading is pressed; this runs after it and
  // puts the selection the way the grid's users expect (current cell in the first body row).
  connect(horizontalHeader(), &QHeaderView::sectionPressed, this, &FlexGrid::headingPressed);
  connect(horizontalHeader(), &QHeaderView::sectionClicked, this, [this] { Q_EMIT Click(); });
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!m_showing)
      takeSelectionFromView();
  });
  connect(selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
    if (!m_showing)
      takeSelectionFromView();
  });
  showSelection();
}

void FlexGrid::setRows(int rows) {
  m_model->setRows(rows);
  const int last = Rows() - 1;
  setSelection(std::min(m_row, last), m_col, std::min(m_rowSel, last), m_colSel);
}

void FlexGrid::setCols(int cols) {
  m_model->setCols(cols);
  m_colTwips.resize(size_t(Cols()), -1);
  applyColumnWidths();
  const int last = Cols() - 1;
  setSelection(m_row, std::min(m_col, last), m_rowSel, std::min(m_colSel, last));
}

void FlexGrid::setFixedRows(int fixed) {
  m_model->setFixedRows(fixed);
  horizontalHeader()->setVisible(FixedRows() > 0);
  applyColumnWidths();
  showSelection();
}

void FlexGrid::setRow(int row) { setSelection(row, m_col, row, m_col); }
void FlexGrid::setCol(int col) { setSelection(m_row, col, m_row, col); }
void FlexGrid::setRowSel(int row) { setSelection(m_row, m_col, row, m_colSel); }
void FlexGrid::setColSel(int col) { setSelection(m_row, m_col, m_rowSel, col); }

int FlexGrid::ColWidth(int col) const {
  if (col < 0 || col >= Cols())
    return 0;
  const int twips = m_colTwips[size_t(col)];
  return twips >= 0 ? twips : pixelsToTwipsX(this, columnWidth(col));
}

void FlexGrid::setColWidth(int col, int twips) {
  if (col < 0 || col >= Cols())
    return;
  m_colTwips[size_t(col)] = std::max(0, twips);
  setColumnWidth(col, twipsToPixelsX(this, m_colTwips[size_t(col)]));
}

void FlexGrid::applyColumnWidths() {
  for (int c = 0; c < Cols(); ++c)
    if (m_colTwips[size_t(c)] >= 0)
      setColumnWidth(c, twipsToPixelsX(this, m_colTwips[size_t(c)]));
}

void FlexGrid::Sort(SortOrder order) {
  const bool wholeGrid = m_row == m_rowSel;
  const int firstRow = wholeGrid ? FixedRows() : std::min(m_row, m_rowSel);
  const int lastRow = wholeGrid ? Rows() - 1 : std::max(m_row, m_rowSel);
  m_model->sortRows(firstRow, lastRow, std::min(m_col, m_colSel), std::max(m_col, m_colSel),
                    order == SortOrder::GenericDescending);
}

QModelIndex FlexGrid::toIndex(int row, int col) const { return m_model->index(row - FixedRows(), col); }

void FlexGrid::setSelection(int row, int col, int rowSel, int colSel) {
  const auto rowIn = [this](int r) { return std::clamp(r, 0, std::max(0, Rows() - 1)); };
  const auto colIn = [this](int c) { return std::clamp(c, 0, std::max(0, Cols() - 1)); };
  row = rowIn(row);
  rowSel = rowIn(rowSel);
  col = colIn(col);
  colSel = colIn(colSel);
  const bool cellChanged = row != m_row || col != m_col;
  const bool selChanged = cellChanged || rowSel != m_rowSel || colSel != m_colSel;
  m_row = row;
  m_col = col;
  m_rowSel = rowSel;
  m_colSel = colSel;
  showSelection();
  if (cellChanged)
    Q_EMIT RowColChange();
  if (selChanged)
    Q_EMIT SelChange();
}

void FlexGrid::showSelection() {
  m_showing = true;
  const int fixed = FixedRows();
  if (m_row >= fixed && m_rowSel >= fixed && Rows() > fixed) {
    const QModelIndex topLeft = toIndex(std::min(m_row, m_rowSel), std::min(m_col, m_colSel));
    const QModelIndex bottomRight = toIndex(std::max(m_row, m_rowSel), std::max(m_col, m_colSel));
    selectionModel()->setCurrentIndex(toIndex(m_rowSel, m_colSel), QItemSelectionModel::NoUpdate);
    selectionModel()->select(QItemSelection(topLeft, bottomRight), QItemSelectionModel::ClearAndSelect);
  } else {
    selectionModel()->clear();
  }
  m_showing = false;
}

void FlexGrid::takeSelectionFromView() {
  const QModelIndex current = currentIndex();
  if (!current.isValid())
    return;
  const int fixed = FixedRows();
  const int cr = current.row() + fixed;
  const int cc = current.column();
  const QItemSelection selection = selectionModel()->selection();
  int top = cr, bottom = cr, left = cc, right = cc;
  for (const QItemSelectionRange& r : selection) {
    top = std::min(top, r.top() + fixed);
    bottom = std::max(bottom, r.bottom() + fixed);
    left = std::min(left, r.left());
    right = std::max(right, r.right());
  }
  // The view moves its current index to the far end of a shift-click or drag; the grid keeps the
  // cell where the selection started as its current cell and the far end as RowSel/ColSel.
  const bool inside = !selection.isEmpty() && selectionModel()->isSelected(current);
  const int row = inside ? (cr == top ? bottom : top) : cr;
  const int col = inside ? (cc == left ? right : left) : cc;
  const bool cellChanged = row != m_row || col != m_col;
  const bool selChanged = cellChanged || cr != m_rowSel || cc != m_colSel;
  m_row = row;
  m_col = col;
  m_rowSel = cr;
  m_colSel = cc;
  if (cellChanged)
    Q_EMIT RowColChange();
  if (selChanged)
    Q_EMIT SelChange();
}

void FlexGrid::headingPressed(int col) {
  // The heading is row 0, as the mouse handlers count rows.
  m_mouseRow = 0;
  m_mouseCol = col;
  if (Rows() <= FixedRows())
    return;
  const bool extend = QGuiApplication::keyboardModifiers() & Qt::ShiftModifier;
  setSelection(FixedRows(), extend ? m_col : col, Rows() - 1, col);
}

void FlexGrid::trackMouse(const QPoint& pos) {
  const QModelIndex index = indexAt(pos);
  m_mouseRow = index.isValid() ? index.row() + FixedRows() : -1;
  m_mouseCol = index.isValid() ? index.column() : -1;
}

void FlexGrid::mousePressEvent(QMouseEvent* event) {
  trackMouse(event->position().toPoint());
  m_dragKind.clear();
  m_pressPos = event->position().toPoint();
  // The left button moves the current cell before the handlers hear of the press, so they act on
  // the row pressed; a right click leaves the selection for the pop-up menu to act on.
  if (event->button() == Qt::LeftButton) {
    QTableView::mousePressEvent(event);
    // A plain press inside a selected range leaves the view's selection as it was until the
    // release; the grid's current cell is the one pressed at once.
    if (m_mouseRow >= FixedRows() && !(event->modifiers() & Qt::ShiftModifier))
      setSelection(m_mouseRow, m_mouseCol, m_mouseRow, m_mouseCol);
  }
  Q_EMIT MouseDown(event->button(), event->position().toPoint());
}

void FlexGrid::mouseReleaseEvent(QMouseEvent* event) {
  m_dragKind.clear();
  QTableView::mouseReleaseEvent(event);
  if (event->button() == Qt::LeftButton)
    Q_EMIT Click();
}

void FlexGrid::mouseDoubleClickEvent(QMouseEvent* event) {
  QTableView::mouseDoubleClickEvent(event);
  if (event->button() == Qt::LeftButton)
    Q_EMIT DblClick();
}

void FlexGrid::mouseMoveEvent(QMouseEvent* event) {
  trackMouse(event->position().toPoint());
  if (!m_dragKind.isEmpty()) {
    // While a row is being dragged the selection must not stretch after the mouse.
    if ((event->buttons() & Qt::LeftButton) &&
        (event->position().toPoint() - m_pressPos).manhattanLength() >= QApplication::startDragDistance())
      startArmedDrag();
    return;
  }
  QTableView::mouseMoveEvent(event);
}

void FlexGrid::Drag(const QString& kind) { m_dragKind = kind; }

void FlexGrid::startArmedDrag() {
  const QString kind = std::exchange(m_dragKind, QString());
  const QString text = TextMatrix(m_row, m_col);
  auto* drag = new QDrag(this);
  drag->setMimeData(MakeDragData(this, kind, text));
  // A chip with the row's text follows the pointer, so the user sees what is being moved.
  const QFontMetrics metrics = fontMetrics();
  QPixmap chip(metrics.horizontalAdvance(text) + 12, metrics.height() + 6);
  chip.fill(palette().color(QPalette::Highlight));
  QPainter painter(&chip);
  painter.setPen(palette().color(QPalette::HighlightedText));
  painter.drawText(chip.rect(), Qt::AlignCenter, text);
  painter.end();
  drag->setPixmap(chip);
  drag->setHotSpot(QPoint(-8, -8));
  drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::CopyAction);
  // The release ended the drag, not a press of the view's own.
  setState(NoState);
}

void FlexGrid::setDropTarget(bool on) {
  setAcceptDrops(on);
  viewport()->setAcceptDrops(on);
}

void FlexGrid::dragEnterEvent(QDragEnterEvent* event) {
  if (DragKindOf(event->mimeData(), this).isEmpty())
    event->ignore();
  else
    event->acceptProposedAction();
}

void FlexGrid::dragMoveEvent(QDragMoveEvent* event) {
  if (DragKindOf(event->mimeData(), this).isEmpty())
    event->ignore();
  else
    event->acceptProposedAction();
}

void FlexGrid::dropEvent(QDropEvent* event) {
  if (DragKindOf(event->mimeData(), this).isEmpty()) {
    event->ignore();
    return;
  }
  event->acceptProposedAction();
  Q_EMIT DragDrop();
}
