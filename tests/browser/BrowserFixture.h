#pragma once

// The program started on a machine and pointed at an embedded instance, with the helpers the
// browser tests click and drop with.
#include "GridText.h"
#include "MainWindowFixture.h"
#include "RecordingConnection.h"
#include "../db/EngineFixture.h"
#include "db/OraDatabase.h"
#include "widgets/DragKind.h"
#include "widgets/FlexGrid.h"

#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QDropEvent>
#include <QFile>
#include <QListWidget>
#include <QPointer>
#include <QTimer>
#include <QMimeData>

inline void writeFile(const QString& path, const QByteArray& text) {
  QFile f(path);
  QVERIFY(f.open(QIODevice::WriteOnly));
  f.write(text);
}

// A row of the window's own dragged onto target, as the drop reaches it.
inline void dropOn(QWidget* target, QWidget* source, const QString& kind) {
  std::unique_ptr<QMimeData> data(MakeDragData(source, kind, QString()));
  // The drop goes where the drag was last accepted on entering.
  QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, {});
  QApplication::sendEvent(target, &enter);
  QDropEvent event(QPointF(5, 5), Qt::CopyAction, data.get(), Qt::LeftButton, {});
  QApplication::sendEvent(target, &event);
}
inline void drop(FlexGrid* target, QWidget* source, const QString& kind) { dropOn(target->viewport(), source, kind); }

inline QStringList sortedItems(QListWidget* list) {
  QStringList items;
  for (int i = 0; i < list->count(); ++i)
    items << list->item(i)->text();
  items.sort();
  return items;
}

// Answers the next modal window once it is up; a window the answer leaves open is closed, so a
// failing check cannot leave the test waiting on it.
template <typename F> void whenModal(F f) {
  QTimer::singleShot(0, [f] {
    QWidget* modal = QApplication::activeModalWidget();
    QVERIFY(modal);
    QPointer<QWidget> guard(modal);
    f(modal);
    if (guard && guard->isVisible())
      guard->close();
  });
}

// The program started with no logon, then pointed at the instance through a connection that
// records what it is sent.
struct Browser {
  Browser(Machine& m, const QString& user, const QString& password) : start(m) {
    start.load();
    start.state.gUser = user;
    recorder = std::make_shared<RecordingConnection>(LocalEngine::connect(folder(m), user, password));
    start.state.gDatabase = std::make_shared<OraDatabase>(recorder);
    tables = start.find<FlexGrid>("grdTable");
    fields = start.find<FlexGrid>("grdFIELD");
    keys = start.find<FlexGrid>("grdKey");
  }
  static QString folder(Machine& m) { return m.instance().mid(6); }

  void clickTable(int row) { QTest::mouseClick(tables->viewport(), Qt::LeftButton, {}, cellCenter(*tables, row, 0)); }
  QCheckBox* check(const QString& name) { return start.find<QCheckBox>(name); }

  Start start;
  std::shared_ptr<RecordingConnection> recorder;
  FlexGrid* tables;
  FlexGrid* fields;
  FlexGrid* keys;
};

