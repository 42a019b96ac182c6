#include "tests/client/verbs/client_test.h"

namespace system_testing {
namespace {

TEST_F(Client, ShowMakesACommentOfWhatCouldNotBeTakenBack) {
  stop();
  std::string text = sourceFile("examples/localsettings.ini");
  text.replace(text.find("SCHEDULE="), 9, "SCHEDULE=a\tb");
  host::writeFile(settingsPath, text);
  start();
  EXPECT_THAT(out({"show", "UPDATE"}), HasSubstr("\n# UPDATE.SCHEDULE=\"a\\x09b"));
  (void)out({"user", "del", "alice", "bob"});
  EXPECT_EQ(out({"show", "USERS"}), "# USERS (no entries)\n");
  EXPECT_EQ(ctl({"show", "UPDTE"}), failed(65, "UPDTE: no such parameter; did you mean UPDATE?"));
}

}  // namespace
}  // namespace system_testing
