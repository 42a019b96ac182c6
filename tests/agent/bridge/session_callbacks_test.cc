// What listeners are told of the sessions of clients.
#include <gmock/gmock.h>

#include "agent/bridge/listener_registry.h"
#include "tests/agent/bridge/scripted_listener.h"

using agent_testing::ScriptedListener;
using testing::ElementsAre;
using testing::IsEmpty;

namespace agent {
namespace {

class SessionCallbacks : public testing::Test {
 protected:
  ListenerRegistry registry;
  ScriptedListener listener;
  BridgeSession anna1{1000, 1000, 1};
  BridgeSession anna2{1000, 1000, 2};
  BridgeSession bert{1001, 1001, 3};
};

TEST_F(SessionCallbacks, OfOneSessionAfterTheOther) {
  registry.add(&listener);
  registry.sessionOpened(anna1);
  registry.sessionClosed(anna1);
  registry.sessionOpened(bert);
  registry.sessionClosed(bert);
  EXPECT_THAT(listener.events,
              ElementsAre("first of all", "open 1000/1", "close 1000/1", "last of user 1000/1",
                          "last of all", "first of all", "open 1001/3", "close 1001/3",
                          "last of user 1001/3", "last of all"));
}

TEST_F(SessionCallbacks, OfSessionsSideBySide) {
  registry.add(&listener);
  registry.sessionOpened(anna1);
  registry.sessionOpened(anna2);
  registry.sessionOpened(bert);
  EXPECT_THAT(listener.events,
              ElementsAre("first of all", "open 1000/1", "open 1000/2", "open 1001/3"));
  listener.events.clear();
  registry.sessionClosed(anna2);
  registry.sessionClosed(anna1);
  registry.sessionClosed(bert);
  EXPECT_THAT(listener.events, ElementsAre("close 1000/2", "close 1000/1", "last of user 1000/1",
                                           "close 1001/3", "last of user 1001/3", "last of all"));
}

TEST_F(SessionCallbacks, GoToEveryListenerThatIsRegistered) {
  ScriptedListener other({}, ModuleIdType{78});
  registry.add(&listener);
  registry.add(&other);
  registry.sessionOpened(anna1);
  EXPECT_THAT(listener.events, ElementsAre("first of all", "open 1000/1"));
  EXPECT_THAT(other.events, ElementsAre("first of all", "open 1000/1"));

  registry.remove(&other);
  other.events.clear();
  registry.sessionClosed(anna1);
  EXPECT_THAT(listener.events, ElementsAre("first of all", "open 1000/1", "close 1000/1",
                                           "last of user 1000/1", "last of all"));
  EXPECT_THAT(other.events, IsEmpty());
}

TEST_F(SessionCallbacks, CountSessionsFromBeforeAListenerCame) {
  registry.sessionOpened(anna1);
  registry.add(&listener);
  registry.sessionOpened(anna2);
  registry.sessionClosed(anna1);
  registry.sessionClosed(anna2);
  EXPECT_THAT(listener.events, ElementsAre("open 1000/2", "close 1000/1", "close 1000/2",
                                           "last of user 1000/2", "last of all"));
}

}  // namespace
}  // namespace agent
