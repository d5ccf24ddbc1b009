#pragma once

#include <QGroupBox>

class QCheckBox;
class QLineEdit;
class QPushButton;
class QSpinBox;
class QTimer;

// The frame of a list that refreshes on demand (最新) or every few seconds (定期更新, with the
// interval in seconds and its arrows). The interval is at most 65 seconds; text that is no
// number counts as 0, and 0 stops the ticks. While the window holds the frame (a question is
// open over the list, or the list is being read) ticks pass without refreshing, so a list is
// never rebuilt under the user's eyes in the middle of a question about one of its rows.
class RefreshFrame final : public QGroupBox {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(RefreshFrame)

public:
  RefreshFrame(int seconds, QWidget* parent);

  // Keeps ticks from refreshing for as long as it lives; holds nest.
  class Hold final {
  public:
    explicit Hold(RefreshFrame& frame) : m_frame(frame) { ++m_frame.m_holds; }
    ~Hold() { --m_frame.m_holds; }
    Hold(const Hold&) = delete;
    Hold& operator=(const Hold&) = delete;

  private:
    RefreshFrame& m_frame;
  };
  bool held() const { return m_holds > 0; }

Q_SIGNALS:
  // 最新 was pressed, or a tick came while nothing held the frame.
  void refreshRequested();

private:
  void chkTimer_Click();
  void txtTimer_Change();

  QCheckBox* m_chkTimer;
  QLineEdit* m_txtTimer;
  QSpinBox* m_UDTimer;
  QPushButton* m_cmdRefresh;
  QTimer* m_timTimer;
  int m_holds = 0;
  bool m_rewriting = false;
};
