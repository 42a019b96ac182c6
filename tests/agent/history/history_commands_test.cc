#include "agent/history/history_commands.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "agent/save_hook.h"
#include "bridge/bytes.h"
#include "bridge/history.h"
#include "inspection/settings_completeness.h"
#include "tests/agent/access/named_access.h"

namespace agent {
namespace {

using agent_testing::NamedAccess;
using bridge::Reason;
using testing::HasSubstr;

class HistoryCommandsOf : public NamedAccess {
 protected:
  HistoryCommandsOf() { history_.found(kept_.keeper().savedText()); }  // 1: the defaults

  bridge::Reply save(BridgeSession& session, const bridge::SaveRequest& request) {
    return HistoryCommands::save(session, bridge::encode(request));
  }

  /// The number of the revision that it makes.
  uint64_t saveAs(const std::string& message) {
    const bridge::Reply reply = save(root_, {.message = message});
    std::string_view output = reply.output;
    uint64_t number = 0;
    EXPECT_EQ(reply.result, 1) << reply.text;
    EXPECT_TRUE(bridge::take(output, number) && output.empty());
    return number;
  }

  std::vector<bridge::Revision> list(BridgeSession& session) {
    const auto revisions = bridge::decodeRevisions(commands_.list(session, {}).output);
    EXPECT_TRUE(revisions);
    return revisions.value_or(std::vector<bridge::Revision>());
  }

  bridge::Reply revision(BridgeSession& session, uint64_t number) {
    std::string input;
    bridge::put(input, number);
    return commands_.read(session, input);
  }

