#pragma once

#include <QString>

// Every message box the system shows goes through this service, so core routines can ask the
// user without knowing about widgets, and tests can script the answers.
class MessageBoxes {
public:
  enum class Buttons { Ok, OkCancel, AbortRetryIgnore, YesNoCancel, YesNo, RetryCancel };
  enum class Icon { None, Critical, Question, Exclamation, Information };
  enum class Answer { Ok, Cancel, Abort, Retry, Ignore, Yes, No };

  struct Box {
    QString text;
    QString title;
    Buttons buttons = Buttons::Ok;
    Icon icon = Icon::None;
    int defaultButton = 1; // 1 = the first button, 2 = the second, 3 = the third
  };

  virtual ~MessageBoxes() = default;
  virtual Answer show(const Box& box) = 0;

  Answer show(const QString& text, const QString& title, Buttons buttons = Buttons::Ok, Icon icon = Icon::None,
              int defaultButton = 1) {
    return show(Box{text, title, buttons, icon, defaultButton});
  }
};
