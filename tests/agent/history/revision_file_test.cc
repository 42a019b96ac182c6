#include "agent/history/revision_file.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "agent/state/sealed_text.h"
#include "tests/agent/state/scratch_directory.h"

namespace agent {
namespace {

KeptRevision revision() {
  return {.head = {.number = 7,
                   .time = 1,
                   .uid = 2,
                   .pid = 3,
                   .program = "ctl\n",
                   .message = std::string("#xxh3-128=\0", 11),
                   .changes = {{.name = "A", .running = "1"}}},
          .text = agent_testing::exampleSettings()};
}

std::string problemOf(const std::string& file) {
  try {
    (void)decodeKeptRevision(file);
    return {};
  } catch (const std::runtime_error& error) {
    return error.what();
  }
}

TEST(RevisionFile, ReadsWhatItWrites) {
  const std::string file = encode(revision());
  EXPECT_EQ(decodeKeptRevision(file), revision());
  EXPECT_NE(file.find("\n" + revision().text), std::string::npos) << "in plain text";
}

TEST(RevisionFile, KeepsATextAsItIs) {
  KeptRevision without = revision();
  without.text.pop_back();  // the last newline
  EXPECT_EQ(decodeKeptRevision(encode(without)), without);
}

TEST(RevisionFile, RefusesEveryOtherByte) {
  const std::string file = encode(revision());
  for (size_t at = 0; at < file.size(); ++at) {
    std::string damaged = file;
    damaged[at] = static_cast<char>(damaged[at] ^ 1);
    EXPECT_EQ(problemOf(damaged), "its checksum does not fit") << at;
    EXPECT_EQ(problemOf(file.substr(0, at)), "its checksum does not fit") << at;
  }
}

TEST(RevisionFile, RefusesWhatIsNoRevision) {
  EXPECT_EQ(problemOf(sealed("something\n")), "it is of another version");
  EXPECT_EQ(problemOf(sealed("lparams revision 1\n")), "it is cut off");
  EXPECT_EQ(problemOf(sealed("lparams revision 1\n" + std::string("\1\0\0\0a\n\n", 7))),
            "its head cannot be read");
  KeptRevision empty = revision();
  empty.text.clear();
  EXPECT_TRUE(problemOf(encode(empty)).starts_with("its settings are not whole: "));
}

}  // namespace
}  // namespace agent
