#include "agent/state/kept_copies.h"

#include <gmock/gmock.h>

#include "tests/agent/state/scratch_directory.h"

namespace agent {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class KeptCopies : public testing::Test {
 protected:
  const agent_testing::ScratchDirectory directory_;
  const std::string file_ = directory_.at("file");
};

TEST_F(KeptCopies, ATextIsKeptOnceOfAKind) {
  const std::string first = keepCopy(file_, "edited", "one");
  EXPECT_EQ(keepCopy(file_, "edited", "one"), first);
  EXPECT_NE(keepCopy(file_, "edited", "two"), first);
  EXPECT_NE(keepCopy(file_, "damaged", "one"), first);
  EXPECT_EQ(keepCopy(file_, "edited", "one"), first);
  EXPECT_THAT(directory_.names(), SizeIs(3));
}

TEST_F(KeptCopies, AreNoneWhereThereIsNoDirectory) {
  EXPECT_NO_THROW(forgetOldCopies(directory_.at("missing/file")));
}

TEST_F(KeptCopies, TheNewestTwentyOfAKindStay) {
  const auto name = [](const char* kind, int day) {
    return std::string("file.") + kind + "-202611" + (day < 10 ? "0" : "") + std::to_string(day) +
           "T000000Z";
  };
  for (int day = 1; day <= 25; ++day) {
    directory_.write(name("edited", day), std::to_string(day));
    directory_.write(name("damaged", day), std::to_string(day));
  }
  directory_.remove(name("damaged", 3));
  for (int day = 6; day <= 9; ++day) directory_.remove(name("damaged", day));
  directory_.write("file", "itself");
  directory_.write("file.good", "another");
  directory_.write("other.edited-20261101T000000Z", "of another file");
  forgetOldCopies(file_);
  for (int day = 1; day <= 25; ++day) {
    EXPECT_EQ(directory_.text(name("edited", day)), day <= 5 ? "(absent)" : std::to_string(day));
    const bool never = day == 3 || (day >= 6 && day <= 9);
    EXPECT_EQ(directory_.text(name("damaged", day)), never ? "(absent)" : std::to_string(day));
  }
  EXPECT_EQ(directory_.text("file"), "itself");
  EXPECT_EQ(directory_.text("file.good"), "another");
  EXPECT_EQ(directory_.text("other.edited-20261101T000000Z"), "of another file");
}

}  // namespace
}  // namespace agent
