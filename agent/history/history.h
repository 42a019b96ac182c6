// Who has saved what, when and why: each change of the settings file as a numbered revision.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/base/mutex.h"
#include "agent/history/revision_file.h"
#include "agent/state/state_directory.h"
#include "bridge/history.h"

namespace agent {

/// Who has saved.
struct Author {
  uid_t uid;
  pid_t pid;
  std::string program;

  /// The agent itself.
  static Author self();
};

/// Keeps the newest revisions, each in a file of its own in the state directory that survives a
/// power cut. A revision is written when its settings are durable: one that is there was saved. One
/// that a power cut has kept from being written is made good at the next start.
///
/// What goes wrong here is logged and told by problem(); nothing else fails for it. Thread-safe; no
/// lock that a reader of settings needs is held while a file is written.
class History {
 public:
  /// Upper limit of all files together, in bytes. The newest one is kept whatever its size.
  static constexpr uint64_t MAX_SIZE = 32 * 1024 * 1024;

  /// Reads what there is. `kept` is how many revisions are kept, at least 1. REQUIRES: the
  /// directory outlives it.
  History(const StateDirectory& directory, size_t kept, uint64_t maxSize = MAX_SIZE);

  History(const History&) = delete;
  History& operator=(const History&) = delete;

  /// To be called with the settings that a start has found saved: the agent's own revision, unless
  /// they are those of the newest one.
  void found(const std::shared_ptr<const std::string>& text);

  /// To be called with the text of a save that has succeeded, in the order of the saves. Returns
  /// the number of the revision that it makes; 0 if the text is that of the newest one already, or
  /// if it could not be kept.
  uint64_t saved(const Author& author, const std::string& message,
                 const std::shared_ptr<const std::string>& text);

  /// The number of the newest revision; 0 if there is none.
  uint64_t newest() const;

  /// What is damaged, or could not be written; empty if nothing is.
  std::string problem() const;

  /// The numbers of the revisions that there are, oldest first.
  std::vector<uint64_t> numbers() const;

  /// Nothing if there is no such revision, or not any more. Throws std::exception, with the reason,
  /// if it cannot be read.
  std::optional<KeptRevision> read(uint64_t number) const;

 private:
  void addFiles() REQUIRES(mutex_);
  void findNewest() REQUIRES(writing_);
  uint64_t write(const Author& author, const std::string& message,
                 const std::shared_ptr<const std::string>& text) REQUIRES(writing_);
  void forgetOld() REQUIRES(mutex_);
  std::string pathOf(uint64_t number) const;

  const StateDirectory& directory_;
  const size_t kept_;
  const uint64_t maxSize_;

  Mutex writing_;                                                       // taken first
  std::shared_ptr<const std::string> newestText_ GUARDED_BY(writing_);  // null if there is none
  uint64_t lastNumber_ GUARDED_BY(writing_) = 0;                        // that was used

  mutable Mutex mutex_;
  std::map<uint64_t, uint64_t> sizes_ GUARDED_BY(mutex_);  // in bytes, by number
  std::string damage_ GUARDED_BY(mutex_);
  std::string writeFailure_ GUARDED_BY(mutex_);
};

}  // namespace agent
