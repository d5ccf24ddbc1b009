#include "printing/clsPrinter.h"

#include <QFontDatabase>
#include <QFontMetrics>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPrinter>
#include <QScreen>

namespace {

// The font the program was designed with, and the Japanese system fonts that stand in for it
// where it is not installed.
const QString DesignFont = QStringLiteral("ＭＳ ゴシック");
const QStringList JapaneseFonts = {QStringLiteral("Noto Sans Mono CJK JP"), QStringLiteral("Noto Sans CJK JP"),
                                   QStringLiteral("IPAGothic"), QStringLiteral("IPAexGothic"),
                                   QStringLiteral("VL Gothic"), QStringLiteral("TakaoGothic")};

double screenDpiX() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? screen->logicalDotsPerInchX() : 96.0;
}

double screenDpiY() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? screen->logicalDotsPerInchY() : 96.0;
}

} // namespace

clsPrinter::clsPrinter() : m_font(DesignFont, 10) {}

clsPrinter::~clsPrinter() { EndDoc(); }

void clsPrinter::setHDC(QPaintDevice* device) {
  if (device != m_device)
    EndDoc();
  m_device = device;
}

int clsPrinter::Height() const { return m_device ? m_device->height() : 0; }

int clsPrinter::Width() const { return m_device ? m_device->width() : 0; }

bool clsPrinter::StartDoc(const QString& documentName) {
  if (!m_device || m_jobId != 0)
    return false;
  if (auto* printer = dynamic_cast<QPrinter*>(m_device))
    printer->setDocName(documentName);
  auto painter = std::make_unique<QPainter>();
  if (!painter->begin(m_device))
    return false;
  m_painter = std::move(painter);
  m_jobId = ++m_lastJobId;
  m_pagesStarted = 0;
  return true;
}

void clsPrinter::StartPage() {
  if (m_jobId == 0)
    return;
  // The painter opened the first page; later ones are new sheets.
  if (m_pagesStarted > 0)
    if (auto* printer = dynamic_cast<QPrinter*>(m_device))
      printer->newPage();
  ++m_pagesStarted;
}

void clsPrinter::EndPage() {}

void clsPrinter::EndDoc() {
  if (m_jobId == 0)
    return;
  m_painter->end();
  m_painter.reset();
  m_jobId = 0;
}

void clsPrinter::DrawText(const QString& text) {
  if (!m_painter)
    return;
  // Whole points at the device's resolution, as the printer's fonts were made.
  QFont font = m_font;
  if (!QFontDatabase::hasFamily(font.family()))
    font.setFamilies(QStringList{font.family()} + JapaneseFonts);
  font.setPixelSize(std::max(1, int(font.pointSize() * m_device->logicalDpiX() / 72)));
  m_painter->setFont(font);
  const QFontMetrics metrics(font, m_device);
  m_painter->drawText(m_pos + QPoint(0, metrics.ascent()), text);
  m_pos.rx() += metrics.horizontalAdvance(text);
}

void clsPrinter::DrawLine(int x1, int y1, int x2, int y2) {
  m_pos = QPoint(x2, y2);
  if (m_painter)
    m_painter->drawLine(x1, y1, x2, y2);
}

void clsPrinter::DrawPicture(const QImage& picture, std::optional<int> width, std::optional<int> height) {
  if (!m_painter || picture.isNull())
    return;
  const int w = width.value_or(ScaleX(picture.width()));
  const int h = height.value_or(ScaleY(picture.height()));
  m_painter->drawImage(QRect(m_pos, QSize(w, h)), picture);
}

QFont clsPrinter::deviceFont() const {
  QFont font;
  // A point size measured on the device: the printer's own default font, not the screen's.
  if (font.pointSize() <= 0)
    font.setPointSize(10);
  return font;
}

int clsPrinter::TextWidth(const QString& text) const {
  return m_device ? QFontMetrics(deviceFont(), m_device).horizontalAdvance(text) : 0;
}

int clsPrinter::TextHeight(const QString&) const {
  return m_device ? QFontMetrics(deviceFont(), m_device).height() : 0;
}

int clsPrinter::ScaleX(double pixels) const {
  return m_device ? int(pixels * m_device->logicalDpiX() / screenDpiX()) : 0;
}

int clsPrinter::ScaleY(double pixels) const {
  return m_device ? int(pixels * m_device->logicalDpiY() / screenDpiY()) : 0;
}
