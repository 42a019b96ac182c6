#include "agent/history/history.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

#include "tests/agent/state/scratch_directory.h"
#include "tests/module/failing_allocation.h"

namespace agent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Numbers = std::vector<uint64_t>;

std::shared_ptr<const std::string> settings(int port) {
  return std::make_shared<const std::string>(agent_testing::exampleSettings(port));
}

class HistoryOf : public testing::Test {
 protected:
  /// As a start of the agent.
  History& open(size_t kept = 50, uint64_t maxSize = History::MAX_SIZE) {
    history_.reset();
    return history_.emplace(state_, kept, maxSize);
  }

  uint64_t save(int port, const std::string& message = {}) {
    return history_->saved({1000, 42, "ctl"}, message, settings(port));
  }

  /// A file in the place of the next revision that cannot be replaced.
  void block(uint64_t number) {
    std::filesystem::create_directories(scratch_.at("history." + std::to_string(number)) + "/x");
  }

  const agent_testing::ScratchDirectory scratch_;
  const StateDirectory state_{scratch_.path};
  std::optional<History> history_;
};

TEST_F(HistoryOf, TellsWhoHasSavedWhatAndWhy) {
  EXPECT_EQ(open().newest(), 0u);
  EXPECT_EQ(save(500, "first"), 1u);
  EXPECT_EQ(save(501, "second"), 2u);
  const auto revision = history_->read(2);
  ASSERT_TRUE(revision);
  EXPECT_EQ(revision->text, *settings(501));
  EXPECT_EQ(revision->head.number, 2u);
  EXPECT_GT(revision->head.time, 1'600'000'000'000);
  EXPECT_EQ(revision->head.uid, 1000u);
  EXPECT_EQ(revision->head.pid, 42);
  EXPECT_EQ(revision->head.program, "ctl");
  EXPECT_EQ(revision->head.message, "second");
  EXPECT_THAT(
      revision->head.changes,
      ElementsAre(bridge::NamedValue{.name = "IKE.IKE_PORT", .running = "501", .before = "500"}));
  EXPECT_TRUE(history_->read(1)->head.changes.empty()) << "there was nothing before";
  EXPECT_EQ(history_->problem(), "");
  EXPECT_EQ(scratch_.mode("history.1") & 07777, 0600u);
}

TEST_F(HistoryOf, MakesNoRevisionOfWhatIsSavedAlready) {
  (void)open();
  EXPECT_EQ(save(500), 1u);
  EXPECT_EQ(save(500), 0u);
  (void)open();
  EXPECT_EQ(save(500), 0u);
  history_->found(settings(500));
  EXPECT_THAT(history_->numbers(), ElementsAre(1));
}

TEST_F(HistoryOf, GoesOnWithItsNumbers) {
  (void)open(2);
  for (int port = 1; port <= 5; ++port) EXPECT_EQ(save(port), static_cast<uint64_t>(port));
  EXPECT_THAT(history_->numbers(), ElementsAre(4, 5));
  EXPECT_THAT(scratch_.names(), ElementsAre("history.4", "history.5"));
  EXPECT_EQ(open(2).newest(), 5u);
  EXPECT_EQ(save(6), 6u);
  EXPECT_FALSE(history_->read(4)) << "it was forgotten";
  EXPECT_THAT(open(1).numbers(), ElementsAre(6)) << "fewer are kept now";
}

TEST_F(HistoryOf, IsBoundedInBytes) {
  EXPECT_EQ(History::MAX_SIZE, 33'554'432u);
  const uint64_t one = settings(500)->size() * 2;
  (void)open(50, 3 * one);
  for (int port = 1; port <= 8; ++port) (void)save(port);
  EXPECT_LT(history_->numbers().size(), 8u);
  EXPECT_GE(history_->numbers().size(), 3u);
  EXPECT_THAT(open(50, 1).numbers(), ElementsAre(8)) << "the newest stays";
}

TEST_F(HistoryOf, HasRoomForJustTheBytesThatItMayTake) {
  scratch_.write("history.1", "12345");
  scratch_.write("history.2", "67890");
  EXPECT_THAT(open(50, 10).numbers(), ElementsAre(1, 2));
  EXPECT_THAT(open(50, 9).numbers(), ElementsAre(2));
}

TEST_F(HistoryOf, TakesWhatAStartFindsForARevisionOfTheAgent) {
  open().found(settings(500));
  history_->found(nullptr);
  open().found(settings(501));
  EXPECT_THAT(history_->numbers(), ElementsAre(1, 2));
  const auto found = history_->read(2);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->head.uid, ::geteuid());
  EXPECT_EQ(found->head.pid, ::getpid());
  EXPECT_EQ(found->head.program, "lparams_agent");
  EXPECT_THAT(found->head.message, HasSubstr("found at a start"));
  EXPECT_EQ(found->head.changes.size(), 1u);
}

