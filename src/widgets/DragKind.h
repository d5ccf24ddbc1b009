#pragma once

#include <QString>

class QMimeData;
class QWidget;

// The windows drag their own rows about (a table onto the column grid, a column onto the key
// grid, a key back). The drag carries its kind ("Table", "field", "key") and the window it
// started in under our own MIME type, so nothing from another program, and no row of another
// window, is mistaken for one of this window's rows.
QMimeData* MakeDragData(const QWidget* source, const QString& kind, const QString& text);

// The kind of an internal drag that target's window started; "" for anything else.
QString DragKindOf(const QMimeData* data, const QWidget* target);
