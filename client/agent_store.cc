#include "client/agent_store.h"

#include <algorithm>
#include <string_view>

#include "bridge/history.h"
#include "client/failure.h"
#include "lparams/interface/commands.h"
#include "platform/command_bridge.h"
#include "text/escape.h"

namespace client {
namespace {

using bridge::Reason;
using programs::ExitStatus;

ExitStatus statusOf(Reason reason) {
  switch (reason) {
    case Reason::NotAuthorised:
      return programs::EXIT_NOT_AUTHORISED;
    case Reason::MalformedInput:
      return programs::EXIT_ILLEGAL;
    case Reason::SaveRefused:
    case Reason::ReplyTooLarge:
      return programs::EXIT_IO;
    default:
      return programs::EXIT_UNAVAILABLE;
  }
}

std::string reasonOf(const bridge::Reply& reply) {
  if (!reply.text.empty()) return text::escaped(reply.text);
  return "the agent gave no reason (" + std::to_string(static_cast<uint32_t>(reply.reason)) + ")";
}

/// The agent says each mistake in a line of its own.
std::string escapedLines(const std::string& text) {
  std::string lines;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    if (!lines.empty()) lines += '\n';
    lines += text::escaped(std::string_view(text).substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

}  // namespace

bridge::NamedValues valuesIn(const bridge::Reply& reply) {
  auto values = bridge::decodeNamedValues(reply.output);
  if (!values) throw Failure(programs::EXIT_UNAVAILABLE, "the agent's values cannot be read");
  return std::move(*values);
}

bridge::NamedValues AgentStore::get(const bridge::Names& names) {
  return valuesIn(call(bridge::AgentCommand{"get", bridge::encode(names)}, "reading"));
}

bridge::NamedValues AgentStore::set(const bridge::NamedChanges& changes) {
  return valuesIn(call(bridge::AgentCommand{"set", bridge::encode(changes)}, "writing"));
}

bridge::NamedValues AgentStore::tryOut(const bridge::NamedChanges& changes) {
  return valuesIn(call(bridge::AgentCommand{"try", bridge::encode(changes)}, "trying"));
}

std::string AgentStore::schema() {
  return call(bridge::AgentCommand{"schema", {}}, "asking for the catalogue").output;
}

void AgentStore::save(const Saving& how) {
  if (!how.message.empty()) {
    const bridge::SaveRequest request{how.force, how.message};
    (void)call(bridge::AgentCommand{"save", bridge::encode(request)}, "saving");
    return;
  }
  bridge::Command command{LPARAMS_MODULE_ID, LPARAMS::Server::SAVE};
  command.force = how.force;
  (void)call(command, "saving");
}

std::string AgentStore::status() {
  return call(bridge::StatusRequest{}, "asking for the state").output;
}

void AgentStore::watch() {
  (void)call(bridge::AgentCommand{std::string(bridge::WATCH), {}}, "watching");
}

bridge::Reply AgentStore::call(const bridge::Request& request, const std::string& what) {
  if (!connection_) connection_.emplace(socketPath_, timeout_);
  bridge::Reply reply = connection_->exchange(request);
  if (reply.result != 0) return reply;
  if (reply.reason == Reason::IllegalValue) {
    throw Failure(programs::EXIT_ILLEGAL, escapedLines(reply.text));
  }
  std::string message = what + " failed: " + reasonOf(reply);
  if (reply.reason == Reason::MalformedFrame) message += "; the agent may be an earlier version";
  if (reply.reason == Reason::Conflict || reply.reason == Reason::Busy) throw Conflict(message);
  throw Failure(statusOf(reply.reason), message);
}

}  // namespace client
