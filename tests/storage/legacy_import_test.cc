// What becomes of the settings of earlier versions: the tables of old names and values.
#include <gmock/gmock.h>

#include <algorithm>

#include "tests/catalogue/expected_groups.h"
#include "tests/module/loaded_module.h"
#include "tests/module/lock_calls.h"
#include "tests/support/recording_load_log.h"

using testing::Contains;
using testing::IsEmpty;

namespace host {
namespace {

using namespace LPARAMS::Server;

std::string element(const std::string& tag, const std::string& name, const std::string& content) {
  return "<" + tag + " Name=\"" + name + "\">" + content + "</" + tag + ">\n";
}
std::string param(const std::string& name, const std::string& content) {
  return element("Param", name, content);
}
std::string userModule(const std::string& params) {
  return element("Module", "USER_ACT_MODULE_ID", params);
}
std::string ikeModule(const std::string& params) {
  return element("Module", "ISAKMP_MODULE_ID", params);
}
std::string settings(const std::string& modules) {
  return "<LocalSettings>\n" + modules + "</LocalSettings>\n";
}

class LegacyImport : public ModuleTest {
 protected:
  /// Imports the document into a fresh module.
  void import(const std::string& xml) {
    module.reload();
    writeFile(directory.path + "localsettings.xml", xml);
    testing_support::RecordingLoadLog log;
    EXPECT_TRUE(root().load(&log));
    EXPECT_THAT(log.reports, IsEmpty());
    EXPECT_FALSE(exists(directory.path + "localsettings.xml"));
    EXPECT_FALSE(exists(settingsPath)) << "the import writes no file";
    EXPECT_FALSE(root().isChanged());
  }

  void importUser(const std::string& params) { import(settings(userModule(params))); }
  void importIke(const std::string& params) { import(settings(ikeModule(params))); }

  POLICY_t& policy() { return *root().POLICY; }
  int nattPolicy() { return root().IKE->NATT_POLICY.value; }

