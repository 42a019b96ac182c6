#include "agent/bridge/command_log.h"

#include "agent/base/log.h"

namespace agent {

using bridge::Reason;

void logWrite(const BridgeSession& session, std::string_view group, const std::string& changes,
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

void logRefusal(const BridgeSession& session, const bridge::Reply& reply) {
  const auto tell = [&](Level level, std::string_view message) {
    logOften(level, message,
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
