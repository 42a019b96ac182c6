#include <sys/stat.h>

#include "tests/client/verbs/client_test.h"
#include "tests/module/child_process.h"
#include "tests/support/another_user.h"

namespace system_testing {
namespace {

TEST_F(Client, OutputThatCannotBeWrittenIsAnError) {
  EXPECT_EQ(
      client_testing::runClient({"--socket", socketPath, "list"}, {.outputPath = "/dev/full"}),
      failed(74, "cannot write the output"));
}

TEST_F(Client, WhoMayNotWriteSeesNoSecretAndChangesNothing) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  setLines({"IKE.QCD_SECRET=s3cret"});
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(socketPath.c_str(), 0666), 0);
  host::runInChild([&] {
    testing_support::dropRights();
    EXPECT_EQ(ctl({"get", "IKE.QCD_SECRET"}),
              failed(77, "IKE.QCD_SECRET: a secret, which only who may write can read"));
    EXPECT_THAT(out({"show", "--secrets"}), HasSubstr("IKE.QCD_SECRET=(hidden)\n"));
    EXPECT_EQ(json::parse(out({"list", "--json"}))["IKE"]["QCD_SECRET"], nullptr);
    EXPECT_EQ(ctl({"set", "IKE.IKE_PORT=501"}).exitCode, 77);
    EXPECT_EQ(ctl({"save"}).exitCode, 77);
  });
  EXPECT_EQ(out({"get", "IKE.IKE_PORT"}), "500\n");
}

}  // namespace
}  // namespace system_testing
