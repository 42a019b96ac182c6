// Which groups have been written, how often, and by whom.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <string>
#include <string_view>

#include "agent/base/bridge_session.h"
#include "agent/base/mutex.h"
#include "bridge/protocol.h"
#include "lparams/server.h"

namespace agent {

/// Counts the writes of each group and tells subscribers of them. Thread-safe.
class ChangeTracker {
 public:
  /// Where an agent begins that starts now: beyond everything that those before it have reached, so
  /// that what was read from them is stale, unless the clock was put back. Fits 53 bits.
  static uint64_t firstRevision();

  /// Knows the groups of the settings root. `first` is their revision before the first write.
  explicit ChangeTracker(const LPARAMS::Server::Server_t& server, uint64_t first = firstRevision());

  ChangeTracker(const ChangeTracker&) = delete;
  ChangeTracker& operator=(const ChangeTracker&) = delete;

  /// The group's revision; 0 if there is no such group. It grows after a
  /// write has changed the values: those that are read after it was asked for are at least as new.
  uint64_t revision(std::string_view group) const;

  /// To be called after each write of a group, also after one that broke off half-way. Returns the
  /// group's new revision; 0, and nobody is told, if there is no such group.
  uint64_t written(std::string_view group, const BridgeSession& writer);

  using Subscriber = std::function<void(const bridge::Event&)>;
  using Ticket = std::list<Subscriber>::iterator;

  /// Has the subscriber called after each write, on the writing thread and with the tracker's lock
  /// held: it must not wait, nor call the tracker. `begin` is called in the same way, before the
  /// first of these calls.
  Ticket subscribe(
      Subscriber subscriber, const std::function<void()>& begin = [] {});
  void unsubscribe(Ticket ticket);

 private:
  mutable Mutex mutex_;
  std::map<std::string, uint64_t, std::less<>> revisions_ GUARDED_BY(mutex_);  // by group
  std::list<Subscriber> subscribers_ GUARDED_BY(mutex_);
};

}  // namespace agent
