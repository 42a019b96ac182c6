// File systems that only a child process sees, and tests that can do without.
#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace testing_support {

/// Gives the calling process mounts of its own; they go away with it. Throws std::system_error with
/// the reason if the system does not allow that. REQUIRES: the process has one thread; the thread
/// sanitizer adds one, so that there only root can have them.
void enterPrivateMounts();

// REQUIRES of all the following: enterPrivateMounts(). They throw std::system_error.

/// Mounts an empty file system on the directory. `options` are the file system's own.
void mountEmpty(const std::string& directory, const std::string& options = {});

/// Makes `source` appear at `target`; both are files or both are directories.
void mountOver(const std::string& source, const std::string& target);

/// Makes what is mounted there read-only.
void makeReadOnly(const std::string& mount);

/// Takes the topmost mount off again.
void unmount(const std::string& mount);

/// Replaces /etc with an empty directory and makes the system's own settings directory in it.
void replaceSystemDirectory();

/// How a test reaches a place that is not its own: another one stands in for it, which needs no
/// right, or the place is really replaced, where that is allowed.
enum class Way { StandIn, Mount };

/// Both, or only the stand-in where there can be no mounts.
std::vector<Way> ways();

/// A test that is run each way that there is.
template <typename Fixture>
class EachWay : public Fixture, public testing::WithParamInterface<Way> {
 protected:
  bool mounts() const { return GetParam() == Way::Mount; }
};

inline std::ostream& operator<<(std::ostream& os, Way way) {
  return os << (way == Way::StandIn ? "StandIn" : "Mount");
}

inline std::string nameOf(const testing::TestParamInfo<Way>& way) {
  return testing::PrintToString(way.param);
}

// By/SUITE.CASE/StandIn and By/SUITE.CASE/Mount.
#define INSTANTIATE_EACH_WAY(suite)                                               \
  INSTANTIATE_TEST_SUITE_P(By, suite, testing::ValuesIn(testing_support::ways()), \
                           testing_support::nameOf)

}  // namespace testing_support
