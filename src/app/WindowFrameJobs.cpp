// The job buttons of a window's frame: the dispatch by button over the plan the window gives.
#include "app/WindowFrame.h"

#include "common/BDBSWEEP.h"
#include "export/FORA_Select.h"
#include "jobs/CountJob.h"
#include "jobs/DeleteJob.h"
#include "jobs/FDBSWEEP_Ani.h"
#include "jobs/FileOutputJob.h"
#include "jobs/JobInputGate.h"
#include "jobs/JobPlan.h"
#include "jobs/JobProgress.h"
#include "jobs/JobReport.h"
#include "jobs/ResultList.h"
#include "jobs/StatementRunner.h"
#include "jobs/TransactionJobs.h"
#include "jobs/clsTimer.h"
#include "services/Services.h"
#include "viewers/FDBSWEEP_ED.h"
#include "widgets/FlexGrid.h"
#include "widgets/HourGlass.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QMainWindow>
#include <QElapsedTimer>
#include <QPushButton>
#include <QScopeGuard>
#include <QScopedValueRollback>

#include <cmath>

namespace {

// The progress window as the delete and drop jobs drive it.
class WindowProgress final : public JobProgress {
public:
  explicit WindowProgress(QWidget& window) : m_window(window) {}
  // The window manager redraws the frame for every new title: a row-by-row delete of a big table
  // would hand it tens of thousands a second and leave the desktop, the stop button included,
  // unable to answer. The first captions all show; after them, the newest at most every 50 ms.
  void setCaption(const QString& caption) override {
    m_pending = caption;
    if (m_shown < EveryOneShown || !m_sinceShown.isValid() || m_sinceShown.elapsed() >= ThrottleMs)
      show();
  }
  // Paints the window, animates it and lets its stop button be pressed.
  void yield() override {
    if (!m_pending.isNull() && m_sinceShown.elapsed() >= ThrottleMs)
      show();
    QCoreApplication::processEvents();
  }

private:
  static constexpr int EveryOneShown = 100;
  static constexpr qint64 ThrottleMs = 50;

  void show() {
    m_window.setWindowTitle(m_pending);
    m_pending = QString();
    ++m_shown;
    m_sinceShown.start();
  }

  QWidget& m_window;
  QString m_pending; // null when the window shows the newest caption
  int m_shown = 0;
  QElapsedTimer m_sinceShown;
};

// Moves the focus on as one Tab key press would. QWidget keeps that step to itself and its
// subclasses; a member pointer named through a subclass reaches it for any window.
void focusNextChild(QWidget& window) {
  struct Access : QWidget {
    using QWidget::focusNextChild;
  };
  const auto next = &Access::focusNextChild;
  (window.*next)();
}

} // namespace

void WindowFrame::cmdJOB_Click(int index) {
  // A button pressed from code while a job of any window runs (the toolbar's twin, say) does
  // nothing: the jobs of both windows share the one connection.
  if (m_state.gJobRunning)
    return;
  const QScopedValueRollback running(m_state.gJobRunning, true);
  const JobInputGate gate;
  std::optional<HourGlass> wait(std::in_place);
  m_state.gJobTimer = std::make_unique<clsTimer>(m_services.clock);
  m_grdCount->setCellAlignment(m_grdCount->Row(), m_grdCount->Col(), {});

  OffThreadStatements statements;
  JobContext context{m_state, *m_results, statements, m_services.clock, m_services.boxes};
  switch (index) {
  case 0: RunCountJob(m_jobSource.takePlan(), context); break;
  case 1:
  case 3: removeWithProgress(index, m_jobSource.takePlan(), context); break;
  case 2: showDataOf(m_jobSource.takePlan(), context, wait); break;
  case 4: {
    const JobPlan plan = m_jobSource.takePlan();
    FORA_Select dialog(m_state, m_services, plan, statements, &m_window);
    RunFileOutputJob(plan, context, dialog);
    break;
  }
  case 5:
    if (RunRollback(context))
      setTransactionPending(false);
    break;
  case 6:
    focusNextChild(m_window);
    if (RunCommit(context))
      setTransactionPending(false);
    break;
  default: break;
  }
}

void WindowFrame::removeWithProgress(int index, const JobPlan& plan, JobContext& context) {
  // A window of its own, not a child: this window is disabled while the job runs, and so would
  // be every window that belongs to it.
  FDBSWEEP_Ani progress(m_services.boxes, m_state.gCancelRequested);
  progress.show();
  m_window.setEnabled(false);
  const auto enable = qScopeGuard([this] { m_window.setEnabled(true); });
  WindowProgress caption(progress);
  if (index == 3)
    RunDropJob(plan, context, caption);
  else if (RunDeleteJob(plan, context, caption, m_jobSource.offerTruncate))
    setTransactionPending(true);
}

void WindowFrame::showDataOf(const JobPlan& plan, JobContext& context, std::optional<HourGlass>& wait) {
  m_results->clear();
  if (plan.targets.isEmpty())
    return;
  const JobTarget& first = plan.targets.first();
  m_state.gInfoTable = first.id;
  m_state.gInfoTableName = first.name;
  m_state.gLastSql = plan.selectSql(first);
  m_state.gLastWhere = plan.where();
  // The viewer is the user's to work in: the pointer is back to normal before it opens.
  wait.reset();
  FDBSWEEP_ED viewer(m_state, m_services.boxes, context.statements, m_chkFldNM->isChecked(), &m_window);
  viewer.exec();
}
