#pragma once

#include "jobs/ResultSink.h"

#include <QStringList>

// The result list as "code|text" lines, the heading as "<heading>"; with markRepaints, each
// repaint as a line "--", so a test sees where the list was shown.
struct RecordingSink final : ResultSink {
  explicit RecordingSink(bool markRepaints) : markRepaints(markRepaints) {}
  void clear() override { lines = {QStringLiteral("<heading>")}; }
  void addItem(const QString& text, const QString& code) override { lines << code + u'|' + text; }
  void repaint() override {
    if (markRepaints)
      lines << QStringLiteral("--");
  }
  bool markRepaints;
  QStringList lines;
};
