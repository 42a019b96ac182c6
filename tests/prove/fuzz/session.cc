// What a client may send, against a whole session of the agent with the real module, its state
// directory and its history. The first byte says who the client is, and whether what follows are
// the bytes as they are, or frames without their heads, divided by DIVIDER.
#include <sys/socket.h>
#include <unistd.h>

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <sstream>
#include <thread>

#include "agent/agent_commands.h"
#include "agent/bridge/authorisation.h"
#include "agent/bridge/client_connection.h"
#include "agent/bridge/limits.h"
#include "agent/history/history.h"
#include "agent/load_settings.h"
#include "agent/save_events.h"
#include "agent/save_hook.h"
#include "agent/services/paths_service.h"
#include "agent/state/recovery.h"
#include "bridge/apply.h"
#include "inspection/settings_completeness.h"
#include "lparams/module_objects.h"
#include "lparams/storage/settings_reader.h"
#include "tests/prove/fuzz/frame_reading.h"
#include "tests/prove/fuzz/settings_text.h"
#include "tests/prove/fuzz/target.h"
#include "tests/support/recording_load_log.h"
#include "tests/support/records.h"

namespace fuzz {
namespace {

using namespace LPARAMS::Server;
using namespace std::string_literals;

constexpr std::string_view DIVIDER = "|:|";
constexpr size_t MAX_USERS_HERE = 4;
constexpr uint32_t MALFORMED_FRAME = 5;  // the reason of a reply
constexpr const char* SECRET = "the secret that nobody may see";

enum Flags { Stranger = 1, RawBytes = 2 };

/// A directory that is removed at the end of the process.
const std::string& directoryOfThisProcess() {
  static std::string path = std::filesystem::temp_directory_path() / "session-XXXXXX";
  require(::mkdtemp(path.data()) != nullptr, "no directory can be made");
  (void)std::atexit([] { (void)std::filesystem::remove_all(path); });
  return path;
}

/// All of an agent but its socket. Lives until the process ends.
class Agent {
 public:
  Agent() {
    agent::setSystemVarDir(directory_.path());
    agent::StartingPoint start = agent::prepareStart(directory_, false);
    agent::LoadOutcome loaded =
        agent::loadSettings(server_, directory_, start, std::nullopt, MAX_USERS_HERE);
    keeper_.adopt(std::move(start), std::move(loaded.degradedReason), loaded.reports,
                  std::move(loaded.findings));
    loop_ = std::thread([this] { (void)io_.run(); });
    loop_.detach();
  }

  Server_t& server() { return server_; }
  std::string settingsFile() const { return directory_.settings(); }

  /// The settings at their defaults, with a secret; nothing waits.
  void reset() {
    BridgeSession self(::getuid(), ::getgid(), ::getpid());
    (void)service_.execute(self, bridge::AgentCommand{"confirm", {}});
    std::istringstream defaults(defaults_);
    testing_support::ActiveLoadLog log;
    require(readSettings(server_, defaults, log), "the defaults are not read");
    server_.IKE->QCD_SECRET.value = SECRET;
  }

  /// Lets a client send these bytes and then nothing more. Returns all that it gets.
  std::string serve(uid_t uid, const std::string& bytes) {
    int ends[2];
    require(::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) == 0, "no socket");
    std::promise<void> ended;
    std::make_shared<agent::ClientConnection>(io_, ends[0],
                                              BridgeSession(uid, uid, ::getpid(), {}, "fuzzer"),
                                              service_, memory_, [&] { ended.set_value(); })
        ->start();
    std::thread sender([&] {
      for (size_t at = 0; at < bytes.size();) {
        const ssize_t sent = ::send(ends[1], bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
        if (sent < 0 && errno != EINTR) break;
        if (sent > 0) at += static_cast<size_t>(sent);
      }
      (void)::shutdown(ends[1], SHUT_WR);
    });
    std::string received;
    char buffer[65536];
    // The fuzzer's own alarms interrupt it now and then.
    for (ssize_t size; (size = ::recv(ends[1], buffer, sizeof buffer, 0)) != 0;) {
      if (size < 0 && errno != EINTR) break;
      if (size > 0) received.append(buffer, static_cast<size_t>(size));
    }
    sender.join();
    ended.get_future().wait();
    (void)::close(ends[1]);
    return received;
  }

