#include "ScriptedMessageBoxes.h"

#include <QTest>

namespace {

MessageBoxes::Answer defaultAnswer(const MessageBoxes::Box& box) {
  using A = MessageBoxes::Answer;
  using B = MessageBoxes::Buttons;
  const int i = box.defaultButton - 1;
  switch (box.buttons) {
  case B::Ok: return A::Ok;
  case B::OkCancel: return i == 1 ? A::Cancel : A::Ok;
  case B::AbortRetryIgnore: return i == 2 ? A::Ignore : i == 1 ? A::Retry : A::Abort;
  case B::YesNoCancel: return i == 2 ? A::Cancel : i == 1 ? A::No : A::Yes;
  case B::YesNo: return i == 1 ? A::No : A::Yes;
  case B::RetryCancel: return i == 1 ? A::Cancel : A::Retry;
  }
  return A::Ok;
}

} // namespace

MessageBoxes::Answer ScriptedMessageBoxes::show(const Box& box) {
  m_shown.append(box);
  if (m_whileShown)
    m_whileShown(box);
  if (m_answers.isEmpty()) {
    QTest::qFail(qPrintable(QStringLiteral("unexpected message box \"%1\" titled \"%2\"").arg(box.text, box.title)),
                 __FILE__, __LINE__);
    return defaultAnswer(box);
  }
  return m_answers.dequeue();
}

ScriptedMessageBoxes::~ScriptedMessageBoxes() {
  // A test that failed already has said what went wrong; the unused answers follow from it.
  if (!m_answers.isEmpty() && !QTest::currentTestFailed())
    QTest::qFail(qPrintable(QStringLiteral("%1 scripted message box answer(s) never used").arg(m_answers.size())),
                 __FILE__, __LINE__);
}
