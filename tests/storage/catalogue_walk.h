// Walks over the parameters of the loaded module.
#pragma once

#include <functional>

#include "lparams/server.h"

namespace host {

/// Calls `visit` with every parameter of the groups and of each user, and its group.
inline void forEachParameter(
    LPARAMS::Server::Server_t& root,
    const std::function<void(LPARAMS::Server::ParamGroup&, LPARAMS::Server::Param&)>& visit) {
  using LPARAMS::Server::ParamGroup;
  const auto all = root.groups();
  std::vector<ParamGroup*> groups(all.begin(), all.end());
  groups.insert(groups.end(), root.USERS->items.begin(), root.USERS->items.end());
  for (ParamGroup* group : groups) {
    for (LPARAMS::Server::Param* param : group->fileParams) visit(*group, *param);
  }
}

}  // namespace host
