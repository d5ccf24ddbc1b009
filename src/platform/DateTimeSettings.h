#pragma once

class ProcessLauncher;

// Opens the desktop's date and time settings: the first of the known settings tools that
// starts. Returns false when none could be started.
bool OpenDateTimeSettings(ProcessLauncher& launcher);
