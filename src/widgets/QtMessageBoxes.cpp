#include "widgets/QtMessageBoxes.h"

#include <QApplication>
#include <QMessageBox>
#include <QPushButton>

#include <utility>
#include <vector>

namespace {

using Answer = MessageBoxes::Answer;

std::vector<std::pair<QMessageBox::StandardButton, Answer>> buttonsOf(MessageBoxes::Buttons b) {
  using B = MessageBoxes::Buttons;
  switch (b) {
  case B::Ok: return {{QMessageBox::Ok, Answer::Ok}};
  case B::OkCancel: return {{QMessageBox::Ok, Answer::Ok}, {QMessageBox::Cancel, Answer::Cancel}};
  case B::AbortRetryIgnore:
    return {{QMessageBox::Abort, Answer::Abort},
            {QMessageBox::Retry, Answer::Retry},
            {QMessageBox::Ignore, Answer::Ignore}};
  case B::YesNoCancel:
    return {{QMessageBox::Yes, Answer::Yes}, {QMessageBox::No, Answer::No}, {QMessageBox::Cancel, Answer::Cancel}};
  case B::YesNo: return {{QMessageBox::Yes, Answer::Yes}, {QMessageBox::No, Answer::No}};
  case B::RetryCancel: return {{QMessageBox::Retry, Answer::Retry}, {QMessageBox::Cancel, Answer::Cancel}};
  }
  return {{QMessageBox::Ok, Answer::Ok}};
}

// The captions a Japanese desktop gives these buttons; Qt's own are English without a
// translation installed.
QString captionOf(QMessageBox::StandardButton b) {
  switch (b) {
  case QMessageBox::Yes: return QStringLiteral("はい(&Y)");
  case QMessageBox::No: return QStringLiteral("いいえ(&N)");
  case QMessageBox::Cancel: return QStringLiteral("キャンセル");
  case QMessageBox::Abort: return QStringLiteral("中止(&A)");
  case QMessageBox::Retry: return QStringLiteral("再試行(&R)");
  case QMessageBox::Ignore: return QStringLiteral("無視(&I)");
  default: return QStringLiteral("OK");
  }
}

QMessageBox::Icon iconOf(MessageBoxes::Icon i) {
  switch (i) {
  case MessageBoxes::Icon::Critical: return QMessageBox::Critical;
  case MessageBoxes::Icon::Question: return QMessageBox::Question;
  case MessageBoxes::Icon::Exclamation: return QMessageBox::Warning;
  case MessageBoxes::Icon::Information: return QMessageBox::Information;
  case MessageBoxes::Icon::None: break;
  }
  return QMessageBox::NoIcon;
}

} // namespace

MessageBoxes::Answer QtMessageBoxes::show(const Box& box) {
  QMessageBox mb(iconOf(box.icon), box.title, box.text, QMessageBox::NoButton, QApplication::activeWindow());
  const auto buttons = buttonsOf(box.buttons);
  for (const auto& [standard, answer] : buttons)
    mb.addButton(standard)->setText(captionOf(standard));
  const size_t def = size_t(qBound(1, box.defaultButton, int(buttons.size())) - 1);
  mb.setDefaultButton(buttons[def].first);
  // Closing the box with Escape or its close button counts as Cancel where there is one, else
  // as the last button, as the old boxes behaved.
  mb.setEscapeButton(buttons.back().first);
  mb.exec();
  const auto clicked = mb.standardButton(mb.clickedButton());
  for (const auto& [standard, answer] : buttons)
    if (standard == clicked)
      return answer;
  return buttons.back().second;
}
