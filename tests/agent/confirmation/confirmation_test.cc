#include "agent/confirmation/confirmation.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>

#include "agent/confirmation/unconfirmed.h"
#include "agent/history/history.h"
#include "agent/save_hook.h"
#include "tests/agent/access/named_access.h"
#include "tests/support/waits_for.h"

namespace agent {
namespace {

using agent_testing::NamedAccess;
using agent_testing::SETTINGS;
using agent_testing::Steps;
using bridge::ApplyRequest;
using bridge::Change;
using bridge::Reason;
using testing::HasSubstr;

constexpr const char* UNCONFIRMED = "unconfirmed";
constexpr uint32_t LONG = 3600;  // seconds that no test waits for

Change port(const std::string& value) { return {Change::Set, "IKE.IKE_PORT", value}; }

class ConfirmationOf : public NamedAccess {
 protected:
  ConfirmationOf() {
    history_.found(kept_.keeper().savedText());
    start();
  }

  /// As a start of the agent, with the settings as they are.
  void start() {
    confirmation_.emplace(server(), kept_.keeper(), check_, set_, service_);
    confirmation_->resume();
  }

  bridge::Reply apply(uint32_t seconds, const Steps& steps, bool save = false) {
    return apply(root_, {seconds, save, "a try", {{}, steps}});
  }
  bridge::Reply apply(BridgeSession& session, const ApplyRequest& request) {
    return confirmation_->apply(session, bridge::encode(request));
  }

  void expectApplied(uint32_t seconds, const Steps& steps, bool save = false) {
    const bridge::Reply reply = apply(seconds, steps, save);
    EXPECT_EQ(reply.result, 1) << reply.text;
  }

  bool isWaiting() const { return confirmation_->state().until.has_value(); }

