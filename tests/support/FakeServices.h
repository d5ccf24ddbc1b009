#pragma once

#include "ScriptedMessageBoxes.h"
#include "services/AppEnvironment.h"
#include "services/Clock.h"
#include "services/FileDialogs.h"
#include "services/PrintDialog.h"
#include "services/ProcessLauncher.h"
#include "services/Services.h"
#include "services/UrlOpener.h"

#include <QList>
#include <QQueue>
#include <QTest>

// A clock the test sets by hand.
class ManualClock final : public Clock {
public:
  QDateTime now() const override { return m_now; }
  qint64 tickMs() const override { return m_tick; }
  qint32 uptimeMs() const override { return m_uptime; }

  void setNow(const QDateTime& now) { m_now = now; }
  void advance(qint64 ms) {
    m_now = m_now.addMSecs(ms);
    m_tick += ms;
    m_uptime = qint32(quint32(m_uptime) + quint32(ms));
  }
  void setUptime(qint32 ms) { m_uptime = ms; }

private:
  QDateTime m_now = QDateTime(QDate(2026, 1, 5), QTime(9, 0));
  qint64 m_tick = 0;
  qint32 m_uptime = 0;
};

// Records the programs it is asked to start instead of starting them.
class RecordingLauncher final : public ProcessLauncher {
public:
  struct Launch {
    QString program;
    QStringList arguments;
    WindowState state;
  };

  bool start(const QString& program, const QStringList& arguments, WindowState state) override {
    m_launches.append({program, arguments, state});
    return m_succeeds;
  }
  const QList<Launch>& launches() const { return m_launches; }
  void setSucceeds(bool s) { m_succeeds = s; }

private:
  QList<Launch> m_launches;
  bool m_succeeds = true;
};

// Answers file and folder questions from queues; a question nobody scripted fails the test and
// is answered as a cancel.
class ScriptedFileDialogs final : public FileDialogs {
public:
  QString openFileName(const QString& title, const QString&, const QString&) override { return next(title); }
  QString BrowseForFolder(const QString& title, const QString&) override { return next(title); }
  void expect(const QString& answer) { m_answers.enqueue(answer); }

private:
  QString next(const QString& title) {
    if (m_answers.isEmpty()) {
      QTest::qFail(qPrintable(QStringLiteral("unexpected file dialog \"%1\"").arg(title)), __FILE__, __LINE__);
      return QString();
    }
    return m_answers.dequeue();
  }
  QQueue<QString> m_answers;
};

// The print dialog with a scripted answer: cancelled unless a choice was set.
class ScriptedPrintDialog final : public PrintDialog {
public:
  std::optional<Choice> ask() override {
    ++m_asked;
    return m_choice;
  }
  void setChoice(std::optional<Choice> choice) { m_choice = std::move(choice); }
  int asked() const { return m_asked; }

private:
  std::optional<Choice> m_choice;
  int m_asked = 0;
};

// Records what it is asked to open.
class RecordingUrlOpener final : public UrlOpener {
public:
  bool open(const QUrl& url) override {
    m_opened.append(url);
    return true;
  }
  const QList<QUrl>& opened() const { return m_opened; }

private:
  QList<QUrl> m_opened;
};

// Every service a window needs, scripted, with the folders of env.
struct FakeServiceSet {
  explicit FakeServiceSet(AppEnvironment environment = {}) : env(std::move(environment)) {}
  ScriptedMessageBoxes boxes;
  ManualClock clock;
  RecordingLauncher launcher;
  ScriptedFileDialogs fileDialogs;
  ScriptedPrintDialog printDialog;
  RecordingUrlOpener urlOpener;
  AppEnvironment env;
  Services services{boxes, clock, launcher, fileDialogs, printDialog, urlOpener, env};
};
