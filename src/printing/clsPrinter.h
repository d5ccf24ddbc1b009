#pragma once

#include <QFont>
#include <QPoint>

#include <memory>
#include <optional>

class QImage;
class QPaintDevice;
class QPainter;

// The print object shared by the whole program: it draws text, lines and pictures on a paint
// device (a printer, a PDF file, an image) at a current position in the device's own dots, as
// a printer's device context does. Text drawn with DrawText takes Font; measures (TextWidth,
// TextHeight) are taken in the device's default font, as the layout of the result print expects.
// Nothing here raises: a call that cannot be done does nothing.
class clsPrinter final {
public:
  clsPrinter();
  ~clsPrinter(); // ends an open document
  clsPrinter(const clsPrinter&) = delete;
  clsPrinter& operator=(const clsPrinter&) = delete;

  int CurrentX() const { return m_pos.x(); }
  void setCurrentX(int x) { m_pos.setX(x); }
  int CurrentY() const { return m_pos.y(); }
  void setCurrentY(int y) { m_pos.setY(y); }
  QFont& Font() { return m_font; }
  const QFont& Font() const { return m_font; }
  // The device drawn on; nullptr for none. Changing it ends an open document.
  QPaintDevice* hDC() const { return m_device; }
  void setHDC(QPaintDevice* device);
  // The printable area in dots.
  int Height() const;
  int Width() const;
  // Non-zero while a document is open.
  qint32 PrintJobID() const { return m_jobId; }

  bool StartDoc(const QString& documentName);
  void StartPage();
  void EndPage();
  void EndDoc();

  // Draws text with its top left at the current position, which moves to the text's end.
  void DrawText(const QString& text);
  void DrawLine(int x1, int y1, int x2, int y2);
  // Stretched to width x height dots; a missing one is the picture's own size scaled from the
  // screen to the device.
  void DrawPicture(const QImage& picture, std::optional<int> width = {}, std::optional<int> height = {});
  int TextWidth(const QString& text) const;
  // The height of a line of the device's default font, whatever the text: an empty text is as
  // high as any other, so a blank line takes its place.
  int TextHeight(const QString& text) const;
  // Screen pixels to device dots.
  int ScaleX(double pixels) const;
  int ScaleY(double pixels) const;

private:
  QFont deviceFont() const;

  QPaintDevice* m_device = nullptr;
  std::unique_ptr<QPainter> m_painter;
  QFont m_font;
  QPoint m_pos;
  qint32 m_jobId = 0;
  qint32 m_lastJobId = 0;
  int m_pagesStarted = 0;
};
