#include "agent/bridge/listener_registry.h"

#include <algorithm>
#include <exception>
#include <string_view>

#include "agent/base/log.h"

namespace agent {

namespace {

/// What a listener throws concerns neither the others nor the session.
template <typename Visit>
void tell(CommandListener& listener, Visit& visit) noexcept {
  constexpr std::string_view MESSAGE = "a module failed when it was told of a session";
  try {
    visit(listener);
  } catch (const std::exception& failure) {
    logOften(Level::Error, MESSAGE, {{"module", listener.moduleId}, {"reason", failure.what()}});
  } catch (...) {
    logOften(Level::Error, MESSAGE, {{"module", listener.moduleId}});
  }
}

}  // namespace

/// Keeps an entry in the list while one of its listener's operations runs.
class ListenerRegistry::Call {
 public:
  Call(ListenerRegistry& registry, Entry& entry) REQUIRES(registry.mutex_)
      : registry_(registry), entry_(entry) {
    registry.begin(entry);
  }
  ~Call() { registry_.endCall(entry_); }
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  CommandListener& listener() const { return *entry_.listener; }

 private:
  ListenerRegistry& registry_;
  Entry& entry_;
};

void ListenerRegistry::add(CommandListener* listener) {
  const MutexLock lock(mutex_);
  entries_.push_back({.listener = listener});
}

void ListenerRegistry::remove(CommandListener* listener) {
  const MutexLock lock(mutex_);
  const auto entry = std::ranges::find_if(
      entries_, [&](const Entry& e) { return e.listener == listener && !e.removed; });
  if (entry == entries_.end()) return;
  entry->removed = true;
  while (entry->running > 0) idle_.wait(mutex_);
  entries_.erase(entry);
}

ListenerRegistry::Result ListenerRegistry::execute(BridgeSession& session, ModuleIdType module,
                                                   long cmd, const std::string& in,
                                                   std::string& out) {
  MutexLock lock(mutex_);
  const auto entry = std::ranges::find_if(
      entries_, [&](const Entry& e) { return e.listener->moduleId == module && !e.removed; });
  if (entry == entries_.end()) return {};
  const Call call(*this, *entry);
  lock.unlock();

  try {
    const int value = call.listener().ExecCommand(session, cmd, in, out);
    return {value != 0 ? Outcome::Succeeded : Outcome::Refused, value, {}};
  } catch (const char* malformed) {
    return {Outcome::MalformedInput, 0, malformed};
  } catch (const std::exception& failure) {
    return {Outcome::Failed, 0, failure.what()};
  } catch (...) {
    return {Outcome::Failed, 0, "an exception of a type that the agent does not know"};
  }
}

/// Takes no memory: also the end of a session for want of it is told.
template <typename Visit>
void ListenerRegistry::forEachListener(Visit visit) {
  MutexLock lock(mutex_);
  for (auto entry = entries_.begin(); entry != entries_.end();) {
    if (entry->removed) {
      ++entry;
      continue;
    }
    begin(*entry);
    lock.unlock();
    tell(*entry->listener, visit);
    lock.lock();
    end(*entry++);
  }
}

void ListenerRegistry::sessionOpened(BridgeSession& session) {
  const MutexLock telling(telling_);
  bool first = false;
  {
    const MutexLock lock(mutex_);
    ++sessionsOfUser_[session.uid];  // may throw
    first = sessions_++ == 0;
  }
  forEachListener([&](CommandListener& listener) {
    if (first) listener.OnOpenFirstSession();
    listener.OnOpenSession(&session);
  });
}

void ListenerRegistry::sessionClosed(BridgeSession& session) noexcept {
  const MutexLock telling(telling_);
  bool last = false;
  bool lastOfUser = false;
  {
    const MutexLock lock(mutex_);
    last = --sessions_ == 0;
    const auto ofUser = sessionsOfUser_.find(session.uid);
    lastOfUser = --ofUser->second == 0;
    if (lastOfUser) sessionsOfUser_.erase(ofUser);
  }
  forEachListener([&](CommandListener& listener) {
    listener.OnCloseSession(&session);
    if (lastOfUser) listener.OnCloseLastSessionWithUser(&session);
    if (last) listener.OnCloseLastSession();
  });
}

ListenerRegistry& listenerRegistry() {
  static auto& registry = *new ListenerRegistry;
  return registry;
}

}  // namespace agent

void AddCommandListener(CommandListener* listener) { agent::listenerRegistry().add(listener); }

void DelCommandListener(CommandListener* listener) { agent::listenerRegistry().remove(listener); }
