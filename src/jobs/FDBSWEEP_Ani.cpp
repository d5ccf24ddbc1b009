#include "jobs/FDBSWEEP_Ani.h"

#include "services/MessageBoxes.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>

namespace {

// The picture is drawn on a canvas of this size and scaled to the widget, so it keeps its
// proportions whatever size the window is given.
constexpr qreal CanvasWidth = 240;
constexpr qreal CanvasHeight = 76;

// 20 frames a second is smooth enough for paper in flight and costs the job's thread nothing
// worth measuring. A new sheet leaves the folder every SheetSpacing frames and is in the air for
// FlightFrames, so two are usually on their way.
constexpr int FrameMs = 50;
constexpr int SheetSpacing = 16;
constexpr int Sheets = 3;
constexpr int LoopFrames = SheetSpacing * Sheets;
constexpr int FlightFrames = 30;

const QColor Outline(0x55, 0x55, 0x55);

// Where a sheet is and how it is turned, t running from 0 (deep in the folder) to 1 (deep in the
// bin). It is tossed in an arc that slows sideways to stand over the bin's mouth, then drops
// straight in, so it never seems to miss.
struct SheetPose {
  QPointF centre;
  qreal angle;
};

SheetPose sheetAt(qreal t) {
  const QPointF from(40, 46), over(200, 18);
  constexpr qreal TossEnds = 0.8;
  constexpr qreal Arc = 22;
  if (t < TossEnds) {
    const qreal u = t / TossEnds;
    const qreal across = 1 - (1 - u) * (1 - u);
    return {QPointF(from.x() + (over.x() - from.x()) * across,
                    from.y() + (over.y() - from.y()) * u - Arc * 4 * u * (1 - u)),
            300 * u};
  }
  const qreal v = (t - TossEnds) / (1 - TossEnds);
  return {QPointF(over.x(), over.y() + 44 * v * v), 300 + 60 * v};
}

void drawSheet(QPainter& p, const SheetPose& pose) {
  p.save();
  p.translate(pose.centre);
  p.rotate(pose.angle);
  const QRectF sheet(-7, -9, 14, 18);
  p.setPen(QPen(Outline, 0.8));
  p.setBrush(Qt::white);
  p.drawRect(sheet);
  // Lines of print, so it reads as a page of data rather than a blank card.
  p.setPen(QPen(QColor(0x8a, 0x94, 0xa6), 1.2));
  for (int i = 0; i < 4; ++i) {
    const qreal y = sheet.top() + 4 + i * 3.4;
    p.drawLine(QPointF(sheet.left() + 2.5, y), QPointF(sheet.right() - (i == 3 ? 6 : 2.5), y));
  }
  p.restore();
}

// The folder's back is drawn before the sheets and its front cover after them, so a sheet
// rises out of it rather than appearing in the air.
void drawFolderBack(QPainter& p) {
  const QColor dark(0x8a, 0x5a, 0x14);
  QPainterPath back;
  back.moveTo(14, 68);
  back.lineTo(14, 24);
  back.lineTo(19, 20);
  back.lineTo(33, 20);
  back.lineTo(37, 24);
  back.lineTo(64, 24);
  back.lineTo(64, 68);
  back.closeSubpath();
  p.setPen(QPen(dark, 1));
  p.setBrush(QColor(0xd0, 0x98, 0x38));
  p.drawPath(back);
  // The sheets still waiting their turn.
  p.setPen(QPen(Outline, 0.8));
  p.setBrush(QColor(0xf4, 0xf4, 0xf4));
  p.drawRect(QRectF(21, 29, 36, 30));
  p.setBrush(Qt::white);
  p.drawRect(QRectF(24, 32, 33, 28));
}

void drawFolderFront(QPainter& p) {
  const QPolygonF front({QPointF(12, 41), QPointF(70, 38), QPointF(64, 68), QPointF(14, 68)});
  p.setPen(QPen(QColor(0x8a, 0x5a, 0x14), 1));
  p.setBrush(QColor(0xf2, 0xc3, 0x5b));
  p.drawPolygon(front);
}

// The bin likewise: its dark mouth before the sheets, its body and rim after them, so a sheet
// dropping in disappears inside.
void drawBinMouth(QPainter& p) {
  p.setPen(Qt::NoPen);
  p.setBrush(QColor(0x3c, 0x44, 0x4e));
  p.drawEllipse(QRectF(175, 27, 50, 8));
}

void drawBinBody(QPainter& p) {
  const QColor edge(0x4c, 0x56, 0x62);
  const QPolygonF body({QPointF(177, 31), QPointF(223, 31), QPointF(218, 70), QPointF(182, 70)});
  QLinearGradient shade(177, 0, 223, 0);
  shade.setColorAt(0, QColor(0x7c, 0x88, 0x96));
  shade.setColorAt(0.4, QColor(0xb4, 0xbe, 0xc8));
  shade.setColorAt(1, QColor(0x6a, 0x75, 0x82));
  p.setPen(QPen(edge, 1));
  p.setBrush(shade);
  p.drawPolygon(body);
  // Ribs that narrow with the body towards the floor.
  p.setPen(QPen(edge, 1));
  for (int i = 1; i < 5; ++i) {
    const qreal share = i / 5.0;
    p.drawLine(QPointF(180 + 40 * share, 36), QPointF(184 + 32 * share, 66));
  }
  // The rim, in front of the mouth's near half.
  p.setPen(QPen(edge, 2));
  p.setBrush(Qt::NoBrush);
  p.drawArc(QRectF(175, 27, 50, 8), 180 * 16, 180 * 16);
  p.setPen(QPen(edge, 1.2));
  p.drawArc(QRectF(175, 27, 50, 8), 0, 180 * 16);
}

} // namespace

