#include "client/store.h"

#include <utility>

#include "client/failure.h"
#include "client/quote.h"
#include "client/record.h"
#include "platform/command_bridge.h"

namespace client {
namespace {

// The commands of the settings module.
constexpr int32_t WRITE_GROUP = 0;
constexpr int32_t READ_GROUP = 1;
constexpr int32_t SAVE = 2;

std::string reasonOf(const bridge::Reply& reply) {
  if (!reply.text.empty()) return escaped(reply.text);
  return "the agent gave no reason (" + std::to_string(static_cast<uint32_t>(reply.reason)) + ")";
}

}  // namespace

void Store::read(LPARAMS::Server::ParamGroup& group) {
  decodeRecord(group, call(READ_GROUP, encodeName(group), std::string("reading ") + group.name));
}

void Store::write(LPARAMS::Server::ParamGroup& group) {
  (void)call(WRITE_GROUP, encodeRecord(group), std::string("writing ") + group.name);
}

void Store::save() { (void)call(SAVE, {}, "saving"); }

std::string Store::call(int32_t command, std::string input, const std::string& what) {
  if (!connection_) connection_.emplace(socketPath_, timeout_);
  bridge::Reply reply = connection_->exchange({LPARAMS_MODULE_ID, command, std::move(input)});
  if (reply.result == 0) throw Failure(ExitCode::Refused, what + " failed: " + reasonOf(reply));
  return std::move(reply.output);
}

}  // namespace client
