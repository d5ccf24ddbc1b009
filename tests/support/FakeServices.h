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
    QByteArray standardInput;
  };

  bool start(const QString& program, const QStringList& arguments, WindowState state,
             const QByteArray& standardInput = {}) override {
    m_launches.append({program, arguments, state, standardInput});
    return m_succeeds;
  }
  const QList<Launch>& launches() const { return m_launches; }
  void setSucceeds(bool s) { m_succeeds = s; }

private:
  QList<Launch> m_launches;
  bool m_succeeds = true;
};

// The print dialog answered from a queue: each answer is a choice or nothing (a cancel). A
// dialog nobody expected fails the test and is answered as a cancel.
class ScriptedPrintDialog final : public PrintDialog {
public:
  void expect(std::optional<Choice> answer) { m_answers.append(std::move(answer)); }
  std::optional<Choice> ask() override {
    if (m_answers.isEmpty()) {
      QTest::qFail("unexpected print dialog", __FILE__, __LINE__);
      return std::nullopt;
    }
    return m_answers.takeFirst();
  }

private:
  QList<std::optional<Choice>> m_answers;
};

// The file dialogs and the document opener, which no window under test should reach for: a
// call fails the test and is answered as a cancel.
class UnexpectedDesktop final : public FileDialogs, public UrlOpener {
public:
  QString openFileName(const QString& title, const QString&, const QString&, Show) override { return fail(title); }
  QString saveFileName(const QString& title, const QString&, const QString&) override { return fail(title); }
  QString BrowseForFolder(const QString& title, const QString&) override { return fail(title); }
  bool open(const QUrl& url) override {
    fail(url.toString());
    return false;
  }

private:
  static QString fail(const QString& what) {
    QTest::qFail(qPrintable(QStringLiteral("unexpected desktop dialog \"%1\"").arg(what)), __FILE__, __LINE__);
    return QString();
  }
};

// Every service a window needs, scripted, with the folders of env.
struct FakeServiceSet {
  explicit FakeServiceSet(AppEnvironment environment = {}) : env(std::move(environment)) {}
  ScriptedMessageBoxes boxes;
  ManualClock clock;
  RecordingLauncher launcher;
  UnexpectedDesktop desktop;
  ScriptedPrintDialog print;
  AppEnvironment env;
  Services services{boxes, clock, launcher, desktop, print, desktop, env};
};
