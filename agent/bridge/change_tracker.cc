#include "agent/bridge/change_tracker.h"

#include <utility>

namespace agent {

ChangeTracker::ChangeTracker(const LPARAMS::Server::Server_t& server) {
  for (const LPARAMS::Server::Param* group : server.fileParams) revisions_.emplace(group->name, 1);
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
  for (const Subscriber& subscriber : subscribers_) subscriber(event);
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
