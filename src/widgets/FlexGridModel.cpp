#include "widgets/FlexGridModel.h"

#include <QBrush>
#include <QGuiApplication>
#include <QPalette>

#include <algorithm>
#include <cmath>
#include <numeric>

FlexGridModel::FlexGridModel(QObject* parent) : QAbstractTableModel(parent) {
  setCols(2);
  setRows(2);
}

FlexGridModel::~FlexGridModel() = default;

void FlexGridModel::resizeStorage(int rows) {
  m_text.resize(size_t(rows));
  m_ends.resize(size_t(rows) * m_cols, 0);
  m_style.resize(size_t(rows));
  m_rows = rows;
}

void FlexGridModel::setRows(int rows) {
  rows = std::max(rows, m_fixedRows);
  if (rows == m_rows)
    return;
  const bool headerAppeared = m_rows < m_fixedRows;
  const int oldBody = std::max(0, m_rows - m_fixedRows);
  const int newBody = rows - m_fixedRows;
  if (newBody > oldBody)
    beginInsertRows({}, oldBody, newBody - 1);
  else if (newBody < oldBody)
    beginRemoveRows({}, newBody, oldBody - 1);
  resizeStorage(rows);
  if (newBody > oldBody)
    endInsertRows();
  else if (newBody < oldBody)
    endRemoveRows();
  if (headerAppeared)
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, m_cols - 1);
}

void FlexGridModel::setCols(int cols) {
  cols = std::max(cols, std::max(m_fixedCols, 1));
  if (cols == m_cols)
    return;
  if (cols > m_cols)
    beginInsertColumns({}, m_cols, cols - 1);
  else
    beginRemoveColumns({}, cols, m_cols - 1);
  std::vector<quint32> ends(size_t(m_rows) * cols, 0);
  for (int r = 0; r < m_rows; ++r) {
    const int kept = std::min(cols, m_cols);
    for (int c = 0; c < cols; ++c)
      ends[size_t(r) * cols + c] = c < kept ? end(r, c) : (kept ? end(r, kept - 1) : 0);
    if (kept > 0)
      m_text[size_t(r)].truncate(end(r, kept - 1));
    if (m_style[size_t(r)])
      m_style[size_t(r)]->resize(size_t(cols));
  }
  m_ends.swap(ends);
  m_colAlignment.resize(size_t(cols));
  const bool grew = cols > m_cols;
  m_cols = cols;
  if (grew)
    endInsertColumns();
  else
    endRemoveColumns();
}

void FlexGridModel::setFixedRows(int fixed) {
  fixed = std::clamp(fixed, 0, 1);
  if (fixed == m_fixedRows)
    return;
  beginResetModel();
  m_fixedRows = fixed;
  if (m_rows < fixed)
    resizeStorage(fixed);
  endResetModel();
}

void FlexGridModel::setFixedCols(int fixed) {
  fixed = std::clamp(fixed, 0, m_cols);
  if (fixed == m_fixedCols)
    return;
  m_fixedCols = fixed;
  if (m_rows > m_fixedRows)
    Q_EMIT dataChanged(index(0, 0), index(m_rows - m_fixedRows - 1, m_cols - 1));
}

QStringView FlexGridModel::textView(int row, int col) const {
  if (!contains(row, col))
    return {};
  const quint32 s = start(row, col);
  return QStringView(m_text[size_t(row)]).mid(s, end(row, col) - s);
}

QString FlexGridModel::text(int row, int col) const { return textView(row, col).toString(); }

void FlexGridModel::setText(int row, int col, const QString& text) {
  if (!contains(row, col))
    return;
  const quint32 s = start(row, col);
  const quint32 e = end(row, col);
  QString& packed = m_text[size_t(row)];
  packed.replace(qsizetype(s), qsizetype(e - s), text);
  const qint64 delta = qint64(text.size()) - qint64(e - s);
  quint32* ends = &m_ends[size_t(row) * m_cols];
  for (int c = col; c < m_cols; ++c)
    ends[c] = quint32(qint64(ends[c]) + delta);
  changed(row, col);
}

