// What the agent refuses to start with, and how it says so.
#include <gmock/gmock.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/system/system_test.h"

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

namespace system_testing {
namespace {

constexpr int BAD_USAGE = 64;
constexpr int UNAVAILABLE = 69;
constexpr int BAD_CONFIG = 78;

class Refusal : public SystemTest {
 protected:
  /// Expects that an agent with these options ends with the status and one line of error.
  void expectRefusal(int status, const std::string& reason, const Options& options = {}) {
    EXPECT_EQ(exitStatusOf(arguments(options)), status) << reason;
    EXPECT_NE(lineWith(agent->logLines(), {"lparams_agent: error: " + reason}), "")
        << "is missing: " << reason << "\nin: " << agent->log();
    EXPECT_THAT(agent->log(), Not(HasSubstr("listening"))) << reason;
  }
};

TEST_F(Refusal, OfASettingsFileThatTheModuleMustNotBeGiven) {
  const std::string damaged = "no complete settings in " + stateDir + ": " + settingsPath;
  const struct {
    std::function<void()> prepare;
    std::string reason;
  } rows[] = {
      {[&] { host::writeFile(settingsPath, ""); }, damaged + " (it is empty); repair"},
      {[&] { host::writeFile(settingsPath, "=="); }, damaged + " (it does not begin with /ROOT=)"},
      {[&] { host::writeFile(settingsPath, "\xEF\xBB\xBF="); },
       damaged + " (it does not begin with /ROOT=)"},
      {[&] { std::filesystem::create_directory(settingsPath); },
       settingsPath + " cannot be used: it is not a regular file"},
      {[&] { EXPECT_EQ(mkfifo(settingsPath.c_str(), 0600), 0); },
       settingsPath + " cannot be used: it is not a regular file"},
      {[&] { std::filesystem::create_symlink("/dev/zero", settingsPath); },
       settingsPath + " cannot be opened: Too many levels of symbolic links"},
  };
  for (const auto& row : rows) {
    std::filesystem::remove(settingsPath);
    row.prepare();
    expectRefusal(BAD_CONFIG, row.reason);
    EXPECT_TRUE(std::filesystem::is_symlink(settingsPath) || host::exists(settingsPath))
        << "is left as it is: " << row.reason;
  }
}

TEST_F(Refusal, OfAStateDirectoryThatIsNone) {
  const std::string missing = directory.path + "missing";
  expectRefusal(BAD_CONFIG, "state directory " + missing, {{"--state-dir", missing}});
  const std::string file = directory.path + "file";
  host::writeFile(file, "");
  expectRefusal(BAD_CONFIG, "state directory " + file, {{"--state-dir", file}});
}

TEST_F(Refusal, OfAModuleThatIsNone) {
  const std::string missing = directory.path + "missing.so";
  expectRefusal(UNAVAILABLE,
                "module " + missing + " cannot be loaded: " + missing + ": cannot open",
                {{"--module", missing}});
  const std::string text = directory.path + "text.so";
  host::writeFile(text, std::string(1000, 't'));
  expectRefusal(UNAVAILABLE, "module " + text + " cannot be loaded: ", {{"--module", text}});
  expectRefusal(UNAVAILABLE,
                "module libm.so.6 is not the settings module: ", {{"--module", "libm.so.6"}});
}

TEST_F(Refusal, OfASocketPathThatIsTooLong) {
  const size_t longest = 107;
  const std::string name(longest - directory.path.size(), 's');
  start({{"--socket", directory.path + name}});
  EXPECT_TRUE(BridgeClient(directory.path + name).greet());
  stop();
  expectRefusal(UNAVAILABLE,
                "socket " + directory.path + name + "s cannot be used: a socket's path ",
                {{"--socket", directory.path + name + "s"}});
  expectRefusal(UNAVAILABLE, "socket  cannot be used", {{"--socket", ""}});
}

// The agent makes paths whole, but for one that fits only as it was given.
TEST_F(Refusal, IsNotOfASocketPathThatIsShortEnoughAsItWasGiven) {
  const auto before = std::filesystem::current_path();
  const std::string place = std::filesystem::canonical(directory.path).string() + "/";
  for (const size_t length : {107, 108}) {
    const std::string deep = place + std::string(length - 2 - place.size(), 'd');
    std::filesystem::create_directory(deep);
    std::filesystem::permissions(deep, std::filesystem::perms::owner_all);
    std::filesystem::current_path(deep);
    start({{"--socket", "s"}});
    EXPECT_TRUE(BridgeClient("s").greet());
    EXPECT_TRUE(lineWith(agent->logLines(), {"listening"})
                    .ends_with("socket=" + (length == 107 ? deep + "/s" : "s")))
        << agent->log();
    stop();
  }
  std::filesystem::current_path(before);
}

TEST_F(Refusal, OfASocketWhoseDirectoryCannotBeMade) {
  const std::string path = directory.path + "missing/deeper/agent.sock";
  expectRefusal(UNAVAILABLE, "socket " + path + " cannot be made: ", {{"--socket", path}});
}

TEST_F(Refusal, OfASocketInWhosePlaceIsSomethingElse) {
  host::writeFile(socketPath, "precious");
  expectRefusal(UNAVAILABLE, "socket " + socketPath + " is in the way: it is not a socket");
  EXPECT_EQ(host::readFile(socketPath), "precious");
}

TEST_F(Refusal, OfASocketThatAnotherAgentUses) {
  start();
  const BridgeClient client = connect();
  const std::string otherState = directory.path + "other";
  std::filesystem::create_directory(otherState);
  std::filesystem::permissions(otherState, std::filesystem::perms::owner_all);
  AgentProcess other(directory.path + "other-", arguments({{"--state-dir", otherState}}));
  EXPECT_EQ(other.exitStatus(), UNAVAILABLE);
  EXPECT_NE(
      lineWith(other.logLines(), {"error: socket " + socketPath + " is in use by another agent"}),
      "");
  EXPECT_EQ(client.read("ADMIN").result, 1) << "the first one goes on";
  EXPECT_EQ(connect().read("ADMIN").result, 1);
}

TEST_F(Refusal, IsNotOfASocketThatAnAgentLeftBehind) {
  start();
  agent->signal(SIGKILL);
  EXPECT_EQ(agent->exitStatus(), 128 + SIGKILL);
  EXPECT_TRUE(host::exists(socketPath));
  start();
  EXPECT_EQ(connect().read("ADMIN").result, 1);
}

TEST_F(Refusal, OfACommandLineThatIsNotUnderstood) {
  const std::vector<std::string> lines[] = {
      {"--nonsense"}, {"--socket"}, {"start"}, {"--state-dir", stateDir, "--nonsense=1"}};
  for (const auto& line : lines) {
    EXPECT_EQ(exitStatusOf(line), BAD_USAGE) << line.back();
    EXPECT_NE(agent->log(), "") << line.back();
    EXPECT_EQ(agent->output(), "") << line.back();
  }
}

TEST_F(SystemTest, HelpNamesEveryOptionAndItsDefault) {
  EXPECT_EQ(exitStatusOf({"--help"}), 0);
  EXPECT_THAT(agent->output(),
              AllOf(HasSubstr("--state-dir"), HasSubstr("/var/lib/lparams"), HasSubstr("--socket"),
                    HasSubstr("/run/lparams/agent.sock"), HasSubstr("--module"),
                    HasSubstr("/lparams_server.so"), HasSubstr("--version"), HasSubstr("SIGTERM")));
  EXPECT_EQ(agent->log(), "");
}

TEST_F(SystemTest, VersionIsOneLine) {
  EXPECT_EQ(exitStatusOf({"--version"}), 0);
  EXPECT_THAT(agent->output(), MatchesRegex("lparams_agent [0-9]+\\.[0-9]+\\.[0-9]+\n"));
  EXPECT_EQ(agent->log(), "");
}

}  // namespace
}  // namespace system_testing
