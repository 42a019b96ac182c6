#include "agent/bridge/change_tracker.h"

#include <chrono>
#include <new>
#include <utility>

#include "agent/base/log.h"

namespace agent {

uint64_t ChangeTracker::firstRevision() {
  using namespace std::chrono;
  constexpr uint64_t PER_MILLISECOND = 1024;  // more than the writes that a millisecond has
  const auto now = duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
  return static_cast<uint64_t>(now) * PER_MILLISECOND;
}

ChangeTracker::ChangeTracker(const LPARAMS::Server::Server_t& server, uint64_t first) {
  for (const LPARAMS::Server::Param* group : server.fileParams) {
    revisions_.emplace(group->name, first);
  }
}

uint64_t ChangeTracker::revision(std::string_view group) const {
  const MutexLock lock(mutex_);
  const auto found = revisions_.find(group);
  return found == revisions_.end() ? 0 : found->second;
}

uint64_t ChangeTracker::written(std::string_view group, const BridgeSession& writer) {
  const MutexLock lock(mutex_);
  const auto found = revisions_.find(group);
  if (found == revisions_.end()) return 0;
  const bridge::Event event{found->first, ++found->second, writer.uid, writer.pid};
  for (const Subscriber& subscriber : subscribers_) {
    try {
      subscriber(event);
    } catch (const std::bad_alloc&) {
      logOften(Level::Error, "no memory to tell of a write");
    }
  }
  return event.revision;
}

ChangeTracker::Ticket ChangeTracker::subscribe(Subscriber subscriber,
                                               const std::function<void()>& begin) {
  const MutexLock lock(mutex_);
  begin();
  return subscribers_.insert(subscribers_.end(), std::move(subscriber));
}

void ChangeTracker::unsubscribe(Ticket ticket) {
  const MutexLock lock(mutex_);
  subscribers_.erase(ticket);
}

}  // namespace agent
