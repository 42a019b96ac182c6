#include "agent/bridge/socket_group.h"

#include <sys/stat.h>
#include <unistd.h>

#include <asio/post.hpp>
#include <cerrno>
#include <system_error>
#include <utility>

#include "agent/base/log.h"
#include "agent/base/own_user.h"
#include "agent/bridge/socket_path.h"

namespace agent {
namespace {

/// Why the path does not belong to the group; empty if it does now.
std::string give(const std::string& path, gid_t group) {
  if (::chown(path.c_str(), static_cast<uid_t>(-1), group) == 0) return {};
  const std::string reason = std::generic_category().message(errno);
  struct stat status {};
  if (::stat(path.c_str(), &status) == 0 && status.st_gid == group) return {};
  return path + " cannot be given to it: " + reason;
}

}  // namespace

SocketGroup::SocketGroup(asio::io_context& io, std::string socket, const AccessRules& rules,
                         ChangeTracker& changes)
    : socket_(std::move(socket)),
      directory_(directoryOfSocket(socket_)),
      rules_(rules),
      changes_(changes),
      subscription_(changes.subscribe([this, &io](const bridge::Event& event) {
        if (event.group == "ADMIN") asio::post(io, [this] { follow(); });
      })) {
  follow();
}

SocketGroup::~SocketGroup() { changes_.unsubscribe(subscription_); }

std::string SocketGroup::problem() const {
  const MutexLock lock(mutex_);
  return problem_;
}

void SocketGroup::follow() {
  const std::string group = rules_.adminGroup();
  std::string problem = group.empty() ? std::string() : giveTo(group);
  if (group.empty() || !problem.empty()) (void)giveTo(::getegid());
  const MutexLock lock(mutex_);
  if (problem == problem_) return;
  if (!problem.empty()) {
    // A system without administrators is in order.
    const Level level = AccessRules::numberOf(group) ? Level::Warning : Level::Notice;
    log(level, "the administrators' group cannot reach the socket",
        {{"socket", socket_}, {"reason", problem}});
  } else {
    log(Level::Info, "the administrators' group can reach the socket",
        {{"socket", socket_}, {"group", group}});
  }
  problem_ = std::move(problem);
}

std::string SocketGroup::giveTo(const std::string& group) const {
  const std::string who = "group " + quoted(group) + ": ";
  const auto number = AccessRules::numberOf(group);
  if (!number) return who + "the system knows no such group";
  if (!isKnownGroup(*number)) {
    return who + "its number stands for every group without one in this namespace";
  }
  std::string failure = giveTo(*number);
  return failure.empty() ? failure : who + failure;
}

std::string SocketGroup::giveTo(gid_t group) const {
  std::string failure = give(directory_, group);
  if (failure.empty()) failure = give(socket_, group);
  if (!failure.empty()) return failure + "; the agent's user must be a member of it";
  struct stat status {};
  if (::stat(directory_.c_str(), &status) == 0 && (status.st_mode & S_IXGRP) == 0) {
    return directory_ + " cannot be entered by it; mode 0750 would be right";
  }
  return {};
}

}  // namespace agent
