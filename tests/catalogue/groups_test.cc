// Every group against its table: names, classes, defaults, limits, lists and their order.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <typeinfo>

#include "lparams/catalogue/catalogue.h"
#include "tests/catalogue/expected_groups.h"
#include "tests/support/object_layout.h"
#include "tests/support/param_forms.h"
#include "tests/support/readable_bytes.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;

/// What clients tell the classes apart by.
struct ExpectedClass {
  const std::type_info& type;
  int typeId;
};

ExpectedClass expectedClass(Kind kind) {
  switch (kind) {
    case Kind::Enum:
      return {typeid(EnumParam), 4};
    case Kind::Port:
      return {typeid(PortParam), 1};
    case Kind::UInt:
      return {typeid(UIntParam), 2};
    case Kind::Bool:
      return {typeid(BoolParam), 0};
    case Kind::Line:
      return {typeid(StStParam), 6};
    case Kind::Secret:
      return {typeid(QcdSParam), 10};
  }
  throw std::logic_error("no such kind");
}

using Names = std::vector<std::string>;

Names namesOf(const std::list<Param*>& list) {
  Names names;
  for (const Param* param : list) names.emplace_back(param->name);
  return names;
}

TEST(Groups, BothListsAreInTableOrderAndFileOnlyRowsAreNotOnTheWire) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    Names inFile, onWire;
    for (const ExpectedParam& param : expected.params) {
      inFile.emplace_back(param.name);
      if (param.onWire) onWire.emplace_back(param.name);
    }
    EXPECT_EQ(namesOf(group.fileParams), inFile);
    EXPECT_EQ(namesOf(group.wireParams), onWire);
  });
}

TEST(Groups, NoGroupIsLeftOut) {
  Names expected, actual;
  for (const ExpectedGroup& group : expectedGroups()) expected.emplace_back(group.name);
  const Catalogue catalogue;
  for (const ParamGroup* group : catalogue.groups()) {
    actual.emplace_back(group == catalogue.USERS ? USER_t::GROUP_NAME : group->name);
  }
  EXPECT_EQ(actual, expected);
  Names inFile{"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"};
  EXPECT_EQ(namesOf(catalogue.fileParams), inFile);
  EXPECT_EQ(namesOf(catalogue.wireParams), Names{"USERS"});
}

TEST(Groups, AGroupIsAPlainGroupWithItsNameAndNoObservers) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    EXPECT_STREQ(group.name, expected.name);
    EXPECT_EQ(group.getTypeId(), 7);
    EXPECT_TRUE(group.observers.empty());
  });
}

TEST(Groups, TheParametersLieInTheGroupInTableOrder) {
  forEachGroup([](const ExpectedGroup&, ParamGroup& group) {
    size_t previous = sizeof(ParamGroup) - 1;
    for (const Param* param : group.fileParams) {
      const size_t offset = offsetIn(group, *param);
      EXPECT_GT(offset, previous) << param->name;
      EXPECT_LT(offset, 10'000u) << param->name << " lies outside of the group";
      previous = offset;
    }
  });
}

TEST(Groups, EveryParameterIsOfItsClass) {
  forEachParam([](const ExpectedParam& expected, Param& param) {
    const ExpectedClass type = expectedClass(expected.kind);
    EXPECT_EQ(typeid(param), type.type);
    EXPECT_EQ(param.getTypeId(), type.typeId);
  });
}

TEST(Groups, EveryParameterStartsWithItsDefault) {
  forEachParam([](const ExpectedParam& expected, Param& param) {
    if (expected.onWire) {
      EXPECT_EQ(hex(wireBytes(param)), expected.initial.bytes);
    }
    EXPECT_EQ(savedText(param), std::string(expected.name) + "=" + expected.initial.text + "\n");
  });
}

TEST(Groups, EveryNumberHasItsLimits) {
  forEachParam([](const ExpectedParam& expected, Param& param) {
    if (const auto* number = dynamic_cast<UIntParam*>(&param)) {
      EXPECT_EQ(number->min, expected.min);
      EXPECT_EQ(number->max, expected.max);
    } else if (const auto* port = dynamic_cast<PortParam*>(&param)) {
      EXPECT_EQ(port->min, expected.min);
      EXPECT_EQ(port->max, expected.max);
    }
  });
}

TEST(Groups, EveryEnumerationSharesItsTableAndRemembersItsDefault) {
  forEachParam([](const ExpectedParam& expected, Param& param) {
    if (const auto* enumeration = dynamic_cast<EnumParam*>(&param)) {
      EXPECT_EQ(enumeration->variants, expected.variants);
      EXPECT_EQ(enumeration->defaultValue, enumeration->value);
    }
  });
}

TEST(Groups, NamesAreFoundInTheirOwnLettersOnly) {
  forEachParam(
      [](const ExpectedParam& expected, Param& param) { EXPECT_STREQ(param.name, expected.name); });
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    for (const ExpectedParam& param : expected.params) {
      std::string lower = param.name;
      for (char& c : lower) c = static_cast<char>(std::tolower(c));
      EXPECT_EQ(group.getParam(lower), nullptr) << lower;
    }
    EXPECT_EQ(group.getParam("NO_SUCH_NAME"), nullptr);
    EXPECT_EQ(group.getParam(expected.name), nullptr);
  });
}

TEST(Groups, TwoObjectsOfAGroupAreIndependent) {
  forEachGroup([](const ExpectedGroup& expected, ParamGroup& group) {
    const auto other = expected.make();
    EXPECT_TRUE(readBytes(*other, expected.record(whenChanged)).result);
    EXPECT_EQ(savedText(group), expected.text(0, initially));
  });
}

}  // namespace
}  // namespace LPARAMS::Server
