#include "agent/bridge/change_tracker.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include "agent/base/bridge_session.h"

namespace agent {
namespace {

using namespace LPARAMS::Server;

ChangeTracker* g_tracker = nullptr;  // what the observers talk to; constant while commands run

}  // namespace

template <size_t Index>
void ChangeTracker::observe(int event) {
  g_tracker->changed(g_tracker->groups_[Index], event);
}

template <size_t... Indices>
void ChangeTracker::observeAll(Server_t& server, std::index_sequence<Indices...> /*indices*/) {
  if (server.fileParams.size() != sizeof...(Indices)) {
    throw std::logic_error("the module has another number of groups than the agent");
  }
  const auto groupAt = [&](size_t index) {
    return static_cast<ParamGroup*>(
        *std::next(server.fileParams.begin(), static_cast<ptrdiff_t>(index)));
  };
  (groups_.push_back({.name = groupAt(Indices)->name}), ...);
  (groupAt(Indices)->observers.push_back(&ChangeTracker::observe<Indices>), ...);
}

ChangeTracker::ChangeTracker(Server_t& server) {
  g_tracker = this;
  observeAll(server, std::make_index_sequence<GROUPS>());
}

ChangeTracker::~ChangeTracker() { g_tracker = nullptr; }

uint64_t ChangeTracker::revision(std::string_view group) const {
  const std::lock_guard lock(mutex_);
  const auto found = std::ranges::find(groups_, group, &Group::name);
  return found == groups_.end() ? 0 : found->revision;
}

ChangeTracker::Ticket ChangeTracker::subscribe(Subscriber subscriber,
                                               const std::function<void()>& begin) {
  const std::lock_guard lock(mutex_);
  begin();
  return subscribers_.insert(subscribers_.end(), std::move(subscriber));
}

void ChangeTracker::unsubscribe(Ticket ticket) {
  const std::lock_guard lock(mutex_);
  subscribers_.erase(ticket);
}

void ChangeTracker::writeBrokeOff(std::string_view group) {
  const std::lock_guard lock(mutex_);
  const auto found = std::ranges::find(groups_, group, &Group::name);
  if (found != groups_.end() && found->writing) tell(*found);
}

void ChangeTracker::changed(Group& group, int event) {
  const std::lock_guard lock(mutex_);
  const bool begins = event != 0;
  group.writing = begins;
  if (begins) {
    ++group.revision;
  } else {
    tell(group);
  }
}

/// REQUIRES: the lock is held, by the thread that has written.
void ChangeTracker::tell(Group& group) {
  group.writing = false;
  const BridgeSession* session = BridgeSession::current();
  bridge::Event event{group.name, group.revision};
  if (session != nullptr) {
    event.uid = session->uid;
    event.pid = session->pid;
  }
  for (const Subscriber& subscriber : subscribers_) subscriber(event);
}

}  // namespace agent
