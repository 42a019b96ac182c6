#include "agent/base/quota.h"

#include "agent/base/own_user.h"

namespace agent {

bool Quota::take(uid_t user, size_t amount) {
  const MutexLock lock(mutex_);
  if (amount > limits_.all - all_) return false;
  if (user != 0 && !isOwnUser(user)) {
    if (amount > limits_.others - others_) return false;
    const auto found = ofUser_.find(user);
    const size_t before = found == ofUser_.end() ? 0 : found->second;
    if (amount > limits_.oneUser - before) return false;
    ofUser_[user] = before + amount;
    others_ += amount;
  }
  all_ += amount;
  return true;
}

void Quota::giveBack(uid_t user, size_t amount) {
  const MutexLock lock(mutex_);
  all_ -= amount;
  const auto found = ofUser_.find(user);
  if (found == ofUser_.end()) return;  // not one of the others
  others_ -= amount;
  if ((found->second -= amount) == 0) ofUser_.erase(found);
}

}  // namespace agent
