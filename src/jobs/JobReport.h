#pragma once

#include <QString>

class Clock;
class clsTimer;
class MessageBoxes;
class OraError;
class ResultSink;
class StatementRunner;
struct BDBSWEEP;

// What a job runs with: the shared state (the database, the last SQL), the window's result
// list, the way its statements run, the clock and the message boxes.
struct JobContext {
  BDBSWEEP& state;
  ResultSink& results;
  StatementRunner& statements;
  const Clock& clock;
  MessageBoxes& boxes;
};

// What a job's statement fails with when there is no session to send it to.
OraError NotConnected();

// The frame every job writes around its table lines: banners, start and end times, the elapsed
// time, timed by the state's job timer.
class JobReport final {
public:
  explicit JobReport(JobContext& context);

  // Clears the list, writes the start banner, starts the timer, the start time and a gap.
  void open(const QString& banner);
  // The two halves of open, for a job that prepares its work between the banner and the clock.
  void openBanner(const QString& banner);
  void startClock();
  void add(const QString& text, const QString& code);
  // The failure line of a table and the error's own words under it.
  void failure(const QString& id, const OraError& error, const QString& name);
  // A gap, the end time (coloured endTimeCode), the elapsed time and the end banner.
  void close(const QString& endTimeCode, const QString& banner);

private:
  JobContext& m_context;
  clsTimer& m_timer;
};
