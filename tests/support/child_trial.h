// Calls that cannot be taken back, tried in a child process.
#pragma once

#include <functional>

namespace testing_support {

/// Returns 0 if the call came back in the child, else errno of the std::system_error that it threw,
/// or -1 if the child ended in another way. Throws std::system_error without a child.
int errorInChild(const std::function<void()>& call);

}  // namespace testing_support
