#pragma once

#include <atomic>
#include <condition_variable>
#include <exception>
#include <functional>
#include <mutex>
#include <thread>

class QEventLoop;

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

// Runs the call on a worker thread of its own while the calling thread waits in a local event
// loop, so windows repaint and timers fire during a statement that takes minutes. Only one call
// runs at a time, and nothing else may use its connection meanwhile: the caller keeps other
// work that reaches the database from starting until run returns. The worker lives as long as
// the object, so a job of many short statements does not pay for a thread each.
class OffThreadStatements final : public StatementRunner {
public:
  OffThreadStatements();
  ~OffThreadStatements() override;
  OffThreadStatements(const OffThreadStatements&) = delete;
  OffThreadStatements& operator=(const OffThreadStatements&) = delete;

  void run(const std::function<void()>& call) override;

private:
  void work();

  std::mutex m_mutex;
  std::condition_variable m_wake;
  const std::function<void()>* m_call = nullptr; // the call waiting for the worker or running
  QEventLoop* m_loop = nullptr;                  // the loop the caller waits in
  std::exception_ptr m_failure;
  std::atomic<bool> m_hasCall = false; // a call waits: the worker need not sleep
  std::atomic<bool> m_done = false;    // the call ended: the caller need not wait in its loop
  bool m_stopping = false;
  std::thread m_worker; // last: started once everything it reads is ready
};