  const std::string defaults = LPARAMS::Server::expectedFile(LPARAMS::Server::initially);
};

TEST_F(LegacyImport, ConvertsTheNatTraversalPolicy) {
  const struct {
    const char* content;
    int policy;
  } rows[] = {
      {"0", NATT_POLICY_DISABLED},
      {"1", NATT_POLICY_AUTO},
      {"2", NATT_POLICY_STD},
      {"3", NATT_POLICY_OLD},
      {"4", NATT_POLICY_AUTO},
      {"100", NATT_POLICY_AUTO},
      {"101", NATT_POLICY_AUTO_FORCE},
      {"102", NATT_POLICY_STD_FORCE},
      {"103", NATT_POLICY_OLD_FORCE},
      {"104", NATT_POLICY_AUTO},
      {"130", NATT_POLICY_AUTO},
      {"-1", NATT_POLICY_AUTO},
      {"-2", NATT_POLICY_AUTO},
      {"02", NATT_POLICY_STD},
      {"2147483647", NATT_POLICY_AUTO},
      // Not a number.
      {"", NATT_POLICY_DISABLED},
      {"abc", NATT_POLICY_DISABLED},
      {"2x", NATT_POLICY_DISABLED},
      {"0x2", NATT_POLICY_DISABLED},
      {"99999999999", NATT_POLICY_DISABLED},
  };
  for (const auto& [content, expected] : rows) {
    importIke(param("ike_nat_t_policy", content));
    EXPECT_EQ(nattPolicy(), expected) << content;
  }
}

TEST_F(LegacyImport, TakesTheLastOfSeveralNatTraversalPolicies) {
  importIke(param("ike_nat_t_policy", "3") + param("ike_nat_t_policy", "2") + param("x", "0"));
  EXPECT_EQ(nattPolicy(), NATT_POLICY_STD);
  import(settings(ikeModule(param("ike_nat_t_policy", "3")) +
                  ikeModule(param("ike_nat_t_policy", "0"))));
  EXPECT_EQ(nattPolicy(), NATT_POLICY_DISABLED);
}

TEST_F(LegacyImport, TakesTheCertificatesSubjectAsItIs) {
  importUser(param("LOCAL_CERT_FOR_PM_SUBJECT", "C=XX, O=Some One, CN=gate"));
  EXPECT_EQ(policy().LOCAL_CERT_SUBJECT.value, "C=XX, O=Some One, CN=gate");
}

TEST_F(LegacyImport, TakesTheLogLevelAsANumber) {
  for (const int level : {0, 2, 3}) {
    importUser(param("PMS_LOG_LEVEL", std::to_string(level)));
    EXPECT_EQ(policy().PMP_LOGLEVEL.value, level);
  }
  importUser(param("PMS_LOG_LEVEL", "abc"));
  EXPECT_EQ(policy().PMP_LOGLEVEL.value, LL_DISABLED) << "what is no number is 0";
}

TEST_F(LegacyImport, LetsTheSnapshotResetALogLevelThatHasNoName) {
  for (const char* level : {"7", "-1", "4"}) {
    importUser(param("PMS_LOG_LEVEL", level));
    EXPECT_EQ(policy().PMP_LOGLEVEL.value, LL_EVENTS) << level;
  }
}

TEST_F(LegacyImport, TakesTheServersAsPolicySource) {
  module.reload();
  importUser(param("POLICY_SOURCE_TYPE", "1") + param("POLICY_SOURCE", "10.0.0.1, 10.0.0.2"));
  EXPECT_EQ(policy().SYSTEM_LSP_SOURCE.value, SOURCE_PMP);
  EXPECT_EQ(policy().PMP_SERVERS.value, "10.0.0.1, 10.0.0.2");
  EXPECT_EQ(policy().PMP_AUTH.value, PMPAUTH_SIG);
  EXPECT_EQ(policy().PMP_IDTYPE.value, PMPID_DN);
  EXPECT_EQ(policy().PMP_IDDATA.value, "");
  EXPECT_EQ(policy().SYSTEM_LSP_FROM_FILE.value, "");
}

TEST_F(LegacyImport, TakesAFileAsPolicySource) {
  importUser(param("POLICY_SOURCE", "/var/lib/policy.lsp") + param("POLICY_SOURCE_TYPE", "2"));
  EXPECT_EQ(policy().SYSTEM_LSP_FROM_FILE.value, "/var/lib/policy.lsp");
  EXPECT_EQ(policy().SYSTEM_LSP_SOURCE.value, SOURCE_FILE);
  EXPECT_EQ(policy().PMP_SERVERS.value, "");
}

TEST_F(LegacyImport, OverwritesTheIdentityWhenThePolicyComesFromServers) {
  policy().PMP_AUTH.value = PMPAUTH_PSK;
  policy().PMP_IDDATA.value = "before";
  writeFile(directory.path + "localsettings.xml",
            settings(userModule(param("POLICY_SOURCE_TYPE", "1") + param("POLICY_SOURCE", "s"))));
  testing_support::RecordingLoadLog log;
  EXPECT_TRUE(root().load(&log));
  EXPECT_EQ(policy().PMP_AUTH.value, PMPAUTH_SIG);
  EXPECT_EQ(policy().PMP_IDDATA.value, "");
}

TEST_F(LegacyImport, AssignsEachValueUnderItsParametersLock) {
  writeFile(directory.path + "localsettings.xml",
            settings(userModule(param("LOCAL_CERT_FOR_PM_SUBJECT", "CN=gate") +
                                param("POLICY_SOURCE_TYPE", "1") + param("POLICY_SOURCE", "s")) +
                     ikeModule(param("ike_nat_t_policy", "2"))));
  testing_support::RecordingLoadLog log;
  recordTakings();
  EXPECT_TRUE(root().load(&log));
  auto taken = locksTaken();
  taken.erase(std::ranges::find(taken, &root()), taken.end());  // those of the snapshot
  using Locks = std::initializer_list<basekit::ObjectLevelLockable*>;
  for (auto* lock : Locks{&policy().LOCAL_CERT_SUBJECT, &policy().SYSTEM_LSP_SOURCE,
                          &policy().PMP_SERVERS, &policy().PMP_AUTH, &policy().PMP_IDTYPE,
                          &policy().PMP_IDDATA, &root().IKE->NATT_POLICY}) {
    EXPECT_THAT(taken, Contains(lock));
  }
}

TEST_F(LegacyImport, TakesTheLastTypeAndTheLastSourceOfAModule) {
  importUser(param("POLICY_SOURCE_TYPE", "1") + param("POLICY_SOURCE", "first") +
             param("POLICY_SOURCE", "last") + param("POLICY_SOURCE_TYPE", "2"));
  EXPECT_EQ(policy().SYSTEM_LSP_SOURCE.value, SOURCE_FILE);
  EXPECT_EQ(policy().SYSTEM_LSP_FROM_FILE.value, "last");
  EXPECT_EQ(policy().PMP_SERVERS.value, "");
}

TEST_F(LegacyImport, TakesAnEmptySourceForOneThatOccurred) {
  importUser(param("POLICY_SOURCE_TYPE", "2") + param("POLICY_SOURCE", ""));
  EXPECT_EQ(policy().SYSTEM_LSP_SOURCE.value, SOURCE_FILE);
}

TEST_F(LegacyImport, ForgetsTypeAndSourceAtTheEndOfTheModule) {
  import(settings(userModule(param("POLICY_SOURCE_TYPE", "2")) +
                  userModule(param("POLICY_SOURCE", "file"))));
  EXPECT_EQ(root().rawSettings, defaults);
}

TEST_F(LegacyImport, AppliesTheSourcesOfSeveralModulesOneAfterTheOther) {
  import(settings(userModule(param("POLICY_SOURCE_TYPE", "1") + param("POLICY_SOURCE", "server"))) +
         settings(userModule(param("POLICY_SOURCE_TYPE", "2") + param("POLICY_SOURCE", "file"))));
  EXPECT_EQ(policy().SYSTEM_LSP_SOURCE.value, SOURCE_FILE);
  EXPECT_EQ(policy().PMP_SERVERS.value, "server");
  EXPECT_EQ(policy().SYSTEM_LSP_FROM_FILE.value, "file");
}

TEST_F(LegacyImport, ChangesNothingByWhatItDoesNotKnow) {
  const std::string documents[] = {
      "",
      settings(""),
      settings(userModule("")),
      // A type that is neither of the two, whole and exact.
      settings(userModule(param("POLICY_SOURCE_TYPE", "3") + param("POLICY_SOURCE", "x"))),
      settings(userModule(param("POLICY_SOURCE_TYPE", "01") + param("POLICY_SOURCE", "x"))),
      settings(userModule(param("POLICY_SOURCE_TYPE", "1 ") + param("POLICY_SOURCE", "x"))),
      settings(userModule(param("POLICY_SOURCE_TYPE", "12") + param("POLICY_SOURCE", "x"))),
      settings(userModule(param("POLICY_SOURCE_TYPE", "") + param("POLICY_SOURCE", "x"))),
      // One of the two alone.
      settings(userModule(param("POLICY_SOURCE_TYPE", "2"))),
      settings(userModule(param("POLICY_SOURCE", "file"))),
      // Names in other letters or in the module of the other.
      settings(userModule(param("pms_log_level", "3"))),
      settings(userModule(param("PMS_LOG_LEVEL2", "3"))),
      settings(userModule(param("ike_nat_t_policy", "3"))),
      settings(ikeModule(param("IKE_NAT_T_POLICY", "3"))),
      settings(ikeModule(param("PMS_LOG_LEVEL", "3"))),
      settings(element("Module", "user_act_module_id", param("PMS_LOG_LEVEL", "3"))),
      settings(element("Module", "OTHER_MODULE_ID", param("PMS_LOG_LEVEL", "3"))),
      settings("<Module>" + param("PMS_LOG_LEVEL", "3") + "</Module>"),
      settings("<Module name=\"USER_ACT_MODULE_ID\">" + param("PMS_LOG_LEVEL", "3") + "</Module>"),
      // Elements in other letters, or not where they belong.
      settings(userModule(element("param", "PMS_LOG_LEVEL", "3"))),
      settings(userModule("<Param>3</Param>")),
      settings(userModule("<Group>" + param("PMS_LOG_LEVEL", "3") + "</Group>")),
      settings(param("PMS_LOG_LEVEL", "3")),
      userModule(param("PMS_LOG_LEVEL", "3")),
      "<localsettings>" + userModule(param("PMS_LOG_LEVEL", "3")) + "</localsettings>",
      "<Root>" + settings(userModule(param("PMS_LOG_LEVEL", "3"))) + "</Root>",
  };
  for (const std::string& document : documents) {
    import(document);
    EXPECT_EQ(root().rawSettings, defaults) << document;
  }
}

TEST_F(LegacyImport, ReadsADocumentWithADeclarationCommentsAndEntities) {
  import("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- settings -->\n" +
         settings(userModule("<!-- log -->" + param("PMS_LOG_LEVEL", "3") +
                             param("LOCAL_CERT_FOR_PM_SUBJECT", "O=A &amp; B"))));
  EXPECT_EQ(policy().PMP_LOGLEVEL.value, 3);
  EXPECT_EQ(policy().LOCAL_CERT_SUBJECT.value, "O=A & B");
}

}  // namespace
}  // namespace host