  History history_{kept_.directory(), 50};
  const SaveHook hook_{server(), kept_.keeper(), history_};
  HistoryCommands commands_{history_};
};

TEST_F(HistoryCommandsOf, SavesWithAMessage) {
  (void)set({{bridge::Change::Set, "IKE.IKE_PORT", "501"}});
  EXPECT_EQ(saveAs("a port"), 2u);
  EXPECT_EQ(saveAs("again"), 0u) << "nothing has changed";
  const auto revisions = list(root_);
  ASSERT_EQ(revisions.size(), 2u);
  EXPECT_EQ(revisions[0].number, 2u) << "newest first";
  EXPECT_EQ(revisions[0].message, "a port");
  EXPECT_EQ(revisions[0].uid, root_.uid);
  EXPECT_EQ(revisions[0].pid, root_.pid);
  EXPECT_EQ(revisions[1].number, 1u);
}

TEST_F(HistoryCommandsOf, TheModulesSaveMakesHistoryToo) {
  (void)set({{bridge::Change::Set, "IKE.IKE_PORT", "501"}});
  EXPECT_EQ(service_.execute(root_, bridge::Command{13, 2}).result, 1);
  EXPECT_EQ(list(root_).at(0).message, "");
  EXPECT_EQ(history_.newest(), 2u);
}

TEST_F(HistoryCommandsOf, ASaveThatIsNotAllowedMakesNone) {
  (void)set({{bridge::Change::Set, "IKE.IKE_PORT", "501"}});
  EXPECT_EQ(save(stranger_, {}).reason, Reason::NotAuthorised);
  EXPECT_EQ(save(root_, {.message = std::string(4097, 'x')}).text,
            "a message of 4097 bytes is too long; expected at most 4096");
  EXPECT_EQ(HistoryCommands::save(root_, "").reason, Reason::MalformedInput);
  directory_.write(agent_testing::SETTINGS, agent_testing::exampleSettings());  // an edit
  const bridge::Reply refused = save(root_, {});
  EXPECT_EQ(refused.reason, Reason::SaveRefused);
  EXPECT_THAT(refused.text, HasSubstr("was edited"));
  EXPECT_EQ(history_.newest(), 1u);
  EXPECT_EQ(save(root_, {.force = true}).result, 1);
  EXPECT_EQ(history_.newest(), 2u);
}

TEST_F(HistoryCommandsOf, GivesTheValuesOfARevision) {
  (void)set({{bridge::Change::Set, "IKE.IKE_PORT", "501"},
             {bridge::Change::AddUser, "bob"},
             {bridge::Change::Set, "USERS[bob].PMP_TIMEOUT", "20"}});
  EXPECT_EQ(saveAs(""), 2u);
  (void)set({{bridge::Change::Set, "IKE.IKE_PORT", "502"}, {bridge::Change::RemoveUser, "bob"}});
  const auto values = valuesIn(revision(root_, 2)).values;
  const auto valueOf = [&](const std::string& name) {
    for (const auto& value : values) {
      if (value.name == name) return value.running.value_or("-");
    }
    return std::string("(none)");
  };
  EXPECT_EQ(valueOf("IKE.IKE_PORT"), "501");
  EXPECT_EQ(valueOf("IKE.DPD_IDLE_TIME"), "30");
  EXPECT_EQ(valueOf("USERS[bob].PMP_TIMEOUT"), "20");
  EXPECT_EQ(valuesIn(revision(root_, 1)).values.size(), values.size() - 12);
}

TEST_F(HistoryCommandsOf, SayWhatIsNotThere) {
  EXPECT_EQ(revision(root_, 3).text, "there is no revision 3; there are those from 1 to 1");
  EXPECT_EQ(revision(root_, 3).reason, Reason::IllegalValue);
  EXPECT_EQ(commands_.read(root_, "1").reason, Reason::MalformedInput);
  EXPECT_EQ(commands_.list(root_, "1").reason, Reason::MalformedInput);
  directory_.write("history.1", "?");
  EXPECT_EQ(revision(root_, 1).text, "revision 1 cannot be read: its checksum does not fit");
  const bridge::Reply reply = commands_.list(root_, {});
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.text, "revision 1 is left out: its checksum does not fit");
  EXPECT_EQ(reply.output, "");
}

TEST_F(HistoryCommandsOf, ASaveWithoutASessionIsTheAgentsOwn) {
  (void)set({{bridge::Change::Set, "IKE.IKE_PORT", "501"}});
  EXPECT_EQ(server().saveHook("LPARAMS"), 1);
  EXPECT_EQ(list(root_).at(0).number, 2u);
  EXPECT_EQ(list(root_).at(0).program, "lparams_agent");
  directory_.write(agent_testing::SETTINGS, "edited");
  EXPECT_EQ(server().saveHook("LPARAMS"), 0);
}

// A file of so many bytes is whole, and its values and their names are more than a reply takes.
TEST_F(HistoryCommandsOf, SayWhichRevisionDoesNotFitAReply) {
  std::string text = agent_testing::exampleSettings();
  const std::string user = "        /USER=\n            NAME=zoe\n            LSP_FILE=";
  const std::string rest = "\n        end=\n";
  const size_t room = inspection::MAX_SETTINGS_SIZE - text.size() - user.size() - rest.size();
  text.insert(text.rfind("    end=\nend=\n"), user + std::string(room, 'x') + rest);
  ASSERT_EQ(history_.saved({}, {}, std::make_shared<const std::string>(std::move(text))), 2u);
  const bridge::Reply reply = revision(root_, 2);
  EXPECT_EQ(reply.reason, Reason::ReplyTooLarge);
  EXPECT_EQ(reply.text, "revision 2 does not fit a frame");
}

TEST_F(HistoryCommandsOf, SayThatNothingWasEverSaved) {
  directory_.remove("history.1");
  History none{kept_.directory(), 50};
  std::string input;
  bridge::put(input, uint64_t{1});
  EXPECT_EQ(HistoryCommands(none).read(root_, input).text, "there is no revision 1, nor another");
}

TEST_F(HistoryCommandsOf, GiveNoSecretToWhoMayNotWrite) {
  (void)set({{bridge::Change::Set, "IKE.QCD_SECRET", "s3cret"}});
  (void)saveAs("");
  const auto changes = list(root_).at(0).changes;
  ASSERT_EQ(changes.size(), 1u);
  EXPECT_EQ(changes[0].running, "s3cret");
  const auto hidden = list(stranger_).at(0).changes;
  ASSERT_EQ(hidden.size(), 1u);
  EXPECT_EQ(hidden[0], (bridge::NamedValue{.name = "IKE.QCD_SECRET", .secret = true}));
  EXPECT_THAT(revision(root_, 2).output, HasSubstr("s3cret"));
  EXPECT_THAT(revision(stranger_, 2).output, testing::Not(HasSubstr("s3cret")));
}

}  // namespace
}  // namespace agent
