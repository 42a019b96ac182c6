#include <sys/stat.h>
#include <unistd.h>

#include "tests/client/verbs/client_test.h"
#include "tests/module/child_process.h"
#include "tests/support/another_user.h"

namespace system_testing {
namespace {

class Backup : public Client {
 protected:
  std::string fileWith(const std::string& text) const {
    host::writeFile(path, text);
    return path;
  }

  const std::string path = directory.path + "backup";
};

TEST_F(Backup, IsWhatASaveWouldWrite) {
  EXPECT_EQ(out({"backup"}), sourceFile("examples/localsettings.ini"));
  setLines({"IKE.QCD_SECRET= s3cret", "IKE.DPD_IDLE_TIME=77", "UPDATE.PATH=\xff=end="});
  (void)out({"user", "add", "eve"});
  (void)out({"user", "del", "alice"});
  const std::string backup = out({"backup"});
  EXPECT_NE(backup, host::readFile(settingsPath));
  (void)out({"save"});
  EXPECT_EQ(backup, host::readFile(settingsPath));
}

TEST_F(Backup, FileIsForItsOwnerAndReplacesNoneUnlessForced) {
  const mode_t before = umask(0);
  EXPECT_EQ(ctl({"backup", path}), printed(""));
  umask(before);
  EXPECT_EQ(host::readFile(path), out({"backup"}));
  struct stat status {};
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);

  host::writeFile(path, "something else");
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  EXPECT_EQ(ctl({"backup", path}), failed(74, path + " exists; --force replaces it"));
  EXPECT_EQ(host::readFile(path), "something else");
  EXPECT_EQ(ctl({"backup", "--force", path}), printed(""));
  EXPECT_EQ(host::readFile(path), out({"backup"}));
  ASSERT_EQ(stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(Backup, NeverReplacesWhatIsNoFile) {
  ASSERT_EQ(symlink("/dev/null", path.c_str()), 0);
  EXPECT_EQ(ctl({"backup", "--force", path}), failed(74, path + " is not a regular file"));
  EXPECT_EQ(ctl({"backup", "--force", directory.path + "none/backup"}).exitCode, 74);
}

TEST_F(Backup, CanBeRestoredWhateverHasChanged) {
  setLines({"IKE.QCD_SECRET=s3cret", "UPDATE.PATH=\xff", "LOG.WALL_ON=1"});
  for (const char* user : {"dora", "eve", "carl"}) (void)out({"user", "add", user});
  const std::string backup = out({"backup"});
  const std::string all = out({"show", "--secrets"});

  EXPECT_EQ(ctl({"restore", fileWith(backup)}), printed("nothing to change\n"));
  EXPECT_EQ(ctlWith("{\"USERS\": {\"zoe\": {}, \"carl\": {\"PMP_TIMEOUT\": 99}, \"bob\": {}}}",
                    {"apply", "--exclusive", "-"})
                .exitCode,
            0);
  EXPECT_NE(out({"show", "--secrets"}), all);
  const std::string changed = out({"backup"});
  EXPECT_THAT(ctl({"restore", "--check", "--diff", path}).out,
              HasSubstr("IKE.QCD_SECRET: (hidden) -> (hidden)\n"));
  EXPECT_EQ(out({"backup"}), changed);
  EXPECT_EQ(ctl({"restore", path}).exitCode, 0);
  EXPECT_EQ(out({"backup"}), backup);
  EXPECT_EQ(out({"show", "--secrets"}), all);
  EXPECT_EQ(ctl({"restore", path}), printed("nothing to change\n"));
}

TEST_F(Backup, OfAnotherOrderOfUsersIsRestoredInThatOrder) {
  for (const char* user : {"dora", "eve"}) (void)out({"user", "add", user});
  (void)out({"set", "USERS[dora].PMP_TIMEOUT=20", "USERS[eve].PMP_TIMEOUT=30"});
  const std::string backup = out({"backup"});
  for (const char* user : {"alice", "dora"}) (void)out({"user", "del", user});
  for (const char* user : {"dora", "alice"}) (void)out({"user", "add", user});
  EXPECT_EQ(out({"user", "list"}), "bob\neve\ndora\nalice\n");
  EXPECT_EQ(ctlWith(backup, {"restore", "-"}).exitCode, 0);
  EXPECT_EQ(out({"user", "list"}), "alice\nbob\ndora\neve\n");
  EXPECT_EQ(out({"backup"}), backup);
}

TEST_F(Backup, AsJsonCanBeRestoredToo) {
  setLines({"IKE.QCD_SECRET=s3\"cr\\et", "UPDATE.PATH=d\xc3\xa9j\xc3\xa0"});
  (void)out({"user", "add", "a].b=\"c"});
  const std::string backup = out({"backup", "--json"});
  EXPECT_EQ(json::parse(backup)["IKE"]["IKE_PORT"], 500);
  EXPECT_EQ(json::parse(backup)["IKE"]["QCD_SECRET"], "s3\"cr\\et");
  EXPECT_EQ(ctlWith("{}", {"apply", "--exclusive", "-"}).exitCode, 0);
  EXPECT_EQ(ctlWith(backup, {"restore", "-"}).exitCode, 0);
  EXPECT_EQ(out({"backup", "--json"}), backup);
}

TEST_F(Backup, AsJsonNamesWhatJsonCannotHold) {
  setLines({"UPDATE.PATH=\xff", "UPDATE.UPDATE_URI=\xc3", "UPDATE.URL=\xc3\xa9"});
  EXPECT_EQ(ctl({"backup", "--json"}),
            failed(65,
                   "UPDATE.PATH: is not UTF-8, which JSON cannot hold; leave out --json\n"
                   "UPDATE.UPDATE_URI: is not UTF-8, which JSON cannot hold; leave out --json\n"
                   "there is no backup"));
}

TEST_F(Backup, IsRefusedToWhoMayNotSeeSecrets) {
  if (const auto reason = testing_support::whyNoOtherUser(); !reason.empty()) {
    GTEST_SKIP() << reason;
  }
  ASSERT_EQ(chmod(directory.path.c_str(), 0755), 0);
  ASSERT_EQ(chmod(socketPath.c_str(), 0666), 0);
  host::runInChild([&] {
    testing_support::dropRights();
    EXPECT_EQ(ctl({"backup"}),
              failed(77,
                     "IKE.QCD_SECRET: a secret, which only who may write can read\n"
                     "there is no backup"));
  });
}

}  // namespace
}  // namespace system_testing
