// What is written for the user is on the disk before it gets its name, and the name after that.
#include "client/user_file.h"

#include <gmock/gmock.h>

#include <filesystem>

#include "tests/agent/state/scratch_directory.h"
#include "tests/support/sync_record.h"

namespace client {
namespace {

using testing::ElementsAre;
using testing::StartsWith;
using testing_support::recordSyncs;
using testing_support::syncs;

class UserFile : public testing::Test {
 protected:
  const agent_testing::ScratchDirectory directory_;
  const std::string place_ = std::filesystem::path(directory_.path).filename();
  const std::string file_ = directory_.at("file");
};

TEST_F(UserFile, IsDurableWhenItIsReplaced) {
  recordSyncs();
  replaceUserFile(file_, "text");
  EXPECT_THAT(syncs(), ElementsAre(StartsWith("file"), place_));
  EXPECT_EQ(directory_.text("file"), "text");
}

TEST_F(UserFile, IsDurableWhenItIsPrivate) {
  for (const Existing existing : {Existing::Refused, Existing::Replaced}) {
    recordSyncs();
    writePrivateFile(file_, "text", existing);
    EXPECT_THAT(syncs(), ElementsAre(StartsWith("file"), place_));
  }
}

}  // namespace
}  // namespace client
