// Makes what the module saves durable.
#pragma once

#include <ctime>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "agent/base/mutex.h"
#include "agent/base/write_turn.h"
#include "agent/state/recovery.h"
#include "agent/state/state_directory.h"
#include "inspection/finding.h"
#include "lparams/server.h"
#include "lparams/values/values.h"

namespace agent {

/// Stands between the bridge's save command and the module's own save. Thread-safe: saves take
/// turns; no lock that a reader of settings needs is held while a file is synced.
///
/// Guarantee: after save() has succeeded, the saved settings survive a power cut. After one that
/// was refused, failed or was cut short, either the settings of the last success or the new ones
/// do.
class SettingsKeeper {
 public:
  /// More users than `maxUsers` are a finding. REQUIRES: the others outlive the keeper.
  SettingsKeeper(LPARAMS::Server::Server_t& server, const StateDirectory& directory,
                 size_t maxUsers = LPARAMS::Server::MAX_USERS)
      : server_(server), directory_(directory), maxUsers_(maxUsers) {}

  /// Makes durable what the module has loaded, with so many reports and these findings in the file.
  /// `degradedReason` says why the load was not whole, or is empty; a file that is not what was
  /// saved last and gives reports is another reason, and so are imported settings that a file
  /// cannot hold. Then nothing but a copy is written, and saves are refused until one is forced.
  ///
  /// A disk that takes nothing does not keep complete settings from being served: state() tells,
  /// and the next save makes good. Throws std::system_error only if they are in no file at all.
  void adopt(StartingPoint start, std::string degradedReason, int reports = 0,
             inspection::Findings findings = {});

  /// Saves the settings. Returns why it was refused or failed, in words; empty after a success.
  /// `force` confirms settings that were not loaded whole, and replaces a file that somebody else
  /// has changed; a copy of that file is kept. `saved` is called after a success, with the text
  /// that the file holds; saves wait until it has returned.
  using Saved = std::function<void(const std::shared_ptr<const std::string>& text)>;
  std::string save(bool force, const Saved& saved = {});

  struct SaveOutcome {
    std::string failure = {};       ///< why it was refused or failed; empty after a success
    bool written = false;           ///< the settings file is another one
    bool endedDegradation = false;  ///< saves are not refused any more
  };
  using SaveObserver = std::function<void(const SaveOutcome& outcome)>;

  /// Has the observer told of each save when it is over, one after the other; none if it is empty.
  /// It must not throw, nor save. Call while nobody saves.
  void observeSaves(SaveObserver observer);

  struct State {
    std::string degradedReason;           ///< why saves are refused; empty if they are not
    std::optional<std::time_t> lastSave;  ///< the last success in this process
    std::string disk;  ///< what could not be made durable at the start; empty after a success
    std::string lastFailure;  ///< of the last save, in words; empty after a success
    /// What a load of the settings file makes of it, and what differed at the start from what was
    /// saved last. A success replaces them by those of the text that was saved.
    inspection::Findings findings;
  };
  /// Does not wait for a running save.
  State state() const;

  /// The text of what was saved last or, before the first save, loaded; null if no file holds
  /// settings yet. A whole settings file. Does not wait for a running save.
  std::shared_ptr<const std::string> savedText() const;

  /// The texts that the settings file and the shadow copy hold now, as far as they can be read and
  /// are whole: what is in neither is in no file. Waits for a running save.
  std::vector<std::string> textsOnDisk();

  const StateDirectory& directory() const { return directory_; }

  /// Commands that write settings take it; a text that is saved is one of between two of them.
  WriteTurn& writeTurn() { return writeTurn_; }

 private:
  void makeDurable(StartingPoint& start) REQUIRES(saving_);
  void compareWithLastSave(const std::string& found, std::string& degradedReason, int reports,
                           inspection::Findings& findings) REQUIRES(saving_);
  void reviewImported(std::string& degradedReason, inspection::Findings& findings);
  void review(const std::string& text) REQUIRES(saving_);
  std::string refusal(bool force) REQUIRES(saving_);
  std::string refuseForeignChange(const std::optional<std::string>& found, bool force)
      REQUIRES(saving_);
  void keepLastSave(const std::optional<std::string>& found, bool force) REQUIRES(saving_);
  bool saveDurably() REQUIRES(saving_);
  bool replaceSettings(const std::string& text, std::string& report) REQUIRES(saving_);
  void writeShadowCopy(const std::string& text) REQUIRES(saving_);
  std::string currentText();
  std::string snapshot();
  void forgetSnapshot();

  LPARAMS::Server::Server_t& server_;
  const StateDirectory& directory_;
  const size_t maxUsers_;

  WriteTurn writeTurn_;

  Mutex saving_;                                            // taken first
  std::optional<std::string> onDisk_ GUARDED_BY(saving_);   // the file, as the agent left it
  std::optional<std::string> inDoubt_ GUARDED_BY(saving_);  // what may be in it by a failed save
  bool asFound_ GUARDED_BY(saving_) = false;                // it says what the settings do not hold
  bool importFailed_ GUARDED_BY(saving_) = false;           // of settings of earlier versions
  std::string unread_ GUARDED_BY(saving_);  // why what was saved last cannot be read, if so
  std::optional<std::string> foreign_ GUARDED_BY(saving_);  // the last change by somebody else,
  std::string foreignKept_ GUARDED_BY(saving_);             // and the name of its copy

  inspection::Findings reviewed_ GUARDED_BY(saving_);  // of the text that is being saved
  SaveObserver observer_ GUARDED_BY(saving_);

  mutable Mutex stateMutex_;
  State state_ GUARDED_BY(stateMutex_);
  std::shared_ptr<const std::string> savedText_ GUARDED_BY(stateMutex_);
};

}  // namespace agent
