#include "agent/state/recovery.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <optional>
#include <stdexcept>
#include <utility>
#include <vector>

#include "agent/base/log.h"
#include "agent/state/durable_file.h"
#include "agent/state/kept_copies.h"
#include "agent/state/sealed_text.h"
#include "inspection/settings_completeness.h"
#include "lparams/interface/file_names.h"
#include "markup/tree.h"

namespace agent {
namespace {

constexpr size_t MAX_SEALED_SIZE =
    inspection::MAX_SETTINGS_SIZE + 100;  // bytes; the seal is a line

/// One of the files that can hold the settings.
struct Copy {
  std::string path;
  std::optional<std::string> text;  // nothing if there is no such file
  std::string damage;               // why it is not complete; empty if it is

  bool complete() const { return text && damage.empty(); }
  bool damaged() const { return text && !damage.empty(); }
};

Copy examine(const std::string& path) {
  // One byte more than allowed tells a larger file.
  Copy copy{path, readFile(path, inspection::MAX_SETTINGS_SIZE + 1), {}};
  if (copy.text) copy.damage = inspection::incompleteBecause(*copy.text);
  return copy;
}

/// A shadow copy is judged by its seal, one of an earlier version like the other files.
Copy examineShadowCopy(const std::string& path) {
  Copy copy{path, readFile(path, MAX_SEALED_SIZE + 1), {}};
  if (!copy.text) return copy;
  SealedText text = unsealed(std::move(*copy.text));
  copy.damage = text.seal == SealedText::Broken ? "its checksum does not fit"
                                                : inspection::incompleteBecause(text.text);
  copy.text = std::move(text.text);
  return copy;
}

/// Files may have come with the mode of an editor or of a copy from elsewhere. Says nothing where
/// the system refuses: nothing depends on it.
void makePrivate(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC);
  if (file < 0) return;
  struct stat status {};
  if (::fstat(file, &status) == 0 && S_ISREG(status.st_mode)) {
    if (status.st_uid != ::geteuid()) {
      [[maybe_unused]] const int refused = ::fchown(file, ::geteuid(), ::getegid());
    }
    if ((status.st_mode & 07777) != 0600) (void)::fchmod(file, 0600);
  }
  (void)::close(file);
}

void moveDamagedAside(const Copy& copy) {
  const std::string kept = moveAside(copy.path, nameAside(copy.path, "damaged"));
  log(Level::Warning, "a damaged file was moved aside",
      {{"file", copy.path}, {"damage", copy.damage}, {"kept", kept}});
}

/// Settings of an earlier version. One that is too large to be imported is kept all the same: the
/// module would delete it.
struct Legacy {
  explicit Legacy(std::string from)
      : path(std::move(from)), text(readFile(path, markup::MAX_SIZE + 1)) {}

  bool isThere() const { return text.has_value(); }
  bool isTooLarge() const { return text && text->size() > markup::MAX_SIZE; }

  /// Makes it survive under another name too.
  void copyTo(const std::string& other) const {
    isTooLarge() ? copyFileAtomically(path, other) : replaceFileAtomically(other, *text);
  }

  const std::string path;
  const std::optional<std::string> text;  // nothing if there is no such file; the beginning of it
};

bool holdSame(const Legacy& a, const Legacy& b) {
  if (a.text != b.text || !a.isTooLarge()) return a.text == b.text;
  std::ifstream inA(a.path);
  std::ifstream inB(b.path);
  std::string chunkA(64 * 1024, '\0');
  std::string chunkB = chunkA;
  do {
    inA.read(chunkA.data(), static_cast<std::streamsize>(chunkA.size()));
    inB.read(chunkB.data(), static_cast<std::streamsize>(chunkB.size()));
    if (inA.gcount() != inB.gcount() || chunkA != chunkB) return false;
  } while (inA && inB);
  return true;
}

/// For who imports other settings than these.
void keepImported(const StateDirectory& directory, const Legacy& legacy) {
  if (legacy.isTooLarge()) {
    copyFileAtomically(legacy.path, nameAside(directory.legacy(), "imported"));
  } else {
    (void)keepCopy(directory.legacy(), "imported", *legacy.text);
  }
}

}  // namespace

