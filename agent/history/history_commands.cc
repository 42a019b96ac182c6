#include "agent/history/history_commands.h"

#include <algorithm>
#include <cstdint>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/bridge/command_service.h"
#include "bridge/bytes.h"
#include "bridge/history.h"
#include "editing/named_reader.h"
#include "inspection/settings_text.h"

namespace agent {
namespace {

using bridge::Reason;
using bridge::Reply;

void hideSecretsIn(std::vector<bridge::NamedValue>& values) {
  for (bridge::NamedValue& value : values) {
    if (value.secret) value.running = value.before = std::nullopt;
  }
}

void addLine(std::string& text, const std::string& line) {
  text += (text.empty() ? "" : "\n") + line;
}

}  // namespace

Reply HistoryCommands::save(BridgeSession& session, const std::string& input) {
  const auto request = bridge::decodeSaveRequest(input);
  if (!request) return {0, Reason::MalformedInput, "the flags and the message cannot be read"};
  if (request->message.size() > bridge::MAX_SAVE_MESSAGE) {
    return {0, Reason::IllegalValue,
            "a message of " + std::to_string(request->message.size()) +
                " bytes is too long; expected at most " + std::to_string(bridge::MAX_SAVE_MESSAGE)};
  }
  Reply reply = CommandService::save(session, request->force, request->message);
  if (reply.result != 0) {
    reply.output.clear();
    bridge::put(reply.output, session.command.revision);
  }
  return reply;
}

Reply HistoryCommands::list(BridgeSession& session, const std::string& input) {
  if (!input.empty()) return {0, Reason::MalformedInput, "the history takes no input"};
  const bool seesSecrets = CommandService::mayWrite(session);
  const MutexLock turn(reading_);
  Reply reply{.result = 1};
  std::vector<uint64_t> numbers = history_.numbers();
  std::ranges::reverse(numbers);
  for (const uint64_t number : numbers) {
    try {
      auto revision = history_.read(number);
      if (!revision) continue;
      if (!seesSecrets) hideSecretsIn(revision->head.changes);
      const std::string bytes = bridge::encode(revision->head);
      if (reply.output.size() + bytes.size() > bridge::MAX_REPLY_OUTPUT) {
        addLine(reply.text, "revisions up to " + std::to_string(number) + " do not fit the reply");
        break;
      }
      reply.output += bytes;
    } catch (const std::exception& error) {
      addLine(reply.text, "revision " + std::to_string(number) + " is left out: " + error.what());
    }
  }
  return reply;
}

Reply HistoryCommands::read(BridgeSession& session, const std::string& input) {
  std::string_view rest = input;
  uint64_t number = 0;
  if (!bridge::take(rest, number) || !rest.empty()) {
    return {0, Reason::MalformedInput, "the revision's number cannot be read"};
  }
  const std::string name = "revision " + std::to_string(number);
  const bool seesSecrets = CommandService::mayWrite(session);
  const MutexLock turn(reading_);
  std::string text;
  try {
    auto revision = history_.read(number);
    if (!revision) {
      const auto numbers = history_.numbers();
      if (numbers.empty())
        return {0, Reason::IllegalValue, "there is no " + name + ", nor another"};
      return {0, Reason::IllegalValue,
              "there is no " + name + "; there are those from " + std::to_string(numbers.front()) +
                  " to " + std::to_string(numbers.back())};
    }
    text = std::move(revision->text);
  } catch (const std::exception& error) {
    return {0, Reason::ModuleFailed, name + " cannot be read: " + error.what()};
  }
  const auto settings = inspection::settingsIn(text);
  editing::NamedReader reader(*settings, nullptr, seesSecrets);
  const bridge::NamedValues values{.values = reader.read({})};
  if (reader.isTooLarge()) return {0, Reason::ReplyTooLarge, name + " does not fit a frame"};
  return {1, Reason::None, {}, bridge::encode(values)};
}

}  // namespace agent
