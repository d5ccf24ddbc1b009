#pragma once

#include <QString>

// The desktop's file and folder choosers. Windows ask through this service so that the choice
// can be scripted in tests; an empty result means the user cancelled.
class FileDialogs {
public:
  virtual ~FileDialogs() = default;
  // An existing file to open; filter as Qt writes it ("実行ﾌｧｲﾙ (*)").
  virtual QString openFileName(const QString& title, const QString& startFolder, const QString& filter) = 0;
  // An existing folder, starting at startFolder.
  virtual QString BrowseForFolder(const QString& title, const QString& startFolder) = 0;
};
