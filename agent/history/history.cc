#include "agent/history/history.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <exception>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "agent/base/log.h"
#include "agent/state/durable_file.h"
#include "editing/settings_changes.h"
#include "inspection/settings_text.h"

namespace agent {
namespace {

constexpr const char* AT_FIRST = "the settings as the history begins";
constexpr const char* AT_START = "found at a start: other settings than those of the last revision";

/// A revision tells no more of its changes than this, in bytes and roughly. It holds the whole
/// text.
constexpr size_t MAX_CHANGES = 1024 * 1024;

/// More than any revision takes: a text, and its changes with the names of their users.
constexpr size_t MAX_FILE = 24 * 1024 * 1024;

int64_t now() {
  using namespace std::chrono;
  return duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count();
}

size_t sizeOf(const bridge::NamedValue& value) {
  return value.name.size() + value.before.value_or("").size() + value.running.value_or("").size();
}

/// The first of the changes, as many as a revision tells.
void setChanges(bridge::Revision& revision, std::vector<bridge::NamedValue> changes) {
  size_t size = 0;
  size_t told = 0;
  while (told < changes.size() && (size += sizeOf(changes[told])) <= MAX_CHANGES) ++told;
  revision.changesLeftOut = static_cast<uint32_t>(changes.size() - told);
  changes.resize(told);
  revision.changes = std::move(changes);
}

constexpr uint64_t MAX_NUMBER = uint64_t{1} << 53;

/// The number behind the beginning of a name; 0 if there is none, or more than that.
uint64_t numberIn(std::string_view name, std::string_view beginning) {
  if (!name.starts_with(beginning)) return 0;
  name.remove_prefix(beginning.size());
  uint64_t number = 0;
  const char* const end = name.data() + name.size();
  const auto [parsed, error] = std::from_chars(name.data(), end, number);
  const bool plain = error == std::errc() && parsed == end && !name.starts_with('0');
  return plain && number <= MAX_NUMBER ? number : 0;
}

}  // namespace

Author Author::self() { return {::geteuid(), ::getpid(), "lparams_agent"}; }

History::History(const StateDirectory& directory, size_t kept, uint64_t maxSize)
    : directory_(directory), kept_(kept), maxSize_(maxSize) {
  addFiles();
  forgetOld();
  if (!sizes_.empty()) lastNumber_ = sizes_.rbegin()->first;
  findNewest();
}

/// Nothing is read here: what is no revision, or a damaged one, has taken its number all the same.
void History::addFiles() {
  const std::string path = directory_.history();
  const std::string beginning = path.substr(path.rfind('/') + 1);
  DIR* const directory = ::opendir(directory_.path().c_str());
  if (directory == nullptr) {
    damage_ = directory_.path() + " cannot be listed";
    log(Level::Warning, "the history cannot be read", {{"reason", damage_}});
    return;
  }
  while (const dirent* const entry = ::readdir(directory)) {
    const uint64_t number = numberIn(entry->d_name, beginning);
    struct stat status {};
    if (number == 0 || ::lstat(pathOf(number).c_str(), &status) != 0) continue;
    sizes_[number] = static_cast<uint64_t>(status.st_size);
  }
  (void)::closedir(directory);
}

/// The newest one that can be read. Those that cannot are told.
void History::findNewest() {
  std::vector<uint64_t> present = numbers();
  std::ranges::reverse(present);
  for (const uint64_t number : present) {
    std::string damage;
    try {
      if (auto revision = read(number)) {
        newestText_ = std::make_shared<const std::string>(std::move(revision->text));
      }
    } catch (const std::exception& error) {
      damage = error.what();
    }
    if (newestText_) return;
    if (damage.empty()) continue;
    log(Level::Warning, "a revision of the history cannot be used",
        {{"file", pathOf(number)}, {"reason", damage}});
    const MutexLock lock(mutex_);
    damage_ = pathOf(number) + ": " + damage;
  }
}

void History::found(const std::shared_ptr<const std::string>& text) {
  const MutexLock writing(writing_);
  if (!text || (newestText_ && *newestText_ == *text)) return;
  (void)write(Author::self(), newestText_ ? AT_START : AT_FIRST, text);
}

uint64_t History::saved(const Author& author, const std::string& message,
                        const std::shared_ptr<const std::string>& text) {
  const MutexLock writing(writing_);
  if (newestText_ && *newestText_ == *text) return 0;
  return write(author, message, text);
}

/// Returns 0 if it could not be written.
uint64_t History::write(const Author& author, const std::string& message,
                        const std::shared_ptr<const std::string>& text) {
  uint64_t number = 0;
  std::string failure;
  try {
    number = ++lastNumber_;  // used, whatever becomes of the file
    // Member by member: GCC 12 destroys members twice if a nested initializer throws.
    KeptRevision revision;
    revision.head.number = number;
    revision.head.time = now();
    revision.head.uid = author.uid;
    revision.head.pid = author.pid;
    revision.head.program = author.program;
    revision.head.message = message;
    revision.text = *text;
    if (newestText_) {
      setChanges(revision.head, editing::changesBetween(*inspection::settingsIn(*newestText_),
                                                        *inspection::settingsIn(*text)));
    }
    const std::string file = encode(revision);
    replaceFileAtomically(pathOf(number), file);
    const MutexLock lock(mutex_);
    sizes_[number] = file.size();
    newestText_ = text;  // not before: without memory for the size there is no such revision
    writeFailure_.clear();
    forgetOld();
  } catch (const std::exception& error) {
    failure = error.what();
  }
  if (failure.empty()) return number;
  log(Level::Error, "the settings are saved, but the history lacks it", {{"reason", failure}});
  const MutexLock lock(mutex_);
  writeFailure_ = std::move(failure);
  return 0;
}

void History::forgetOld() {
  uint64_t size = 0;
  for (const auto& [number, bytes] : sizes_) size += bytes;
  while (sizes_.size() > 1 && (sizes_.size() > kept_ || size > maxSize_)) {
    const auto oldest = sizes_.begin();
    (void)::unlink(pathOf(oldest->first).c_str());
    size -= oldest->second;
    sizes_.erase(oldest);
  }
}

uint64_t History::newest() const {
  const MutexLock lock(mutex_);
  return sizes_.empty() ? 0 : sizes_.rbegin()->first;
}

std::string History::problem() const {
  const MutexLock lock(mutex_);
  return writeFailure_.empty() ? damage_ : writeFailure_;
}

std::vector<uint64_t> History::numbers() const {
  const MutexLock lock(mutex_);
  std::vector<uint64_t> numbers;
  for (const auto& [number, size] : sizes_) numbers.push_back(number);
  return numbers;
}

std::optional<KeptRevision> History::read(uint64_t number) const {
  {
    const MutexLock lock(mutex_);
    if (!sizes_.contains(number)) return std::nullopt;
  }
  auto file = readFile(pathOf(number), MAX_FILE);
  if (!file) return std::nullopt;
  KeptRevision revision = decodeKeptRevision(std::move(*file));
  if (revision.head.number != number) throw std::runtime_error("it is another revision");
  return revision;
}

std::string History::pathOf(uint64_t number) const {
  return directory_.history() + std::to_string(number);
}

}  // namespace agent