const FlexGridModel::CellStyle* FlexGridModel::style(int row, int col) const {
  if (!contains(row, col) || !m_style[size_t(row)])
    return nullptr;
  return &(*m_style[size_t(row)])[size_t(col)];
}

FlexGridModel::CellStyle& FlexGridModel::styleFor(int row, int col) {
  auto& rowStyle = m_style[size_t(row)];
  if (!rowStyle)
    rowStyle = std::make_unique<RowStyle>(size_t(m_cols));
  return (*rowStyle)[size_t(col)];
}

QColor FlexGridModel::backColor(int row, int col) const {
  const auto* s = style(row, col);
  return s ? s->back : QColor();
}

void FlexGridModel::setBackColor(int row, int col, const QColor& color) {
  if (!contains(row, col))
    return;
  styleFor(row, col).back = color;
  changed(row, col);
}

QColor FlexGridModel::foreColor(int row, int col) const {
  const auto* s = style(row, col);
  return s ? s->fore : QColor();
}

void FlexGridModel::setForeColor(int row, int col, const QColor& color) {
  if (!contains(row, col))
    return;
  styleFor(row, col).fore = color;
  changed(row, col);
}

Qt::Alignment FlexGridModel::alignment(int row, int col) const {
  const auto* s = style(row, col);
  return s ? s->alignment : Qt::Alignment();
}

void FlexGridModel::setAlignment(int row, int col, Qt::Alignment alignment) {
  if (!contains(row, col))
    return;
  styleFor(row, col).alignment = alignment;
  changed(row, col);
}

Qt::Alignment FlexGridModel::columnAlignment(int col) const {
  return col >= 0 && col < m_cols ? m_colAlignment[size_t(col)] : Qt::Alignment();
}

void FlexGridModel::setColumnAlignment(int col, Qt::Alignment alignment) {
  if (col < 0 || col >= m_cols)
    return;
  m_colAlignment[size_t(col)] = alignment;
  for (int r = 0; r < m_rows; r += std::max(1, m_rows - 1))
    changed(r, col);
}

void FlexGridModel::clear() {
  for (auto& t : m_text)
    t = QString();
  std::fill(m_ends.begin(), m_ends.end(), 0);
  for (auto& s : m_style)
    s.reset();
  if (m_rows > 0) {
    changed(0, 0);
    changed(m_rows - 1, m_cols - 1);
  }
}

bool FlexGridModel::parseNumber(QStringView text, double* value) {
  text = text.trimmed();
  if (text.isEmpty())
    return false;
  // The C locale reads "1,234" (thousands separators) as a number too.
  bool ok = false;
  const double v = QLocale::c().toDouble(text, &ok);
  if (!ok || !std::isfinite(v))
    return false;
  if (value)
    *value = v;
  return true;
}

void FlexGridModel::sortRows(int firstRow, int lastRow, int firstCol, int lastCol, bool descending) {
  firstRow = std::max(firstRow, m_fixedRows);
  lastRow = std::min(lastRow, m_rows - 1);
  firstCol = std::max(firstCol, 0);
  lastCol = std::min(lastCol, m_cols - 1);
  const int n = lastRow - firstRow + 1;
  const int k = lastCol - firstCol + 1;
  if (n < 2 || k < 1)
    return;

  struct Key {
    bool number;
    double value;
    QStringView text;
  };
  std::vector<Key> keys(static_cast<size_t>(n) * k);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < k; ++j) {
      Key& key = keys[size_t(i) * k + j];
      key.text = textView(firstRow + i, firstCol + j);
      key.number = parseNumber(key.text, &key.value);
    }
  const auto compare = [](const Key& a, const Key& b) {
    if (a.number != b.number)
      return a.number ? -1 : 1;
    if (a.number)
      return a.value < b.value ? -1 : (a.value > b.value ? 1 : 0);
    return a.text.compare(b.text, Qt::CaseSensitive);
  };
  std::vector<int> order(static_cast<size_t>(n));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int x, int y) {
    for (int j = 0; j < k; ++j) {
      const int c = compare(keys[size_t(x) * k + j], keys[size_t(y) * k + j]);
      if (c != 0)
        return descending ? c > 0 : c < 0;
    }
    return false;
  });

  std::vector<QString> text(static_cast<size_t>(n));
  std::vector<quint32> ends(static_cast<size_t>(n) * m_cols);
  std::vector<std::unique_ptr<RowStyle>> style(static_cast<size_t>(n));
  for (int i = 0; i < n; ++i) {
    const size_t from = size_t(firstRow + order[size_t(i)]);
    text[size_t(i)] = std::move(m_text[from]);
    std::copy_n(m_ends.begin() + qsizetype(from) * m_cols, m_cols, ends.begin() + qsizetype(i) * m_cols);
    style[size_t(i)] = std::move(m_style[from]);
  }
  for (int i = 0; i < n; ++i) {
    const size_t to = size_t(firstRow + i);
    m_text[to] = std::move(text[size_t(i)]);
    m_style[to] = std::move(style[size_t(i)]);
  }
  std::copy(ends.begin(), ends.end(), m_ends.begin() + qsizetype(firstRow) * m_cols);
  // The cells moved, the rows did not: the selection stays where it is, as the grid's did.
  changed(firstRow, 0);
  changed(lastRow, m_cols - 1);
}

