#pragma once

#include <QWidget>

#include <atomic>

class MessageBoxes;
class QPushButton;
class QTimer;

// The looping picture of the progress window: sheets of paper leave an open folder, tumble
// across and drop into a waste bin. Its timer runs only while the picture is on screen, so a
// hidden window costs nothing.
class DeleteAnimation final : public QWidget {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(DeleteAnimation)

public:
  explicit DeleteAnimation(QWidget* parent = nullptr);

  // The frame of the loop on screen now; it moves on only while the picture is shown.
  int frame() const { return m_frame; }

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

protected:
  void paintEvent(QPaintEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;

private:
  QTimer* m_timer;
  int m_frame = 0;
};

// Shown while a delete or drop job runs: the picture says the work goes on, the caption carries
// the job's progress (the job sets it), and 中断 asks the job to stop after the table in hand.
// The window has no parent: the job shuts off the main window while it runs, and a window owned
// by it would be shut off too. The job ends the window by hiding or destroying it, not by
// close(), which counts as the user's close.
class FDBSWEEP_Ani final : public QWidget {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(FDBSWEEP_Ani)

public:
  FDBSWEEP_Ani(MessageBoxes& boxes, std::atomic<bool>& cancelRequested);

protected:
  void closeEvent(QCloseEvent* event) override;

private:
  void cmdDelCan_Click();

  MessageBoxes& m_boxes;
  std::atomic<bool>& m_cancelRequested;
  DeleteAnimation* m_animation1;
  QPushButton* m_cmdDelCan;
};
