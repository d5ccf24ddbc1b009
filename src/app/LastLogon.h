#pragma once

#include "common/Logon.h"

class clsREG;

// The last logon that succeeded through the logon dialog, kept for the next start; a first
// start gets the demo instance's owner.
Logon ReadLastLogon(clsREG& registry);
void WriteLastLogon(clsREG& registry, const Logon& logon);
