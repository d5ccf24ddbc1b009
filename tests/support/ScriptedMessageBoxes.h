#pragma once

#include "widgets/MessageBoxes.h"

#include <QList>
#include <QQueue>

// Records every box and answers from a queue. A box nobody scripted fails the running test,
// naming the box, and is answered with its default button so the code under test can go on.
class ScriptedMessageBoxes final : public MessageBoxes {
public:
  using MessageBoxes::show;
  Answer show(const Box& box) override;

  void expect(Answer answer) { m_answers.enqueue(answer); }
  const QList<Box>& shown() const { return m_shown; }
  int pending() const { return int(m_answers.size()); }

private:
  QQueue<Answer> m_answers;
  QList<Box> m_shown;
};
