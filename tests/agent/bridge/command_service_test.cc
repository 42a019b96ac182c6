#include "agent/bridge/command_service.h"

#include <gmock/gmock.h>

#include <thread>

#include "tests/agent/bridge/served_module.h"
#include "tests/support/waits_for.h"

namespace agent {
namespace {

using agent_testing::adminRecord;
using agent_testing::exptimeIn;
using agent_testing::ServedModule;
using bridge::Notice;
using bridge::Reason;
using bridge::Reply;
using testing::HasSubstr;

class Service : public testing::Test {
 protected:
  explicit Service(const ServedModule::Rules& rules = {}) : module_(rules) {
    (void)module_.changes().subscribe(
        [this](const bridge::Event& event) { events_.push_back(event.group); });
  }

  /// Runs the action and expects that it leaves the values, the revision and the subscribers of
  /// ADMIN alone.
  template <typename Action>
  Reply withoutEffect(Action action) {
    const Reply before = module_.read("ADMIN");
    const size_t events = events_.size();
    const Reply reply = action();
    EXPECT_EQ(reply.result, 0);
    EXPECT_EQ(module_.read("ADMIN"), before);
    EXPECT_EQ(events_.size(), events);
    return reply;
  }

  ServedModule module_;
  BridgeSession stranger_{agent_testing::strangersUid(), 65534, 99, {}};
  std::vector<std::string> events_;
};

TEST_F(Service, RepliesCarryTheRevision) {
  const Reply first = module_.read("ADMIN");
  EXPECT_EQ(first.result, 1);
  EXPECT_EQ(first.revision, 1u);
  EXPECT_EQ(exptimeIn(first), 10u);

  const Reply written = module_.write(adminRecord(20), 1);
  EXPECT_EQ(written, (Reply{.result = 1, .revision = 2}));
  EXPECT_EQ(module_.write(adminRecord(21), written.revision).revision, 3u);
  EXPECT_EQ(module_.read("ADMIN").revision, 3u);
  EXPECT_EQ(exptimeIn(module_.read("ADMIN")), 21u);
  EXPECT_EQ(module_.read("LOG").revision, 1u);
}

TEST_F(Service, AnotherCommandDoesNotFailForTheReasonOfASave) {
  module_.server().saveHook = [](const char*) {
    BridgeSession::current()->command.saveFailure = "the disk is full";
    return 0;
  };
  BridgeSession session(0, 0, 1234);
  const Reply save = module_.service().execute(session, {13, 2});
  EXPECT_EQ(save.reason, Reason::SaveRefused);
  EXPECT_EQ(save.text, "the disk is full");
  EXPECT_EQ(module_.service().execute(session, {13, 99}).reason, Reason::ModuleRefused);
}

TEST_F(Service, EachGroupHasARevisionOfItsOwn) {
  (void)module_.write(adminRecord(20));
  (void)module_.write(adminRecord(20));  // a write is one, whether or not it changes a value
  testing_support::Settings settings;
  (void)module_.write(testing_support::encodeRecord(settings.userList));
  EXPECT_EQ(module_.read("ADMIN").revision, 3u);
  EXPECT_EQ(module_.read("USERS").revision, 2u);
  EXPECT_EQ(module_.read("IKE").revision, 1u);
  EXPECT_THAT(events_, testing::ElementsAre("ADMIN", "ADMIN", "USERS"));
}

/// What an observer of the module, a plain function, notes down.
struct Notes {
  ServedModule* module = nullptr;
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

TEST_F(Service, TheRevisionGrowsAndTheEventFollowsOnceTheValuesAreThere) {
  notes() = {.module = &module_, .steps = {}};
  module_.server().ADMIN->observers.push_back(
      [](int event) { notes().add(event == 1 ? "begins" : "done"); });
  std::string atEvent;
  (void)module_.changes().subscribe([&](const bridge::Event& event) {
    atEvent = std::to_string(event.revision) + ": " +
              std::to_string(module_.server().ADMIN->SESSION_EXPTIME.value);
  });

  (void)module_.write(adminRecord(20));
  EXPECT_THAT(notes().steps,
              testing::ElementsAre("begins: revision 1, value 10", "done: revision 1, value 20"));
  EXPECT_EQ(atEvent, "2: 20");
}

TEST_F(Service, AStaleWriteIsAConflict) {
  (void)module_.write(adminRecord(20));
  (void)module_.write(adminRecord(21));
  for (const uint64_t stale : {uint64_t{0}, uint64_t{1}, uint64_t{2}, uint64_t{4}, UINT64_MAX}) {
    const Reply reply = withoutEffect([&] { return module_.write(adminRecord(30), stale); });
    EXPECT_EQ(reply.reason, Reason::Conflict);
    EXPECT_EQ(reply.revision, 3u);
    EXPECT_EQ(reply.text, "ADMIN has changed: it was read at revision " + std::to_string(stale) +
                              " and is at revision 3; read it again");
  }
  EXPECT_EQ(module_.write(adminRecord(30), 3).result, 1);
  EXPECT_EQ(module_.write(adminRecord(31)).result, 1);  // a plain write stays possible
}

TEST_F(Service, WritesTakeTurns) {
  EXPECT_TRUE(testing_support::waitsFor(module_.writeTurn(),
                                        [&] { (void)module_.write(adminRecord(20)); }));
  EXPECT_FALSE(
      testing_support::waitsFor(module_.writeTurn(), [&] { (void)module_.read("ADMIN"); }));
}

TEST_F(Service, ARefusedValueChangesNothing) {
  const Reply reply = withoutEffect([&] { return module_.write(adminRecord(86401), 1); });
  EXPECT_EQ(reply.reason, Reason::IllegalValue);
  EXPECT_EQ(reply.text,
            "ADMIN.SESSION_EXPTIME: 86401 is not legal; expected a whole number from 0 to 86400");
  EXPECT_EQ(reply.output, "");
  const std::string record = adminRecord(20);
  for (size_t size = 0; size < record.size(); ++size) {
    EXPECT_EQ(withoutEffect([&] { return module_.write(record.substr(0, size)); }).reason,
              Reason::IllegalValue);
  }
}

TEST_F(Service, AStrangerLearnsNothingButThatHeIsOne) {
  for (const std::string& input : {adminRecord(20), adminRecord(86401), std::string("garbage")}) {
    for (const uint64_t revision : {uint64_t{1}, uint64_t{9}}) {
      const Reply reply = withoutEffect([&] { return module_.write(stranger_, input, revision); });
      EXPECT_EQ(reply.reason, Reason::NotAuthorised);
      EXPECT_EQ(reply.text,
                "user " + std::to_string(stranger_.uid) +
                    " may not use module 13 at level 0; the agent's user, root and the members of "
                    "the group \"admin\" may");
    }
  }
  const Reply save = module_.service().execute(stranger_, {13, 2});
  EXPECT_EQ(save.reason, Reason::NotAuthorised);
  EXPECT_THAT(save.text, HasSubstr("may not use module 13 at level 2"));
  EXPECT_EQ(module_.read(stranger_, "ADMIN"), module_.read("ADMIN"));  // reads are open
}

TEST_F(Service, ARefusalIsForgottenWithItsCommand) {
  EXPECT_EQ(module_.write(stranger_, adminRecord(20)).reason, Reason::NotAuthorised);
  EXPECT_EQ(module_.service().execute(stranger_, {13, 3}).reason, Reason::ModuleRefused);
}

TEST_F(Service, WhatTheModuleDoesNotTakeHasItsReason) {
  const struct {
    bridge::Command command;
    Reason reason;
    const char* text;
  } rows[] = {
      {{13, 3}, Reason::ModuleRefused, "the module does not know this command or its subject"},
      {{13, -1}, Reason::ModuleRefused, "the module does not know this command or its subject"},
      {{13, 1, std::string("\3\0\0\0FOO", 7)},
       Reason::ModuleRefused,
       "the module does not know this command or its subject"},
      {{13, 1, "ADM"},
       Reason::MalformedInput,
       "the module could not read the command to its end: CommandStreamError"},
      {{14, 1}, Reason::NoSuchModule, "no module 14 is loaded"},
      {{0, 0}, Reason::NoSuchModule, "no module 0 is loaded"},
  };
  BridgeSession root(0, 0, 1, {});
  for (const auto& row : rows) {
    const Reply reply = module_.service().execute(root, row.command);
    EXPECT_EQ(reply, (Reply{0, row.reason, row.text})) << row.command.command;
  }
}

/// What those who watch are told, in words.
class Watched : public Service {
 protected:
  explicit Watched(const ServedModule::Rules& rules = {}) : Service(rules) {
    (void)module_.service().events().watch(
        {.tell =
             [this](const std::string& frame) {
               const auto message = bridge::decodeMessage(frame.substr(bridge::FRAME_HEAD_SIZE));
               note(std::get<Notice>(message.value()));
             },
         .lose = [] { FAIL(); }},
        [] {});
  }

