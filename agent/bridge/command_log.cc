#include "agent/bridge/command_log.h"

#include <algorithm>

#include "agent/base/log.h"

namespace agent {
namespace {

using bridge::NoticedChange;
using bridge::Reason;

constexpr size_t MAX_NAMES = 100;     // more than any group has members
constexpr size_t MAX_USER_NAME = 40;  // bytes that are shown

bool isPlain(char c) {
  return c > ' ' && c < '\x7f' && std::string_view("[],\"\\").find(c) == std::string_view::npos;
}

/// A name that would be mistaken for something else stands in quotes.
std::string shown(std::string_view user) {
  const std::string name = shortened(user, MAX_USER_NAME);
  return "[" + (std::ranges::all_of(name, isPlain) ? name : quoted(name)) + "]";
}

std::string nameOf(const GroupChange& change) {
  const std::string user = change.user == nullptr ? "" : shown(*change.user);
  switch (change.kind) {
    case NoticedChange::UserAdded:
      return user + " added";
    case NoticedChange::UserRemoved:
      return user + " removed";
    case NoticedChange::UserOrder:
      return "order";
    default:
      return (user.empty() ? "" : user + ".") + change.member->name;
  }
}

}  // namespace

void ChangedNames::add(const GroupChange& change) {
  const bool ofNewUser = change.member != nullptr && change.before == nullptr;
  if (ofNewUser || ++count_ > MAX_NAMES) return;
  if (!names_.empty()) names_ += ',';
  names_ += nameOf(change);
}

std::string ChangedNames::text() const {
  if (count_ == 0) return "none";
  if (count_ <= MAX_NAMES) return names_;
  return names_ + ",... (" + std::to_string(count_ - MAX_NAMES) + " more)";
}

void logWrite(const BridgeSession& session, std::string_view group, std::string_view changes,
              const bridge::Reply& reply) {
  const Field revision("revision", static_cast<long long>(reply.revision));
  if (reply.result != 0) {
    return log(Level::Info, "settings written",
               {{"group", group},
                {"parameters", changes},
                revision,
                {"uid", session.uid},
                {"pid", session.pid},
                {"program", session.program}});
  }
  log(Level::Warning, "settings written in part",
      {{"group", group},
       {"parameters", changes},
       revision,
       {"reason", reply.text},
       {"uid", session.uid},
       {"pid", session.pid},
       {"program", session.program}});
}

void logSave(const BridgeSession& session, bool force) {
  log(Level::Info, force ? "settings saved, forced" : "settings saved",
      {{"uid", session.uid}, {"pid", session.pid}, {"program", session.program}});
}

bool logRefusal(const BridgeSession& session, const bridge::Reply& reply) {
  const auto tell = [&](Level level, std::string_view message) {
    return logOften(level, message,
                    {{"reason", reply.text},
                     {"uid", session.uid},
                     {"pid", session.pid},
                     {"program", session.program}});
  };
  switch (reply.reason) {
    case Reason::NotAuthorised:
      return tell(Level::Warning, "a command was not authorised");
    case Reason::IllegalValue:
    case Reason::Conflict:
      return tell(Level::Notice, "a write was refused");
    case Reason::SaveRefused:
      return tell(Level::Error, "settings not saved");
    case Reason::MalformedFrame:
      return tell(Level::Warning, "session closed: what the client sent is no request");
    default:
      return tell(Level::Notice, "a command was refused");
  }
}

}  // namespace agent
