#pragma once

#include <QString>

#include <optional>

// USER[/PASSWORD][@HOST], as SQL*Plus reads it on its command line and in CONNECT.
struct Logon final {
  QString user;
  // Left out ("USER@HOST"), it is asked for.
  std::optional<QString> password;
  // Empty when left out.
  QString host;
  // Set when the text is no logon.
  QString error;

  static Logon parse(const QString& text);
};
