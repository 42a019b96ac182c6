#include "agent/bridge/change_tracker.h"

#include <gmock/gmock.h>

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
  ChangeTracker::Subscriber recorder(std::vector<std::string>& events) {
    return [&events](const Event& event) { events.push_back(inWords(event)); };
  }

  agent_testing::ServedModule module_;
  ChangeTracker changes_{module_.server(), 1};
  const BridgeSession anna_{1000, 1000, 77};
  const BridgeSession bert_{1001, 1001, 78};
};

TEST_F(Tracker, CountsEachGroupOnItsOwn) {
  for (const char* group : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
    EXPECT_EQ(changes_.revision(group), 1u) << group;
  }
  EXPECT_EQ(changes_.written("ADMIN", anna_), 2u);
  EXPECT_EQ(changes_.written("ADMIN", bert_), 3u);
  EXPECT_EQ(changes_.written("USERS", anna_), 2u);
  EXPECT_EQ(changes_.revision("ADMIN"), 3u);
  EXPECT_EQ(changes_.revision("USERS"), 2u);
  EXPECT_EQ(changes_.revision("IKE"), 1u);
}

TEST_F(Tracker, TellsEverySubscriberWhoWroteWhat) {
  std::vector<std::string> first;
  std::vector<std::string> second;
  const auto ticket = changes_.subscribe(recorder(first));
  (void)changes_.subscribe(recorder(second));

  (void)changes_.written("ADMIN", anna_);
  changes_.unsubscribe(ticket);
  (void)changes_.written("ADMIN", bert_);
  (void)changes_.written("IKE", bert_);

  EXPECT_THAT(first, ElementsAre("ADMIN 2 by 1000/77"));
  EXPECT_THAT(second, ElementsAre("ADMIN 2 by 1000/77", "ADMIN 3 by 1001/78", "IKE 2 by 1001/78"));
}

TEST_F(Tracker, BeginsBeyondWhatEarlierAgentsHaveReached) {
  const uint64_t begin = ChangeTracker::firstRevision();
  while (ChangeTracker::firstRevision() == begin) continue;  // a millisecond
  const ChangeTracker next(module_.server());
  EXPECT_GT(next.revision("ADMIN"), begin + 1000);
  EXPECT_GT(next.revision("ADMIN"), uint64_t{1'700'000'000'000} * 1000);  // since 1970
  EXPECT_LT(next.revision("ADMIN"), uint64_t{1} << 53);  // for those who keep numbers as doubles
}

TEST_F(Tracker, KnowsNoOtherGroups) {
  std::vector<std::string> events;
  (void)changes_.subscribe(recorder(events));
  for (const char* group : {"", "ROOT", "USER", "ike"}) {
    EXPECT_EQ(changes_.revision(group), 0u);
    EXPECT_EQ(changes_.written(group, anna_), 0u);
  }
  EXPECT_THAT(events, IsEmpty());
}

}  // namespace
}  // namespace agent
