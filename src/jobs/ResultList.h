#pragma once

#include "jobs/ResultSink.h"

#include <QColor>
#include <QObject>

class FlexGrid;

// The result list of a window: a one-column grid under the heading "処理結果" that the jobs
// append coloured lines to. It grows without limit. A click on a line offers its text to the
// status bar; a right-click asks for the window's pop-up menu.
class ResultList final : public QObject, public ResultSink {
  Q_OBJECT
  Q_DISABLE_COPY_MOVE(ResultList)

public:
  explicit ResultList(FlexGrid* grid);

  void clear() override;
  void addItem(const QString& text, const QString& code) override;
  void repaint() override;

  FlexGrid* grid() const { return m_grid; }

  // The colour a code letter stands for, either case; invalid (the grid's default) for any
  // other character.
  static QColor LetterColour(QChar letter);

Q_SIGNALS:
  void lineClicked(const QString& text);
  void menuRequested(const QPoint& globalPos);

private:
  FlexGrid* m_grid;
};
