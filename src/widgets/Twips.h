#pragma once

class QWidget;

// Layout measures are kept in twips (1440 per inch): 15 per pixel at 96 dpi, scaled by the
// screen's logical dpi.
double twipsPerPixelX(const QWidget* widget);
double twipsPerPixelY(const QWidget* widget);
int twipsToPixelsX(const QWidget* widget, int twips);
int twipsToPixelsY(const QWidget* widget, int twips);
int pixelsToTwipsX(const QWidget* widget, int pixels);
int pixelsToTwipsY(const QWidget* widget, int pixels);
