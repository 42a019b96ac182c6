#include "agent/agent_commands.h"

#include "schema/schema.h"

namespace agent {

AgentCommands::AgentCommands(LPARAMS::Server::Server_t& server, SettingsKeeper& keeper,
                             const History& history, const editing::RecordCheck& check,
                             CommandService& service)
    : saved_(keeper),
      get_(server, saved_, service),
      set_(server, check, saved_, service),
      history_(history),
      confirmation_(server, keeper, check, set_, service) {
  using Access = CommandService::Access;
  service.add(
      "schema",
      [](BridgeSession& /*session*/, const std::string& /*input*/) {
        return bridge::Reply{.result = 1, .output = schema::ownSchema()};
      },
      Access::Reads);
  service.add(
      "get",
      [this](BridgeSession& session, const std::string& input) {
        return get_.execute(session, input);
      },
      Access::Reads);
  service.add("set", [this](BridgeSession& session, const std::string& input) {
    return set_.execute(session, input);
  });
  service.add(
      "try",
      [this](BridgeSession& session, const std::string& input) {
        return set_.tryOut(session, input);
      },
      Access::Reads);
  service.add("apply", [this](BridgeSession& session, const std::string& input) {
    return confirmation_.apply(session, input);
  });
  service.add("confirm", [this](BridgeSession& session, const std::string& /*input*/) {
    return confirmation_.confirm(session);
  });
  service.add("save", HistoryCommands::save);
  service.add(
      "history",
      [this](BridgeSession& session, const std::string& input) {
        return history_.list(session, input);
      },
      Access::Reads);
  service.add(
      "revision",
      [this](BridgeSession& session, const std::string& input) {
        return history_.read(session, input);
      },
      Access::Reads);
}

}  // namespace agent
