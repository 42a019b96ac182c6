// Members of groups whose loads are watched.
#pragma once

#include <list>
#include <optional>
#include <string>

#include "inspection/finding.h"
#include "lparams/catalogue/user_list.h"
#include "lparams/params/param_group.h"

namespace inspection {

class WatchedMember;

/// Loads members in their place.
class Watcher {
 public:
  virtual bool load(WatchedMember& member, std::istream& is) = 0;

 protected:
  ~Watcher() = default;
};

/// Stands in the place of a member while its group is loaded.
class WatchedMember final : public LPARAMS::Server::Param {
 public:
  /// REQUIRES: both outlive it.
  WatchedMember(Param& member, Watcher& watcher)
      : Param(member.name), member(member), watcher_(watcher) {}

  int getTypeId() const override { return member.getTypeId(); }
  bool save(std::ostream& os, int indent) override { return member.save(os, indent); }
  bool load(std::istream& is) override { return watcher_.load(*this, is); }
  bool write(LPARAMS::Server::CommandStreamOut& out) override { return member.write(out); }
  bool read(LPARAMS::Server::CommandStreamIn& in) override { return member.read(in); }

  Param& member;
  std::optional<Place> first;  ///< where the text has it first; the watcher's

 private:
  Watcher& watcher_;
};

/// Has the members of a group watched as long as it lives.
class WatchedGroup {
 public:
  WatchedGroup(LPARAMS::Server::ParamGroup& group, Watcher& watcher) : group_(group) {
    for (auto& member : group.fileParams) member = &members.emplace_back(*member, watcher);
  }
  ~WatchedGroup() {
    auto watched = members.begin();
    for (auto& member : group_.fileParams) member = &(watched++)->member;
  }

  WatchedGroup(const WatchedGroup&) = delete;
  WatchedGroup& operator=(const WatchedGroup&) = delete;

  std::list<WatchedMember> members;

 private:
  LPARAMS::Server::ParamGroup& group_;
};

/// A user list whose entries are watched.
class WatchedUsers final : public LPARAMS::Server::ParamVector<LPARAMS::Server::USER_t> {
 public:
  WatchedUsers(const char* name, Watcher& watcher) : ParamVector(name), watcher_(watcher) {}

  Param* getParam(const std::string& key) override {
    Param* const entry = ParamVector::getParam(key);
    if (entry == nullptr) return nullptr;
    return &entry_.emplace(*entry, watcher_);
  }

 private:
  Watcher& watcher_;
  std::optional<WatchedMember> entry_;  // the one that is being loaded
};

}  // namespace inspection
