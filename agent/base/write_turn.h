// Whose turn it is to change the settings.
#pragma once

#include "agent/base/mutex.h"

namespace agent {

/// Held while a command writes settings, and while a text of all of them is made that has to be of
/// one moment. Taken before any lock of the module. Not held while a file is synced.
using WriteTurn = Mutex;

}  // namespace agent
