#include "jobs/StatementRunner.h"

#include <QEventLoop>
#include <QThread>

#include <exception>
#include <memory>

void OffThreadStatements::run(const std::function<void()>& call) {
  std::exception_ptr failure;
  QEventLoop loop;
  const std::unique_ptr<QThread> worker(QThread::create([&call, &failure] {
    try {
      call();
    } catch (...) {
      failure = std::current_exception();
    }
  }));
  // Queued to this thread: a call that ends before the loop starts still ends the loop.
  QObject::connect(worker.get(), &QThread::finished, &loop, &QEventLoop::quit, Qt::QueuedConnection);
  worker->start();
  loop.exec();
  worker->wait();
  if (failure)
    std::rethrow_exception(failure);
}
