#pragma once

#include "services/MessageBoxes.h"

#include <QList>
#include <QQueue>
#include <functional>

// Records every box and answers from a queue. A box nobody scripted fails the running test,
// naming the box, and is answered with its default button so the code under test can go on.
// An answer still queued when the service goes fails the test too: the box the test expected
// never came.
class ScriptedMessageBoxes final : public MessageBoxes {
public:
  ScriptedMessageBoxes() = default;
  ~ScriptedMessageBoxes() override;
  ScriptedMessageBoxes(const ScriptedMessageBoxes&) = delete;
  ScriptedMessageBoxes& operator=(const ScriptedMessageBoxes&) = delete;

  using MessageBoxes::show;
  Answer show(const Box& box) override;

  void expect(Answer answer) { m_answers.enqueue(answer); }
  // Runs while each box is on screen, before it is answered: what the user sees behind it.
  void whileShown(std::function<void(const Box&)> look) { m_whileShown = std::move(look); }
  const QList<Box>& shown() const { return m_shown; }
  int pending() const { return int(m_answers.size()); }

private:
  QQueue<Answer> m_answers;
  QList<Box> m_shown;
  std::function<void(const Box&)> m_whileShown;
};
