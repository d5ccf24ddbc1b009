#pragma once

#include <QObject>
#include <QString>

class FlexGrid;
class MessageBoxes;
class TextTable;

// Writes column col of rows 1..n of grid from the catalogue table: its IDs (field 0) when ids is
// set, else its display names (field 1).
void ShowIdsOrNames(FlexGrid& grid, int col, const TextTable& table, bool ids);
// Keeps the ID and the display name of each column read (fields 0 and 1) in columns, and shows
// them in the field grid: the row number, the ID or the name, fields 2 to 4, no key marked.
void ShowFields(FlexGrid& fields, TextTable& columns, const TextTable& read, bool ids);
// Rewrites the names of the key rows from the column table, through the field-grid row number
// each key keeps in its cell 0.
void ShowKeyNames(FlexGrid& keys, const TextTable& columns, bool ids);

// Whether field row r is a key already: its name is marked.
bool IsKeyField(const FlexGrid& fields, int r);
// False, after saying so, when the keys are full (ten of them).
bool RoomForKey(const FlexGrid& keys, MessageBoxes& boxes);
// Makes field row r the last key: its number and cells 1 to 4 copied, the value cells empty, and
// the field's name marked. Returns the new key row.
int AppendKey(FlexGrid& fields, FlexGrid& keys, int r);
// Drops key row k: the keys after it close up and its field loses the mark.
void RemoveKey(FlexGrid& fields, FlexGrid& keys, int k);

// The mouse and drag handling of a browser's three grids: the object grid (tables, or indexes in
// the index browser), the field grid of the chosen object's columns, and the key grid. A click
// or a drop of an object row shows its fields; a double-click or a drop moves a field into the
// keys or a key back out. The window decides what each request means.
class BrowserGrids final : public QObject {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(BrowserGrids)

public:
  BrowserGrids(FlexGrid* objects, FlexGrid* fields, FlexGrid* keys, QObject* parent);

  // The kind of the drag last begun: "Table", "field" or "key".
  const QString& DragSource() const { return m_dragSource; }

Q_SIGNALS:
  void loadFields();
  void addKey();
  void removeKey();
  // The right button went down on a field grid that has rows.
  void fieldMenu();

private:
  void objectsMouseDown();
  void fieldsMouseDown(Qt::MouseButton button);
  void keysMouseDown();
  void beginDrag(FlexGrid* grid, const QString& kind);

  FlexGrid* m_objects;
  FlexGrid* m_fields;
  FlexGrid* m_keys;
  QString m_dragSource;
};
