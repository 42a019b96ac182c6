// The locks of the settings, asked for from outside.
#pragma once

#include "lparams/server.h"

namespace agent {

/// Takes each lock of the module once, and returns when it has had them all: not as long as a
/// command is stuck with one of them. Holds one at a time, so that nobody waits for what this waits
/// for, and changes nothing. Thread-safe. REQUIRES: the module is registered with the bridge.
///
/// The locks of the entries of the user list are left out: the module takes them only with the
/// list's own held (lparams/module_objects.h), and without it the entries may go away.
void passEveryLock(LPARAMS::Server::Server_t& server);

}  // namespace agent