StartingPoint prepareStart(const StateDirectory& directory, bool allowDefaults) {
  for (const auto& path : {directory.settings(), directory.shadowCopy(), directory.backup()}) {
    makePrivate(path);
  }
  Copy settings = examine(directory.settings());
  if (settings.complete()) return {StartingPoint::Settings, std::move(*settings.text)};

  Copy others[] = {examineShadowCopy(directory.shadowCopy()), examine(directory.backup())};
  Copy* chosen = nullptr;
  std::vector<const Copy*> damaged;
  if (settings.damaged()) damaged.push_back(&settings);
  for (Copy& other : others) {
    if (chosen == nullptr && other.complete()) chosen = &other;
    if (other.damaged()) damaged.push_back(&other);
  }
  if (chosen == nullptr && !damaged.empty() && !allowDefaults) {
    std::string message = "no complete settings in " + directory.path() + ":";
    for (const Copy* copy : damaged) message += " " + copy->path + " (" + copy->damage + ")";
    throw std::runtime_error(message + "; repair one, or start with --allow-defaults");
  }
  for (const Copy* copy : damaged) moveDamagedAside(*copy);
  if (chosen == nullptr) {
    log(Level::Notice, "first start: there is no settings file", {{"file", directory.settings()}});
    return {StartingPoint::FirstStart, {}};
  }
  replaceFileAtomically(directory.settings(), *chosen->text);
  log(Level::Warning, "the settings file was recovered",
      {{"file", directory.settings()}, {"from", chosen->path}});
  return {StartingPoint::Recovered, std::move(*chosen->text)};
}

std::optional<std::string> readShadowCopy(const StateDirectory& directory) {
  auto file = readFile(directory.shadowCopy(), MAX_SEALED_SIZE + 1);
  if (!file) return {};
  SealedText text = unsealed(std::move(*file));
  if (text.seal != SealedText::Intact) return {};
  return std::move(text.text);
}

std::string shadowCopyDamage(const StateDirectory& directory) {
  return examineShadowCopy(directory.shadowCopy()).damage;
}

std::optional<size_t> keepLegacySettings(const StateDirectory& directory) {
  const Legacy interrupted(directory.importing());
  const Legacy own(directory.legacy());
  const Legacy system(LPARAMS::Server::LEGACY_SYSTEM_FILE);

  // The module reads its own candidate first, and deletes both.
  if (own.isThere()) {
    if (interrupted.isThere() && !holdSame(interrupted, own)) keepImported(directory, interrupted);
    own.copyTo(directory.importing());
  } else if (interrupted.isThere()) {
    log(Level::Warning, "an import of the settings of earlier versions was cut short: once more",
        {{"file", directory.legacy()}});
    interrupted.copyTo(directory.legacy());
  } else if (system.isThere()) {
    system.copyTo(directory.importing());
  }
  if (system.isThere() && (own.isThere() || interrupted.isThere())) keepImported(directory, system);
  for (const Legacy* imported : {&own, &interrupted, &system}) {
    if (imported->isThere()) return imported->text->size();
  }
  return {};
}

void giveUpImport(const StateDirectory& directory) {
  if (!Legacy(directory.importing()).isThere()) return;
  const std::string kept =
      moveAside(directory.importing(), nameAside(directory.legacy(), "damaged"));
  log(Level::Notice, "the settings of earlier versions were given up", {{"kept", kept}});
}

void finishImport(const StateDirectory& directory) {
  if (!Legacy(directory.importing()).isThere()) return;
  const std::string kept =
      moveAside(directory.importing(), nameAside(directory.legacy(), "imported"));
  log(Level::Notice, "the settings of earlier versions were imported", {{"kept", kept}});
}

}  // namespace agent
