// Walks over the parameters of the loaded module.
#pragma once

#include <functional>

#include "lparams/server.h"

namespace host {

/// Calls `visit` with every parameter of the five fixed groups and of each user, and its group.
inline void forEachParameter(
    LPARAMS::Server::Server_t& root,
    const std::function<void(LPARAMS::Server::ParamGroup&, LPARAMS::Server::Param&)>& visit) {
  using LPARAMS::Server::ParamGroup;
  std::vector<ParamGroup*> groups = {root.IKE, root.LOG, root.UPDATE, root.POLICY, root.ADMIN};
  groups.insert(groups.end(), root.USERS->items.begin(), root.USERS->items.end());
  for (ParamGroup* group : groups) {
    for (LPARAMS::Server::Param* param : group->fileParams) visit(*group, *param);
  }
}

}  // namespace host
