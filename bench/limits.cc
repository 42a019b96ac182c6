#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "bench/settings.h"
#include "bench/store.h"
#include "platform/lockable.h"

namespace bench {
namespace {

using namespace LPARAMS::Server;
using basekit::ObjectLevelLockable;

/// Looks for what ends a key and what ends a line, and for nothing else.
void scan(const std::string& text) {
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) {
    at = static_cast<const char*>(std::memchr(at, '=', static_cast<size_t>(end - at)));
    at = static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at))) + 1;
    keep(at);
  }
}

/// The text through the inserters, as one would write it without a thought of speed.
class InsertedText {
 public:
  /// With the locks of the store or without them.
  InsertedText(const Settings& settings, bool locking) : locking_(locking) {
    insertHead(0, "ROOT");
    for (const Block& group : settings.groups) insertBlock(1, group.name, group);
    insertHead(1, "USERS");
    for (const Block& user : settings.users) insertBlock(2, USER_t::GROUP_NAME, user);
    insertEnd(1);
    insertEnd(0);
  }

  std::string take() { return std::move(os_).str(); }

 private:
  using Lock = std::optional<ObjectLevelLockable::Lock>;

  void insertIndent(int indent) {
    for (; indent > 0; --indent) os_ << "    ";
  }

  void insertHead(int indent, const char* name) {
    insertIndent(indent);
    os_ << "/" << name << "=" << std::endl;
  }

  void insertEnd(int indent) {
    insertIndent(indent);
    os_ << "end=" << std::endl;
  }

  void insertBlock(int indent, const std::string& name, const Block& block) {
    Lock lock;
    if (locking_) lock.emplace(*block.param);
    insertHead(indent, name.c_str());
    for (const Setting& setting : block.settings) insertSetting(indent + 1, setting);
    insertEnd(indent);
  }

  void insertSetting(int indent, const Setting& setting) {
    Lock lock;
    if (locking_) lock.emplace(*setting.param);
    insertIndent(indent);
    os_ << setting.param->name << "=";
    switch (setting.kind) {
      case Kind::Flag:
      case Kind::Number:
        os_ << setting.number;
        break;
      case Kind::Name:
      case Kind::Text:
        os_ << setting.text;
    }
    os_ << std::endl;
  }

  const bool locking_;
  std::ostringstream os_;
};

/// The system calls of a save, with nothing between them.
void writeLines(const std::string& text, const std::string& path) {
  const std::string temporary = path + ".bak";
  const int created = ::open(temporary.c_str(), O_RDONLY | O_CREAT | O_EXCL | O_APPEND, 0600);
  if (created >= 0) (void)::close(created);
  const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end;) {
    const char* const next =
        static_cast<const char*>(std::memchr(at, '\n', static_cast<size_t>(end - at))) + 1;
    if (::write(file, at, static_cast<size_t>(next - at)) != next - at) {
      throw std::runtime_error("a line cannot be written");
    }
    at = next;
  }
  (void)::close(file);
  (void)std::remove(path.c_str());
  if (std::rename(temporary.c_str(), path.c_str()) != 0) {
    throw std::runtime_error("the file cannot be renamed");
  }
}

/// Takes the locks that a read of the group takes, in its order.
void lockGroup(ObjectLevelLockable& module, ParamGroup& group) {
  const ObjectLevelLockable::Lock moduleLock(module);
  const ObjectLevelLockable::Lock groupLock(group);
  for (Param* param : group.wireParams) const ObjectLevelLockable::Lock lock(*param);
}

}  // namespace

void addLimitSubjects(Subjects& subjects, const Place& place, unsigned users) {
  auto store = makeStore(place, "limits", users);
  auto text = std::make_shared<const std::string>(fileText(*store));
  auto inserted = makeStore(place, "inserted", users);  // keeps its users, whose locks are taken
  auto settings = std::make_shared<const Settings>(settingsOf(inserted->root()));
  if (InsertedText(*settings, true).take() != *text)
    throw std::logic_error("the inserters make another text");

  subjects.push_back({label("load", "memchr", users), timed([text] { scan(*text); })});
  subjects.push_back(
      {label("load", "memcpy", users), timed([text, copy = std::make_shared<std::string>(*text)] {
         std::memcpy(copy->data(), text->data(), text->size());
         keep(copy->data());
       })});
  for (const bool locking : {true, false}) {
    const auto* const name = locking ? "inserters" : "inserters without locks";
    subjects.push_back({label("text", name, users), timed([inserted, settings, locking] {
                          keep(InsertedText(*settings, locking).take().size());
                        })});
  }
  subjects.push_back({label("save", "system calls", users),
                      timed([text, path = place.directory + "/limit" + std::to_string(users)] {
                        writeLines(*text, path);
                      })});
  subjects.push_back({label("write USERS", "assignment", users), timed([store, users] {
                        store->clearUsers();
                        store->addUsers(users);
                      })});
  if (users == 0) {
    auto moduleLock = std::make_shared<ObjectLevelLockable>();
    subjects.push_back({label("read IKE", "locks", users), timed([store, moduleLock] {
                          lockGroup(*moduleLock, *store->root().IKE);
                        })});
  }
}

}  // namespace bench
