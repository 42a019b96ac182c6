#include "agent/confirmation/unconfirmed.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "agent/state/sealed_text.h"
#include "inspection/settings_completeness.h"
#include "tests/agent/state/scratch_directory.h"

namespace agent {
namespace {

Unconfirmed changes() {
  return {.until = -1,
          .seconds = 60,
          .before = agent_testing::exampleSettings(500),
          .after = agent_testing::exampleSettings(501)};
}

std::string problemOf(const std::string& file) {
  try {
    (void)decodeUnconfirmed(file);
    return {};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(Unconfirmed, HasRoomForTwoOfTheLargestTexts) {
  EXPECT_EQ(MAX_UNCONFIRMED_SIZE, 34'603'008u);
  EXPECT_GT(MAX_UNCONFIRMED_SIZE, 2 * inspection::MAX_SETTINGS_SIZE + encode(Unconfirmed()).size());
}

TEST(Unconfirmed, ReadsWhatItWrites) { EXPECT_EQ(decodeUnconfirmed(encode(changes())), changes()); }

TEST(Unconfirmed, RefusesEveryOtherByte) {
  const std::string file = encode(changes());
  for (size_t at = 0; at < file.size(); ++at) {
    std::string damaged = file;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    EXPECT_EQ(problemOf(damaged), "its checksum does not fit") << at;
    EXPECT_EQ(problemOf(file.substr(0, at)), "its checksum does not fit") << at;
  }
}

TEST(Unconfirmed, RefusesWhatIsNoSuchFile) {
  EXPECT_EQ(problemOf(sealed("something\n")), "it is of another version");
  EXPECT_EQ(problemOf(sealed("lparams unconfirmed 1\n")), "it is cut off");
  Unconfirmed broken = changes();
  broken.after.clear();
  EXPECT_TRUE(problemOf(encode(broken)).starts_with("its settings are not whole: "));
}

}  // namespace
}  // namespace agent