  void note(const Notice& notice) {
    std::string words = std::to_string(notice.what) + " " + notice.group + " " +
                        std::to_string(notice.revision) + " by " + std::to_string(notice.uid) +
                        "/" + std::to_string(notice.pid) + ": " + notice.text;
    for (const auto& [kind, value] : notice.changes) {
      words += value.name + " " + value.before.value_or("-") + " -> " +
               value.running.value_or("-") + ";";
    }
    told_.push_back(words);
  }

  std::vector<std::string> told_;
};

TEST_F(Watched, WritesAreToldWithWhatTheyChange) {
  (void)module_.write(adminRecord(20));
  (void)module_.write(adminRecord(20));
  testing_support::Settings settings;
  settings.ikeGroup.QCD_SECRET.value = "sesame";
  (void)module_.write(testing_support::encodeRecord(settings.ikeGroup));
  EXPECT_THAT(told_, testing::ElementsAre(
                         "1 ADMIN 2 by 0/1234: ADMIN.SESSION_EXPTIME 10 -> 20;",
                         "1 ADMIN 3 by 0/1234: ", "1 IKE 2 by 0/1234: IKE.QCD_SECRET - -> -;"));
  EXPECT_EQ(module_.service().events().counts().writes, 3U);
}

TEST_F(Watched, RefusedWritesAndSavesAreToldAsOftenAsTheLogDoes) {
  for (int i = 0; i < 100; ++i) (void)module_.write(adminRecord(86401));
  EXPECT_THAT(told_,
              testing::ElementsAre("6  0 by 0/1234: ADMIN.SESSION_EXPTIME: 86401 is not legal; "
                                   "expected a whole number from 0 to 86400"));
  told_.clear();
  for (int i = 0; i < 100; ++i) (void)module_.service().execute(stranger_, {13, 2});
  EXPECT_THAT(told_, testing::ElementsAre(HasSubstr(" may not use module 13 at level 2")));
  EXPECT_EQ(module_.service().events().counts().refusals, 200U);
}

TEST_F(Watched, RefusedReadsAreNotTold) {
  BridgeSession root(0, 0, 1, {});
  module_.service().add(
      "look", [](auto&, auto&) { return failure(Reason::Conflict, "no"); },
      CommandService::Access::Reads);
  EXPECT_EQ(module_.service().execute(root, bridge::AgentCommand{"look", ""}).result, 0);
  EXPECT_EQ(module_.service().execute(root, {13, 1, "ADM"}).result, 0);
  EXPECT_EQ(module_.service().execute(root, {14, 1}).result, 0);
  EXPECT_EQ(module_.service().execute(root, bridge::AgentCommand{"none", ""}).result, 0);
  EXPECT_THAT(told_, testing::IsEmpty());
  EXPECT_EQ(module_.service().events().counts().refusals, 4U);
}

TEST_F(Watched, RefusedCommandsOfTheAgentAreTold) {
  BridgeSession root(0, 0, 1, {});
  module_.service().add("turn", [](auto&, auto&) { return failure(Reason::ModuleRefused, "no"); });
  EXPECT_EQ(module_.service().execute(root, bridge::AgentCommand{"turn", ""}).result, 0);
  EXPECT_THAT(told_, testing::ElementsAre("6  0 by 0/1: no"));
}

TEST_F(Service, NoUpdateIsLostWithRevisions) {
  constexpr unsigned THREADS = 4;
  constexpr unsigned TIMES = 50;
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < THREADS; ++i) {
    threads.emplace_back([this] {
      BridgeSession session(0, 0, 1, {});
      for (unsigned done = 0; done < TIMES;) {
        const Reply read = module_.read(session, "ADMIN");
        const Reply written =
            module_.write(session, adminRecord(exptimeIn(read) + 1), read.revision);
        if (written.result == 1) ++done;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(exptimeIn(module_.read("ADMIN")), 10 + THREADS * TIMES);
  EXPECT_EQ(events_.size(), THREADS * TIMES);
}

class AcceptAny : public Service {
 protected:
  AcceptAny() : Service({.acceptAny = true}) {}
};

TEST_F(AcceptAny, ValuesReachTheModuleAsTheyStand) {
  EXPECT_EQ(module_.write(adminRecord(4000000000u)).result, 1);
  EXPECT_EQ(exptimeIn(module_.read("ADMIN")), 4000000000u);
  EXPECT_EQ(module_.write(adminRecord(20) + "more").result, 1);
  EXPECT_EQ(exptimeIn(module_.read("ADMIN")), 20u);
}

TEST_F(AcceptAny, AWriteThatBreaksOffIsTold) {
  const std::string record = adminRecord(20);
  const Reply reply = module_.write(record.substr(0, record.size() - 1), 1);
  EXPECT_EQ(reply.reason, Reason::MalformedInput);
  EXPECT_EQ(reply.revision, 2u);
  EXPECT_THAT(events_, testing::ElementsAre("ADMIN"));
  EXPECT_EQ(exptimeIn(module_.read("ADMIN")), 20u);  // what came first was taken
  EXPECT_EQ(module_.write(record, 1).reason, Reason::Conflict);
}

class WatchedAcceptAny : public Watched {
 protected:
  WatchedAcceptAny() : Watched({.acceptAny = true}) {}
};

TEST_F(WatchedAcceptAny, AWriteThatBreaksOffIsToldWithWhatItHasChanged) {
  const std::string record = adminRecord(20);
  (void)module_.write(record.substr(0, record.size() - 1));
  EXPECT_THAT(told_, testing::ElementsAre(
                         "2 ADMIN 2 by 0/1234: the module could not read the command to its end: "
                         "CommandStreamErrorADMIN.SESSION_EXPTIME 10 -> 20;"));
}

TEST_F(AcceptAny, AWriteOfNoGroupIsNone) {
  for (const std::string& input : {std::string(), std::string("\3\0\0\0FOO", 7)}) {
    EXPECT_EQ(withoutEffect([&] { return module_.write(input); }).revision, 0u);
  }
}

TEST_F(AcceptAny, StrangersAndConflictsAreRefusedAllTheSame) {
  EXPECT_EQ(withoutEffect([&] { return module_.write(stranger_, adminRecord(20)); }).reason,
            Reason::NotAuthorised);
  EXPECT_EQ(withoutEffect([&] { return module_.write(adminRecord(20), 9); }).reason,
            Reason::Conflict);
}

}  // namespace
}  // namespace agent