TEST_F(HistoryOf, TellsOfDamagedFilesAndGoesOn) {
  (void)open();
  EXPECT_EQ(save(500), 1u);
  EXPECT_EQ(save(501), 2u);
  scratch_.write("history.2", scratch_.text("history.2").substr(1));
  EXPECT_THAT(open().problem(), HasSubstr("history.2: its checksum does not fit"));
  EXPECT_THROW((void)history_->read(2), std::runtime_error);
  EXPECT_EQ(history_->read(1)->text, *settings(500));
  history_->found(settings(501));  // its revision can be read by nobody
  EXPECT_EQ(history_->newest(), 3u);
  EXPECT_EQ(history_->read(3)->head.changes.size(), 1u) << "since the first one";
}

TEST_F(HistoryOf, BelievesNoFileThatHasAnotherNumber) {
  (void)open();
  EXPECT_EQ(save(500), 1u);
  scratch_.write("history.9", scratch_.text("history.1"));
  EXPECT_THAT(open().problem(), HasSubstr("history.9: it is another revision"));
  EXPECT_EQ(save(501), 10u);
}

TEST_F(HistoryOf, LeavesOtherFilesAlone) {
  for (const char* name : {"history.", "history.x", "history.01", "history.1.new", "history.-1",
                           "history.99999999999999999999", "history.18446744073709551615"}) {
    scratch_.write(name, "?");
  }
  EXPECT_EQ(open(1).newest(), 0u);
  EXPECT_EQ(history_->problem(), "");
  EXPECT_EQ(save(500), 1u);
  EXPECT_EQ(save(501), 2u);
  EXPECT_EQ(scratch_.text("history.x"), "?");
}

TEST_F(HistoryOf, FollowsNoLink) {
  const agent_testing::ScratchDirectory elsewhere;
  elsewhere.write("file", "precious");
  std::filesystem::create_symlink(elsewhere.at("file"), scratch_.at("history.3"));
  EXPECT_NE(open().problem(), "");
  EXPECT_EQ(save(500), 4u);
  EXPECT_EQ(elsewhere.text("file"), "precious");
}

TEST_F(HistoryOf, ThatCannotBeWrittenIsToldUntilItCanBe) {
  (void)open();
  EXPECT_EQ(save(500), 1u);
  block(2);
  EXPECT_EQ(save(501), 0u);
  EXPECT_THAT(history_->problem(), HasSubstr("history.2 cannot be replaced"));
  EXPECT_EQ(history_->newest(), 1u);
  EXPECT_EQ(save(502), 3u) << "the number was used";
  EXPECT_EQ(history_->problem(), "");
  EXPECT_EQ(history_->read(3)->head.changes.at(0).before, "500") << "the last one that is kept";
}

TEST_F(HistoryOf, OfADirectoryInTheWayOfARevisionGoesOn) {
  block(1);
  EXPECT_THAT(open().problem(), HasSubstr("not a regular file"));
  EXPECT_EQ(save(500), 2u);
}

TEST_F(HistoryOf, TellsNoMoreChangesThanItHasRoomFor) {
  (void)open();
  std::string text = agent_testing::exampleSettings();
  const auto with = [&](size_t size) {
    std::string large = text;
    large.insert(large.rfind("    end=\nend=\n"),
                 "        /USER=\n            NAME=zoe\n            LSP_FILE=" +
                     std::string(size, 'x') + "\n        end=\n");
    return std::make_shared<const std::string>(large);
  };
  // The change has a name of 19 bytes, and one of the value before.
  constexpr size_t MOST = 1'048'576 - 20;
  (void)history_->saved({}, {}, with(1));
  (void)history_->saved({}, {}, with(MOST));
  EXPECT_EQ(history_->read(2)->head.changes.size(), 1u);
  EXPECT_EQ(history_->read(2)->head.changesLeftOut, 0u);
  (void)history_->saved({}, {}, with(1));
  (void)history_->saved({}, {}, with(MOST + 1));
  EXPECT_TRUE(history_->read(4)->head.changes.empty());
  EXPECT_EQ(history_->read(4)->head.changesLeftOut, 1u);
  EXPECT_EQ(history_->read(4)->text, *with(MOST + 1));
}

// What a later part of a revision fails with must not undo an earlier one twice.
TEST_F(HistoryOf, OutlivesEachAllocationThatFails) {
  open();
  const Author author{1000, 42, "a program with a name that is not short"};
  const std::string message = "a message that takes memory of its own";
  int number = 0;
  for (bool failed = true; failed;) {
    const auto text = settings(500 + ++number);
    host::failAllocation(number);
    (void)history_->saved(author, message, text);
    failed = host::allocationHasFailed();
    host::failAllocation(0);
  }
  EXPECT_GT(number, 10);
  EXPECT_EQ(history_->problem(), "");
  const uint64_t revision = history_->newest();
  EXPECT_EQ(history_->saved(author, message, settings(1)), revision + 1);
}

}  // namespace
}  // namespace agent
