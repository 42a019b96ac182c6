// A user namespace of its own for a child process, and tests that cannot do without.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace testing_support {

/// Makes the calling process root in a user namespace of its own, where no other user has a number;
/// it has mounts of its own, too. Throws std::system_error with the reason if the system does not
/// allow that. REQUIRES: the process has one thread.
void enterUserNamespace();

enum class Namespace { Own };

inline std::ostream& operator<<(std::ostream& os, Namespace) { return os << "Own"; }

/// That one, or none where a child of this process cannot have it. REQUIRES: as above.
std::vector<Namespace> userNamespaces();

/// A test that is there only where a process can have a user namespace. The rules that it looks at
/// have tests without one, which make up the kernel's answers.
template <typename Fixture>
class InUserNamespace : public Fixture, public testing::WithParamInterface<Namespace> {};

// In/SUITE.CASE/Own
#define INSTANTIATE_IN_USER_NAMESPACE(suite)                                                \
  GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(suite);                                     \
  INSTANTIATE_TEST_SUITE_P(In, suite, testing::ValuesIn(testing_support::userNamespaces()), \
                           testing::PrintToStringParamName())

}  // namespace testing_support
