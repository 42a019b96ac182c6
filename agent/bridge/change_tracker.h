// Which groups have changed, how often, and by whom.
#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <string>
#include <string_view>

#include "bridge/protocol.h"
#include "lparams/server.h"

namespace agent {

/// Counts the writes of each group, through the groups' observers, and tells subscribers. One
/// exists at a time. Thread-safe.
class ChangeTracker {
 public:
  /// Adds an observer to every group. REQUIRES: built before the first command; the module outlives
  /// it.
  explicit ChangeTracker(LPARAMS::Server::Server_t& server);
  ~ChangeTracker();

  ChangeTracker(const ChangeTracker&) = delete;
  ChangeTracker& operator=(const ChangeTracker&) = delete;

  /// The group's revision, 1 before its first write; 0 if there is no such group. It grows before a
  /// write changes the first value: values that are read after it was asked for are at least as
  /// new.
  uint64_t revision(std::string_view group) const;

  /// Called after each write, also after one that broke off half-way.
  using Subscriber = std::function<void(const bridge::Event&)>;
  using Ticket = std::list<Subscriber>::iterator;

  /// Subscribers are called on the writing thread, with the tracker's lock held: they must not
  /// wait, nor call the tracker. `begin` is called in the same way, before the first of them.
  Ticket subscribe(
      Subscriber subscriber, const std::function<void()>& begin = [] {});
  void unsubscribe(Ticket ticket);

  /// Tells the subscribers of a write of the group that will not report its end. Does nothing if
  /// the group's last write did.
  void writeBrokeOff(std::string_view group);

 private:
  struct Group {
    const char* name;
    uint64_t revision = 1;
    bool writing = false;  // between the observer's calls with 1 and 0
  };
  template <size_t Index>
  static void observe(int event);
  template <size_t... Indices>
  void observeAll(LPARAMS::Server::Server_t& server, std::index_sequence<Indices...> indices);
  void changed(Group& group, int event);
  void tell(Group& group);

  static constexpr size_t GROUPS = 6;  // an observer is a plain function: one per group

  mutable std::mutex mutex_;  // protects everything below
  std::vector<Group> groups_;
  std::list<Subscriber> subscribers_;
};

}  // namespace agent
