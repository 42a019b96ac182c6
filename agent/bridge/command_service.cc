#include "agent/bridge/command_service.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string_view>
#include <utility>

#include "agent/base/log.h"
#include "agent/bridge/command_log.h"
#include "agent/bridge/listener_registry.h"
#include "agent/bridge/secrets.h"
#include "agent/events/notices.h"
#include "lparams/interface/access_levels.h"
#include "lparams/interface/commands.h"
#include "platform/command_bridge.h"

namespace agent {
namespace {

using bridge::Reason;
using bridge::Reply;
using LPARAMS::Server::ParamGroup;
using LPARAMS::Server::READ_GROUP;
using LPARAMS::Server::SAVE;
using LPARAMS::Server::WRITE_ACCESS;
using LPARAMS::Server::WRITE_GROUP;

/// Says for the callbacks of a command whose it is.
class CurrentSession {
 public:
  CurrentSession(BridgeSession& session, bool force, const std::string& message)
      : session_(session) {
    session.command = {.force = force, .message = message};
    BridgeSession::current() = &session_;
  }
  ~CurrentSession() { BridgeSession::current() = nullptr; }
  CurrentSession(const CurrentSession&) = delete;
  CurrentSession& operator=(const CurrentSession&) = delete;

 private:
  BridgeSession& session_;
};

/// Has the module execute the command.
Reply call(BridgeSession& session, const bridge::Command& command,
           const std::string& message = {}) {
  using Outcome = ListenerRegistry::Outcome;

  const CurrentSession current(session, command.force, message);
  Reply reply;
  auto result = listenerRegistry().execute(session, static_cast<ModuleIdType>(command.module),
                                           command.command, command.input, reply.output);
  switch (result.outcome) {
    case Outcome::Succeeded:
      reply.result = result.value;
      return reply;
    case Outcome::Refused:
      if (const std::string& refusal = session.command.refusal; !refusal.empty()) {
        return failure(Reason::NotAuthorised, refusal);
      }
      if (const std::string& reason = session.command.saveFailure; !reason.empty()) {
        return failure(Reason::SaveRefused, reason);
      }
      return failure(Reason::ModuleRefused, "the module does not know this command or its subject");
    case Outcome::MalformedInput:
      return failure(Reason::MalformedInput,
                     "the module could not read the command to its end: " + result.error);
    case Outcome::Failed:
      return failure(Reason::ModuleFailed, "the module failed: " + result.error);
    case Outcome::NoSuchModule:
      break;
  }
  return failure(Reason::NoSuchModule,
                 "no module " + std::to_string(command.module) + " is loaded");
}

/// Whether a write with this reply has changed values: one that breaks off has changed some.
bool mayHaveWritten(const Reply& reply) {
  return reply.result != 0 || reply.reason == Reason::MalformedInput ||
         reply.reason == Reason::ModuleFailed;
}

/// The name in front of a command's input; empty if it is cut off.
std::string_view groupName(std::string_view input) {
  uint32_t length = 0;
  if (input.size() < sizeof length) return {};
  std::memcpy(&length, input.data(), sizeof length);
  input.remove_prefix(sizeof length);
  return length > input.size() ? std::string_view() : input.substr(0, length);
}

}  // namespace

Reply CommandService::execute(BridgeSession& session, const bridge::Command& command) {
  const bool ours = command.module == LPARAMS_MODULE_ID;
  if (ours && command.command == WRITE_GROUP) return writeGroup(session, command);
  const bool saves = ours && command.command == SAVE;
  const auto execute = [&] {
    if (saves) return save(session, command.force, {});
    return ours && command.command == READ_GROUP ? readGroup(session, command)
                                                 : call(session, command);
  };
  Reply reply = execute();
  if (reply.result != 0) return reply;
  return refused(session, std::move(reply), saves ? Access::Writes : Access::Reads);
}

Reply CommandService::save(BridgeSession& session, bool force, const std::string& message) {
  bridge::Command command{LPARAMS_MODULE_ID, SAVE};
  command.force = force;
  Reply reply = call(session, command, message);
  if (reply.result != 0) logSave(session, force);
  return reply;
}

/// The reply, which the log tells of, and those who watch as often as the log does. A save that
/// failed has been told already.
Reply CommandService::refused(const BridgeSession& session, Reply reply, Access access) {
  events_.countRefusal();
  const bool told = logRefusal(session, reply);
  if (!told || access == Access::Reads || reply.reason == Reason::SaveRefused) return reply;
  bridge::Notice notice = noticeOf(bridge::Notice::Refused, session);
  notice.reason = reply.reason;
  notice.text = noticedText(reply.text);
  events_.publish(notice);
  return reply;
}

Reply CommandService::execute(BridgeSession& session, const bridge::AgentCommand& command) {
  const auto handler = handlers_.find(command.name);
  if (handler == handlers_.end()) {
    return refused(
        session, failure(Reason::NoSuchCommand, "the agent has no command " + quoted(command.name)),
        Access::Reads);
  }
  Reply reply = handler->second.execute(session, command.input);
  return reply.result != 0 ? reply : refused(session, std::move(reply), handler->second.access);
}

Reply CommandService::readGroup(BridgeSession& session, const bridge::Command& command) {
  // Asked for before the values: a write in between makes the revision too old, never too new.
  const uint64_t revision = changes_.revision(groupName(command.input));
  Reply reply;
  {
    // The module reads one group at a time, too. Each reply is counted before the next is made, so
    // that there are never many that nobody counts.
    const MutexLock turn(readTurn_);
    reply = call(session, command);
    if (session.replyBytes != nullptr && !session.replyBytes->resize(reply.output.size())) {
      return busy(session);
    }
  }
  reply.revision = revision;
  if (reply.result != 0 && check_ != nullptr) hideSecrets(session, groupName(command.input), reply);
  return reply;
}

/// Who may not write gets no secret.
void CommandService::hideSecrets(BridgeSession& session, std::string_view group, Reply& reply) {
  const std::string secrets = secretsOf(group);
  if (secrets.empty() || mayWrite(session)) return;
  reply.output = withoutSecrets(group, reply.output);
  reply.text = "left out, because the session may not write: " + secrets;
}

Reply CommandService::writeGroup(BridgeSession& session, const bridge::Command& command) {
  // The module authorises the write too; here it comes first, so that a stranger learns nothing.
  if (!mayWrite(session)) {
    return refused(session, failure(Reason::NotAuthorised, session.command.refusal));
  }
  editing::RecordCheck::Finding finding;
  if (check_ != nullptr) finding = check_->look(command.input);
  if (!finding.refusal.empty()) {
    return refused(session, failure(Reason::IllegalValue, std::move(finding.refusal)));
  }
  const std::string_view group = groupName(command.input);
  const MutexLock turn(writeTurn_);
  if (command.revision) {
    if (auto conflict = conflictOf(group, *command.revision)) {
      return refused(session, std::move(*conflict));
    }
  }
  if (check_ != nullptr) {
    std::string refusal = check_->refusalOfSize({{group, finding.textSize}});
    if (!refusal.empty()) {
      return refused(session, failure(Reason::IllegalValue, std::move(refusal)));
    }
  }
  return write(session, command.input);
}

bool CommandService::mayWrite(BridgeSession& session) {
  session.command = {};
  return _BridgeServerSide_AuthSession(session, LPARAMS_MODULE_ID, WRITE_ACCESS);
}

std::optional<Reply> CommandService::conflictOf(std::string_view group, uint64_t stated) const {
  const uint64_t revision = changes_.revision(group);
  if (stated == revision) return std::nullopt;
  Reply conflict =
      failure(Reason::Conflict, shortened(group) + " has changed: it was read at revision " +
                                    std::to_string(stated) + " and is at revision " +
                                    std::to_string(revision) + "; read it again");
  conflict.revision = revision;
  return conflict;
}

Reply CommandService::write(BridgeSession& session, const std::string& input,
                            const std::function<void()>& prepare) {
  const bridge::Command command{LPARAMS_MODULE_ID, WRITE_GROUP, input};
  const std::string_view name = groupName(input);
  const auto groups = settings_.groups();
  const auto* const group =
      std::ranges::find_if(groups, [&](const ParamGroup* each) { return name == each->name; });
  if (group == groups.end()) return refused(session, call(session, command));
  const GroupValues before(**group);
  prepare();
  Reply reply;
  try {
    reply = call(session, command);
  } catch (...) {
    (void)changes_.written(name, session);  // it may have been
    events_.lose();
    throw;
  }
  if (!mayHaveWritten(reply)) {
    reply.revision = changes_.revision(name);
    return refused(session, std::move(reply));
  }
  reply.revision = changes_.written(name, session);
  tellOfWrite(session, before, **group, reply);
  return reply;
}

/// The write is done, whatever memory there is.
void CommandService::tellOfWrite(const BridgeSession& session, const GroupValues& before,
                                 ParamGroup& group, const Reply& reply) noexcept try {
  using bridge::Notice;

  const bool whole = reply.result != 0;
  Notice notice = noticeOf(whole ? Notice::Written : Notice::WrittenInPart, session);
  notice.group = group.name;
  notice.revision = reply.revision;
  notice.reason = reply.reason;
  notice.text = noticedText(reply.text);
  ChangedNames names;
  ChangeTeller teller(notice);
  const GroupValues after(group);
  before.visitChangesUntil(after, [&](const GroupChange& change) {
    names.add(change);
    teller.add(change);
  });
  logWrite(session, group.name, names.text(), reply);
  events_.publish(notice);
} catch (const std::bad_alloc&) {
  logWrite(session, group.name, "(no memory to tell)", reply);
  events_.lose();
}

Reply CommandService::busy(const BridgeSession& session) {
  return failure(Reason::Busy,
                 "the requests and replies under way take all the memory that there is for user " +
                     std::to_string(session.uid) + "; try again");
}

Reply CommandService::status(BridgeSession& session) const {
  return {1, Reason::None, {}, status_(mayWrite(session))};
}

}  // namespace agent
