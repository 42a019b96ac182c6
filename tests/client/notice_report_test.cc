#include "client/notice_report.h"

#include <gtest/gtest.h>

#include "schema/schema.h"

namespace client {
namespace {

using bridge::Notice;
using bridge::NoticedChange;

constexpr const char* BY = "   (ctl, uid 1, pid 2)\n";
constexpr const char* TIME = "2026-11-22T18:37:11.023Z ";

Notice noticeOf(Notice::What what) {
  return {.what = what, .time = 1'795'372'631'023, .uid = 1, .pid = 2, .program = "ctl"};
}

Notice writeOf(const std::string& group, std::vector<NoticedChange> changes) {
  Notice notice = noticeOf(Notice::Written);
  notice.group = group;
  notice.revision = 7;
  notice.changes = std::move(changes);
  return notice;
}

const Notice USERS = writeOf(
    "USERS",
    {{NoticedChange::UserAdded, {.name = "USERS[a\nb]"}},
     {NoticedChange::Value, {.name = "USERS[a\nb].PMP_TIMEOUT", .running = "20"}},
     {NoticedChange::Value, {.name = "USERS[bob].PMP_TIMEOUT", .running = "30", .before = "10"}},
     {NoticedChange::UserRemoved, {.name = "USERS[carl]"}},
     {NoticedChange::LongValue, {.name = "USERS[bob].PMP_PSK_NAME"}}});

std::string line(const std::string& words) { return TIME + words + BY; }

TEST(NoticeReport, HasALineForEachChange) {
  EXPECT_EQ(linesOf(USERS, ""),
            line("USERS[a\\x0ab]: added") + line("USERS[a\\x0ab].PMP_TIMEOUT: - -> 20") +
                line("USERS[bob].PMP_TIMEOUT: 10 -> 30") + line("USERS[carl]: removed") +
                line("USERS[bob].PMP_PSK_NAME: changed, too long to be shown"));
  EXPECT_EQ(
      linesOf(writeOf("IKE", {{NoticedChange::Value, {.name = "IKE.QCD_SECRET", .secret = true}}}),
              ""),
      line("IKE.QCD_SECRET: (hidden) -> (hidden)"));
  EXPECT_EQ(
      linesOf(writeOf("UPDATE", {{NoticedChange::Value,
                                  {.name = "UPDATE.SCHEDULE", .running = "a b", .before = ""}}}),
              ""),
      line("UPDATE.SCHEDULE: \"\" -> \"a b\""));
  EXPECT_EQ(linesOf(writeOf("USERS", {{NoticedChange::UserOrder, {.name = "USERS"}}}), ""),
            line("USERS: has another order"));
  EXPECT_EQ(
      linesOf(writeOf("USERS", {{static_cast<NoticedChange::Kind>(77), {.name = "USERS"}}}), ""),
      line("USERS: changed in a way that this program does not know"));
}

TEST(NoticeReport, HasWhatTheGlobAsksForOnly) {
  EXPECT_EQ(linesOf(USERS, "*timeout"),
            line("USERS[a\\x0ab].PMP_TIMEOUT: - -> 20") + line("USERS[bob].PMP_TIMEOUT: 10 -> 30"));
  EXPECT_EQ(linesOf(USERS, "users[CARL]"), line("USERS[carl]: removed"));
  EXPECT_EQ(linesOf(USERS, "IKE"), "");
  for (const auto what : {Notice::Saved, Notice::Refused, Notice::AgentEnds}) {
    EXPECT_EQ(linesOf(noticeOf(what), "*"), "");
  }
}

TEST(NoticeReport, TellsOfChangesThatWereLeftOut) {
  Notice notice = USERS;
  notice.more = 300;
  EXPECT_EQ(linesOf(notice, "carl"), line("USERS: 300 more changes")) << "they may be of that user";
}

TEST(NoticeReport, TellsOfWritesThatChangeNothingAndOfThoseThatBreakOff) {
  EXPECT_EQ(linesOf(writeOf("LOG", {}), ""), line("LOG: written, nothing has changed"));
  EXPECT_EQ(linesOf(writeOf("LOG", {}), "log"), line("LOG: written, nothing has changed"));
  EXPECT_EQ(linesOf(writeOf("LOG", {}), "IKE"), "");
  Notice broken = writeOf(
      "LOG", {{NoticedChange::Value, {.name = "LOG.WALL_ON", .running = "0", .before = "1"}}});
  broken.what = Notice::WrittenInPart;
  broken.text = "too\nshort";
  EXPECT_EQ(linesOf(broken, ""),
            line("LOG.WALL_ON: 1 -> 0") + line("LOG: the write broke off: too\\x0ashort"));
}

TEST(NoticeReport, TellsOfAllElse) {
  const struct {
    Notice::What what;
    const char* text;
    const char* words;
  } ROWS[] = {
      {Notice::Saved, "", "saved"},
      {Notice::NothingToSave, "", "saved, nothing had to be written"},
      {Notice::NotSaved, "disk full", "not saved: disk full"},
      {Notice::Refused, "no\n", "refused: no\\x0a"},
      {Notice::DegradationBegan, "damaged", "degraded, saves are refused: damaged"},
      {Notice::DegradationEnded, "", "no longer degraded"},
      {Notice::AgentEnds, "", "the agent ends"},
      {static_cast<Notice::What>(77), "", "something that this program does not know"},
  };
  for (const auto& row : ROWS) {
    Notice notice = noticeOf(row.what);
    notice.text = row.text;
    EXPECT_EQ(linesOf(notice, ""), line(row.words));
  }
}

TEST(NoticeReport, ShowsATimeThatIsNoneAsNone) {
  Notice notice = noticeOf(Notice::Saved);
  notice.time = UINT64_MAX;
  EXPECT_EQ(linesOf(notice, ""), std::string("- saved") + BY);
  notice.time = 253'402'300'800'000;
  EXPECT_EQ(linesOf(notice, ""), std::string("- saved") + BY) << "in the year 10000";
  notice.time = 253'402'300'799'999;
  EXPECT_EQ(linesOf(notice, ""), std::string("9999-12-31T23:59:59.999Z saved") + BY);
}

TEST(NoticeReport, HasAJsonLineForEach) {
  const CatalogueView catalogue(schema::ownSchema());
  EXPECT_EQ(jsonLinesOf(USERS, "USERS[bob]", catalogue),
            R"({"time":"2026-11-22T18:37:11.023Z","what":"changed",)"
            R"("name":"USERS[bob].PMP_TIMEOUT","before":10,"after":30,"revision":7,)"
            R"("program":"ctl","uid":1,"pid":2})"
            "\n"
            R"({"time":"2026-11-22T18:37:11.023Z","what":"changed",)"
            R"("name":"USERS[bob].PMP_PSK_NAME","revision":7,"program":"ctl","uid":1,"pid":2})"
            "\n");
  Notice refused = noticeOf(Notice::Refused);
  refused.reason = bridge::Reason::Conflict;
  refused.text = "a\nb\xFF";
  EXPECT_EQ(jsonLinesOf(refused, "", catalogue),
            R"({"time":"2026-11-22T18:37:11.023Z","what":"refused","reason":9,)"
            "\"text\":\"a\\nb\xEF\xBF\xBD\","
            R"("program":"ctl","uid":1,"pid":2})"
            "\n");
  Notice secret =
      writeOf("IKE", {{NoticedChange::Value, {.name = "IKE.QCD_SECRET", .secret = true}}});
  secret.more = 2;
  const std::string lines = jsonLinesOf(secret, "", catalogue);
  EXPECT_NE(lines.find(R"("before":null,"after":null,"secret":true)"), std::string::npos);
  EXPECT_NE(lines.find(R"("what":"more","name":"IKE","changes":2)"), std::string::npos);
}

}  // namespace
}  // namespace client
