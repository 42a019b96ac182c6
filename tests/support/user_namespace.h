// A user namespace of its own for a child process.
#pragma once

#include <string>

namespace testing_support {

/// Makes the calling process root in a user namespace of its own, where no other user has a number;
/// it has mounts of its own, too. Throws std::system_error with the reason if the system does not
/// allow that. REQUIRES: the process has one thread.
void enterUserNamespace();

/// Why a child of this process cannot do that; empty if it can. REQUIRES: as above.
std::string whyNoUserNamespace();

}  // namespace testing_support
