#include "agent/bridge/change_tracker.h"

#include <gmock/gmock.h>

#include "agent/bridge/listener_registry.h"
#include "tests/agent/bridge/served_module.h"

namespace agent {
namespace {

using bridge::Event;
using testing::ElementsAre;
using testing::IsEmpty;

std::string inWords(const Event& event) {
  return event.group + " " + std::to_string(event.revision) + " by " + std::to_string(event.uid) +
         "/" + std::to_string(event.pid);
}

class Tracker : public testing::Test {
 protected:
  /// Lets the module write, past the service.
  void write(const std::string& input) {
    std::string output;
    (void)listenerRegistry().execute(session_, LPARAMS_MODULE_ID, 0, input, output);
  }

  ChangeTracker::Subscriber recorder(std::vector<std::string>& events) {
    return [&events](const Event& event) { events.push_back(inWords(event)); };
  }

  agent_testing::ServedModule module_;
  ChangeTracker& changes_ = module_.changes();
  BridgeSession session_{0, 0, 77, {}};
};

TEST_F(Tracker, CountsEachGroupOnItsOwn) {
  for (const char* group : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
    EXPECT_EQ(changes_.revision(group), 1u) << group;
  }
  for (const char* group : {"", "ROOT", "USER", "ike"}) EXPECT_EQ(changes_.revision(group), 0u);

  write(agent_testing::adminRecord(20));
  write(agent_testing::adminRecord(20));  // a write is one, whether or not it changes a value
  client::Settings settings;
  write(client::encodeRecord(settings.userList));
  EXPECT_EQ(changes_.revision("ADMIN"), 3u);
  EXPECT_EQ(changes_.revision("USERS"), 2u);
  EXPECT_EQ(changes_.revision("IKE"), 1u);
}

/// What an observer of the module, a plain function, notes down.
struct Notes {
  agent_testing::ServedModule* module = nullptr;
  std::vector<std::string> steps;

  void add(const std::string& what) {
    steps.push_back(what + ": revision " + std::to_string(module->changes().revision("ADMIN")) +
                    ", value " + std::to_string(module->server().ADMIN->SESSION_EXPTIME.value));
  }
};

Notes& notes() {
  static Notes notes;
  return notes;
}

TEST_F(Tracker, TheRevisionGrowsBeforeTheFirstValueAndTheEventFollowsTheLast) {
  notes() = {.module = &module_, .steps = {}};
  module_.server().ADMIN->observers.push_back(
      [](int event) { notes().add(event == 1 ? "begins" : "done"); });
  unsigned valueAtEvent = 0;
  (void)changes_.subscribe(
      [&](const Event&) { valueAtEvent = module_.server().ADMIN->SESSION_EXPTIME.value; });

  write(agent_testing::adminRecord(20));
  EXPECT_THAT(notes().steps,
              ElementsAre("begins: revision 2, value 10", "done: revision 2, value 20"));
  EXPECT_EQ(valueAtEvent, 20u);
}

TEST_F(Tracker, TellsEverySubscriberWhoWroteWhat) {
  std::vector<std::string> first;
  std::vector<std::string> second;
  const auto ticket = changes_.subscribe(recorder(first));
  (void)changes_.subscribe(recorder(second));

  BridgeSession::current() = &session_;
  write(agent_testing::adminRecord(20));
  changes_.unsubscribe(ticket);
  BridgeSession::current() = nullptr;
  write(agent_testing::adminRecord(21));  // by nobody: not on the bridge

  EXPECT_THAT(first, ElementsAre("ADMIN 2 by 0/77"));
  EXPECT_THAT(second, ElementsAre("ADMIN 2 by 0/77", "ADMIN 3 by 0/0"));
}

TEST_F(Tracker, TellsOfAWriteThatBrokeOffWhenItIsSaidTo) {
  std::vector<std::string> events;
  (void)changes_.subscribe(recorder(events));
  const std::string record = agent_testing::adminRecord(20);
  write(record.substr(0, record.size() - 1));
  EXPECT_EQ(changes_.revision("ADMIN"), 2u);
  EXPECT_THAT(events, IsEmpty());
  changes_.writeBrokeOff("ADMIN");
  EXPECT_THAT(events, ElementsAre("ADMIN 2 by 0/0"));

  changes_.writeBrokeOff("ADMIN");  // once only
  changes_.writeBrokeOff("IKE");    // nothing has begun
  changes_.writeBrokeOff("FOO");
  write(record);
  changes_.writeBrokeOff("ADMIN");  // this one did report its end
  EXPECT_THAT(events, ElementsAre("ADMIN 2 by 0/0", "ADMIN 3 by 0/0"));
}

TEST_F(Tracker, AWriteThatNeverBeganIsNone) {
  write("");
  write(std::string("\3\0\0\0FOO", 7));
  EXPECT_EQ(changes_.revision("ADMIN"), 1u);
}

}  // namespace
}  // namespace agent
