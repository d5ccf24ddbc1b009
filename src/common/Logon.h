#pragma once

#include <QString>

// A connection as the user gives it: user, password and host.
struct Logon {
  QString user;
  QString password;
  QString host;
};
