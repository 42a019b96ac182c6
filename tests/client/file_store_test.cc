// What others do to the file between a look at it and a write.
#include "client/file_store.h"

#include <gtest/gtest.h>

#include "client/directory_lock.h"
#include "client/failure.h"
#include "tests/agent/state/scratch_directory.h"

namespace client {
namespace {

using agent_testing::exampleSettings;

class FileStoreOf : public testing::Test {
 protected:
  FileStoreOf() { directory_.write("file", exampleSettings()); }

  void expectTryAgain(FileStore& store) {
    const bridge::NamedChanges changes = {{}, {{bridge::Change::Set, "IKE.IKE_PORT", "501"}}};
    const std::string before = directory_.text("file");
    try {
      (void)store.set(changes);
      FAIL();
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.status, programs::EXIT_TRY_AGAIN);
    }
    EXPECT_EQ(directory_.text("file"), before);
  }

  const agent_testing::ScratchDirectory directory_;
};

TEST_F(FileStoreOf, ADirectoryThatAnAgentTakesMeanwhileIsLeftToIt) {
  FileStore store(directory_.at("file"));
  const DirectoryLock agents(directory_.at("file"), DirectoryLock::Shared, "");
  expectTryAgain(store);
}

TEST_F(FileStoreOf, WhatSomebodyElseWritesMeanwhileStays) {
  FileStore store(directory_.at("file"));
  directory_.write("file", exampleSettings(502));
  expectTryAgain(store);
}

}  // namespace
}  // namespace client
