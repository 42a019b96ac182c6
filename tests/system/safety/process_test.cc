// The agent as a process: signals, descriptors, modes, the journal and the service manager.
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <fstream>
#include <list>
#include <sstream>
#include <thread>

#include "agent/base/exit_status.h"
#include "bridge/protocol.h"
#include "tests/support/held_sync.h"
#include "tests/support/records.h"
#include "tests/system/safety/agent_test.h"

namespace safety {
namespace {

using agent_testing::exampleSettings;
using agent_testing::RawClient;
using bridge::Reply;
using testing::HasSubstr;

class AgentProcess : public AgentTest {
 protected:
  AgentProcess() { state_.write(SETTINGS, exampleSettings()); }

  std::string inProc(const std::string& name) const {
    return "/proc/" + std::to_string(agent_->pid()) + "/" + name;
  }

  /// A number of a file in /proc that consists of "NAME: NUMBER" lines.
  static unsigned long long numberIn(const std::string& path, const std::string& name, int base) {
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
      if (line.starts_with(name + ":"))
        return std::stoull(line.substr(name.size() + 1), nullptr, base);
    }
    ADD_FAILURE() << "no " << name << " in " << path;
    return 0;
  }

  /// A client that waits for a save, which has begun. The save does not end by itself.
  std::unique_ptr<RawClient> beginSave() {
    auto client = std::make_unique<RawClient>(socket_);
    EXPECT_TRUE(client->greet());
    addManyUsers(*client);
    heldSync_.emplace(state_.at("localsettings.ini.good.new"));
    client->send(bridge::encode(bridge::Request(bridge::Command{13, 2})));
    heldSync_->waitForBegin();
    return client;
  }

  /// Fills the user list, so that the reply to a read of it is more than a socket takes at once.
  void addManyUsers(const RawClient& client) {
    testing_support::Settings settings;
    for (int i = 0; i < 400; ++i) listAdd(settings.userList)->NAME.value = std::string(10000, 'x');
    ASSERT_EQ(
        client.exchange(bridge::Command{13, 0, testing_support::encodeRecord(settings.userList)})
            .result,
        1);
  }

  static bridge::Request readOfUsers() {
    return bridge::Command{13, 1,
                           testing_support::encodeName(testing_support::Settings().userList)};
  }

  /// Starts an agent whose syncs can be held.
  void startHeld(const Arguments& options = {}) {
    const auto variables = testing_support::heldSync();
    start(options, {.environment = {variables.begin(), variables.end()}});
  }

  std::optional<testing_support::HeldSync> heldSync_;
};

TEST_F(AgentProcess, JournalPriorities) {
  start({"--journal"});
  set("IKE.IKE_PORT=501");
  state_.remove(SETTINGS);
  EXPECT_EQ(ctl({"save"}).exitCode, agent::EXIT_IO);
  EXPECT_EQ(stop(), 0);
  const char* const line =
      "(<3>lparams_agent: error|<4>lparams_agent: warning|<5>lparams_agent: notice|"
      "<6>lparams_agent: info): .*";
  std::istringstream lines(log());
  int count = 0;
  for (std::string text; std::getline(lines, text); ++count) {
    EXPECT_THAT(text, testing::MatchesRegex(line));
  }
  EXPECT_GE(count, 5);
  EXPECT_THAT(log(), HasSubstr("<3>lparams_agent: error: settings not saved"));
  EXPECT_THAT(log(), HasSubstr("<4>lparams_agent: warning: stopped with changes"));
  EXPECT_THAT(log(), HasSubstr("<6>lparams_agent: info: listening"));
}

class ServiceManager : public AgentProcess {
 protected:
  ServiceManager() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    (void)path_.copy(address.sun_path, sizeof address.sun_path - 1);
    (void)::bind(socketOfManager_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  }
  ~ServiceManager() override { (void)::close(socketOfManager_); }

  std::string next() const {
    char buffer[1000];
    const ssize_t size = ::recv(socketOfManager_, buffer, sizeof buffer, 0);
    return {buffer, static_cast<size_t>(std::max<ssize_t>(size, 0))};
  }

  /// That is more than a text for people.
  std::string nextMessage() const {
    std::string message;
    do message = next();
    while (message.starts_with("STATUS="));
    return message;
  }

