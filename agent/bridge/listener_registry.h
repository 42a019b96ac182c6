// The listeners that the loaded modules have registered, and the calls that the bridge makes to
// them.
#pragma once

#include <list>
#include <map>
#include <string>

#include "agent/base/bridge_session.h"
#include "agent/base/mutex.h"
#include "platform/command_bridge.h"

namespace agent {

/// Thread-safe. No lock is held while a listener executes a command, so those of one listener run
/// side by side; it is told of one session after the other.
class ListenerRegistry {
 public:
  void add(CommandListener* listener);

  /// Returns when no call of the listener runs any more, and none starts. REQUIRES: not called from
  /// inside a call of that listener.
  void remove(CommandListener* listener);

  enum class Outcome {
    Succeeded,
    Refused,         ///< the listener answered 0
    MalformedInput,  ///< the listener threw a `const char*`, which is in `error`
    Failed,          ///< the listener threw anything else; what is known of it is in `error`
    NoSuchModule,
  };

  struct Result {
    Outcome outcome = Outcome::NoSuchModule;
    int value = 0;  ///< the listener's truth value
    std::string error;
  };

  /// Executes a command with the first listener of the module and appends to `out`.
  Result execute(BridgeSession& session, ModuleIdType module, long cmd, const std::string& in,
                 std::string& out);

  /// Tell every listener; what one throws is logged. The first session is announced before it is
  /// opened; the last one of a user and the last of all after they are closed. `sessionOpened`
  /// throws std::bad_alloc, and has told nobody then.
  void sessionOpened(BridgeSession& session);
  void sessionClosed(BridgeSession& session) noexcept;

 private:
  struct Entry {
    CommandListener* listener;
    int running = 0;       // calls in progress
    bool removed = false;  // no new calls
  };
  class Call;

  template <typename Visit>
  void forEachListener(Visit visit) REQUIRES(telling_);

  void begin(Entry& entry) REQUIRES(mutex_) { ++entry.running; }  // it stays in the list
  void end(Entry& entry) REQUIRES(mutex_) {
    if (--entry.running == 0 && entry.removed) idle_.notifyAll();
  }
  void endCall(Entry& entry) {
    const MutexLock lock(mutex_);
    end(entry);
  }

  Mutex telling_;  // held while listeners are told of a session; taken before the other
  Mutex mutex_;    // protects also what the entries hold
  ConditionVariable idle_;
  std::list<Entry> entries_ GUARDED_BY(mutex_);  // a list: entries stay in place while calls run
  std::map<uid_t, int> sessionsOfUser_ GUARDED_BY(mutex_);
  int sessions_ GUARDED_BY(mutex_) = 0;
};

/// The one registry of the process. Constructed at the first call and never destroyed: modules may
/// take their listeners back as late as they like.
ListenerRegistry& listenerRegistry();

}  // namespace agent
