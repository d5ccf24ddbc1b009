#include "jobs/JobReport.h"

#include "common/BDBSWEEP.h"
#include "db/OraError.h"
#include "jobs/ResultLineText.h"
#include "jobs/ResultSink.h"
#include "jobs/clsTimer.h"
#include "services/Clock.h"

#include <stdexcept>

using namespace ResultLineText;

OraError NotConnected() { return OraError(3114, QStringLiteral("not connected to ORACLE")); }

JobReport::JobReport(JobContext& context) : m_context(context), m_timer(*context.state.gJobTimer) {}

void JobReport::open(const QString& banner) {
  openBanner(banner);
  startClock();
}

void JobReport::openBanner(const QString& banner) {
  m_context.results.clear();
  add(banner, Banner);
}

void JobReport::startClock() {
  m_timer.StartTimer();
  add(StartLine(m_context.clock.now()), StartTime);
  add(QString(), QString());
}

void JobReport::add(const QString& text, const QString& code) { m_context.results.addItem(text, code); }

void JobReport::failure(const QString& id, const OraError& error, const QString& name) {
  add(FailureLine(id, error.number(), name), Failure);
  add(error.message(), Failure);
}

void JobReport::close(const QString& endTimeCode, const QString& banner) {
  add(QString(), QString());
  add(EndLine(m_context.clock.now()), endTimeCode);
  try {
    m_timer.StopTimer();
    add(ElapsedLine(m_timer.ElapsedTime()), QString());
  } catch (const std::overflow_error&) {
    // A time that no longer fits is left out; the run itself is complete and its lines stand.
  }
  add(banner, Banner);
  m_context.results.repaint();
}
