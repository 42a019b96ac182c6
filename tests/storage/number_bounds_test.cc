// The limits of every numeric parameter of the catalogue, from the bridge through the file and back
// into a fresh module: only loading enforces them.
#include <gmock/gmock.h>

#include <limits>

#include "tests/module/loaded_module.h"
#include "tests/storage/catalogue_walk.h"
#include "tests/support/recording_load_log.h"

using testing::IsEmpty;
using testing_support::RecordingLoadLog;

namespace host {
namespace {

using namespace LPARAMS::Server;

/// A numeric parameter of the catalogue; its value is looked up anew whenever the module is.
struct Number {
  std::string group;
  std::string name;
  uint64_t min;
  uint64_t max;
  uint64_t typeMax;
};

template <typename P>
Number describe(const ParamGroup& group, const Param& param) {
  const auto& number = static_cast<const P&>(param);
  return {group.name, param.name, number.min, number.max,
          std::numeric_limits<decltype(number.value)>::max()};
}

std::string line(const Number& number, uint64_t value) {
  return number.name + "=" + std::to_string(value) + "\n";
}

class NumberBounds : public ModuleTest {
 protected:
  void forEachNumber(const std::function<void(const Number&)>& visit) {
    (void)module.addUser();
    std::vector<Number> numbers;
    forEachParameter(root(), [&](ParamGroup& group, Param& param) {
      const int type = param.getTypeId();
      if (type == TYPE_USHORT) numbers.push_back(describe<PortParam>(group, param));
      if (type == TYPE_UINT) numbers.push_back(describe<UIntParam>(group, param));
    });
    EXPECT_FALSE(numbers.empty());
    for (const Number& number : numbers) {
      SCOPED_TRACE(number.group + " " + number.name);
      visit(number);
    }
  }

  /// The group that holds the number; of several users the last one.
  ParamGroup& groupOf(const Number& number) {
    if (number.group == USER_t::GROUP_NAME) return *root().USERS->items.back();
    return static_cast<ParamGroup&>(*root().getParam(number.group));
  }

  uint64_t valueOf(const Number& number) {
    Param* param = groupOf(number).getParam(number.name);
    return param->getTypeId() == TYPE_USHORT ? static_cast<PortParam*>(param)->value
                                             : static_cast<UIntParam*>(param)->value;
  }

  /// The record of the number's group as it is now, with this value for the number; empty if the
  /// number is not on the wire.
  std::string recordWith(const Number& number, uint64_t value) {
    std::string bytes;
    CommandStreamOut out{bytes};
    bool isOnWire = false;
    if (number.group == USER_t::GROUP_NAME) put(out, 1u);
    for (Param* member : groupOf(number).wireParams) {
      if (member->name != number.name) {
        EXPECT_TRUE(member->write(out));
        continue;
      }
      isOnWire = true;
      if (member->getTypeId() == TYPE_USHORT) put(out, static_cast<unsigned short>(value));
      if (member->getTypeId() == TYPE_UINT) put(out, static_cast<unsigned>(value));
    }
    return isOnWire ? bytes : std::string();
  }
};

TEST_F(NumberBounds, DoNotApplyToTheBridgeAndToSaving) {
  int onWire = 0;
  forEachNumber([&](const Number& number) {
    const bool isUser = number.group == USER_t::GROUP_NAME;
    const std::string group = isUser ? "USERS" : number.group;
    if (!recordWith(number, number.min).empty()) ++onWire;
    for (const uint64_t value : {number.min, number.max, number.min - 1, number.max + 1}) {
      const std::string record = recordWith(number, value);
      if (value > number.typeMax || record.empty()) continue;
      EXPECT_EQ(execute(WRITE_GROUP, framed(group, record)).result, 1);
      EXPECT_EQ(valueOf(number), value);
      EXPECT_EQ(execute(READ_GROUP, framed(group)).output, record);
      EXPECT_TRUE(root().save(nullptr));
      EXPECT_THAT(readFile(settingsPath), testing::HasSubstr(line(number, value)));
    }
  });
  EXPECT_GT(onWire, 0);
}

TEST_F(NumberBounds, AreEnforcedWhenANumberFromTheBridgeIsLoadedAgain) {
  forEachNumber([&](const Number& number) {
    const std::string record = recordWith(number, number.typeMax);
    if (record.empty()) return;
    const std::string group = number.group == USER_t::GROUP_NAME ? "USERS" : number.group;
    EXPECT_EQ(execute(WRITE_GROUP, framed(group, record)).result, 1);
    EXPECT_TRUE(root().save(nullptr));
    module.reload();
    RecordingLoadLog log;
    EXPECT_TRUE(root().load(&log));
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_EQ(valueOf(number), number.max);
  });
}

}  // namespace
}  // namespace host
