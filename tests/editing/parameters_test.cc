#include "editing/parameters.h"

#include <gtest/gtest.h>

#include <string>

namespace editing {
namespace {

using namespace LPARAMS::Server;

class Names : public testing::Test {
 protected:
  USER_t* add(const std::string& name) {
    USER_t* const user = listAdd(*catalogue_.USERS);
    user->NAME.value = name;
    return user;
  }

  Catalogue catalogue_;
  Parameters parameters_{catalogue_};
};

TEST_F(Names, EveryParameterIsFoundByItsOwn) {
  for (ParamGroup* group : catalogue_.groups()) {
    EXPECT_EQ(parameters_.find(group->name).group, group);
    EXPECT_EQ(parameters_.find(group->name).param, nullptr);
    for (Param* param : group->fileParams) {
      const auto found = parameters_.find(std::string(group->name) + "." + param->name);
      EXPECT_EQ(found.problem, "");
      EXPECT_EQ(found.param, param);
    }
  }
}

TEST_F(Names, UsersAreFoundByTheirNamesAndElseByTheirIndex) {
  USER_t* const anna = add("anna");
  USER_t* const one = add("1");
  USER_t* const odd = add("a].[b");
  USER_t* const unnamed = add("");
  EXPECT_EQ(parameters_.find("USERS[anna]").user, anna);
  EXPECT_EQ(parameters_.find("USERS[anna].PMP_TIMEOUT").param, &anna->PMP_TIMEOUT);
  EXPECT_EQ(parameters_.find("USERS[0].NAME").param, &anna->NAME);
  EXPECT_EQ(parameters_.find("USERS[1].NAME").param, &one->NAME) << "a name comes first";
  EXPECT_EQ(parameters_.find("USERS[2]").user, odd);
  EXPECT_EQ(parameters_.find("USERS[a].[b].NAME").param, &odd->NAME);
  EXPECT_EQ(parameters_.find("USERS[].NAME").param, &unnamed->NAME);
  EXPECT_EQ(parameters_.nameOf(*anna), "USERS[anna]");
  EXPECT_EQ(parameters_.nameOf(*unnamed), "USERS[3]");
}

TEST_F(Names, UsersOfOneNameAreFoundByTheirIndex) {
  USER_t* const first = add("anna");
  USER_t* const second = add("anna");
  EXPECT_EQ(parameters_.find("USERS[anna].NAME").problem,
            "USERS[anna].NAME: several users have this name; give the index");
  EXPECT_EQ(parameters_.find("USERS[1].NAME").user, second);
  EXPECT_EQ(parameters_.nameOf(*first), "USERS[0]");
  EXPECT_EQ(parameters_.placeOf(*second), std::make_pair(std::string("anna"), size_t{1}));
  EXPECT_EQ(parameters_.at({"anna", 1}), second);
  EXPECT_EQ(parameters_.at({"anna", 2}), nullptr);
}

TEST_F(Names, OneThatIsNotThereGetsASuggestion) {
  add("anna");
  const struct {
    std::string name;
    std::string problem;
  } ROWS[] = {
      {"", "no such parameter"},
      {".", "no such parameter"},
      {"IKE.", "no such parameter; did you mean IKE?"},
      {"IKE.IKE_PROT", "no such parameter; did you mean IKE.IKE_PORT?"},
      {"ike.ike_port", "no such parameter; did you mean IKE.IKE_PORT?"},
      {"IKE_PORT", "no such parameter; did you mean IKE.IKE_PORT?"},
      {"UPDTE", "no such parameter; did you mean UPDATE?"},
      {"IKE[0].IKE_PORT", "no such parameter"},
      {"USERS.NAME", "no such parameter; write USERS[NAME].PARAMETER"},
      {"USERS[ana].NAME", "no such user; did you mean USERS[anna].NAME?"},
      {"USERS[anna].PMP_TIMOUT", "no such parameter; did you mean USERS[anna].PMP_TIMEOUT?"},
      {"USERS[anna]NAME", "no such parameter; did you mean USERS[anna].NAME?"},
      {"USERS[1].NAME", "no such user"},
      {"USERS[-1].NAME", "no such user"},
      {"USERS[18446744073709551616].NAME", "no such user"},
      {"USERS[anna", "no such parameter; write USERS[NAME].PARAMETER"},
  };
  for (const auto& row : ROWS) {
    Parameters parameters(catalogue_);  // each makes a few suggestions only
    EXPECT_EQ(parameters.find(row.name).problem, row.name + ": " + row.problem);
  }
}

// They are looked for among all names, and a request may hold any number of mistakes.
TEST_F(Names, OnlyTheFirstTenThatAreNotThereGetASuggestion) {
  for (int i = 0; i < 10; ++i) {
    EXPECT_EQ(parameters_.find("UPDTE").problem, "UPDTE: no such parameter; did you mean UPDATE?");
  }
  EXPECT_EQ(parameters_.find("UPDTE").problem, "UPDTE: no such parameter");
}

}  // namespace
}  // namespace editing
