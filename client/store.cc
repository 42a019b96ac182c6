#include "client/store.h"

#include <utility>

#include "client/failure.h"
#include "client/record.h"
#include "lparams/interface/commands.h"
#include "platform/command_bridge.h"
#include "text/escape.h"

namespace client {
namespace {

using LPARAMS::Server::READ_GROUP;
using LPARAMS::Server::SAVE;
using LPARAMS::Server::WRITE_GROUP;

std::string reasonOf(const bridge::Reply& reply) {
  if (!reply.text.empty()) return text::escaped(reply.text);
  return "the agent gave no reason (" + std::to_string(static_cast<uint32_t>(reply.reason)) + ")";
}

}  // namespace

void Store::read(LPARAMS::Server::ParamGroup& group) {
  const bridge::Reply reply =
      call(bridge::Command{LPARAMS_MODULE_ID, READ_GROUP, encodeName(group)},
           std::string("reading ") + group.name);
  decodeRecord(group, reply.output);
  revisions_[&group] = reply.revision;
}

void Store::write(LPARAMS::Server::ParamGroup& group) {
  bridge::Command command{LPARAMS_MODULE_ID, WRITE_GROUP, encodeRecord(group)};
  if (const auto read = revisions_.find(&group); read != revisions_.end()) {
    command.revision = read->second;
  }
  revisions_[&group] = call(command, std::string("writing ") + group.name).revision;
}

void Store::save(bool force) {
  bridge::Command command{LPARAMS_MODULE_ID, SAVE};
  command.force = force;
  (void)call(command, "saving");
}

std::string Store::status() { return call(bridge::StatusRequest{}, "asking for the state").output; }

void Store::subscribe() { (void)call(bridge::Subscription{}, "subscribing"); }

bridge::Reply Store::call(const bridge::Request& request, const std::string& what) {
  if (!connection_) connection_.emplace(socketPath_, timeout_);
  bridge::Reply reply = connection_->exchange(request);
  if (reply.result == 0) throw Failure(ExitCode::Refused, what + " failed: " + reasonOf(reply));
  return reply;
}

}  // namespace client
