#include "agent/state/settings_keeper.h"

#include <exception>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "agent/base/log.h"
#include "agent/state/durable_file.h"
#include "agent/state/settings_completeness.h"

namespace agent {
namespace {

constexpr const char* HOW_TO_FORCE = "a forced save (lparamsctl save --force) replaces it";

}  // namespace

void SettingsKeeper::adopt(StartingPoint start, std::string degradedReason) {
  const std::lock_guard lock(saving_);
  if (!degradedReason.empty()) {
    log(Level::Warning, "degraded: settings are served, but not saved",
        {{"reason", degradedReason}});
    if (start.source != StartingPoint::FirstStart) {
      (void)writeNewFile(nameAside(directory_.settings(), "damaged"), start.text);
      onDisk_ = std::move(start.text);
    }
    const std::lock_guard stateLock(stateMutex_);
    state_.degradedReason = std::move(degradedReason);
    return;
  }
  if (start.source == StartingPoint::FirstStart) {
    start.text = currentText();
    writeShadowCopy(start.text);
    replaceFileAtomically(directory_.settings(), start.text);
  } else if (readFile(directory_.shadowCopy(), MAX_SETTINGS_SIZE + 1) != start.text) {
    writeShadowCopy(start.text);
  }
  shadowCopy_ = start.text;
  onDisk_ = std::move(start.text);
  finishImport(directory_);
}

std::string SettingsKeeper::save(bool force) {
  const std::lock_guard lock(saving_);
  std::string failure;
  try {
    failure = refusal(force);
    if (failure.empty()) saveDurably();
  } catch (const std::exception& error) {
    failure = error.what();
  }
  const std::lock_guard stateLock(stateMutex_);
  if (failure.empty()) {
    state_.degradedReason.clear();
    state_.lastSave = std::time(nullptr);
  }
  state_.lastFailure = failure;
  return failure;
}

SettingsKeeper::State SettingsKeeper::state() const {
  const std::lock_guard lock(stateMutex_);
  return state_;
}

/// Why nothing may be written; empty if it may.
std::string SettingsKeeper::refusal(bool force) {
  const std::string degradedReason = state().degradedReason;
  if (!degradedReason.empty() && !force) {
    return "the settings were not loaded whole (" + degradedReason + "); look at them, then " +
           HOW_TO_FORCE;
  }
  const auto found = readFile(directory_.settings(), MAX_SETTINGS_SIZE + 1);
  if (found != onDisk_) return refuseForeignChange(found, force);
  if (!degradedReason.empty()) forgetSnapshot();
  return {};
}

std::string SettingsKeeper::refuseForeignChange(const std::optional<std::string>& found,
                                                bool force) {
  std::string what = directory_.settings() + (found ? " was edited" : " was removed") +
                     " while the agent was running; ";
  if (found) {
    if (found->size() > MAX_SETTINGS_SIZE) return what + "it is too large now to be kept: move it";
    if (found != foreign_) {
      foreignKept_ = writeNewFile(nameAside(directory_.settings(), "edited"), *found);
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

void SettingsKeeper::saveDurably() {
  const std::string text = currentText();
  if (text == snapshot()) return;  // the file, just looked at, holds the settings

  // The shadow copy first: from here on the new settings are safe, whatever becomes of the file.
  writeShadowCopy(text);
  // The module writes over the file that a crash may have left, and renames it without a sync: a
  // power cut could put its old text in the place of the settings.
  removeFile(directory_.backup());
  std::string report;
  if (!server_.save(&report)) {
    onDisk_ = readFile(directory_.settings(), MAX_SETTINGS_SIZE + 1);  // as the module left it
    throw std::runtime_error(report);
  }
  try {
    const std::string written = snapshot();
    onDisk_ = written;  // holds if the file cannot be read now: nobody else has changed it
    onDisk_ = readFile(directory_.settings(), MAX_SETTINGS_SIZE + 1);
    if (onDisk_ != written) {
      throw std::runtime_error(directory_.settings() + " does not hold what was written to it");
    }
    syncFile(directory_.settings());
    writeShadowCopy(written);  // a command may have come between the two texts
  } catch (...) {
    forgetSnapshot();  // the next save must write again
    throw;
  }
}

void SettingsKeeper::writeShadowCopy(const std::string& text) {
  if (shadowCopy_ == text) return;
  shadowCopy_.reset();  // a failure leaves the one or the other
  replaceFileAtomically(directory_.shadowCopy(), text);
  shadowCopy_ = text;
}

std::string SettingsKeeper::currentText() {
  std::ostringstream text;
  (void)server_.save(text, 0);
  return std::move(text).str();
}

std::string SettingsKeeper::snapshot() {
  const basekit::ObjectLevelLockable::Lock lock(server_);
  return server_.rawSettings;
}

void SettingsKeeper::forgetSnapshot() {
  const basekit::ObjectLevelLockable::Lock lock(server_);
  server_.rawSettings.clear();
}

}  // namespace agent
