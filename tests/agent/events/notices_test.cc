#include "agent/events/notices.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <chrono>

#include "tests/agent/events/noticed.h"

namespace agent {
namespace {

using agent_testing::changesIn;
using agent_testing::noticeAfter;
using bridge::Notice;
using bridge::NoticedChange;

TEST(Notices, SayWhoAndWhen) {
  using namespace std::chrono;
  const auto now = [] {
    return static_cast<uint64_t>(
        duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
  };
  const uint64_t before = now();
  const Notice notice = noticeOf(Notice::Refused, BridgeSession(7, 8, 9, {}, "ctl"));
  EXPECT_EQ(
      notice,
      (Notice{.what = Notice::Refused, .time = notice.time, .uid = 7, .pid = 9, .program = "ctl"}));
  EXPECT_GE(notice.time, before);
  EXPECT_LE(notice.time, now());

  const Notice own = noticeOfAgent(Notice::AgentEnds);
  EXPECT_EQ(own, (Notice{.what = Notice::AgentEnds,
                         .time = own.time,
                         .uid = ::geteuid(),
                         .pid = ::getpid(),
                         .program = "lparams_agent"}));
}

TEST(Notices, HaveTextsOfABoundedLength) {
  EXPECT_EQ(noticedText("why"), "why");
  EXPECT_EQ(noticedText(std::string(5000, 'x')), std::string(4096, 'x') + "...");
}

TEST(Notices, NameWhatIsTooLongToBeTold) {
  LPARAMS::Server::Catalogue settings;
  auto& schedule = settings.updateGroup.SCHEDULE.value;
  schedule = "short";
  const auto after = [&](size_t length) {
    return noticeAfter(settings.updateGroup, [&] { schedule = std::string(length, 'x'); });
  };
  EXPECT_EQ(after(bridge::MAX_NOTICED_VALUE).changes.at(0).kind, NoticedChange::Value);
  schedule = "short";
  const Notice tooLong = after(bridge::MAX_NOTICED_VALUE + 1);
  EXPECT_EQ(changesIn(tooLong), std::vector<std::string>{"5 UPDATE.SCHEDULE: - -> -"});
  EXPECT_EQ(after(1).changes.at(0).kind, NoticedChange::LongValue) << "the former value is";
}

TEST(Notices, CountTheChangesThatDoNotFit) {
  LPARAMS::Server::Catalogue settings;
  constexpr size_t USERS = 5000;
  const Notice notice = noticeAfter(settings.userList, [&] {
    for (size_t i = 0; i < USERS; ++i) {
      settings.userList.append()->NAME.value = "user" + std::to_string(i);
    }
  });
  EXPECT_EQ(notice.changes.size() + notice.more, USERS);
  std::string bytes;
  for (const NoticedChange& change : notice.changes) put(bytes, change);
  EXPECT_LE(bytes.size(), bridge::MAX_NOTICED_CHANGES);
  EXPECT_GT(bytes.size(), bridge::MAX_NOTICED_CHANGES - 100);
}

}  // namespace
}  // namespace agent
