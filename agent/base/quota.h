// A limited good, shared by the users of the bridge.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <map>

#include "agent/base/mutex.h"

namespace agent {

/// Root and the agent's own user may take all that there is. All others together leave them a
/// reserve, and each of them may take only a part, so that no user can keep out another one.
/// Thread-safe.
class Quota {
 public:
  struct Limits {
    size_t all;       ///< of everybody together
    size_t others;    ///< of everybody but root and the agent's own user, together
    size_t oneUser;   ///< of each of those
    size_t free = 0;  ///< a share up to this is not counted
  };
  explicit Quota(const Limits& limits) : limits_(limits) {}

  Quota(const Quota&) = delete;
  Quota& operator=(const Quota&) = delete;

  /// False if that is over a limit; nothing is taken then.
  bool take(uid_t user, size_t amount);
  void giveBack(uid_t user, size_t amount);

  size_t free() const { return limits_.free; }

 private:
  const Limits limits_;
  Mutex mutex_;
  size_t all_ GUARDED_BY(mutex_) = 0;
  size_t others_ GUARDED_BY(mutex_) = 0;
  std::map<uid_t, size_t> ofUser_ GUARDED_BY(mutex_);  // others only; no entry is 0
};

/// What one session has of it; given back at the end. Not thread-safe.
class QuotaShare {
 public:
  /// REQUIRES: the quota outlives the share.
  QuotaShare(Quota& quota, uid_t user) : quota_(quota), user_(user) {}
  ~QuotaShare() { (void)resize(0); }

  QuotaShare(const QuotaShare&) = delete;
  QuotaShare& operator=(const QuotaShare&) = delete;

  /// Takes more, or gives back, until it is so much. False if that is over a limit: it stays then.
  bool resize(size_t amount) {
    if (amount <= quota_.free()) amount = 0;
    if (amount > amount_ && !quota_.take(user_, amount - amount_)) return false;
    if (amount < amount_) quota_.giveBack(user_, amount_ - amount);
    amount_ = amount;
    return true;
  }

 private:
  Quota& quota_;
  const uid_t user_;
  size_t amount_ = 0;
};

}  // namespace agent
