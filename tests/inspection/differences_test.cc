// What is told of two sets of settings that differ.
#include "inspection/differences.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "inspection/inspection.h"
#include "tests/catalogue/expected_groups.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;
using testing::ElementsAre;
using testing::IsEmpty;

class Differences : public testing::Test {
 protected:
  static void addUser(Catalogue& settings, const std::string& name, unsigned timeout = 10) {
    USER_t& user = *settings.userList.append();
    user.NAME.value = name;
    user.PMP_TIMEOUT.value = timeout;
  }

  std::vector<std::string> differences() {
    Findings findings;
    addDifferences(before_, after_, Finding::Edited, findings);
    std::vector<std::string> lines;
    for (const Finding& finding : findings.first) {
      lines.push_back(finding.path + ": " + finding.was.value() + " -> " + finding.taken.value());
    }
    return lines;
  }

  Catalogue before_;
  Catalogue after_;
};

TEST_F(Differences, OfEqualSettingsAreNone) {
  for (Catalogue* settings : {&before_, &after_}) {
    addUser(*settings, "bob");
    addUser(*settings, "bob", 20);
  }
  EXPECT_THAT(differences(), IsEmpty());
}

TEST_F(Differences, OfEveryParameterAreSeenAndThoseOfSecretsHidden) {
  for (const ExpectedGroup& group : expectedGroups()) {
    const bool isUser = group.name == std::string(USER_t::GROUP_NAME);
    for (const ExpectedParam& param : group.params) {
      SCOPED_TRACE(param.name);
      if (isUser && param.name == std::string("NAME")) continue;  // users are compared by it
      const ChooseForm changed = initiallyBut({{param.name, param.changed}});
      Catalogue before;
      Catalogue after;
      (void)inspect(expectedFile(initially, {initially}), before);
      (void)inspect(
          isUser ? expectedFile(initially, {changed}) : expectedFile(changed, {initially}), after);
      Findings findings;
      addDifferences(before, after, Finding::Edited, findings);
      ASSERT_EQ(findings.count, 1u);
      const Finding& finding = findings.first[0];
      EXPECT_EQ(finding.path, (isUser ? "USERS[]" : std::string(group.name)) + "." + param.name);
      const bool secret = param.kind == Kind::Secret;
      EXPECT_EQ(finding.was, secret ? "(differs, hidden)" : param.initial.text);
      EXPECT_EQ(finding.taken, secret ? "(differs, hidden)" : param.changed.text);
    }
  }
}

TEST_F(Differences, ShowTextsButNoSecretInThem) {
  before_.policyGroup.LOCAL_CERT_SUBJECT.value = "CN=a";
  after_.policyGroup.LOCAL_CERT_SUBJECT.value = "CN=b";
  after_.policyGroup.PSK_NAME.value = "key\nQCD_SECRET=open sesame";
  EXPECT_THAT(differences(), ElementsAre("POLICY.LOCAL_CERT_SUBJECT: CN=a -> CN=b",
                                         "POLICY.PSK_NAME:  -> key\nQCD_SECRET(hidden)"));
}

TEST_F(Differences, OfUsersAreToldByName) {
  addUser(before_, "gone");
  addUser(before_, "moved");
  addUser(before_, "bob");
  addUser(before_, "twice", 10);
  addUser(before_, "twice", 20);
  addUser(after_, "bob", 15);
  addUser(after_, "moved");
  addUser(after_, "twice", 10);
  addUser(after_, "twice", 21);
  addUser(after_, "new");
  EXPECT_THAT(differences(),
              ElementsAre("USERS[bob].PMP_TIMEOUT: 10 -> 15", "USERS[twice].PMP_TIMEOUT: 20 -> 21",
                          "USERS[new]: (no such user) -> (a user)",
                          "USERS[gone]: (a user) -> (no such user)"));
}

}  // namespace
}  // namespace inspection
