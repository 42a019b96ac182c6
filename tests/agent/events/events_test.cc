#include "agent/events/events.h"

#include <gmock/gmock.h>

#include <atomic>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bridge/protocol.h"

namespace agent {
namespace {

using bridge::Notice;
using testing::ElementsAre;
using testing::IsEmpty;

Notice saying(Notice::What what, const std::string& text) { return {.what = what, .text = text}; }

/// The texts of what it is told.
class Watcher {
 public:
  explicit Watcher(Events& events) : events_(events) {
    ticket_ = events.watch({.tell =
                                [this](const std::string& frame) {
                                  const auto message =
                                      bridge::decodeMessage(frame.substr(bridge::FRAME_HEAD_SIZE));
                                  told.push_back(std::get<Notice>(message.value()).text);
                                },
                            .lose = [this] { ++lost; }},
                           [this] { told.emplace_back("begin"); });
  }
  ~Watcher() { events_.unwatch(ticket_); }

  std::vector<std::string> told;
  int lost = 0;

 private:
  Events& events_;
  Events::Ticket ticket_;
};

TEST(Events, ReachEverybodyWhoWatchesInTheirOrder) {
  Events events;
  events.publish(saying(Notice::Written, "early"));
  const Watcher first(events);
  events.publish(saying(Notice::Written, "a"));
  {
    const Watcher second(events);
    EXPECT_EQ(events.counts().watchers, 2U);
    events.publish(saying(Notice::Saved, "b"));
    EXPECT_THAT(second.told, ElementsAre("begin", "b"));
  }
  events.publish(saying(Notice::Refused, "c"));
  EXPECT_THAT(first.told, ElementsAre("begin", "a", "b", "c"));
  EXPECT_EQ(events.counts().watchers, 1U);
}

TEST(Events, ADegradationIsToldToWhoComesLater) {
  Events events;
  events.publish(saying(Notice::DegradationBegan, "damaged"));
  EXPECT_THAT(Watcher(events).told, ElementsAre("begin", "damaged"));
  events.publish(saying(Notice::NotSaved, "no"));
  EXPECT_THAT(Watcher(events).told, ElementsAre("begin", "damaged"));
  events.publish(saying(Notice::DegradationEnded, ""));
  EXPECT_THAT(Watcher(events).told, ElementsAre("begin"));
}

TEST(Events, AreCounted) {
  Events events;
  for (const auto what :
       {Notice::Written, Notice::WrittenInPart, Notice::Written, Notice::Saved,
        Notice::NothingToSave, Notice::NotSaved, Notice::Refused, Notice::DegradationBegan}) {
    events.publish({.what = what});
  }
  events.countRefusal();
  events.countRefusal();
  const Events::Counts counts = events.counts();
  EXPECT_EQ(counts.writes, 3U);
  EXPECT_EQ(counts.saves, 2U);
  EXPECT_EQ(counts.failedSaves, 1U);
  EXPECT_EQ(counts.refusals, 2U) << "also those that nobody is told";
  EXPECT_EQ(counts.watchers, 0U);
}

TEST(Events, ThatCannotBeToldLoseTheWatchers) {
  Events events;
  const Watcher watcher(events);
  events.lose();
  EXPECT_EQ(watcher.lost, 1);
}

TEST(Events, TheEndComesBehindTheLastActivity) {
  Events events;
  const Watcher watcher(events);
  std::optional<Events::Activity> one(events);
  std::optional<Events::Activity> another(events);
  events.publishEnd();
  one.reset();
  events.publish(saying(Notice::Written, "late"));
  EXPECT_THAT(watcher.told, ElementsAre("begin", "late"));
  std::atomic<bool> ended = false;
  std::thread waiting([&] {
    events.waitForEnd();
    ended = true;
  });
  EXPECT_FALSE(ended);
  another.reset();
  waiting.join();
  EXPECT_THAT(watcher.told, ElementsAre("begin", "late", ""));
  events.publishEnd();
  EXPECT_EQ(watcher.told.size(), 3U) << "once";
}

TEST(Events, TheEndComesAtOnceWhereNothingIsActive) {
  Events events;
  { const Events::Activity activity(events); }
  const Watcher watcher(events);
  events.publishEnd();
  events.waitForEnd();
  EXPECT_EQ(watcher.told.size(), 2U);
}

}  // namespace
}  // namespace agent
