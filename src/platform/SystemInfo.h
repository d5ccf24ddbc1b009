#pragma once

#include <QString>

// The login name of the user who owns this process, trimmed of spaces.
QString processOwnerLogonName();

// The folder the running executable lives in.
QString programFolder();
