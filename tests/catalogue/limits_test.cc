// Every numeric parameter of the catalogue at and beyond its limits, from the file and from the
// wire.
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "lparams/params/numeric_param.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"
#include "tests/support/recording_load_log.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

/// A number of 16 or 32 bits together with the limits that it should have.
template <typename P>
class NumberChecks {
 public:
  using T = decltype(P::value);
  static constexpr long long GREATEST = std::numeric_limits<T>::max();

  NumberChecks(P& param, const ExpectedParam& expected)
      : param_(param), min_(expected.min), max_(expected.max) {}

  void checkFile() {
    checkLoad(min_, min_);
    checkLoad(max_, max_);
    // One below 0 is a sign that wraps the number to the greatest one of the type.
    checkLoad(min_ - 1, min_ == 0 ? max_ : min_);
    if (max_ == GREATEST) {
      checkTooLarge(max_ + 1);
    } else {
      checkLoad(max_ + 1, max_);
    }
  }

  void checkWire() {
    for (const long long number : {min_, max_, min_ - 1, max_ + 1, 0LL, GREATEST}) {
      const auto value = static_cast<T>(number);
      std::string bytes;
      CommandStreamOut out{bytes};
      put(out, value);
      EXPECT_TRUE(readBytes(param_, bytes).result);
      EXPECT_EQ(param_.value, value);
      EXPECT_EQ(savedText(param_), param_.name + ("=" + std::to_string(value)) + "\n");
      EXPECT_EQ(hex(wireBytes(param_)), hex(bytes));
    }
  }

 private:
  void checkLoad(long long number, long long value) {
    ActiveLoadLog log;
    EXPECT_TRUE(loadText(param_, std::to_string(number) + "\n"));
    EXPECT_EQ(param_.value, value) << "from " << number;
    EXPECT_EQ(log.reports, std::vector<std::string>{}) << "from " << number;
  }

  void checkTooLarge(long long number) {
    ActiveLoadLog log;
    param_.value = static_cast<T>(min_);
    EXPECT_TRUE(loadText(param_, std::to_string(number) + "\n"));
    EXPECT_EQ(param_.value, min_) << "from " << number;
    EXPECT_EQ(log.reports.size(), 1u) << "from " << number;
  }

  P& param_;
  const long long min_, max_;
};

/// Calls check(checks) with every numeric parameter of the catalogue; returns how many there are.
template <typename Check>
int forEachNumber(Check check) {
  int count = 0;
  forEachParam([&](const ExpectedParam& expected, Param& param) {
    if (auto* number = dynamic_cast<UIntParam*>(&param)) {
      check(NumberChecks(*number, expected));
      ++count;
    } else if (auto* port = dynamic_cast<PortParam*>(&param)) {
      check(NumberChecks(*port, expected));
      ++count;
    }
  });
  return count;
}

int expectedNumbers() {
  const auto isNumber = [](const ExpectedParam& param) {
    return param.kind == Kind::Port || param.kind == Kind::UInt;
  };
  ptrdiff_t count = 0;
  for (const ExpectedGroup& group : expectedGroups()) {
    count += std::ranges::count_if(group.params, isNumber);
  }
  return static_cast<int>(count);
}

TEST(Limits, AValueOutOfItsRangeInTheFileIsMovedToTheNearerLimit) {
  EXPECT_EQ(forEachNumber([](auto checks) { checks.checkFile(); }), expectedNumbers());
}

TEST(Limits, AValueFromTheWireIsKeptAsItStands) {
  EXPECT_EQ(forEachNumber([](auto checks) { checks.checkWire(); }), expectedNumbers());
}

}  // namespace
}  // namespace LPARAMS::Server