void FlexGridModel::changed(int row, int col) {
  if (row < m_fixedRows) {
    m_headerChanged = true;
  } else if (m_bottom < m_top) {
    m_top = m_bottom = row;
    m_left = m_right = col;
  } else {
    m_top = std::min(m_top, row);
    m_bottom = std::max(m_bottom, row);
    m_left = std::min(m_left, col);
    m_right = std::max(m_right, col);
  }
  if (!m_flushPending) {
    m_flushPending = true;
    QMetaObject::invokeMethod(this, &FlexGridModel::flushChanges, Qt::QueuedConnection);
  }
}

void FlexGridModel::flushChanges() {
  m_flushPending = false;
  if (m_headerChanged)
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, m_cols - 1);
  m_headerChanged = false;
  m_bottom = std::min(m_bottom, m_rows - 1);
  m_right = std::min(m_right, m_cols - 1);
  if (m_top <= m_bottom && m_left <= m_right && m_top >= m_fixedRows)
    Q_EMIT dataChanged(index(m_top - m_fixedRows, m_left), index(m_bottom - m_fixedRows, m_right));
  m_top = 0;
  m_bottom = -1;
}

int FlexGridModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : m_rows - m_fixedRows; }

int FlexGridModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : m_cols; }

QVariant FlexGridModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid())
    return {};
  const int row = index.row() + m_fixedRows;
  const int col = index.column();
  switch (role) {
  case Qt::DisplayRole: return text(row, col);
  // Narrow columns cut long texts short; the whole text is a hover away.
  case Qt::ToolTipRole: return text(row, col);
  case Qt::BackgroundRole: {
    const QColor c = backColor(row, col);
    if (c.isValid())
      return QBrush(c);
    if (col < m_fixedCols)
      return QGuiApplication::palette().button();
    return {};
  }
  case Qt::ForegroundRole: {
    const QColor c = foreColor(row, col);
    return c.isValid() ? QVariant(QBrush(c)) : QVariant();
  }
  case Qt::TextAlignmentRole: {
    Qt::Alignment a = alignment(row, col);
    if (!a)
      a = columnAlignment(col);
    if (!a)
      a = parseNumber(textView(row, col), nullptr) ? Qt::AlignRight : Qt::AlignLeft;
    if (!(a & Qt::AlignVertical_Mask))
      a |= Qt::AlignVCenter;
    return QVariant::fromValue(int(a));
  }
  default: return {};
  }
}

QVariant FlexGridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || m_fixedRows == 0 || m_rows == 0)
    return QAbstractTableModel::headerData(section, orientation, role);
  if (role == Qt::DisplayRole)
    return text(0, section);
  if (role == Qt::TextAlignmentRole) {
    const Qt::Alignment a = alignment(0, section);
    return QVariant::fromValue(int(a ? a : Qt::AlignLeft | Qt::AlignVCenter));
  }
  return {};
}

Qt::ItemFlags FlexGridModel::flags(const QModelIndex& index) const {
  return index.isValid() ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}