  const std::string path_ = place_.at("notify");
  const int socketOfManager_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
};

TEST_F(ServiceManager, HearsOfStartAndEnd) {
  start({}, {.environment = {"NOTIFY_SOCKET=" + path_}});
  EXPECT_EQ(next(), "STATUS=listening on " + socket_);
  EXPECT_EQ(next(), "READY=1");
  EXPECT_EQ(ctl({"status"}).exitCode, 0);
  EXPECT_EQ(stop(), 0);
  EXPECT_EQ(next(), "STATUS=stopping: commands that have begun are carried out");
  EXPECT_EQ(next(), "STOPPING=1");
}

TEST_F(ServiceManager, HearsThatTheAgentIsAliveAsLongAsItRuns) {
  start({}, {.environment = {"NOTIFY_SOCKET=" + path_, "WATCHDOG_USEC=20000"}});
  EXPECT_EQ(nextMessage(), "READY=1");
  for (int i = 0; i < 5; ++i) EXPECT_EQ(nextMessage(), "WATCHDOG=1");
  EXPECT_EQ(stop(), 0);
  std::string message;
  while ((message = nextMessage()) == "WATCHDOG=1") continue;
  EXPECT_EQ(message, "STOPPING=1");
}

TEST_F(ServiceManager, HearsNothingWhileACommandIsStuckWithTheModulesLock) {
  const auto held = testing_support::heldSync();
  start({}, {.environment = {"NOTIFY_SOCKET=" + path_, "WATCHDOG_USEC=20000", held[0], held[1]}});
  set("IKE.IKE_PORT=501");
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  testing_support::HeldSync rename(state_.at(SETTINGS));
  client.send(bridge::encode(bridge::Request(bridge::Command{13, 2})));
  rename.waitForBegin();
  const auto messagesWithin = [this](int milliseconds) {
    int count = 0;
    pollfd waiting{socketOfManager_, POLLIN, 0};
    while (count < 100 && ::poll(&waiting, 1, milliseconds) == 1) count += next().empty() ? 0 : 1;
    return count;
  };
  (void)messagesWithin(0);
  EXPECT_LE(messagesWithin(100), 1) << "one look may have been over already";
  rename.letItEnd();
  EXPECT_EQ(nextMessage(), "WATCHDOG=1");
  EXPECT_EQ(std::get<Reply>(client.receive().value()).result, 1);
}

TEST_F(ServiceManager, IsNotToldOfAnotherProcess) {
  start({}, {.environment = {"NOTIFY_SOCKET=" + path_, "WATCHDOG_USEC=1000", "WATCHDOG_PID=1"}});
  EXPECT_EQ(ctl({"status"}).exitCode, 0);
  EXPECT_EQ(stop(), 0);
  EXPECT_EQ(nextMessage(), "READY=1");
  EXPECT_EQ(nextMessage(), "STOPPING=1");
}

TEST_F(AgentProcess, IgnoresWhatWouldEndIt) {
  start();
  const auto ignored = numberIn(inProc("status"), "SigIgn", 16);
  EXPECT_TRUE(ignored >> (SIGPIPE - 1) & 1);
  EXPECT_TRUE(ignored >> (SIGXFSZ - 1) & 1);
  EXPECT_EQ(numberIn(inProc("status"), "Umask", 8), 077u);
}

// The limit of the load's processor time is over with the load.
TEST_F(AgentProcess, MayComputeForAsLongAsItRuns) {
  start();
  const auto caught = numberIn(inProc("status"), "SigCgt", 16);
  EXPECT_FALSE(caught >> (SIGPROF - 1) & 1);
}

TEST_F(AgentProcess, PassesNoDescriptorOn) {
  start();
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  int looked = 0;
  for (const auto& entry : std::filesystem::directory_iterator(inProc("fd"))) {
    const std::string number = entry.path().filename();
    if (std::stoi(number) <= STDERR_FILENO) continue;
    ++looked;
    EXPECT_TRUE(numberIn(inProc("fdinfo/" + number), "flags", 8) & O_CLOEXEC)
        << std::filesystem::read_symlink(entry.path());
  }
  EXPECT_GE(looked, 4);  // the lock, the loop, the listener and the client
}

TEST_F(AgentProcess, WithoutStandardStreamsWritesTheLogToNoFile) {
  agent_.emplace(commandLine({}), Surroundings{.inChild = [] {
                   for (int stream = 0; stream <= STDERR_FILENO; ++stream) (void)::close(stream);
                 }});
  while (ctl({"status"}).exitCode != 0) std::this_thread::yield();
  for (const char* stream : {"fd/0", "fd/1", "fd/2"}) {
    EXPECT_EQ(std::filesystem::read_symlink(inProc(stream)), "/dev/null");
  }
  EXPECT_EQ(state("logClosed"), "yes");
  set("IKE.IKE_PORT=501");
  save();
  EXPECT_EQ(stop(), 0);
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings(501));
  EXPECT_EQ(state_.unsealedText(SHADOW_COPY), exampleSettings(501));
}

TEST_F(AgentProcess, TellsWhichStandardStreamsWereClosed) {
  start({}, {.inChild = [] { (void)::close(STDIN_FILENO); }});
  EXPECT_THAT(log(), HasSubstr("warning: started with closed standard streams streams=input\n"));
  EXPECT_EQ(state("logClosed"), "no");
}

