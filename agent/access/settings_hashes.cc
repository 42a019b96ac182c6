#include "agent/access/settings_hashes.h"

#include <utility>

namespace agent {

schema::SettingsHash SettingsHashes::running() {
  const MutexLock lock(mutex_);
  // Asked for before the values: those of a write that ends meanwhile are looked at once more.
  std::vector<uint64_t> revisions;
  for (const auto* group : settings_.groups()) {
    revisions.push_back(changes_.revision(group->name));
  }
  if (revisions != revisions_) {
    running_ = schema::settingsHashOf(settings_);
    revisions_ = std::move(revisions);
  }
  return running_;
}

std::optional<schema::SettingsHash> SettingsHashes::saved() {
  auto settings = saved_.current();
  if (!settings) return std::nullopt;
  const MutexLock lock(mutex_);
  if (settings != savedSettings_) {
    savedHash_ = schema::settingsHashOf(*settings);
    savedSettings_ = std::move(settings);
  }
  return savedHash_;
}

}  // namespace agent
