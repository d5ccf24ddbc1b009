#include "browser/BrowserGrids.h"

#include "browser/TextTable.h"
#include "services/MessageBoxes.h"
#include "widgets/FlexGrid.h"

namespace {

const QString TableDrag = QStringLiteral("Table");
const QString FieldDrag = QStringLiteral("field");
const QString KeyDrag = QStringLiteral("key");
// The marker of a column that is already a key.
const QColor KeyMarker(0, 255, 0);
constexpr int MaxKeys = 10;

// Whether the last press or click landed on a data row, not on the heading or the empty space
// below the rows.
bool onDataRow(const FlexGrid* grid) { return grid->MouseRow() >= grid->FixedRows() && grid->Rows() > 1; }

} // namespace

BrowserGrids::BrowserGrids(FlexGrid* objects, FlexGrid* fields, FlexGrid* keys, QObject* parent)
    : QObject(parent), m_objects(objects), m_fields(fields), m_keys(keys) {
  for (FlexGrid* grid : {objects, fields, keys})
    grid->setDropTarget(true);

  const auto loadOnDataRow = [this] {
    if (onDataRow(m_objects))
      Q_EMIT loadFields();
  };
  connect(objects, &FlexGrid::Click, this, loadOnDataRow);
  connect(objects, &FlexGrid::DblClick, this, loadOnDataRow);
  connect(objects, &FlexGrid::MouseDown, this, &BrowserGrids::objectsMouseDown);
  connect(objects, &FlexGrid::DragDrop, this, [this] {
    // A row pressed and let go on its own grid.
    if (m_dragSource == TableDrag)
      Q_EMIT loadFields();
  });

  connect(fields, &FlexGrid::MouseDown, this, &BrowserGrids::fieldsMouseDown);
  connect(fields, &FlexGrid::DblClick, this, [this] {
    if (onDataRow(m_fields))
      Q_EMIT addKey();
  });
  connect(fields, &FlexGrid::DragDrop, this, [this] {
    if (m_dragSource == KeyDrag)
      Q_EMIT removeKey();
    else if (m_dragSource == TableDrag)
      Q_EMIT loadFields();
  });

  connect(keys, &FlexGrid::MouseDown, this, &BrowserGrids::keysMouseDown);
  connect(keys, &FlexGrid::DblClick, this, [this] {
    if (onDataRow(m_keys))
      Q_EMIT removeKey();
  });
  connect(keys, &FlexGrid::DragDrop, this, [this] {
    if (m_dragSource == FieldDrag)
      Q_EMIT addKey();
  });
}

void BrowserGrids::beginDrag(FlexGrid* grid, const QString& kind) {
  grid->setCol(0);
  m_dragSource = kind;
  grid->Drag(kind);
}

void BrowserGrids::objectsMouseDown() {
  m_objects->setCol(0);
  if (!onDataRow(m_objects) || m_objects->Text().isEmpty())
    return;
  beginDrag(m_objects, TableDrag);
  // The field grid takes the drop even before any columns were shown.
  m_fields->setEnabled(true);
}

void BrowserGrids::fieldsMouseDown(Qt::MouseButton button) {
  // The menu scrolls the grid, so anywhere on a grid with rows will do; a drag needs a row.
  if (button == Qt::RightButton) {
    if (m_fields->Rows() > 1)
      Q_EMIT fieldMenu();
  } else if (onDataRow(m_fields)) {
    beginDrag(m_fields, FieldDrag);
  }
}

void BrowserGrids::keysMouseDown() {
  if (onDataRow(m_keys))
    beginDrag(m_keys, KeyDrag);
}

void ShowIdsOrNames(FlexGrid& grid, int col, const TextTable& table, bool ids) {
  const int field = ids ? 0 : 1;
  for (int r = 1; r < grid.Rows(); ++r)
    grid.setTextMatrix(r, col, table.at(field, r));
}

void ShowFields(FlexGrid& fields, TextTable& columns, const TextTable& read, bool ids) {
  const int count = read.upper();
  columns.redim(count);
  fields.setRows(count + 1);
  for (int r = 1; r <= count; ++r) {
    columns.set(0, r, read.at(0, r));
    columns.set(1, r, read.at(1, r));
    fields.setTextMatrix(r, 0, QString::number(r));
    fields.setCellBackColor(r, 1, QColor());
    for (int c = 2; c <= 4; ++c)
      fields.setTextMatrix(r, c, read.at(c, r));
  }
  ShowIdsOrNames(fields, 1, columns, ids);
}

void ShowKeyNames(FlexGrid& keys, const TextTable& columns, bool ids) {
  const int field = ids ? 0 : 1;
  for (int k = 1; k < keys.Rows(); ++k)
    keys.setTextMatrix(k, 1, columns.at(field, keys.TextMatrix(k, 0).toInt()));
}

bool IsKeyField(const FlexGrid& fields, int r) { return fields.CellBackColor(r, 1).isValid(); }

bool RoomForKey(const FlexGrid& keys, MessageBoxes& boxes) {
  if (keys.Rows() < MaxKeys + 1)
    return true;
  boxes.show(QStringLiteral("選択は最大10項目までです"), QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::Ok,
             MessageBoxes::Icon::Exclamation);
  return false;
}

int AppendKey(FlexGrid& fields, FlexGrid& keys, int r) {
  const int k = keys.Rows();
  keys.setRows(k + 1);
  keys.setRow(k);
  fields.setCellBackColor(r, 1, KeyMarker);
  keys.setTextMatrix(k, 0, QString::number(r));
  for (int c = 1; c <= 4; ++c)
    keys.setTextMatrix(k, c, fields.TextMatrix(r, c));
  for (int c = 5; c <= 8; ++c)
    keys.setTextMatrix(k, c, QString());
  return k;
}

void RemoveKey(FlexGrid& fields, FlexGrid& keys, int k) {
  fields.setCellBackColor(keys.TextMatrix(k, 0).toInt(), 1, QColor());
  for (int j = k + 1; j < keys.Rows(); ++j)
    for (int c = 0; c < keys.Cols(); ++c)
      keys.setTextMatrix(j - 1, c, keys.TextMatrix(j, c));
  keys.setRows(keys.Rows() - 1);
}
