#include "agent/service_manager.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstddef>
#include <cstdlib>
#include <string>

namespace agent {
namespace {

using std::chrono::microseconds;

/// What a manager at the abstract name hears.
std::string heardAt(const std::string& name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  (void)name.copy(&address.sun_path[1], sizeof address.sun_path - 1);
  const int manager = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(::bind(manager, reinterpret_cast<const sockaddr*>(&address),
                   static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + 1 + name.size())),
            0);
  (void)::setenv("NOTIFY_SOCKET", ("@" + name).c_str(), 1);
  notifyServiceManager("READY=1");
  std::array<char, 100> buffer{};
  const ssize_t size = ::recv(manager, buffer.data(), buffer.size(), MSG_DONTWAIT);
  (void)::close(manager);
  return {buffer.data(), static_cast<size_t>(std::max<ssize_t>(size, 0))};
}

TEST(ServiceManagerTest, HearsOnAnAbstractSocket) {
  std::string name = "lparams-test-" + std::to_string(::getpid());
  EXPECT_EQ(heardAt(name), "READY=1");
  name.resize(107, 'x');
  EXPECT_EQ(heardAt(name), "READY=1") << "the longest name";
}

TEST(ServiceManagerTest, HearsNothingOnASocketThatThereCannotBe) {
  (void)::setenv("NOTIFY_SOCKET", ("/" + std::string(108, 'x')).c_str(), 1);
  notifyServiceManager("READY=1");
}

TEST(ServiceManagerTest, HearsOfTheAgentAtHalfOfItsLimit) {
  const std::string own = std::to_string(::getpid());
  const struct {
    const char* limit;
    std::string process;
    std::optional<microseconds> interval;
  } rows[] = {
      {"30000000", "", microseconds(15000000)},
      {"30000000", own, microseconds(15000000)},
      {"30000000", "1", std::nullopt},
      {"30000000", "nobody", std::nullopt},
      {"0", "", std::nullopt},
      {"-2", "", std::nullopt},
      {"30s", "", std::nullopt},
      {"", "", std::nullopt},
  };
  for (const auto& row : rows) {
    (void)::setenv("WATCHDOG_USEC", row.limit, 1);
    (void)::setenv("WATCHDOG_PID", row.process.c_str(), 1);
    EXPECT_EQ(watchdogInterval(), row.interval) << row.limit << " of " << row.process;
  }
}

}  // namespace
}  // namespace agent
