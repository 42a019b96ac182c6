#include "agent/events/events.h"

#include <new>
#include <utility>

#include "agent/base/log.h"
#include "agent/events/notices.h"
#include "bridge/protocol.h"

namespace agent {

using bridge::Notice;

Events::Ticket Events::watch(Watcher watcher, const std::function<void()>& begin) {
  const MutexLock lock(mutex_);
  const auto ticket = watchers_.insert(watchers_.end(), std::move(watcher));
  try {
    begin();
    if (degradation_) ticket->tell(bridge::encode(*degradation_));
  } catch (...) {
    watchers_.erase(ticket);
    throw;
  }
  counts_.watchers = watchers_.size();
  return ticket;
}

void Events::unwatch(Ticket ticket) {
  const MutexLock lock(mutex_);
  watchers_.erase(ticket);
  counts_.watchers = watchers_.size();
}

void Events::publish(const Notice& notice) noexcept {
  const MutexLock lock(mutex_);
  publishLocked(notice);
}

void Events::publishLocked(const Notice& notice) noexcept try {
  switch (notice.what) {
    case Notice::Written:
    case Notice::WrittenInPart:
      ++counts_.writes;
      break;
    case Notice::Saved:
    case Notice::NothingToSave:
      ++counts_.saves;
      break;
    case Notice::NotSaved:
      ++counts_.failedSaves;
      break;
    case Notice::DegradationEnded:
      degradation_.reset();
      break;
    case Notice::DegradationBegan:
      degradation_ = notice;
      break;
    case Notice::Refused:
    case Notice::AgentEnds:
      break;
  }
  if (watchers_.empty()) return;
  const std::string frame = bridge::encode(notice);
  for (const Watcher& watcher : watchers_) watcher.tell(frame);
} catch (const std::bad_alloc&) {
  logOften(Level::Error, "no memory to tell those who watch");
  for (const Watcher& watcher : watchers_) watcher.lose();
}

void Events::lose() noexcept {
  const MutexLock lock(mutex_);
  for (const Watcher& watcher : watchers_) watcher.lose();
}

Events::Counts Events::counts() const {
  const MutexLock lock(mutex_);
  return counts_;
}

void Events::countRefusal() {
  const MutexLock lock(mutex_);
  ++counts_.refusals;
}

void Events::begin() {
  const MutexLock lock(mutex_);
  ++active_;
}

void Events::end() noexcept {
  const MutexLock lock(mutex_);
  --active_;
  endIfIdle();
}

void Events::publishEnd() noexcept {
  const MutexLock lock(mutex_);
  ending_ = true;
  endIfIdle();
}

void Events::endIfIdle() noexcept {
  if (!ending_ || ended_ || active_ > 0) return;
  try {
    publishLocked(noticeOfAgent(Notice::AgentEnds));
  } catch (const std::bad_alloc&) {
    for (const Watcher& watcher : watchers_) watcher.lose();
  }
  ended_ = true;
  endPublished_.notifyAll();
}

void Events::waitForEnd() {
  const MutexLock lock(mutex_);
  while (!ended_) endPublished_.wait(mutex_);
}

}  // namespace agent
