#include "editing/standing_values.h"

#include "lparams/catalogue/user_list.h"
#include "lparams/values/values.h"

namespace editing {
namespace {

using namespace LPARAMS::Server;

}  // namespace

bool mayBeWritten(Param& param) {
  const bool hasText = param.getTypeId() == TYPE_STRING || param.getTypeId() == TYPE_SECRET;
  return isLegal(param) && (!hasText || valueText(param).size() <= MAX_TEXT_SIZE);
}

StandingValues::StandingValues(ParamGroup& group) {
  const basekit::ObjectLevelLockable::Lock lock(group);
  if (group.getTypeId() == TYPE_USER_LIST) {
    for (USER_t* user : static_cast<ParamVector<USER_t>&>(group).items) {
      add(valueText(user->NAME), *user);
    }
  } else {
    add({}, group);
  }
}

void StandingValues::add(const std::string& user, const ParamGroup& group) {
  for (Param* param : group.wireParams) {
    if (!mayBeWritten(*param)) values_.emplace(user, param->name, valueText(*param));
  }
}

bool StandingValues::hold(const std::string& user, Param& param) const {
  return values_.contains({user, param.name, valueText(param)});
}

}  // namespace editing
