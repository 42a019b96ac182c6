// The order of fields and virtual functions, which code built apart from the module relies on.
#include <gtest/gtest.h>

#include "lparams/params/line_string_param.h"
#include "lparams/params/load_log.h"
#include "lparams/params/mask_param.h"
#include "lparams/params/numeric_param.h"
#include "tests/params/variant_tables.h"
#include "tests/support/object_layout.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

class LayoutTest : public testing::Test {
 protected:
  // Behind the table pointer stands the mutex, behind that the name.
  const size_t nameOffset = bits32or64(28, 48);
  const size_t valueOffset = bits32or64(32, 56);

  ParamGroup group{"GROUP"};
  BoolParam flag{group, "FLAG", true};
  PortParam port{group, "PORT", Default{1}, Range{2, 3}};
  UIntParam count{group, "COUNT", Default{1}, Range{2, 3}};
  SimpleParam<int, 4> number{group, "NUMBER", 1};
  EnumParam enumeration{group, "ENUM", 1, FLAGS};
  MaskParam mask{group, "MASK", 1, FLAGS};
  StStParam line{group, "LINE", ""};
  QcdSParam secret{group, "SECRET", ""};
};

TEST_F(LayoutTest, TheLockIsTheMutexAlone) {
  EXPECT_EQ(sizeof(basekit::ObjectLevelLockable), bits32or64(24, 40));
  const basekit::ObjectLevelLockable& lock = flag;
  EXPECT_EQ(offsetIn(flag, lock), sizeof(void*));
}

TEST_F(LayoutTest, NameAndValueOfEveryClass) {
  for (const Param* param : group.fileParams) {
    EXPECT_EQ(offsetIn(*param, param->name), nameOffset) << param->name;
  }
  EXPECT_EQ(offsetIn(flag, flag.value), valueOffset);
  EXPECT_EQ(offsetIn(port, port.value), valueOffset);
  EXPECT_EQ(offsetIn(count, count.value), valueOffset);
  EXPECT_EQ(offsetIn(number, number.value), valueOffset);
  EXPECT_EQ(offsetIn(enumeration, enumeration.value), valueOffset);
  EXPECT_EQ(offsetIn(mask, mask.value), valueOffset);
  EXPECT_EQ(offsetIn(line, line.value), valueOffset);
  EXPECT_EQ(offsetIn(secret, secret.value), valueOffset);
}

TEST_F(LayoutTest, TheLimitsFollowTheValue) {
  EXPECT_EQ(offsetIn(port, port.min), valueOffset + 2);
  EXPECT_EQ(offsetIn(port, port.max), valueOffset + 4);
  EXPECT_EQ(offsetIn(count, count.min), valueOffset + 4);
  EXPECT_EQ(offsetIn(count, count.max), valueOffset + 8);
}

TEST_F(LayoutTest, DefaultAndTableOfAnEnumerationFollowTheValue) {
  EXPECT_EQ(offsetIn(enumeration, enumeration.defaultValue), valueOffset + 4);
  EXPECT_EQ(offsetIn(enumeration, enumeration.variants), valueOffset + 8);
  EXPECT_EQ(sizeof(MaskParam), sizeof(EnumParam));
}

TEST_F(LayoutTest, TheNamedClassesAddNoData) {
  EXPECT_EQ(sizeof(BoolParam), sizeof(SimpleParam<bool, 0>));
  EXPECT_EQ(sizeof(PortParam), sizeof(NumericParam<unsigned short, 1>));
  EXPECT_EQ(sizeof(UIntParam), sizeof(NumericParam<unsigned int, 2>));
  EXPECT_EQ(sizeof(StStParam), sizeof(SimpleParam<std::string, 6>));
  EXPECT_EQ(sizeof(QcdSParam), sizeof(SimpleParam<std::string, 10>));
}

