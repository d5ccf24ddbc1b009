#pragma once

#include <functional>

// Runs a job's database call to its end and rethrows whatever it threw.
class StatementRunner {
public:
  virtual ~StatementRunner() = default;
  virtual void run(const std::function<void()>& call) = 0;
};

// Runs the call on the calling thread: for work with no window to keep alive.
class InlineStatements final : public StatementRunner {
public:
  void run(const std::function<void()>& call) override { call(); }
};

// Runs the call on a thread of its own while the calling thread waits in a local event loop,
// so windows repaint and timers fire during a statement that takes minutes. Only one call runs
// at a time, and nothing else may use its connection meanwhile: the caller keeps other work
// that reaches the database from starting until run returns.
class OffThreadStatements final : public StatementRunner {
public:
  void run(const std::function<void()>& call) override;
};
