#pragma once

#include <QString>

class QListWidget;

// The common routines that need widgets.

// Replaces the clipboard's contents with text.
void CopyTextToClipboard(const QString& text);

// Adds text as a new item of list and stores data as that item's number (Qt::UserRole).
void AddListItemWithData(QListWidget* list, const QString& text, qint32 data);

// Selects (or deselects) every item of list, with one selection signal for them all.
void SelectEveryItem(QListWidget& list, bool selected);