TEST_F(AgentProcess, WhatItWritesIsPrivate) {
  const auto open = [] { (void)::umask(0); };
  state_.write(SETTINGS, settingsWithoutGroups());
  state_.write(SHADOW_COPY, "");
  std::filesystem::permissions(state_.at(SETTINGS), std::filesystem::perms(0600));
  start({}, {.inChild = open});
  EXPECT_EQ(ctl({"save", "--force"}).exitCode, 0);
  state_.write(SETTINGS, "edited");
  set("IKE.IKE_PORT=501");
  EXPECT_EQ(ctl({"save", "--force"}).exitCode, 0);
  const auto names = std::filesystem::directory_iterator(state_.path);
  int count = 0;
  for (const auto& entry : names) {
    EXPECT_EQ(entry.status().permissions(), std::filesystem::perms(0600)) << entry.path();
    ++count;
  }
  EXPECT_EQ(count, 6);  // settings, shadow copy, the damaged and the edited copy, two revisions
}

TEST_F(AgentProcess, OutlivesClientsThatGoAway) {
  start();
  {
    const RawClient first(socket_);
    ASSERT_TRUE(first.greet());
    addManyUsers(first);
  }
  const std::string request = bridge::encode(readOfUsers());
  for (int i = 0; i < 20; ++i) {
    const RawClient client(socket_);
    ASSERT_TRUE(client.greet());
    client.send(request + request);
    const size_t taken = i % 2 == 0 ? 100 : 0;  // of a reply that is being written
    EXPECT_EQ(client.read(taken).size(), taken);
  }
  while (state("sessions") != "1") continue;
}

// A sanitizer keeps what is freed.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST_F(AgentProcess, IdleSessionsHoldNoneOfWhatTheyHaveSent) {
  start();
  const auto resident = [this] { return numberIn(inProc("status"), "VmRSS", 10); };  // KiB
  const auto before = resident();
  const std::string frame =
      std::string("\0\0\0\1\1", 5) + std::string(bridge::MAX_FRAME_SIZE - 1, '\0');
  std::list<RawClient> idle;
  for (int i = 0; i < 16; ++i) {
    const RawClient& client = idle.emplace_back(socket_);
    ASSERT_TRUE(client.greet());
    client.send(frame);
    ASSERT_EQ(std::get<Reply>(client.receive().value()).result, 0) << "for no module";
  }
  EXPECT_EQ(state("sessions"), "17");
  EXPECT_LT(resident(), before + 8 * bridge::MAX_FRAME_SIZE / 1024);
}
#endif

TEST_F(AgentProcess, AnswersARunningCommandBeforeItEnds) {
  startHeld();
  const auto client = beginSave();
  agent_->send(SIGTERM);
  EXPECT_TRUE(logTells("info: stopping signal=15\n"));
  heldSync_->letItEnd();
  const auto reply = client->receive();
  ASSERT_TRUE(reply);
  EXPECT_EQ(std::get<Reply>(*reply).result, 1);
  EXPECT_EQ(client->readToEnd(), "");
  EXPECT_EQ(agent_->wait(), 0);
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

TEST_F(AgentProcess, EndsWellBySignalsThatItWasStartedWith) {
  const auto blocked = [] {
    sigset_t signals;
    (void)::sigfillset(&signals);
    (void)::sigprocmask(SIG_BLOCK, &signals, nullptr);
  };
  start({"--save-on-exit"}, {.inChild = blocked});
  set("IKE.IKE_PORT=501");
  EXPECT_EQ(end(SIGHUP), 0);
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings(501));
  EXPECT_FALSE(std::filesystem::exists(socket_));

  // One that waits already when the agent begins to load.
  const Outcome early = runAgent({}, {.inChild = [&] {
                                   blocked();
                                   (void)::raise(SIGTERM);
                                 }});
  EXPECT_EQ(early.exitCode, 0) << early.output;
  EXPECT_THAT(early.output, HasSubstr("info: stopped\n"));
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

// Neither while a command runs nor while the agent saves at the end.
TEST_F(AgentProcess, EndsNoLessWellIfItIsAskedAgain) {
  startHeld({"--save-on-exit"});
  set("IKE.IKE_PORT=502");
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  testing_support::HeldSync save(state_.at("localsettings.ini.good.new"));
  client.send(bridge::encode(bridge::Request(bridge::Command{13, 2})));
  save.waitForBegin();
  agent_->send(SIGTERM);
  EXPECT_TRUE(logTells("info: stopping signal=15\n"));
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) agent_->send(signal);
  save.letItEnd();
  EXPECT_EQ(std::get<Reply>(client.receive().value()).result, 1);
  EXPECT_EQ(agent_->wait(), 0) << log();

  startHeld({"--save-on-exit"});
  set("IKE.IKE_PORT=501");
  testing_support::HeldSync atTheEnd(state_.at("localsettings.ini.good.new"));
  agent_->send(SIGTERM);
  atTheEnd.waitForBegin();
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) agent_->send(signal);
  atTheEnd.letItEnd();
  EXPECT_EQ(agent_->wait(), 0) << log();
  EXPECT_NE(state_.text(SETTINGS).find("IKE_PORT=501\n"), std::string::npos);
  EXPECT_FALSE(std::filesystem::exists(socket_));
}

