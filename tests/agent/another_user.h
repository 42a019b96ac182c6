// A process that is neither root nor the agent's own user.
#pragma once

#include <grp.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace agent_testing {

inline constexpr uid_t NOBODY = 65534;

/// Takes root's rights from the process for good; another user has none to lose. Only for children.
inline void dropRights() {
  if (geteuid() != 0) return;
  ASSERT_EQ(setgroups(0, nullptr), 0);
  ASSERT_EQ(setgid(NOBODY), 0);
  ASSERT_EQ(setuid(NOBODY), 0);
}

}  // namespace agent_testing
