#include "widgets/DragKind.h"

#include <QMimeData>
#include <QWidget>

namespace {

const QString MimeType = QStringLiteral("application/x-dbsweep-drag");

QByteArray windowTag(const QWidget* w) { return QByteArray::number(quintptr(w->window()), 16); }

} // namespace

QMimeData* MakeDragData(const QWidget* source, const QString& kind, const QString& text) {
  auto* data = new QMimeData;
  data->setData(MimeType, windowTag(source) + ' ' + kind.toUtf8());
  data->setText(text);
  return data;
}

QString DragKindOf(const QMimeData* data, const QWidget* target) {
  if (!data || !target || !data->hasFormat(MimeType))
    return QString();
  const QByteArray payload = data->data(MimeType);
  const qsizetype space = payload.indexOf(' ');
  if (space < 0 || payload.left(space) != windowTag(target))
    return QString();
  return QString::fromUtf8(payload.mid(space + 1));
}
