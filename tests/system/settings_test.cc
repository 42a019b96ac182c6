// Settings on their way from the file through the agent to the client and back.
#include <gmock/gmock.h>

#include <filesystem>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/records.h"
#include "tests/system/system_test.h"

using client_testing::printed;
using testing::ContainsRegex;
using testing::HasSubstr;

namespace system_testing {
namespace {

/// A settings file as "GROUP.NAME" and value, entries of the user list as "USERS[0].NAME".
std::map<std::string, std::string> valuesOf(const std::string& settings) {
  std::map<std::string, std::string> values;
  std::string group;
  int users = 0;
  std::istringstream lines(settings);
  for (std::string line; std::getline(lines, line);) {
    line.erase(0, line.find_first_not_of(' '));
    const size_t equals = line.find('=');
    const std::string key = line.substr(0, equals);
    if (key == "/USER") {
      group = "USERS[" + std::to_string(users++) + "]";
    } else if (key.starts_with('/')) {
      group = key.substr(1);
    } else if (key != "end") {
      values[group + "." + key] = line.substr(equals + 1);
    }
  }
  return values;
}

/// What `show --secrets` prints of these values.
std::string shown(const std::map<std::string, std::string>& values) {
  testing_support::Settings settings;
  std::string text;
  const auto add = [&](const std::string& group, const LPARAMS::Server::ParamGroup& members,
                       const std::string& shownName) {
    for (const auto* param : members.fileParams) {
      text += shownName + "." + param->name + "=" + values.at(group + "." + param->name) + "\n";
    }
  };
  for (const auto* group : settings.groups()) {
    if (group != &settings.userList) add(group->name, *group, group->name);
  }
  const LPARAMS::Server::USER_t user;
  for (int i = 0; values.contains("USERS[" + std::to_string(i) + "].NAME"); ++i) {
    const std::string entry = "USERS[" + std::to_string(i) + "]";
    add(entry, user, "USERS[" + values.at(entry + ".NAME") + "]");
  }
  return text;
}

class SettingsStore : public SystemTest {
 protected:
  const std::string example = sourceFile("examples/localsettings.ini");
};

TEST_F(SettingsStore, ShowsEveryGroupOfTheFile) {
  host::writeFile(settingsPath, example);
  start();
  EXPECT_THAT(agent->log(), HasSubstr("info: settings loaded "));
  EXPECT_THAT(agent->log(), HasSubstr("reports=0 findings=0\n"));
  EXPECT_EQ(ctl({"show", "--secrets"}), printed(shown(valuesOf(example))));
  for (const char* group : {"IKE", "LOG", "UPDATE", "POLICY", "ADMIN", "USERS"}) {
    EXPECT_THAT(ctl({"show", group}).out, ContainsRegex("^" + std::string(group) + ".*=")) << group;
  }
}

TEST_F(SettingsStore, KeepsAChangeThatIsSaved) {
  start();
  EXPECT_EQ(ctl({"get", "IKE.EXCHANGE_TIMEOUT"}), printed("60\n"));
  EXPECT_EQ(ctl({"set", "IKE.EXCHANGE_TIMEOUT=120"}).exitCode, 0);
  EXPECT_EQ(ctl({"get", "IKE.EXCHANGE_TIMEOUT"}), printed("120\n"));
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("\n        EXCHANGE_TIMEOUT=60\n"))
      << "nothing is saved yet";
  EXPECT_EQ(ctl({"save"}).exitCode, 0);
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("\n        EXCHANGE_TIMEOUT=120\n"));
  stop();

  start();
  EXPECT_EQ(ctl({"get", "IKE.EXCHANGE_TIMEOUT"}), printed("120\n"));
  EXPECT_THAT(host::readFile(settingsPath), HasSubstr("\n        EXCHANGE_TIMEOUT=120\n"));
}

TEST_F(SettingsStore, ChangesInTheFileOnlyWhatWasSet) {
  host::writeFile(settingsPath, example);
  start();
  EXPECT_EQ(ctl({"save"}).exitCode, 0);
  EXPECT_EQ(host::readFile(settingsPath), example);

  EXPECT_EQ(ctl({"set", "LOG.LANGUAGE=LOG_LANG_RUS", "USERS[1].NAME=berta"}).exitCode, 0);
  EXPECT_EQ(ctl({"save"}).exitCode, 0);
  auto expected = valuesOf(example);
  expected["LOG.LANGUAGE"] = "LOG_LANG_RUS";
  expected["USERS[1].NAME"] = "berta";
  EXPECT_EQ(valuesOf(host::readFile(settingsPath)), expected);
}

