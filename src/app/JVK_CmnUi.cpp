#include "app/JVK_CmnUi.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QListWidget>

void CopyTextToClipboard(const QString& text) { QGuiApplication::clipboard()->setText(text); }

void AddListItemWithData(QListWidget* list, const QString& text, qint32 data) {
  auto* item = new QListWidgetItem(text, list);
  item->setData(Qt::UserRole, data);
}

void SelectEveryItem(QListWidget& list, bool selected) {
  const QSignalBlocker quiet(list);
  for (int i = 0; i < list.count(); ++i)
    list.item(i)->setSelected(selected);
}
