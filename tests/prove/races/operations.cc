#include "tests/prove/races/operations.h"

#include <atomic>
#include <optional>
#include <stdexcept>
#include <string>
#include <variant>

#include "bridge/protocol.h"
#include "lparams/interface/commands.h"
#include "tests/agent/bridge/raw_client.h"
#include "tests/support/records.h"

namespace races {
namespace {

using agent_testing::RawClient;
using LPARAMS::Server::ParamGroup;
using testing_support::Settings;

constexpr int32_t SETTINGS = 13;
constexpr int LOOKS = 20;
constexpr int PEEKS = 10'000;

/// Another one each time.
unsigned nextNumber() {
  static std::atomic<unsigned> number = 0;
  return ++number;
}

/// A session that is served.
class Session : public RawClient {
 public:
  explicit Session(const AgentAtWork& agent) : RawClient(agent.socket()) {
    if (!greet()) throw std::runtime_error("the agent does not greet");
  }

  /// Waits for the reply; events and notices may come before it.
  void ask(const bridge::Request& request) const {
    send(bridge::encode(request));
    for (;;) {
      const std::optional<bridge::Message> message = receive();
      if (!message) throw std::runtime_error("the agent does not reply");
      if (const auto* reply = std::get_if<bridge::Reply>(&*message)) {
        if (reply->result != 1) throw std::runtime_error(reply->text);
        return;
      }
    }
  }
};

bridge::Command writing(ParamGroup& group) {
  return {SETTINGS, LPARAMS::Server::WRITE_GROUP, testing_support::encodeRecord(group)};
}

bridge::Command adminWithOtherValues() {
  Settings settings;
  const unsigned number = nextNumber();
  settings.adminGroup.SESSION_EXPTIME.value = number % 1000;
  settings.adminGroup.ADMIN_GROUP.value =
      "a name that has no room in itself " + std::to_string(number);
  return writing(settings.adminGroup);
}

void read(AgentAtWork& agent) {
  const Session session(agent);
  for (const ParamGroup* group : Settings().groups()) {
    session.ask(bridge::Command{SETTINGS, LPARAMS::Server::READ_GROUP,
                                testing_support::encodeName(*group)});
  }
}

void write(AgentAtWork& agent) {
  const Session session(agent);
  session.ask(adminWithOtherValues());
}

void changeLog(const Session& session) {
  Settings settings;
  settings.logGroup.BACKUP_DEPTH.value = nextNumber() % 1000;
  session.ask(writing(settings.logGroup));
}

void save(AgentAtWork& agent) {
  const Session session(agent);
  changeLog(session);
  session.ask(bridge::Command{SETTINGS, LPARAMS::Server::SAVE});
}

void isChanged(AgentAtWork& agent) {
  for (int look = 0; look < LOOKS; ++look) (void)agent.server().isChanged();
}

/// The list of users grows and shrinks, and everything is listed by its name.
void list(AgentAtWork& agent) {
  const Session session(agent);
  Settings settings;
  for (unsigned left = nextNumber() % 3; left > 0; --left) {
    listAdd(settings.userList)->NAME.value = "user " + std::to_string(left);
  }
  session.ask(writing(settings.userList));
  session.ask(bridge::AgentCommand{"get"});
}

void subscribe(AgentAtWork& agent) {
  const Session events(agent);
  events.ask(bridge::Subscription{});
  const Session notices(agent);
  notices.ask(bridge::AgentCommand{std::string(bridge::WATCH)});
  events.ask(bridge::StatusRequest{});
}

/// Leaves without a look at the replies.
void close(AgentAtWork& agent) {
  const Session session(agent);
  session.send(bridge::encode(adminWithOtherValues()) + bridge::encode(bridge::Subscription{}) +
               bridge::encode(bridge::AgentCommand{"get"}));
}

void stop(AgentAtWork& /*agent*/) { AgentAtWork::stop(); }

/// The agent itself saves.
void hook(AgentAtWork& agent) {
  if (agent.server().saveHook("LPARAMS") == 0) throw std::runtime_error("the hook did not save");
}

LPARAMS::Server::Server_t* g_observed = nullptr;

/// What an observer may look at, in the midst of a write.
void observe(int /*event*/) {
  (void)g_observed->isChanged();
  (void)g_observed->rawSettings.size();
}

void observers(AgentAtWork& agent) {
  const Session session(agent);
  changeLog(session);
}

void peek(AgentAtWork& agent) {
  const volatile auto& value = agent.server().ADMIN->SESSION_EXPTIME.value;
  for (int look = 0; look < PEEKS; ++look) (void)(value + 1);
}

}  // namespace

const std::array<Operation, 10> OPERATIONS{{{"read", read},
                                            {"write", write},
                                            {"save", save},
                                            {"isChanged", isChanged},
                                            {"list", list},
                                            {"subscribe", subscribe},
                                            {"close", close},
                                            {"stop", stop},
                                            {"hook", hook},
                                            {"observers", observers}}};

const Operation PEEK{"peek", peek};

void addObserver(LPARAMS::Server::Server_t& server) {
  g_observed = &server;
  server.LOG->observers.push_back(observe);
}

}  // namespace races