TEST_F(SettingsStore, KeepsTheUserList) {
  host::writeFile(settingsPath, example);
  start();
  EXPECT_EQ(ctl({"user", "add", "carla", "PMP_TIMEOUT=25"}).exitCode, 0);
  EXPECT_EQ(ctl({"user", "del", "alice"}).exitCode, 0);
  EXPECT_EQ(ctl({"save"}).exitCode, 0);
  stop();

  start();
  EXPECT_EQ(ctl({"get", "USERS[0].NAME"}), printed("bob\n"));
  EXPECT_EQ(ctl({"get", "USERS[1].NAME"}), printed("carla\n"));
  EXPECT_EQ(ctl({"get", "USERS[1].PMP_TIMEOUT"}), printed("25\n"));
  EXPECT_EQ(valuesOf(host::readFile(settingsPath)).count("USERS[2].NAME"), 0U);
}

TEST_F(SettingsStore, TakesOverTheSettingsOfEarlierVersions) {
  const std::string legacyPath = stateDir + "/localsettings.xml";
  host::writeFile(legacyPath, sourceFile("examples/localsettings.xml"));
  start();
  EXPECT_FALSE(host::exists(legacyPath));
  const char* const rows[][2] = {
      {"POLICY.LOCAL_CERT_SUBJECT", "CN=Gateway 7, O=Example"},
      {"POLICY.PMP_LOGLEVEL", "_LL_DETAILS"},
      {"POLICY.SYSTEM_LSP_SOURCE", "SOURCE_PMP"},
      {"POLICY.PMP_SERVERS", "pmp1.example.com, pmp2.example.com"},
      {"POLICY.PMP_AUTH", "PMPAUTH_SIG"},
      {"POLICY.PMP_IDTYPE", "PMPID_DN"},
      {"POLICY.PMP_IDDATA", ""},
      {"IKE.NATT_POLICY", "NATT_POLICY_STD_FORCE"},
      {"IKE.IKE_PORT", "500"},
  };
  for (const auto& [name, value] : rows) {
    EXPECT_EQ(ctl({"get", name}), printed(std::string(value) + "\n")) << name;
  }
  EXPECT_EQ(ctl({"set", "IKE.NATT_POLICY=NATT_POLICY_STD"}).exitCode, 0);
  EXPECT_EQ(ctl({"save"}).exitCode, 0);
  stop();

  start();
  EXPECT_EQ(ctl({"get", "POLICY.PMP_SERVERS"}), printed("pmp1.example.com, pmp2.example.com\n"));
  EXPECT_EQ(ctl({"get", "IKE.NATT_POLICY"}), printed("NATT_POLICY_STD\n"));
}

TEST_F(SettingsStore, DoesNotImportWhenItHasASettingsFile) {
  const std::string legacyPath = stateDir + "/localsettings.xml";
  const std::string legacy = sourceFile("examples/localsettings.xml");
  host::writeFile(legacyPath, legacy);
  host::writeFile(settingsPath, example);
  start();
  EXPECT_EQ(ctl({"get", "IKE.NATT_POLICY"}), printed("NATT_POLICY_AUTO\n"));
  EXPECT_EQ(host::readFile(legacyPath), legacy);
}

TEST_F(SettingsStore, StartsWithTheDefaultsIfTheOldSettingsAreMalformed) {
  const std::string legacyPath = stateDir + "/localsettings.xml";
  std::string deep;
  for (int i = 0; i < 200'000; ++i) deep += "<a>";
  for (const std::string& text : {std::string("<LocalSettings><Module"), deep, std::string()}) {
    for (const auto& entry : std::filesystem::directory_iterator(stateDir)) {
      std::filesystem::remove(entry);
    }
    host::writeFile(legacyPath, text);
    start();
    EXPECT_EQ(ctl({"get", "IKE.NATT_POLICY"}), printed("NATT_POLICY_STD\n"));
    EXPECT_FALSE(host::exists(legacyPath));
    stop();
  }
}

}  // namespace
}  // namespace system_testing
