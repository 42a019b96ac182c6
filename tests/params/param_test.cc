#include "lparams/params/param.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <type_traits>

#include "lparams/catalogue/user_list.h"
#include "lparams/params/line_string_param.h"
#include "lparams/params/mask_param.h"
#include "lparams/params/numeric_param.h"
#include "tests/params/load_rows.h"
#include "tests/support/param_forms.h"

namespace LPARAMS::Server {
namespace {

using namespace testing_support;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* NAME = "COUNT";

class ParamTest : public testing::Test {
 protected:
  ParamGroup group{"GROUP"};
  UIntParam count{group, NAME, Default{7}, Range{0, 1000}};
};

TEST_F(ParamTest, EveryClassHasItsTypeIdentifier) {
  static constexpr Variant TABLE[] = {{1, "ONE"}, {0, nullptr}};
  SimpleParam<bool, 0> plainBool(group, "", false);
  BoolParam flag(group, "", false);
  SimpleParam<unsigned short, 1> plainShort(group, "", 0);
  PortParam port(group, "", Default{0}, Range{0, 0});
  SimpleParam<unsigned int, 2> plainUInt(group, "", 0);
  SimpleParam<int, 4> plainInt(group, "", 0);
  EnumParam enumeration(group, "", 1, TABLE);
  MaskParam mask(group, "", 1, TABLE);
  SimpleParam<std::string, 6> plainString(group, "", "");
  StStParam line(group, "", "");
  ParamVector<USER_t> list("");
  SimpleParam<std::string, 10> plainSecret(group, "", "");
  QcdSParam secret(group, "", "");

  const std::pair<const Param*, int> rows[] = {
      {&plainBool, 0}, {&flag, 0},     {&plainShort, 1},  {&port, 1},         {&plainUInt, 2},
      {&count, 2},     {&plainInt, 4}, {&enumeration, 4}, {&mask, 5},         {&plainString, 6},
      {&line, 6},      {&group, 7},    {&list, 8},        {&plainSecret, 10}, {&secret, 10},
  };
  for (const auto& [param, typeId] : rows) {
    EXPECT_EQ(param->getTypeId(), typeId) << typeid(*param).name();
  }
}

TEST_F(ParamTest, NameIsTheCallersLiteralNotACopy) { EXPECT_EQ(count.name, NAME); }

TEST_F(ParamTest, IndentWritesFourSpacesPerLevel) {
  EXPECT_EQ(savedText(count, 0), "COUNT=7\n");
  EXPECT_EQ(savedText(count, 1), "    COUNT=7\n");
  EXPECT_EQ(savedText(count, 2), "        COUNT=7\n");
}

TEST_F(ParamTest, BaseSaveWritesTheHeadOfTheLineOnly) {
  std::ostringstream os;
  EXPECT_TRUE(count.Param::save(os, 1));
  EXPECT_EQ(os.str(), "    COUNT=");
}

TEST_F(ParamTest, BaseLoadConsumesTheLineAndReportsWhatWasLeftOfIt) {
  ActiveLoadLog log;
  std::istringstream is(" rest\nnext");
  EXPECT_TRUE(count.Param::load(is));
  EXPECT_THAT(log.reports, ElementsAre("extraText(COUNT, \" rest\")"));
  EXPECT_EQ(unreadText(is), "next");
}

TEST_F(ParamTest, BaseLoadReportsNothingAboutAnEmptyRest) {
  ActiveLoadLog log;
  std::istringstream is("\nnext");
  EXPECT_TRUE(count.Param::load(is));
  EXPECT_THAT(log.reports, IsEmpty());
  EXPECT_EQ(unreadText(is), "next");
}

TEST_F(ParamTest, BaseLoadClearsAFailureAndReportsTheRestAsABadValue) {
  for (const std::ios::iostate failure : {std::ios::failbit, std::ios::badbit}) {
    ActiveLoadLog log;
    std::istringstream is("rest\nnext");
    is.setstate(failure);
    EXPECT_TRUE(count.Param::load(is));
    EXPECT_TRUE(is.good());
    EXPECT_THAT(log.reports, ElementsAre("badValue(COUNT, \"rest\")"));
    EXPECT_EQ(unreadText(is), "next");
  }
}

TEST_F(ParamTest, ABadValueWithNothingBehindItIsReportedWithAnEmptyText) {
  ActiveLoadLog log;
  std::istringstream is("\nnext");
  is.setstate(std::ios::failbit);
  EXPECT_TRUE(count.Param::load(is));
  EXPECT_THAT(log.reports, ElementsAre("badValue(COUNT, \"\")"));
}

TEST_F(ParamTest, WithoutALoadLogReportsAreDroppedAndTheLineIsReadAllTheSame) {
  ASSERT_EQ(g_loadlog, nullptr);
  std::istringstream is("abc\n500 x\nnext");
  EXPECT_TRUE(count.load(is));
  EXPECT_EQ(count.value, 7u);
  EXPECT_TRUE(count.load(is));
  EXPECT_EQ(count.value, 500u);
  EXPECT_EQ(unreadText(is), "next");
}

template <typename... T>
constexpr bool neitherCopyableNorMovable = ((!std::is_copy_constructible_v<T> &&
                                             !std::is_move_constructible_v<T> &&
                                             !std::is_copy_assignable_v<T> &&
                                             !std::is_move_assignable_v<T>)&&...);

static_assert(neitherCopyableNorMovable<
              basekit::ObjectLevelLockable, basekit::ObjectLevelLockable::Lock, BoolParam,
              PortParam, UIntParam, EnumParam, MaskParam, StStParam, QcdSParam,
              SimpleParam<bool, 0>, SimpleParam<unsigned short, 1>, SimpleParam<unsigned int, 2>,
              SimpleParam<int, 4>, SimpleParam<std::string, 6>, SimpleParam<std::string, 10>,
              ParamGroup, USER_t, ParamVector<USER_t>>);
static_assert(std::is_abstract_v<Param>);

}  // namespace
}  // namespace LPARAMS::Server
