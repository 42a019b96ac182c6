#include "agent/bridge/peer_credentials.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

namespace agent {
namespace {

TEST(PeerCredentials, AreThoseOfTheProcessAtTheOtherEnd) {
  int ends[2];
  ASSERT_EQ(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const auto peer = peerOf(ends[0]);
  for (const int end : ends) (void)::close(end);
  ASSERT_TRUE(peer);
  EXPECT_EQ(peer->uid, ::geteuid());
  EXPECT_EQ(peer->gid, ::getegid());
  EXPECT_EQ(peer->pid, ::getpid());
  EXPECT_EQ(peer->groups.size(), static_cast<size_t>(::getgroups(0, nullptr)));
  EXPECT_NE(peer->program, "");
}

TEST(PeerCredentials, AreNoGroupsWhereTheSystemTellsOfNone) {
  const int alone = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const auto peer = peerOf(alone);
  (void)::close(alone);
  ASSERT_TRUE(peer);
  EXPECT_TRUE(peer->groups.empty());
}

TEST(PeerCredentials, AreNoneOfWhatIsNoSocket) { EXPECT_FALSE(peerOf(-1)); }

}  // namespace
}  // namespace agent
