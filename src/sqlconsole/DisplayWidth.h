#pragma once

#include <QString>

// Terminal columns a text takes: East Asian wide and full-width characters take two, combining
// marks and control characters none, everything else one. Half-width katakana stay at one.
int displayWidth(QStringView text);