// A thread that takes one when nobody handles it any more ends the process before it has saved. The
// session's is not there any more by then.
TEST_F(AgentProcess, OnlySessionsTakeEndSignalsOnceItIsAskedToEnd) {
  startHeld();
  const auto client = beginSave();
  agent_->send(SIGTERM);
  EXPECT_TRUE(logTells("info: stopping signal=15\n"));
  int taking = 0;
  for (const auto& thread : std::filesystem::directory_iterator(inProc("task"))) {
    const auto blocked = numberIn(thread.path() / "status", "SigBlk", 16);
    taking += (blocked & (1ULL << (SIGTERM - 1))) == 0 ? 1 : 0;
  }
  EXPECT_EQ(taking, 1);
  heldSync_->letItEnd();
  EXPECT_EQ(agent_->wait(), 0) << log();
}

TEST_F(AgentProcess, OutlivesTheTerminalIfThatIsWanted) {
  start({}, {.inChild = [] { (void)std::signal(SIGHUP, SIG_IGN); }});
  agent_->send(SIGHUP);
  EXPECT_EQ(get("IKE.EXCHANGE_TIMEOUT"), "90\n");
  EXPECT_EQ(stop(), 0);
}

TEST_F(AgentProcess, IsNotHeldUpByAServiceManagerThatDoesNotListen) {
  const std::string path = place_.at("notify");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  (void)path.copy(address.sun_path, sizeof address.sun_path - 1);
  const int manager = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(::bind(manager, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  const int filler = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  while (::sendto(filler, "", 0, 0, reinterpret_cast<const sockaddr*>(&address), sizeof address) ==
         0) {
  }
  start({}, {.environment = {"NOTIFY_SOCKET=" + path}});
  EXPECT_EQ(stop(), 0);
  for (const int socket : {manager, filler}) (void)::close(socket);
}

TEST_F(AgentProcess, DoesNotWaitForEverForACommand) {
  startHeld();
  const auto client = beginSave();
  EXPECT_EQ(stop(), agent::EXIT_STUCK);
  EXPECT_THAT(log(), HasSubstr("error: a command did not end in time"));
  EXPECT_EQ(client->readToEnd(), "");
  EXPECT_EQ(state_.text(SETTINGS), exampleSettings());
}

TEST_F(AgentProcess, WritesARepliesRestBeforeItEnds) {
  start();
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  addManyUsers(client);
  client.send(bridge::encode(readOfUsers()));
  const std::string head = client.read(bridge::FRAME_HEAD_SIZE);
  agent_->send(SIGTERM);
  EXPECT_TRUE(logTells("info: stopping signal=15\n"));
  const auto reply = bridge::decodeMessage(client.read(bridge::decodeFrameHead(head)));
  ASSERT_TRUE(reply);
  EXPECT_GT(std::get<Reply>(*reply).output.size(), 4000000u);
  EXPECT_EQ(client.readToEnd(), "");
  EXPECT_EQ(agent_->wait(), 0);
}

TEST_F(AgentProcess, AClientThatTakesNoReplyDoesNotCostTheSaveAtTheEnd) {
  start({"--save-on-exit"});
  const RawClient client(socket_);
  ASSERT_TRUE(client.greet());
  addManyUsers(client);
  client.send(bridge::encode(readOfUsers()));
  EXPECT_EQ(client.read(bridge::FRAME_HEAD_SIZE).size(), bridge::FRAME_HEAD_SIZE);
  EXPECT_EQ(stop(), 0);
  EXPECT_THAT(state_.text(SETTINGS), HasSubstr(std::string(1000, 'x')));
}

TEST_F(AgentProcess, IdleClientsDoNotHoldUpTheEnd) {
  start();
  const RawClient idle(socket_);
  const RawClient subscriber(socket_);
  const RawClient silent(socket_);
  ASSERT_TRUE(idle.greet() && subscriber.greet());
  EXPECT_EQ(subscriber.exchange(bridge::Subscription{}).result, 1);
  EXPECT_EQ(stop(), 0);
  for (const RawClient* client : {&idle, &subscriber, &silent}) {
    EXPECT_EQ(client->readToEnd(), "");
  }
}

}  // namespace
}  // namespace safety
