#pragma once

#include <QObject>
#include <QPointer>

#include <vector>

class QWidget;

// While a job runs, the windows that were open when it started take no input: a click, a key,
// a drop or the window manager's close button does nothing there, so no second job and no other
// database work can start. They still repaint and their timers still tick. Windows the job opens
// itself (its questions, its progress window, the data viewer) work as usual.
class JobInputGate final : public QObject {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(JobInputGate)

public:
  JobInputGate();
  ~JobInputGate() override;

protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  bool guards(QObject* watched) const;

  std::vector<QPointer<QWidget>> m_windows;
};
