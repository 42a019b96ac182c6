#include "agent/events/notices.h"

#include <unistd.h>

#include <chrono>
#include <utility>

#include "lparams/values/values.h"
#include "text/shortened.h"

namespace agent {
namespace {

using bridge::Notice;
using bridge::NoticedChange;

constexpr const char* OWN_NAME = "lparams_agent";

Notice notice(Notice::What what, uid_t uid, pid_t pid, std::string program) {
  using namespace std::chrono;
  const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  return {.what = what,
          .time = static_cast<uint64_t>(now),
          .uid = uid,
          .pid = pid,
          .program = std::move(program)};
}

/// As the command "get" calls it.
std::string nameOf(const GroupChange& change) {
  std::string name = change.group.name;
  if (change.user != nullptr) {
    const bool byName = change.onlyOfName && !change.user->empty();
    name += "[" + (byName ? *change.user : std::to_string(change.index)) + "]";
  }
  if (change.member != nullptr) name += std::string(".") + change.member->name;
  return name;
}

bool isLong(const std::string* value) {
  return value != nullptr && value->size() > bridge::MAX_NOTICED_VALUE;
}

NoticedChange noticed(const GroupChange& change) {
  NoticedChange told{.kind = change.kind, .value = {.name = nameOf(change)}};
  if (change.member == nullptr) return told;
  told.value.secret = LPARAMS::Server::isSecret(*change.member);
  if (told.value.secret) return told;
  if (isLong(change.before) || isLong(change.after)) {
    told.kind = NoticedChange::LongValue;
    return told;
  }
  if (change.before != nullptr) told.value.before = *change.before;
  told.value.running = *change.after;
  return told;
}

}  // namespace

Notice noticeOf(Notice::What what, const BridgeSession& session) {
  return notice(what, session.uid, session.pid, session.program);
}

Notice noticeOfAgent(Notice::What what) { return notice(what, ::geteuid(), ::getpid(), OWN_NAME); }

std::string noticedText(const std::string& text) {
  return text::shortened(text, bridge::MAX_NOTICED_TEXT);
}

void ChangeTeller::add(const GroupChange& change) {
  NoticedChange told = noticed(change);
  std::string bytes;
  put(bytes, told);
  if (size_ + bytes.size() > bridge::MAX_NOTICED_CHANGES) {
    ++notice_.more;
    return;
  }
  size_ += bytes.size();
  notice_.changes.push_back(std::move(told));
}

}  // namespace agent
