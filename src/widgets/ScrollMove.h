#pragma once

class QAbstractScrollArea;

// The four vertical movements the pop-up menu offers on a list or a grid.
enum class ScrollMove { PageUp, PageDown, Top, Bottom };

void ScrollVertically(QAbstractScrollArea* area, ScrollMove move);
