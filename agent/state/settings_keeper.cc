#include "agent/state/settings_keeper.h"

#include <exception>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "agent/base/log.h"
#include "agent/state/durable_file.h"
#include "agent/state/kept_copies.h"
#include "agent/state/sealed_text.h"
#include "agent/state/settings_review.h"
#include "inspection/settings_completeness.h"
#include "inspection/settings_text.h"

namespace agent {
namespace {

constexpr const char* HOW_TO_FORCE = "a forced save (lparamsctl save --force) replaces it";

/// Throws if no start would accept the text.
void refuseUnreadable(const std::string& text) {
  const std::string reason = inspection::incompleteBecause(text);
  if (reason.empty()) return;
  throw std::runtime_error("the settings could not be read back from a file (" + reason +
                           "); nothing was written");
}

}  // namespace

void SettingsKeeper::adopt(StartingPoint start, std::string degradedReason, int reports,
                           inspection::Findings findings) {
  const MutexLock lock(saving_);
  if (start.source == StartingPoint::FirstStart) {
    reviewImported(degradedReason, findings);
  } else {
    onDisk_ = start.text;
    asFound_ = inspection::withoutByteOrderMark(start.text) != currentText();
    compareWithLastSave(start.text, degradedReason, reports, findings);
  }
  std::string disk;
  try {
    if (degradedReason.empty()) {
      makeDurable(start);
    } else if (start.source != StartingPoint::FirstStart) {
      (void)keepCopy(directory_.settings(), "damaged", start.text);
      asFound_ = false;  // once is enough
    }
  } catch (const std::runtime_error& error) {
    if (start.source == StartingPoint::FirstStart) throw;
    disk = error.what();
    log(Level::Warning, "settings are served, but could not be made durable", {{"reason", disk}});
  }
  if (!degradedReason.empty()) {
    importFailed_ = start.source == StartingPoint::FirstStart;
    log(Level::Warning, "degraded: settings are served, but not saved",
        {{"reason", degradedReason}});
  }
  const MutexLock stateLock(stateMutex_);
  state_.degradedReason = std::move(degradedReason);
  state_.disk = std::move(disk);
  if (onDisk_) savedText_ = std::make_shared<const std::string>(*onDisk_);
  state_.findings = std::move(findings);
}

/// Settings of earlier versions may hold values that a settings file would not give back.
void SettingsKeeper::reviewImported(std::string& degradedReason, inspection::Findings& findings) {
  findings = reviewReread(server_, currentText(), maxUsers_);
  logFindings(Level::Warning, findings);
  const std::string names = namesNotReadBack(findings);
  if (names.empty() || !degradedReason.empty()) return;
  degradedReason = "the settings of earlier versions hold what a settings file cannot (" + names +
                   "); they are kept";
}

void SettingsKeeper::makeDurable(StartingPoint& start) {
  if (start.source == StartingPoint::FirstStart) {
    start.text = currentText();
    writeShadowCopy(start.text);
    replaceFileAtomically(directory_.settings(), start.text);
    onDisk_ = start.text;
  } else {
    if (!unread_.empty()) throw std::runtime_error(unread_);  // it may be the better one
    writeShadowCopy(start.text);
  }
  finishImport(directory_);
}

/// The settings file need not be what was saved last: it may have been edited, or damaged in a way
/// that leaves it complete. Only the shadow copy can tell, if it is intact.
void SettingsKeeper::compareWithLastSave(const std::string& found, std::string& degradedReason,
                                         int reports, inspection::Findings& findings) {
  std::optional<std::string> saved;
  try {
    saved = readShadowCopy(directory_);
    if (const std::string damage = shadowCopyDamage(directory_); !damage.empty()) {
      log(Level::Warning, "the shadow copy is damaged",
          {{"file", directory_.shadowCopy()}, {"damage", damage}});
    }
  } catch (const std::system_error& error) {
    unread_ = error.what();
    if (reports > 0 && degradedReason.empty()) {
      degradedReason =
          "the settings file was loaded with reports, and what was saved last cannot be read: " +
          unread_;
    }
    return;
  }
  if (!saved || *saved == found) return;
  inspection::Findings edits = reviewEdit(*saved, server_);
  logFindings(Level::Notice, edits);
  const auto differences = static_cast<long long>(edits.count);
  append(findings, std::move(edits));
  if (!degradedReason.empty()) return;
  if (reports > 0) {
    degradedReason = "the settings file is not what was saved last, which " +
                     directory_.shadowCopy() + " holds, and it was loaded with reports";
    return;
  }
  std::string kept;
  try {
    kept = keepCopy(directory_.settings(), "former", *saved);
  } catch (const std::system_error& error) {
    degradedReason = std::string(
                         "the settings file is not what was saved last, and that cannot be "
                         "kept: ") +
                     error.what();
    return;
  }
  log(Level::Notice,
      "the settings file is not what was saved last: it was edited, or a save was cut short",
      {{"file", directory_.settings()}, {"saved", kept}, {"differences", differences}});
}

std::string SettingsKeeper::save(bool force, const Saved& saved) {
  const MutexLock lock(saving_);
  std::string failure;
  SaveOutcome outcome;
  try {
    failure = refusal(force);
    if (failure.empty()) {
      outcome.written = saveDurably();
      if (importFailed_) giveUpImport(directory_);
      importFailed_ = false;
    }
  } catch (const std::exception& error) {
    failure = error.what();
  }
  outcome.failure = failure;
  std::shared_ptr<const std::string> text;
  {
    const MutexLock stateLock(stateMutex_);
    if (failure.empty()) {
      outcome.endedDegradation = !state_.degradedReason.empty();
      state_.degradedReason.clear();
      state_.disk.clear();
      state_.findings = std::move(reviewed_);
      state_.lastSave = std::time(nullptr);
      if (!savedText_ || *savedText_ != *onDisk_) {
        savedText_ = std::make_shared<const std::string>(*onDisk_);
      }
      text = savedText_;
    }
    state_.lastFailure = failure;
  }
  if (text && saved) saved(text);
  if (observer_) observer_(outcome);
  return failure;
}

void SettingsKeeper::observeSaves(SaveObserver observer) {
  const MutexLock lock(saving_);
  observer_ = std::move(observer);
}

SettingsKeeper::State SettingsKeeper::state() const {
  const MutexLock lock(stateMutex_);
  return state_;
}

std::shared_ptr<const std::string> SettingsKeeper::savedText() const {
  const MutexLock lock(stateMutex_);
  return savedText_;
}

std::vector<std::string> SettingsKeeper::textsOnDisk() {
  const MutexLock lock(saving_);
  std::vector<std::string> texts;
  const auto add = [&](const auto& read) {
    try {
      std::optional<std::string> text = read();
      if (text && inspection::incompleteBecause(*text).empty()) texts.push_back(std::move(*text));
    } catch (const std::system_error& error) {
      log(Level::Warning, "a settings file cannot be read", {{"reason", error.what()}});
    }
  };
  add([&] { return readFile(directory_.settings(), inspection::MAX_SETTINGS_SIZE + 1); });
  add([&] { return readShadowCopy(directory_); });
  return texts;
}

/// Why nothing may be written; empty if it may.
std::string SettingsKeeper::refusal(bool force) {
  const std::string degradedReason = state().degradedReason;
  if (!degradedReason.empty() && !force) {
    return "the settings were not loaded whole (" + degradedReason + "); look at them, then " +
           HOW_TO_FORCE;
  }
  const auto found = readFile(directory_.settings(), inspection::MAX_SETTINGS_SIZE + 1);
  if (found && found == inDoubt_) onDisk_ = found;
  if (found != onDisk_) {
    std::string failure = refuseForeignChange(found, force);
    if (!failure.empty()) return failure;
  }
  if (degradedReason.empty() && unread_.empty()) return {};
  keepLastSave(found, force);
  forgetSnapshot();
  return {};
}

/// Before the shadow copy is replaced, which may be better than the settings file. Throws if it
/// cannot be read, unless that is not to matter: then it gets another name.
void SettingsKeeper::keepLastSave(const std::optional<std::string>& found, bool force) {
  std::optional<std::string> saved;
  try {
    saved = readShadowCopy(directory_);
  } catch (const std::system_error& error) {
    if (!force) throw;
    const std::string name = nameAside(directory_.shadowCopy(), "damaged");
    log(Level::Warning, "a damaged file was moved aside",
        {{"file", directory_.shadowCopy()},
         {"damage", error.what()},
         {"kept", moveAside(directory_.shadowCopy(), name)}});
  }
  if (saved && saved != found) (void)keepCopy(directory_.settings(), "former", *saved);
  unread_.clear();
}

std::string SettingsKeeper::refuseForeignChange(const std::optional<std::string>& found,
                                                bool force) {
  std::string what = directory_.settings() + (found ? " was edited" : " was removed") +
                     " while the agent was running; ";
  if (found) {
    if (found->size() > inspection::MAX_SETTINGS_SIZE)
      return what + "it is too large now to be kept: move it";
    if (found != foreign_) {
      foreignKept_ = keepCopy(directory_.settings(), "edited", *found);
      foreign_ = found;
      log(Level::Warning, "the settings file was edited while the agent was running",
          {{"file", directory_.settings()}, {"kept", foreignKept_}});
    }
    what += "a copy was kept as " + foreignKept_ + "; ";
  }
  if (!force) return what + HOW_TO_FORCE;
  forgetSnapshot();  // else the module may find nothing to write
  return {};
}

/// False if nothing had to be written.
bool SettingsKeeper::saveDurably() {
  std::string text;
  {
    const MutexLock turn(writeTurn_);
    text = currentText();
    review(text);
  }
  // The shadow copy first: from here on the new settings are safe, whatever becomes of the file.
  writeShadowCopy(text);
  if (onDisk_ == text && text == snapshot()) return false;  // the file, just read, holds them

  if (asFound_ && onDisk_) {
    log(Level::Notice, "the settings file says what the settings do not hold; it was kept",
        {{"kept", keepCopy(directory_.settings(), "asfound", *onDisk_)}});
    asFound_ = false;
  }
  // The module writes over the file that a crash may have left, and renames it without a sync: a
  // power cut could put its old text in the place of the settings.
  removeFile(directory_.backup());
  std::string report;
  if (!replaceSettings(text, report)) {
    onDisk_ = readFile(directory_.settings(),
                       inspection::MAX_SETTINGS_SIZE + 1);  // as the module left it
    throw std::runtime_error(report);
  }
  try {
    const std::string written = snapshot();
    onDisk_ = readFile(directory_.settings(), inspection::MAX_SETTINGS_SIZE + 1);
    if (onDisk_ != written) {
      throw std::runtime_error(directory_.settings() + " does not hold what was written to it");
    }
    syncFile(directory_.settings());
    writeShadowCopy(written);  // a command may have come between the two texts
  } catch (...) {
    forgetSnapshot();  // the next save must write again
    throw;
  }
  forgetOldCopies(directory_.settings());
  forgetOldCopies(directory_.legacy());
  return true;
}

/// Has the module write the file, of settings that no start would refuse. Returns what it returns.
bool SettingsKeeper::replaceSettings(const std::string& text, std::string& report) {
  const MutexLock turn(writeTurn_);
  std::string now = currentText();
  if (now != text) review(now);
  if (onDisk_ != text) forgetSnapshot();  // it may hold them, and the file does not
  try {
    if (!server_.save(&report)) return false;
  } catch (...) {
    inDoubt_ = std::move(now);  // the module may have run out of memory behind the rename
    throw;
  }
  // Needs no memory. Holds if the file cannot be read now: nobody else has changed it.
  onDisk_ = std::move(now);
  inDoubt_.reset();
  return true;
}

/// Tells what a start would find in the text that is to be saved. Throws if none would accept it.
/// REQUIRES: the write turn.
void SettingsKeeper::review(const std::string& text) {
  refuseUnreadable(text);
  reviewed_ = reviewReread(server_, text, maxUsers_);
  logFindings(Level::Warning, reviewed_, state().findings);
}

void SettingsKeeper::writeShadowCopy(const std::string& text) {
  const std::string whole = sealed(text);
  try {
    if (readFile(directory_.shadowCopy(), whole.size() + 1) == whole) return;
  } catch (const std::system_error&) {  // to be replaced all the more
  }
  replaceFileAtomically(directory_.shadowCopy(), whole);
}

std::string SettingsKeeper::currentText() { return inspection::textOf(server_); }

std::string SettingsKeeper::snapshot() {
  const basekit::ObjectLevelLockable::Lock lock(server_);
  return server_.rawSettings;
}

void SettingsKeeper::forgetSnapshot() {
  const basekit::ObjectLevelLockable::Lock lock(server_);
  server_.rawSettings.clear();
}

}  // namespace agent
