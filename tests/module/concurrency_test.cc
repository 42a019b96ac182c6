// Several threads at once. Under the thread sanitizer these tests also show that no access is
// unprotected.
#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <thread>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/loaded_module.h"
#include "tests/module/scripted_document.h"
#include "tests/module/scripted_param.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

namespace host {
namespace {

using LPARAMS::Server::expectedGroup;
using LPARAMS::Server::initiallyBut;
using testing_support::unhex;

/// Runs each body in a thread of its own and waits for all.
void runTogether(const std::vector<std::function<void()>>& bodies) {
  std::vector<std::thread> threads;
  for (const auto& body : bodies) threads.emplace_back(body);
  for (std::thread& thread : threads) thread.join();
}

void repeat(int times, const std::function<void(int)>& body) {
  for (int i = 0; i < times; ++i) body(i);
}

class Concurrency : public ModuleTest {
 protected:
  /// The record of the group when every value of it belongs to variation `i`.
  static std::string adminRecord(int i) {
    const std::string name(static_cast<size_t>(i % 40), 'a');
    LPARAMS::Server::ADMIN_t admin;
    admin.SESSION_EXPTIME.value = static_cast<unsigned>(i);
    admin.LOGIN_ON_SAVE_TOKEN_PASSWORD.value = i % 2 == 0;
    admin.ADMIN_GROUP.value = name;
    std::string record;
    LPARAMS::Server::CommandStreamOut out{record};
    (void)admin.write(out);
    return record;
  }
};

TEST_F(Concurrency, AReadNeverSeesHalfAWrite) {
  constexpr int VARIATIONS = 40;
  std::vector<std::string> records;
  repeat(VARIATIONS, [&](int i) { records.push_back(adminRecord(i)); });
  ASSERT_EQ(execute(WRITE_GROUP, framed("ADMIN", records[0])).result, 1);

  std::atomic<int> strangeReads = 0;
  const auto write = [&] {
    repeat(500, [&](int i) {
      (void)execute(WRITE_GROUP, framed("ADMIN", records[static_cast<size_t>(i % VARIATIONS)]));
    });
  };
  const auto read = [&] {
    repeat(500, [&](int) {
      const std::string record = execute(READ_GROUP, framed("ADMIN")).output;
      if (std::find(records.begin(), records.end(), record) == records.end()) ++strangeReads;
    });
  };
  runTogether({write, write, read, read});
  EXPECT_EQ(strangeReads, 0);
}

TEST_F(Concurrency, AnythingAtOnceLeavesAFileThatLoads) {
  constexpr int ROUNDS = 200;
  // Two users, so that lists of different lengths follow one another.
  const std::string noUsers = unhex("00 00 00 00");
  (void)module.addUser();
  (void)module.addUser();
  const std::string twoUsers = execute(READ_GROUP, framed("USERS")).output;

  std::atomic<int> failures = 0;
  const auto expect = [&](bool done) { failures += done ? 0 : 1; };
  const auto writeAdmin = [&] {
    repeat(ROUNDS, [&](int i) {
      expect(execute(WRITE_GROUP, framed("ADMIN", adminRecord(i))).result == 1);
    });
  };
  const auto writeUsers = [&] {
    repeat(ROUNDS, [&](int i) {
      expect(execute(WRITE_GROUP, framed("USERS", i % 2 == 0 ? noUsers : twoUsers)).result == 1);
    });
  };
  const auto readAll = [&] {
    repeat(ROUNDS, [&](int) {
      for (const char* name : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
        expect(execute(READ_GROUP, framed(name)).result == 1);
      }
    });
  };
  const auto saveByCommand = [&] {
    repeat(ROUNDS, [&](int) { expect(execute(SAVE).result == 1); });
  };
  const auto saveByRoot = [&] {
    repeat(ROUNDS, [&](int) {
      std::string error;
      expect(root().save(&error));
    });
  };
  const auto askForChanges = [&] { repeat(ROUNDS * 4, [&](int) { (void)root().isChanged(); }); };
  const auto load = [&] {
    testing_support::RecordingLoadLog log;
    repeat(3, [&](int) { expect(root().load(&log) && log.reports.empty()); });
  };

  ASSERT_TRUE(root().save(nullptr));
  runTogether({writeAdmin, writeUsers, readAll, saveByCommand, saveByRoot, askForChanges, load});
  EXPECT_EQ(failures, 0);

  EXPECT_TRUE(root().save(nullptr));
  EXPECT_FALSE(root().isChanged());
  testing_support::RecordingLoadLog log;
  module.reload();
  EXPECT_TRUE(root().load(&log));
  EXPECT_THAT(log.reports, testing::IsEmpty());
  EXPECT_EQ(root().rawSettings, readFile(settingsPath));
}

TEST_F(Concurrency, AnImportMayMeetTheQuestionForChanges) {
  const Element subject{"Param", "LOCAL_CERT_FOR_PM_SUBJECT", std::string(100, 's'), {}};
  const Element level{"Param", "PMS_LOG_LEVEL", "2", {}};
  const Element policy{"Param", "ike_nat_t_policy", "3", {}};
  document() = {};
  document().elements = {{"LocalSettings",
                          {},
                          {},
                          {{"Module", "USER_ACT_MODULE_ID", {}, {subject, level}},
                           {"Module", "ISAKMP_MODULE_ID", {}, {policy}}}}};
  std::atomic<int> failures = 0;
  const auto import = [&] {
    testing_support::RecordingLoadLog log;
    repeat(20, [&](int) {
      writeFile(directory.path + "localsettings.xml", "any text");
      if (!root().load(&log)) ++failures;
    });
  };
  const auto askForChanges = [&] { repeat(200, [&](int) { (void)root().isChanged(); }); };
  runTogether({import, askForChanges});
  EXPECT_EQ(failures, 0);
  EXPECT_EQ(root().POLICY->LOCAL_CERT_SUBJECT.value, subject.text);
}

/// Calls that arrive while a load is in the middle of the file.
class DuringALoad : public Concurrency {
 protected:
  /// Loads ADMIN away from its defaults, and makes the call on another thread before ADMIN has been
  /// read. The load goes on when the call has come back or, as it has to be, has not for a while.
  bool comesBackDuringALoad(const std::function<void()>& call) {
    writeFile(settingsPath,
              "/ROOT=\n/IKE=\nSCRIPTED=\nend=\n"
              "/ADMIN=\nSESSION_EXPTIME=20\nADMIN_GROUP=loaded\nend=\nend=\n");
    ScriptedParam scripted(*root().IKE);
    std::future<void> done;
    bool early = false;
    scripted.onLoad = [&](std::istream&) {
      done = std::async(std::launch::async, call);
      early = done.wait_for(std::chrono::milliseconds(200)) == std::future_status::ready;
      return true;
    };
    testing_support::RecordingLoadLog log;
    EXPECT_TRUE(root().load(&log));
    if (done.valid()) done.get();
    root().IKE->fileParams.remove(&scripted);
    root().IKE->wireParams.remove(&scripted);
    return early;
  }
};

TEST_F(DuringALoad, AReadWaitsAndSeesAllThatWasLoaded) {
  CommandResult reply;
  EXPECT_FALSE(comesBackDuringALoad([&] { reply = execute(READ_GROUP, framed("ADMIN")); }));
  EXPECT_EQ(reply.output, expectedGroup("ADMIN").record(initiallyBut(
                              {{"SESSION_EXPTIME", {"", "14 00 00 00"}},
                               {"ADMIN_GROUP", {"", "06 00 00 00 6C 6F 61 64 65 64"}}})));
}

TEST_F(DuringALoad, AWriteWaitsAndIsNotLoadedOver) {
  CommandResult reply;
  EXPECT_FALSE(comesBackDuringALoad(
      [&] { reply = execute(WRITE_GROUP, framed("ADMIN", adminRecord(33))); }));
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(execute(READ_GROUP, framed("ADMIN")).output, adminRecord(33));
  EXPECT_TRUE(root().isChanged());
}

TEST_F(DuringALoad, ASaveWaitsAndFindsNothingToWrite) {
  std::string error;
  EXPECT_FALSE(comesBackDuringALoad([&] { EXPECT_TRUE(root().save(&error)); }));
  EXPECT_EQ(error, "");
}

TEST_F(DuringALoad, ASaveCommandWaitsAndFindsNothingToWrite) {
  CommandResult reply;
  EXPECT_FALSE(comesBackDuringALoad([&] { reply = execute(SAVE); }));
  EXPECT_EQ(reply.result, 1);
  EXPECT_FALSE(readFile(settingsPath).ends_with("    end=\nend=\n")) << "still the loaded file";
}

TEST_F(Concurrency, UnknownAndMalformedCommandsDisturbNobody) {
  const size_t recordSize = execute(READ_GROUP, framed("LOG")).output.size();
  std::atomic<int> failures = 0;
  const auto disturb = [&] {
    repeat(200, [&](int i) {
      (void)execute(i % 7);
      (void)execute(WRITE_GROUP, framed("LOG", std::string(static_cast<size_t>(i % 30), '\0')));
    });
  };
  const auto read = [&] {
    repeat(200, [&](int) {
      if (execute(READ_GROUP, framed("LOG")).output.size() != recordSize) ++failures;
    });
  };
  runTogether({disturb, disturb, read, read});
  EXPECT_EQ(failures, 0);
}

}  // namespace
}  // namespace host
