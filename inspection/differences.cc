#include "inspection/differences.h"

#include <deque>
#include <map>
#include <string>

#include "inspection/shown.h"
#include "lparams/values/values.h"

namespace inspection {
namespace {

using namespace LPARAMS::Server;

constexpr const char* ABSENT = "(no such user)";
constexpr const char* PRESENT = "(a user)";
constexpr const char* DIFFERS = "(differs, hidden)";

class Comparison {
 public:
  Comparison(const Catalogue& names, Finding::Kind kind, Findings& findings)
      : shown_(names), kind_(kind), findings_(findings) {}

  void compareGroups(const ParamGroup& before, const ParamGroup& after, const std::string& path) {
    auto other = after.fileParams.begin();
    for (Param* param : before.fileParams) {
      const std::string was = valueText(*param);
      const std::string is = valueText(**other++);
      if (was == is) continue;
      const bool secret = isSecret(*param);
      add(path + "." + param->name, secret ? DIFFERS : shown_.value(was),
          secret ? DIFFERS : shown_.value(is));
    }
  }

  void compareUsers(ParamVector<USER_t>& before, ParamVector<USER_t>& after) {
    std::map<std::string, std::deque<USER_t*>> left;  // by name, in their order
    for (USER_t* user : before.items) left[valueText(user->NAME)].push_back(user);
    for (USER_t* user : after.items) {
      const std::string name = valueText(user->NAME);
      const std::string path = pathOf(name);
      auto& same = left[name];
      if (same.empty()) {
        add(path, ABSENT, PRESENT);
        continue;
      }
      compareGroups(*same.front(), *user, path);
      same.pop_front();
    }
    for (const auto& [name, users] : left) {
      for (size_t i = 0; i < users.size(); ++i) add(pathOf(name), PRESENT, ABSENT);
    }
  }

 private:
  std::string pathOf(const std::string& name) const { return "USERS[" + shown_.value(name) + "]"; }

  void add(std::string path, std::string was, std::string is) {
    findings_.add(
        {.kind = kind_, .path = std::move(path), .was = std::move(was), .taken = std::move(is)});
  }

  const Shown shown_;
  const Finding::Kind kind_;
  Findings& findings_;
};

}  // namespace

void addDifferences(Catalogue& before, Catalogue& after, Finding::Kind kind, Findings& findings) {
  Comparison comparison(before, kind, findings);
  const auto others = after.groups();
  size_t i = 0;
  for (ParamGroup* group : before.groups()) {
    ParamGroup* const other = others[i++];
    if (group == before.USERS) {
      comparison.compareUsers(*before.USERS, *after.USERS);
    } else {
      comparison.compareGroups(*group, *other, group->name);
    }
  }
}

}  // namespace inspection