  static void waitUntil(const std::function<bool()>& condition) {
    while (!condition()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  void waitUntilBack() {
    waitUntil([&] { return !isWaiting(); });
  }

  /// What waits gets another end, as if the clock went on.
  void endTime() {
    confirmation_.reset();
    Unconfirmed changes = decodeUnconfirmed(directory_.text(UNCONFIRMED));
    changes.until = 0;
    directory_.write(UNCONFIRMED, encode(changes));
  }

  bool isInFile(const std::string& line) {
    return directory_.text(SETTINGS).find(line) != std::string::npos;
  }

  History history_{kept_.directory(), 50};
  const SaveHook hook_{server(), kept_.keeper(), history_};
  std::optional<Confirmation> confirmation_;
};

TEST_F(ConfirmationOf, WithoutATimeChangesStay) {
  const bridge::Reply reply = apply(0, {port("501")}, true);
  EXPECT_EQ(valuesIn(reply).values.at(0).before, "500");
  EXPECT_FALSE(isWaiting());
  EXPECT_TRUE(isInFile("IKE_PORT=501\n"));
  EXPECT_EQ(history_.read(2)->head.message, "a try");
  EXPECT_EQ(directory_.text(UNCONFIRMED), "(absent)");
}

TEST_F(ConfirmationOf, LetsChangesStay) {
  expectApplied(LONG, {port("501")});
  EXPECT_TRUE(isWaiting());
  EXPECT_EQ(directory_.mode(UNCONFIRMED) & 07777, 0600u);
  EXPECT_FALSE(isInFile("IKE_PORT=501\n"));
  EXPECT_EQ(confirmation_->confirm(root_).result, 1);
  EXPECT_FALSE(isWaiting());
  EXPECT_EQ(directory_.text(UNCONFIRMED), "(absent)");
  start();
  EXPECT_EQ(running("IKE.IKE_PORT"), "501");
}

TEST_F(ConfirmationOf, TakesChangesBackInMemory) {
  expectApplied(1, {port("501"), {Change::AddUser, "bob"}});
  EXPECT_EQ(running("IKE.IKE_PORT"), "501");
  waitUntilBack();
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
  EXPECT_TRUE(server().USERS->items.empty());
  EXPECT_EQ(directory_.text(UNCONFIRMED), "(absent)");
  EXPECT_EQ(history_.newest(), 1u) << "nothing was saved";
}

TEST_F(ConfirmationOf, TakesSavedChangesBackInTheFile) {
  expectApplied(LONG, {port("501")}, true);
  EXPECT_EQ(history_.read(2)->head.message, "a try");
  endTime();
  start();
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
  EXPECT_TRUE(isInFile("IKE_PORT=500\n"));
  const auto revision = history_.read(3);
  ASSERT_TRUE(revision);
  EXPECT_THAT(revision->head.message, HasSubstr("not confirmed in time"));
  EXPECT_EQ(revision->head.program, "lparams_agent");
}

TEST_F(ConfirmationOf, TakesBackWhatSomebodyElseHasSaved) {
  expectApplied(LONG, {port("501")});
  save();
  endTime();
  start();
  EXPECT_TRUE(isInFile("IKE_PORT=500\n"));
}

TEST_F(ConfirmationOf, IsPlannedBetweenTwoWrites) {
  EXPECT_TRUE(testing_support::waitsFor(service_.writeTurn(), [&] {
    EXPECT_EQ(apply(LONG, {port("illegal")}).reason, Reason::IllegalValue);
  }));
}

TEST_F(ConfirmationOf, GoesBackBetweenTwoWrites) {
  expectApplied(LONG, {port("501")});
  endTime();
  EXPECT_TRUE(testing_support::waitsFor(service_.writeTurn(), [&] { start(); }));
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
}

TEST_F(ConfirmationOf, LeavesWhatWasChangedAgain) {
  expectApplied(LONG, {port("501"), {Change::Set, "IKE.NATT_PORT", "7"}});
  (void)set({port("502")});
  endTime();
  start();
  EXPECT_FALSE(isWaiting()) << "overdue: at once";
  EXPECT_EQ(running("IKE.IKE_PORT"), "502");
  EXPECT_EQ(running("IKE.NATT_PORT"), "4500");
}

TEST_F(ConfirmationOf, GoesOnAfterARestart) {
  expectApplied(LONG, {port("501")}, true);
  confirmation_.reset();
  start();
  EXPECT_TRUE(isWaiting());
  EXPECT_EQ(running("IKE.IKE_PORT"), "501");
  EXPECT_EQ(apply(LONG, {port("502")}).reason, Reason::Conflict);
  endTime();
  start();
  EXPECT_FALSE(isWaiting());
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
  EXPECT_TRUE(isInFile("IKE_PORT=500\n"));
}

TEST_F(ConfirmationOf, NeverWaitsForLongerThanWasSaid) {
  expectApplied(1, {port("501")});
  confirmation_.reset();
  Unconfirmed changes = decodeUnconfirmed(directory_.text(UNCONFIRMED));
  changes.until += int64_t{1000} * LONG;  // the clock was put back
  directory_.write(UNCONFIRMED, encode(changes));
  start();
  waitUntilBack();
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
}

TEST_F(ConfirmationOf, ForgetsAtAStartWhatWasNotSaved) {
  expectApplied(LONG, {port("501")});
  confirmation_.reset();
  server().IKE->IKE_PORT.value = 500;  // as a load has it
  start();
  EXPECT_FALSE(isWaiting());
  EXPECT_EQ(directory_.text(UNCONFIRMED), "(absent)");
}

TEST_F(ConfirmationOf, OneChangeAtATimeWaits) {
  expectApplied(LONG, {port("501")});
  const bridge::Reply second = apply(LONG, {port("502")});
  EXPECT_EQ(second.reason, Reason::Conflict);
  EXPECT_THAT(second.text, HasSubstr("other changes wait for confirmation until 2"));
  EXPECT_EQ(running("IKE.IKE_PORT"), "501");
  expectApplied(0, {port("503")});
  EXPECT_EQ(confirmation_->confirm(root_).result, 1);
  expectApplied(LONG, {port("502")});
}

TEST_F(ConfirmationOf, SaysThatNothingWaits) {
  const bridge::Reply reply = confirmation_->confirm(root_);
  EXPECT_EQ(reply.reason, Reason::Conflict);
  EXPECT_EQ(reply.text, "no changes wait for confirmation");
}

TEST_F(ConfirmationOf, ThatDoNotChangeAnythingDoNotWait) {
  expectApplied(LONG, {port("500")});
  EXPECT_FALSE(isWaiting());
  EXPECT_EQ(directory_.text(UNCONFIRMED), "(absent)");
}

TEST_F(ConfirmationOf, RefusesWhatSetRefuses) {
  EXPECT_EQ(apply(LONG, {port("0")}).text,
            "IKE.IKE_PORT: \"0\" is not a whole number from 1 to 65535");
  EXPECT_EQ(apply(root_, {LONG, false, {}, {{{"IKE", 1}}, {port("501")}}}).reason,
            Reason::Conflict);
  EXPECT_EQ(apply(stranger_, {LONG, false, {}, {{}, {port("501")}}}).reason, Reason::NotAuthorised);
  EXPECT_EQ(confirmation_->apply(root_, "").reason, Reason::MalformedInput);
  EXPECT_EQ(apply(86401, {port("501")}).text,
            "a time of 86401 seconds is too long; expected at most 86400");
  EXPECT_FALSE(isWaiting());
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
  EXPECT_EQ(directory_.text(UNCONFIRMED), "(absent)");
  expectApplied(LONG, {port("501")});
  EXPECT_EQ(confirmation_->confirm(stranger_).reason, Reason::NotAuthorised);
  EXPECT_TRUE(isWaiting());
}

TEST_F(ConfirmationOf, ChangesNothingThatCouldNotGoBack) {
  std::filesystem::create_directories(directory_.at(std::string(UNCONFIRMED) + "/in-the-way"));
  const bridge::Reply reply = apply(LONG, {port("501")});
  EXPECT_EQ(reply.reason, Reason::SaveRefused);
  EXPECT_THAT(reply.text, HasSubstr("nothing was changed"));
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
}

TEST_F(ConfirmationOf, ChangesNothingThatAFileCannotHold) {
  server().UPDATE->URL.value = "a\nb";  // by a program that writes anything
  const bridge::Reply reply = apply(LONG, {{Change::Set, "UPDATE.URL", "c"}});
  EXPECT_EQ(reply.reason, Reason::IllegalValue);
  EXPECT_THAT(reply.text, HasSubstr("no settings file can hold"));
  expectApplied(LONG, {port("501")});
}

TEST_F(ConfirmationOf, TellsWhatCannotGoBackAndTriesAgain) {
  expectApplied(LONG, {port("501")}, true);
  std::string edited = directory_.text(SETTINGS);
  directory_.write(SETTINGS, edited + "\n");  // saves are refused now
  endTime();
  start();
  EXPECT_EQ(running("IKE.IKE_PORT"), "500") << "in memory";
  EXPECT_THAT(confirmation_->state().problem, HasSubstr("not in a file"));
  EXPECT_TRUE(isWaiting());
  EXPECT_THAT(confirmation_->confirm(root_).text, HasSubstr("too late"));
  EXPECT_NE(directory_.text(UNCONFIRMED), "(absent)");
  directory_.write(SETTINGS, edited);
  confirmation_.reset();
  start();
  EXPECT_EQ(confirmation_->state().problem, "");
  EXPECT_TRUE(isInFile("IKE_PORT=500\n"));
}

TEST_F(ConfirmationOf, TellsOfADamagedFile) {
  confirmation_.reset();
  directory_.write(UNCONFIRMED, "?");
  start();
  EXPECT_THAT(confirmation_->state().problem, HasSubstr("its checksum does not fit"));
  EXPECT_THAT(confirmation_->confirm(root_).text, HasSubstr("no changes wait"));
  expectApplied(LONG, {port("501")});
}

TEST_F(ConfirmationOf, GoesOnWaitingIfItCannotBeMadeDurable) {
  expectApplied(LONG, {port("501")});
  const std::string changes = directory_.text(UNCONFIRMED);
  const std::filesystem::path path = directory_.at(UNCONFIRMED);
  std::filesystem::remove(path);
  std::filesystem::create_directory(path);
  const bridge::Reply reply = confirmation_->confirm(root_);
  EXPECT_EQ(reply.reason, Reason::SaveRefused);
  EXPECT_THAT(reply.text, testing::StartsWith("the changes could not be confirmed durably: "));
  EXPECT_TRUE(isWaiting());
  std::filesystem::remove(path);
  directory_.write(UNCONFIRMED, changes);
  EXPECT_EQ(confirmation_->confirm(root_).result, 1);
  EXPECT_FALSE(isWaiting());
}

TEST_F(ConfirmationOf, TakesNoLongerMessageThanASave) {
  const std::string longest(4096, 'm');
  const auto with = [&](const std::string& message) {
    return apply(root_, {0, false, message, {{}, {port("501")}}});
  };
  const bridge::Reply reply = with(longest + "m");
  EXPECT_EQ(reply.reason, Reason::IllegalValue);
  EXPECT_EQ(reply.text, "a message of 4097 bytes is too long; expected at most 4096");
  EXPECT_EQ(running("IKE.IKE_PORT"), "500");
  EXPECT_EQ(with(longest).result, 1);
}

TEST_F(ConfirmationOf, SaysThatASaveFailed) {
  directory_.write(SETTINGS, "edited");
  const bridge::Reply reply = apply(LONG, {port("501")}, true);
  EXPECT_EQ(reply.reason, Reason::SaveRefused);
  EXPECT_THAT(reply.text, testing::StartsWith("the changes were made, but not saved: "));
  EXPECT_EQ(running("IKE.IKE_PORT"), "501");
  EXPECT_TRUE(isWaiting());
}

}  // namespace
}  // namespace agent
