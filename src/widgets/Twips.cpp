#include "widgets/Twips.h"

#include <QWidget>

#include <cmath>

double twipsPerPixelX(const QWidget* w) { return 1440.0 / w->logicalDpiX(); }
double twipsPerPixelY(const QWidget* w) { return 1440.0 / w->logicalDpiY(); }
int twipsToPixelsX(const QWidget* w, int twips) { return int(std::lround(twips / twipsPerPixelX(w))); }
int twipsToPixelsY(const QWidget* w, int twips) { return int(std::lround(twips / twipsPerPixelY(w))); }
int pixelsToTwipsX(const QWidget* w, int pixels) { return int(std::lround(pixels * twipsPerPixelX(w))); }
int pixelsToTwipsY(const QWidget* w, int pixels) { return int(std::lround(pixels * twipsPerPixelY(w))); }
