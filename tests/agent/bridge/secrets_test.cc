#include "agent/bridge/secrets.h"

#include <gtest/gtest.h>

#include "lparams/catalogue/catalogue.h"
#include "tests/agent/bridge/served_module.h"
#include "tests/support/param_forms.h"

namespace agent {
namespace {

using agent_testing::ServedModule;
using LPARAMS::Server::IKE_t;
using testing_support::wireBytes;

TEST(Secrets, AreThoseOfTheCatalogue) {
  EXPECT_EQ(secretsOf("IKE"), "IKE.QCD_SECRET");
  for (const char* group : {"LOG", "UPDATE", "POLICY", "ADMIN", "USERS", "FOO", ""}) {
    EXPECT_EQ(secretsOf(group), "") << group;
  }
}

TEST(Secrets, AreTakenOutAndNothingElse) {
  IKE_t ike;
  ike.IKE_PORT.value = 0;  // what the bridge did not check stays
  const std::string without = wireBytes(ike);
  ike.QCD_SECRET.value = "s3cret";
  EXPECT_EQ(withoutSecrets("IKE", wireBytes(ike)), without);
}

class Readers : public testing::Test {
 protected:
  explicit Readers(const ServedModule::Rules& rules = {}) : module_(rules) {
    module_.server().IKE->QCD_SECRET.value = "s3cret";
  }

  ServedModule module_;
  BridgeSession stranger_{agent_testing::strangersUid(), 65534, 99, {}};
};

TEST_F(Readers, WhoMayNotWriteGetNoSecretAndAreToldSo) {
  const bridge::Reply full = module_.read("IKE");
  EXPECT_NE(full.output.find("s3cret"), std::string::npos);
  EXPECT_EQ(full.text, "");
  const bridge::Reply reply = module_.read(stranger_, "IKE");
  EXPECT_EQ(reply.result, 1);
  EXPECT_EQ(reply.revision, full.revision);
  EXPECT_EQ(reply.output, withoutSecrets("IKE", full.output));
  EXPECT_EQ(reply.text, "left out, because the session may not write: IKE.QCD_SECRET");
}

class UncheckedReaders : public Readers {
 protected:
  UncheckedReaders() : Readers({.acceptAny = true}) {}
};

TEST_F(UncheckedReaders, GetWhatTheModuleGives) {
  EXPECT_EQ(module_.read(stranger_, "IKE"), module_.read("IKE"));
}

}  // namespace
}  // namespace agent
