// Operations on one object from several threads: each sees the object as a whole. What the checks
// here do not see, the thread sanitizer does.
#include <gtest/gtest.h>

#include <functional>
#include <sstream>
#include <thread>

#include "lparams/params/enum_param.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/numeric_param.h"
#include "tests/params/variant_tables.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

constexpr int ROUNDS = 1000;
/// Runs every function ROUNDS times, each on a thread of its own.
void runTogether(const std::vector<std::function<void(int round)>>& functions) {
  std::vector<std::jthread> threads;
  for (const auto& function : functions) {
    threads.emplace_back([&function] {
      for (int round = 0; round < ROUNDS; ++round) function(round);
    });
  }
}

/// A parameter or group that takes one of two records and is written, saved and loaded meanwhile.
void checkWholeRecords(Param& param, const std::string& first, const std::string& second,
                       const std::string& firstText) {
  runTogether({
      [&](int round) { EXPECT_EQ(readBytes(param, round % 2 == 0 ? first : second).thrown, ""); },
      [&](int) {
        const std::string bytes = wireBytes(param);
        EXPECT_TRUE(bytes == first || bytes == second) << hex(bytes);
      },
      [&](int) { EXPECT_FALSE(savedText(param).empty()); },
      [&](int) { EXPECT_TRUE(loadText(param, firstText)); },
  });
}

TEST(Concurrency, ValuesOfEveryClassAreNeverTorn) {
  ParamGroup group("GROUP");
  BoolParam flag(group, "FLAG", false);
  PortParam port(group, "PORT", Default{1}, Range{0, 65535});
  UIntParam count(group, "COUNT", Default{1}, Range{0, 4294967295});
  EnumParam enumeration(group, "ENUM", 1, FLAGS);
  checkWholeRecords(flag, unhex("00"), unhex("01"), "0\n");
  checkWholeRecords(port, unhex("01 00"), unhex("00 FF"), "1\n");
  checkWholeRecords(count, unhex("01 00 00 00"), unhex("FF FF FF 00"), "1\n");
  checkWholeRecords(enumeration, unhex("01 00 00 00"), unhex("02 00 00 00"), "ONE\n");
}

TEST(Concurrency, StringsAreNeverTorn) {
  ParamGroup group("GROUP");
  StStParam text(group, "TEXT", "x");
  const std::string large(300, 'y');
  checkWholeRecords(text, unhex("01 00 00 00 78"), unhex("2C 01 00 00") + large, "x\n");
}

TEST(Concurrency, AGroupIsReadAndWrittenAsAWhole) {
  ParamGroup group("GROUP");
  UIntParam count(group, "COUNT", Default{1}, Range{0, 9});
  StStParam text(group, "TEXT", "x");
  checkWholeRecords(group, unhex("01 00 00 00 01 00 00 00 78"),
                    unhex("02 00 00 00 02 00 00 00 79 79"), "\nTEXT=x\nCOUNT=1\nend=\n");
}

}  // namespace
}  // namespace LPARAMS::Server
