#pragma once

#include "services/FileDialogs.h"
#include "services/PrintDialog.h"
#include "services/UrlOpener.h"

// The desktop's own dialogs and document opener, each shown over the active window.
class QtFileDialogs final : public FileDialogs {
public:
  QString openFileName(const QString& title, const QString& startPath, const QString& filter, Show show) override;
  QString saveFileName(const QString& title, const QString& startPath, const QString& filter) override;
  QString BrowseForFolder(const QString& title, const QString& startFolder) override;
};

class QtPrintDialog final : public PrintDialog {
public:
  std::optional<Choice> ask() override;
};

class DesktopUrlOpener final : public UrlOpener {
public:
  bool open(const QUrl& url) override;
};