 private:
  const agent::StateDirectory directory_{directoryOfThisProcess()};
  Server_t& server_ = *LPARAMS::server;
  const std::string defaults_ = textOf(server_);
  agent::SettingsKeeper keeper_{server_, directory_, MAX_USERS_HERE};
  agent::History history_{directory_, 3};
  const agent::SaveHook hook_{server_, keeper_, history_};
  const agent::AccessRules rules_{*server_.ADMIN, "no such group"};
  const editing::RecordCheck check_{server_, MAX_USERS_HERE};
  agent::ChangeTracker changes_{server_, 1};
  agent::CommandService service_{server_, keeper_.writeTurn(), changes_, &check_,
                                 [](bool) { return "{}"; }};
  const agent::SaveEvents saveEvents_{keeper_, service_.events()};
  agent::AgentCommands commands_{server_, keeper_, history_, check_, service_};
  agent::Quota memory_{agent::MEMORY_LIMITS};
  asio::io_context io_;
  const asio::executor_work_guard<asio::io_context::executor_type> work_{io_.get_executor()};
  std::thread loop_;
};

/// Never destroyed: its loop does not end.
Agent& theAgent() {
  static Agent& agent = *new Agent;
  return agent;
}

std::string head(size_t size) {
  std::string bytes;
  CommandStreamOut out{bytes};
  put(out, static_cast<uint32_t>(size));
  return bytes;
}

std::string framesOf(std::string_view bodies) {
  std::string bytes;
  for (;;) {
    const size_t end = std::min(bodies.find(DIVIDER), bodies.size());
    bytes += head(end);
    bytes += bodies.substr(0, end);
    if (end == bodies.size()) return bytes;
    bodies.remove_prefix(end + DIVIDER.size());
  }
}

void requireRightReplies(const std::vector<Request>& requests, const std::vector<Reply>& replies) {
  require(requests.size() == replies.size(), std::to_string(requests.size()) + " requests, " +
                                                 std::to_string(replies.size()) + " replies");
  for (size_t i = 0; i < requests.size(); ++i) {
    const Reply& reply = replies[i];
    const bool isMalformed = requests[i].kind == Request::Malformed;
    if ((reply.reason == MALFORMED_FRAME) != isMalformed) {
      found("request " + std::to_string(i) + " was answered with the reason " +
            std::to_string(reply.reason) + " " + std::string(reply.text));
    }
    require((reply.reason == 0) == (reply.result != 0), "the result does not fit the reason");
    require(reply.reason == 0 || !reply.text.empty(), "a failure without a word");
    require(reply.reason == 0 || reply.output.empty(), "a failure has an output");
  }
}

bool isSave(const Request& request) {
  return (request.kind == Request::Command && request.module == 13 && request.command == 2) ||
         (request.kind == Request::AgentCommand && request.name == "save");
}

/// What was acknowledged as saved is in the file, and a start takes it.
void requireSaved(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  require(inspection::incompleteBecause(text.str()).empty(),
          "a start does not take what was saved");
  Catalogue settings;
  const Load start = load(text.str(), settings);
  if (start.whole && start.reports.empty() && start.text == text.str()) return;
  found("what was saved is not loaded as it stands:\n" + text.str());
}

}  // namespace

void tryOnce(std::string_view input) {
  if (input.empty()) return;
  const bool isStranger = (input[0] & Stranger) != 0;
  const bool isRaw = (input[0] & RawBytes) != 0;
  input.remove_prefix(1);
  const std::string bytes = isRaw ? std::string(input) : framesOf(input);

  Agent& agent = theAgent();
  agent.reset();
  const std::string before = textOf(agent.server());
  const std::string received =
      agent.serve(isStranger ? ::getuid() + 4321 : ::getuid(), "LPBR\1\0\0\0"s + bytes);
  require(received.starts_with("LPBR\1\0\0\0"s), "the agent does not greet");
  auto requests = readRequests(bytes);
#ifdef PLANTED
  for (Request& request : requests) {
    if (request.flags == 2) request.kind = Request::Malformed;
  }
#endif
  const auto replies = readReplies(std::string_view(received).substr(8));
  require(replies.has_value(), "what the agent sends is not what its document says");
  requireRightReplies(requests, *replies);

  if (isStranger) {
    require(textOf(agent.server()) == before, "somebody who may not write has written");
    require(received.find(SECRET) == received.npos, "somebody who may not see a secret sees it");
  }
  Catalogue restarted;
  requireToSurvive(agent.server(), restarted);
  for (size_t i = 0; i < requests.size(); ++i) {
    if (isSave(requests[i]) && (*replies)[i].reason == 0) return requireSaved(agent.settingsFile());
  }
}

std::vector<std::string> seeds() {
  const auto body = [](const bridge::Request& request) {
    return bridge::encode(request).substr(bridge::FRAME_HEAD_SIZE);
  };
  const auto command = [&](int number, std::string input, bool force = false) {
    bridge::Command made{13, number, std::move(input)};
    made.force = force;
    return body(made);
  };
  const std::string divider(DIVIDER);
  const auto agentCommand = [&](const char* name, const std::string& input = {}) {
    return body(bridge::AgentCommand{name, input});
  };
  std::vector<std::string> sessions;
  size_t number = 0;
  forEachSetting([&](Catalogue&, ParamGroup& group) {
    const std::string name = testing_support::encodeName(group);
    const std::string write = command(0, testing_support::encodeRecord(group));
    const std::string read = command(1, name);
    const char first = ++number % 5 == 0 ? static_cast<char>(Stranger) : '\0';
    std::string session = first + write + divider + read;
    if (number % 3 == 0) session += divider + command(2, "", number % 2 == 0);
    if (number % 10 == 0) {
      session = std::string(1, RawBytes) + head(write.size()) + write + head(read.size()) + read;
    }
    sessions.push_back(session);
  });
  const bridge::NamedChanges changes{{{"IKE", 1}},
                                     {{bridge::Change::Set, "IKE.IKE_PORT", "501"},
                                      {bridge::Change::AddUser, "bob", ""},
                                      {bridge::Change::Set, "USERS[bob].PMP_TIMEOUT", "20"},
                                      {bridge::Change::RemoveUser, "bob", ""}}};
  const std::string set = bridge::encode(changes);
  const std::string apply = bridge::encode(bridge::ApplyRequest{60, true, "why", changes});
  const std::string forGood =
      bridge::encode(bridge::ApplyRequest{0, false, "", {{}, changes.changes}});
  const std::string all[] = {
      body(bridge::StatusRequest{}),
      body(bridge::Subscription{}),
      agentCommand("schema"),
      agentCommand("watch"),
      agentCommand("get"),
      agentCommand("get", bridge::encode(bridge::Names{"IKE", "USERS[0]", "ADMIN.ADMIN_GROUP"})),
      agentCommand("set", set),
      agentCommand("set", bridge::encode(bridge::NamedChanges{{}, changes.changes})),
      agentCommand("try", set),
      agentCommand("apply", apply),
      agentCommand("apply", forGood),
      agentCommand("confirm"),
      agentCommand("save", std::string("\0\3\0\0\0why", 8)),
      agentCommand("history"),
      agentCommand("revision", std::string("\1\0\0\0\0\0\0\0", 8))};
  std::string together(1, '\0');
  for (const std::string& request : all) {
    sessions.push_back(std::string(1, '\0') + request);
    sessions.push_back(std::string(1, Stranger) + request);
    together += request + divider;
  }
  sessions.push_back(together);
  return sessions;
}

}  // namespace fuzz
