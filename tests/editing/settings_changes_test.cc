#include "editing/settings_changes.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace editing {
namespace {

using bridge::NamedValue;
using LPARAMS::Server::Catalogue;
using LPARAMS::Server::listAdd;
using LPARAMS::Server::listDel;
using LPARAMS::Server::USER_t;

void addUser(Catalogue& settings, const std::string& name) {
  listAdd(settings.userList)->NAME.value = name;
}

/// "NAME: BEFORE -> AFTER", one line each, "-" for what is missing; without parameters of users.
std::string changes(Catalogue& before, Catalogue& after) {
  std::ostringstream lines;
  for (const NamedValue& value : changesBetween(before, after)) {
    lines << value.name << ": " << value.before.value_or("-") << " -> "
          << value.running.value_or("-") << (value.secret ? " secret\n" : "\n");
  }
  return lines.str();
}

TEST(SettingsChanges, OfValues) {
  Catalogue before;
  Catalogue after;
  EXPECT_EQ(changes(before, after), "");
  after.IKE->IKE_PORT.value = 501;
  after.IKE->DPD_IDLE_TIME.value = 44;  // in the file only
  after.IKE->QCD_SECRET.value = "s3cret";
  EXPECT_EQ(changes(before, after),
            "IKE.IKE_PORT: 500 -> 501\n"
            "IKE.QCD_SECRET:  -> s3cret secret\n"
            "IKE.DPD_IDLE_TIME: 30 -> 44\n");
}

TEST(SettingsChanges, OfUsersByTheirNames) {
  Catalogue before;
  Catalogue after;
  for (const char* name : {"al", "bob", "cy"}) addUser(before, name);
  for (const char* name : {"al", "cy", "dan"}) addUser(after, name);
  after.userList.items[1]->PMP_TIMEOUT.value = 33;
  const std::string text = changes(before, after);
  EXPECT_TRUE(text.starts_with("USERS[bob]:  -> -\nUSERS[bob].NAME: bob -> -\n")) << text;
  EXPECT_NE(text.find("\nUSERS[cy].PMP_TIMEOUT: 10 -> 33\n"
                      "USERS[dan]: - -> \nUSERS[dan].NAME: - -> dan\n"),
            std::string::npos)
      << text;
  EXPECT_EQ(text.find("USERS: "), std::string::npos) << "the order is the same";
}

TEST(SettingsChanges, OfTheOrderOfUsers) {
  Catalogue before;
  Catalogue after;
  for (const char* name : {"al", "bob"}) addUser(before, name);
  for (const char* name : {"bob", "al"}) addUser(after, name);
  EXPECT_EQ(changes(before, after), "USERS: - -> -\n");
}

TEST(SettingsChanges, OfUsersOfOneNameInTheirOrder) {
  Catalogue before;
  Catalogue after;
  for (Catalogue* settings : {&before, &after}) {
    for (const char* name : {"al", "al"}) addUser(*settings, name);
  }
  after.userList.items[1]->PMP_TIMEOUT.value = 33;
  EXPECT_EQ(changes(before, after), "USERS[1].PMP_TIMEOUT: 10 -> 33\n");
  listDel(after.userList, after.userList.items[0]);
  EXPECT_EQ(changes(before, after).substr(0, 18), "USERS[1]:  -> -\nUS");
}

}  // namespace
}  // namespace editing
