// What leaves the module when something is wrong: the text of a command that is too short, as a
// `const char*`, std::bad_alloc when there is no memory, and nothing else.
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "tests/module/failing_allocation.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/module/scripted_document.h"
#include "tests/support/lock_probe.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

using testing_support::inQuotes;
using testing_support::unhex;

namespace host {
namespace {

/// What the call throws: the type, and the text if it is one.
std::string thrownBy(const std::function<void()>& call) {
  try {
    call();
  } catch (const char* text) {
    return std::string("const char* ") + text;
  } catch (const std::bad_alloc&) {
    return "std::bad_alloc";
  } catch (const std::exception& error) {
    return std::string("std::exception ") + error.what();
  } catch (...) {
    return "something else";
  }
  return "nothing";
}

const std::string NOTHING = "nothing";
const std::string TOO_SHORT = "const char* CommandStreamError";

/// Records that are wrong in every way that their encoding allows.
std::vector<std::string> oddRecords(const std::string& record) {
  std::vector<std::string> records;
  for (size_t length = 0; length <= record.size(); ++length) {
    records.push_back(record.substr(0, length));
  }
  // A count or a length that nobody has the memory for, at every place.
  for (const std::string& huge :
       {unhex("FF FF FF FF"), unhex("FF FF FF 7F"), unhex("F0 FF FF 3F")}) {
    for (size_t at = 0; at + huge.size() <= record.size(); ++at) {
      records.push_back(std::string(record).replace(at, huge.size(), huge));
    }
    records.push_back(huge);
  }
  records.push_back(record + record);
  records.push_back(std::string(5000, '\xFF'));
  return records;
}

class Exceptions : public ModuleTest {
 protected:
  std::string thrownByCommand(long command, const std::string& input) {
    BridgeSession session;
    std::string out;
    return thrownBy([&] { (void)platform().listener->ExecCommand(session, command, input, out); });
  }

