#include "jobs/StatementRunner.h"

#include <QEventLoop>
#include <QThread>

#include <chrono>

namespace {

// How long either side keeps its processor awake, waiting for the other, before it sleeps. A
// sleeping processor takes long to wake on a virtual machine; a job of many short statements
// would pay that twice per statement. Short enough that the window cannot feel it. With one
// processor there is nobody to wait for while spinning.
std::chrono::milliseconds spinTime() {
  return std::chrono::milliseconds(QThread::idealThreadCount() > 1 ? 2 : 0);
}

// Polls done until it is true or the spin time is over; true when it came true.
template <typename F> bool spinUntil(const F& done) {
  static const std::chrono::milliseconds spin = spinTime();
  const auto end = std::chrono::steady_clock::now() + spin;
  while (!done())
    if (std::chrono::steady_clock::now() >= end)
      return false;
  return true;
}

} // namespace

OffThreadStatements::OffThreadStatements() : m_worker([this] { work(); }) {}

OffThreadStatements::~OffThreadStatements() {
  {
    const std::lock_guard lock(m_mutex);
    m_stopping = true;
  }
  m_wake.notify_one();
  m_worker.join();
}

void OffThreadStatements::work() {
  for (;;) {
    spinUntil([this] { return m_hasCall.load(std::memory_order_acquire); });
    std::unique_lock lock(m_mutex);
    m_wake.wait(lock, [this] { return m_stopping || m_call; });
    if (m_stopping)
      return;
    const std::function<void()>* call = m_call;
    lock.unlock();
    std::exception_ptr failure;
    try {
      (*call)();
    } catch (...) {
      failure = std::current_exception();
    }
    lock.lock();
    m_failure = failure;
    m_call = nullptr;
    m_hasCall.store(false, std::memory_order_relaxed);
    // Queued to the waiting thread: a call that ends before its loop starts still ends the loop,
    // and a loop the caller never entered takes the event with it when it goes.
    QMetaObject::invokeMethod(m_loop, &QEventLoop::quit, Qt::QueuedConnection);
    m_done.store(true, std::memory_order_release);
  }
}

void OffThreadStatements::run(const std::function<void()>& call) {
  QEventLoop loop;
  {
    const std::lock_guard lock(m_mutex);
    m_call = &call;
    m_loop = &loop;
    m_failure = nullptr;
    m_done.store(false, std::memory_order_relaxed);
    m_hasCall.store(true, std::memory_order_release);
  }
  m_wake.notify_one();
  if (!spinUntil([this] { return m_done.load(std::memory_order_acquire); }))
    loop.exec();
  std::exception_ptr failure;
  {
    const std::lock_guard lock(m_mutex);
    failure = m_failure;
    m_loop = nullptr;
  }
  if (failure)
    std::rethrow_exception(failure);
}
