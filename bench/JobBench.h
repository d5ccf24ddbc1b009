#pragma once

// What the job benchmarks hand a job in place of its window.
#include "jobs/ResultSink.h"
#include "services/MessageBoxes.h"

#include <QQueue>
#include <QStringList>

#include <cstdio>
#include <cstdlib>

// Keeps the lines' texts; a benchmark has nothing to paint.
struct TextSink final : ResultSink {
  QStringList lines;
  void clear() override { lines.clear(); }
  void addItem(const QString& text, const QString&) override { lines << text; }
  void repaint() override {}
};

// Answers from a queue; a question nobody queued ends the run, for its figure would be wrong.
struct QueuedAnswers final : MessageBoxes {
  QQueue<Answer> queue;
  Answer show(const Box& box) override {
    if (queue.isEmpty()) {
      std::fprintf(stderr, "unexpected message: %s\n", qPrintable(box.text));
      std::exit(1);
    }
    return queue.dequeue();
  }
};
