#pragma once

#include <QUrl>

// Opens a document or address with the desktop's preferred program (the manual, a folder).
class UrlOpener {
public:
  virtual ~UrlOpener() = default;
  // False when the desktop has no program for it.
  virtual bool open(const QUrl& url) = 0;
};