TEST_F(LayoutTest, ListsAndObserversOfAGroupFollowItsName) {
  EXPECT_EQ(offsetIn(group, group.fileParams), bits32or64(32, 56));
  EXPECT_EQ(offsetIn(group, group.wireParams), bits32or64(44, 80));
  EXPECT_EQ(offsetIn(group, group.observers), bits32or64(56, 104));
  EXPECT_EQ(sizeof(ParamGroup), bits32or64(68, 128));
}

TEST_F(LayoutTest, VariantRecordsAndCommandStreams) {
  EXPECT_EQ(offsetIn(FLAGS[0], FLAGS[0].value), 0u);
  EXPECT_EQ(offsetIn(FLAGS[0], FLAGS[0].name), sizeof(void*));
  EXPECT_EQ(sizeof(Variant), 2 * sizeof(void*));

  std::string bytes;
  const CommandStreamIn in(bytes);
  EXPECT_EQ(offsetIn(in, in.size), 0u);
  EXPECT_EQ(offsetIn(in, in.pos), 4u);
  EXPECT_EQ(offsetIn(in, in.data), 8u);
  EXPECT_EQ(sizeof(CommandStreamOut), sizeof(void*));
}

TEST_F(LayoutTest, VirtualFunctionsOfAParameter) {
  EXPECT_EQ(slotOf(&Param::getTypeId), 2u);
  EXPECT_EQ(slotOf(&Param::save), 3u);
  EXPECT_EQ(slotOf(&Param::load), 4u);
  EXPECT_EQ(slotOf(&Param::write), 5u);
  EXPECT_EQ(slotOf(&Param::read), 6u);
}

TEST_F(LayoutTest, VirtualFunctionsOfAGroup) {
  EXPECT_EQ(slotOf(&ParamGroup::getTypeId), 2u);
  EXPECT_EQ(slotOf(&ParamGroup::save), 3u);
  EXPECT_EQ(slotOf(&ParamGroup::load), 4u);
  EXPECT_EQ(slotOf(&ParamGroup::write), 5u);
  EXPECT_EQ(slotOf(&ParamGroup::read), 6u);
  EXPECT_EQ(slotOf(&ParamGroup::clear), 7u);
  EXPECT_EQ(slotOf(&ParamGroup::getParam), 8u);
}

TEST_F(LayoutTest, VirtualFunctionsCalledThroughTheTable) {
  EXPECT_EQ(functionInSlot<int (*)(const void*)>(mask, 2)(&mask), 5);
  std::string bytes;
  CommandStreamOut out{bytes};
  EXPECT_TRUE(functionInSlot<bool (*)(void*, CommandStreamOut&)>(port, 5)(&port, out));
  EXPECT_EQ(hex(bytes), "01 00");
  const std::string key = "PORT";
  EXPECT_EQ(functionInSlot<Param* (*)(void*, const std::string&)>(group, 8)(&group, key), &port);
}

TEST_F(LayoutTest, TheDestructorComesFirst) {
  static bool destroyed = false;
  struct Group : ParamGroup {
    Group() : ParamGroup("") {}
    ~Group() override { destroyed = true; }
  };
  auto* group = new Group;
  functionInSlot<void (*)(void*)>(*group, 1)(group);  // the one that frees the memory too
  EXPECT_TRUE(destroyed);
}

TEST_F(LayoutTest, VirtualFunctionsOfALoadLog) {
  EXPECT_EQ(slotOf(&LoadLog::unknownParam), 0u);
  EXPECT_EQ(slotOf(&LoadLog::paramFailed), 1u);
  EXPECT_EQ(slotOf(&LoadLog::paramsMissing), 2u);
  EXPECT_EQ(slotOf(&LoadLog::rootMismatch), 3u);
  EXPECT_EQ(slotOf(&LoadLog::fileFailed), 4u);
  EXPECT_EQ(slotOf(&LoadLog::badValue), 5u);
  EXPECT_EQ(slotOf(&LoadLog::extraText), 6u);
  EXPECT_EQ(sizeof(LoadLog), sizeof(void*));
}

}  // namespace
}  // namespace LPARAMS::Server