  testing_support::RecordingLoadLog log;
};

TEST_F(Exceptions, OfAWriteAreTheOneText) {
  (void)module.addUser();
  int tooShort = 0;
  for (const char* group : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
    for (const std::string& record : oddRecords(execute(READ_GROUP, framed(group)).output)) {
      const std::string thrown = thrownByCommand(WRITE_GROUP, framed(group, record));
      if (thrown == TOO_SHORT) {
        ++tooShort;
      } else {
        EXPECT_EQ(thrown, NOTHING) << group << " " << inQuotes(record);
      }
    }
  }
  EXPECT_GT(tooShort, 100);
}

TEST_F(Exceptions, OfAnyCommandAreTheOneText) {
  const std::string frames[] = {"",
                                "abc",
                                unhex("01 00 00 00"),
                                unhex("FF FF FF FF"),
                                unhex("FF FF FF 7F") + "IKE",
                                framed(""),
                                framed("ROOT"),
                                framed(std::string(100'000, 'x')),
                                framed("IKE"),
                                std::string(1000, '\xFF')};
  for (long command = -2; command <= 20; ++command) {
    for (const std::string& frame : frames) {
      const bool isRead = frame.size() >= 4 && thrownByCommand(READ_GROUP, frame) == NOTHING;
      const bool takesInput = command == READ_GROUP || command == WRITE_GROUP;
      const std::string thrown = thrownByCommand(command, frame);
      if (!takesInput || (isRead && frame != framed("IKE"))) {
        EXPECT_EQ(thrown, NOTHING) << command << " " << inQuotes(frame);
      } else if (!isRead || command == WRITE_GROUP) {
        EXPECT_EQ(thrown, TOO_SHORT) << command << " " << inQuotes(frame);
      }
    }
  }
}

TEST_F(Exceptions, OfALoadThereAreNone) {
  std::string everyByte;
  for (int byte = 0; byte < 256; ++byte) everyByte += static_cast<char>(byte);
  const std::string texts[] = {
      "x",
      everyByte,
      everyByte + "=" + everyByte + "=\n" + everyByte,
      "/ROOT=" + everyByte + "=" + everyByte,
      "/ROOT=\n/IKE=\nIKE_PORT=" + everyByte + "\nend=\nend=\n",
      "/ROOT=\n/IKE=\nIKE_PORT=99999999999999999999999999\nend=\nend=\n",
      "/ROOT=\n/LOG=\nLOG_LEVEL=" + std::string(100'000, '|') + "\nend=\nend=\n",
      "/ROOT=\n/USERS=\n/USER=\nNAME=" + std::string(100'000, 'n'),
      "/ROOT=\n" + std::string(100'000, '='),
      "/ROOT=\n/A=\n/B=\n/C=\nend=",
  };
  for (const std::string& text : texts) {
    writeFile(settingsPath, text);
    EXPECT_EQ(thrownBy([&] { (void)root().load(&log); }), NOTHING) << inQuotes(text.substr(0, 60));
    EXPECT_EQ(thrownBy([&] { (void)root().isChanged(); }), NOTHING);
  }
}

TEST_F(Exceptions, OfTheServicesAreCaughtInALoad) {
  platform().onVarDir = [] { throw std::runtime_error("no directory"); };
  EXPECT_EQ(thrownBy([&] { (void)root().load(&log); }), NOTHING);
  platform().onVarDir = nullptr;
  writeFile(directory.path + "localsettings.xml", "any text");
  document() = {};
  document().onLoad = [] { throw std::logic_error("odd"); };
  EXPECT_EQ(thrownBy([&] { (void)root().load(&log); }), NOTHING);
}

TEST_F(Exceptions, OfASaveThereAreNone) {
  const auto expectFailure = [&] {
    std::string error;
    bool result = true;
    EXPECT_EQ(thrownBy([&] { result = root().save(&error); }), NOTHING);
    EXPECT_FALSE(result);
    EXPECT_NE(error, "");
    EXPECT_EQ(thrownByCommand(SAVE, ""), NOTHING);
  };
  ASSERT_EQ(mkdir(temporaryPath.c_str(), 0700), 0);
  expectFailure();
  ASSERT_EQ(rmdir(temporaryPath.c_str()), 0);
  ASSERT_EQ(symlink("/dev/full", temporaryPath.c_str()), 0);
  expectFailure();
  ASSERT_EQ(unlink(temporaryPath.c_str()), 0);
  ASSERT_EQ(mkdir(settingsPath.c_str(), 0700), 0);
  ASSERT_EQ(mkdir((settingsPath + "/inner").c_str(), 0700), 0);
  expectFailure();
}

class ExceptionsWithoutMemory : public Exceptions {
 protected:
  /// Lets each allocation of the call fail in turn, until none does; no lock may be held then.
  /// `after` is called with what was thrown.
  void tryEach(const std::string& what, const std::function<void()>& call,
               const std::function<void(const std::string& thrown)>& after) {
    constexpr int MORE_THAN_ANY_CALL_MAKES = 20'000;
    std::string thrown;
    thrown.reserve(1000);
    for (int number = 1; number < MORE_THAN_ANY_CALL_MAKES; ++number) {
      SCOPED_TRACE(what + ", allocation " + std::to_string(number));
      recordTakings();
      failAllocation(number);
      thrown = thrownBy(call);
      const bool failed = allocationHasFailed();
      failAllocation(0);
      ASSERT_FALSE(testing_support::isAnyLocked(locksTaken()));
      EXPECT_TRUE(thrown == NOTHING || thrown == "std::bad_alloc") << thrown;
      after(thrown);
      if (failed) continue;
      EXPECT_EQ(thrown, NOTHING);
      std::cout << what << ": " << number - 1 << " allocations failed\n";
      return;
    }
    FAIL() << what << " needs more memory each time";
  }
};

TEST_F(ExceptionsWithoutMemory, OfCommands) {
  (void)module.addUser();
  for (const char* group : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
    const std::string name = framed(group);
    const std::string record = execute(READ_GROUP, name).output;
    const std::string request = framed(group, record);
    std::string out;
    BridgeSession session;
    int result = 0;
    const auto command = [&](long number, const std::string& input) {
      return [&, number, input] {
        out.clear();
        result = platform().listener->ExecCommand(session, number, input, out);
      };
    };
    tryEach(std::string("read ") + group, command(READ_GROUP, name), [&](const auto& thrown) {
      if (thrown == NOTHING) {
        EXPECT_EQ(inQuotes(out), inQuotes(record));
      }
    });
    ASSERT_FALSE(HasFatalFailure());  // somebody would wait for a lock
    tryEach(std::string("write ") + group, command(WRITE_GROUP, request), [&](const auto&) {
      // The next one is whole.
      EXPECT_EQ(execute(WRITE_GROUP, request).result, 1);
      EXPECT_EQ(inQuotes(execute(READ_GROUP, name).output), inQuotes(record));
    });
    ASSERT_FALSE(HasFatalFailure());
  }
}

TEST_F(ExceptionsWithoutMemory, OfALoadASaveAndTheComparison) {
  (void)module.addUser();
  std::string error;
  ASSERT_TRUE(root().save(&error)) << error;
  const std::string text = readFile(settingsPath);
  const std::string admin = framed("ADMIN");
  const std::string record = execute(READ_GROUP, admin).output;
  bool result = false;

  tryEach(
      "isChanged", [&] { result = root().isChanged(); }, [](const auto&) {});

  std::string changed = record;
  ++changed[0];
  ASSERT_EQ(execute(WRITE_GROUP, framed("ADMIN", changed)).result, 1);
  tryEach(
      "save",
      [&] {
        error.clear();
        result = root().save(&error);
      },
      [&](const std::string& thrown) {
        if (thrown == NOTHING) {
          EXPECT_TRUE(result || !error.empty());
        }
        const std::string now = readFile(settingsPath);
        EXPECT_TRUE(now.starts_with("/ROOT=") && now.ends_with("end=\n"));
        ++changed[0];  // something to save for the next one
        ASSERT_EQ(execute(WRITE_GROUP, framed("ADMIN", changed)).result, 1);
        ASSERT_TRUE(root().isChanged());
      });

  writeFile(settingsPath, text);
  tryEach(
      "load", [&] { result = root().load(&log); },
      [&](const std::string&) {
        ASSERT_TRUE(root().load(&log));
        EXPECT_EQ(inQuotes(execute(READ_GROUP, admin).output), inQuotes(record));
      });
}

}  // namespace
}  // namespace host
