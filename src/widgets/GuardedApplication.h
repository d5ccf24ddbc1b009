#pragma once

#include <QApplication>

class MessageBoxes;

// The application object of the windows. A database error that a handler did not catch would
// end the process when it left the event loop; here it is shown in Oracle's words instead and
// the program goes on.
class GuardedApplication final : public QApplication {
public:
  GuardedApplication(int& argc, char** argv);
  void setMessageBoxes(MessageBoxes* boxes) { m_boxes = boxes; }
  bool notify(QObject* receiver, QEvent* event) override;

private:
  MessageBoxes* m_boxes = nullptr;
};