DeleteAnimation::DeleteAnimation(QWidget* parent) : QWidget(parent), m_timer(new QTimer(this)) {
  m_timer->setInterval(FrameMs);
  connect(m_timer, &QTimer::timeout, this, [this] {
    m_frame = (m_frame + 1) % LoopFrames;
    update();
  });
}

QSize DeleteAnimation::sizeHint() const { return QSize(int(CanvasWidth), int(CanvasHeight)); }

QSize DeleteAnimation::minimumSizeHint() const { return QSize(int(CanvasWidth / 2), int(CanvasHeight / 2)); }

void DeleteAnimation::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  m_timer->start();
}

void DeleteAnimation::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  m_timer->stop();
}

void DeleteAnimation::paintEvent(QPaintEvent*) {
  QPainter p(this);
  p.setRenderHint(QPainter::Antialiasing);
  const qreal scale = std::min(width() / CanvasWidth, height() / CanvasHeight);
  p.translate((width() - CanvasWidth * scale) / 2, (height() - CanvasHeight * scale) / 2);
  p.scale(scale, scale);

  drawFolderBack(p);
  drawBinMouth(p);
  for (int i = 0; i < Sheets; ++i) {
    const int age = (m_frame - i * SheetSpacing + LoopFrames) % LoopFrames;
    if (age < FlightFrames)
      drawSheet(p, sheetAt(qreal(age) / FlightFrames));
  }
  drawFolderFront(p);
  drawBinBody(p);
}

FDBSWEEP_Ani::FDBSWEEP_Ani(MessageBoxes& boxes, std::atomic<bool>& cancelRequested)
    : QWidget(nullptr, Qt::Tool | Qt::WindowStaysOnTopHint), m_boxes(boxes), m_cancelRequested(cancelRequested),
      m_animation1(new DeleteAnimation(this)), m_cmdDelCan(new QPushButton(QStringLiteral("中断"), this)) {
  setObjectName(QStringLiteral("FDBSWEEP_Ani"));
  setWindowTitle(QStringLiteral("削除中..."));
  m_animation1->setObjectName(QStringLiteral("Animation1"));
  m_cmdDelCan->setObjectName(QStringLiteral("cmdDelCan"));
  m_cmdDelCan->setMinimumWidth(88);

  auto* buttons = new QHBoxLayout;
  buttons->addStretch();
  buttons->addWidget(m_cmdDelCan);
  buttons->addStretch();
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(m_animation1, 1);
  layout->addLayout(buttons);
  resize(300, 130);

  connect(m_cmdDelCan, &QPushButton::clicked, this, &FDBSWEEP_Ani::cmdDelCan_Click);
}

void FDBSWEEP_Ani::cmdDelCan_Click() {
  // The job looks at the flag between tables, so what is deleted stays deleted; the question
  // says so before the user decides.
  if (m_boxes.show(QStringLiteral("削除処理を中断しますか\r\nここまでのデータは削除されています。"),
                   QStringLiteral("DBSWEEP"), MessageBoxes::Buttons::YesNo, MessageBoxes::Icon::Exclamation,
                   1) == MessageBoxes::Answer::Yes)
    m_cancelRequested = true;
}

void FDBSWEEP_Ani::closeEvent(QCloseEvent* event) {
  // A user who closes the progress window means to stop the job, so the close asks what 中断
  // asks. The window itself stays either way: it shows the job until the job ends and takes it
  // down, and a job that had lost its window would look finished while it still deletes.
  event->ignore();
  cmdDelCan_Click();
}
