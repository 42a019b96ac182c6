// Every group of settings, in the order of the settings file.
#pragma once

#include <array>

#include "lparams/catalogue/admin_group.h"
#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/log_group.h"
#include "lparams/catalogue/policy_group.h"
#include "lparams/catalogue/update_group.h"
#include "lparams/catalogue/user_list.h"

namespace LPARAMS::Server {

/// The groups at their defaults, as one group. The module's settings root is one; a client makes
/// its own. The order of the fields is part of the interface. The pointers are the public way to
/// the groups; they never change.
struct Catalogue : ParamGroup {
  Catalogue();

  // clang-format off
  IKE_t               ikeGroup;
  IKE_t*              const IKE    = &ikeGroup;
  LOG_t               logGroup;
  LOG_t*              const LOG    = &logGroup;
  UPDATE_t            updateGroup;
  UPDATE_t*           const UPDATE = &updateGroup;
  POLICY_t            policyGroup;
  POLICY_t*           const POLICY = &policyGroup;
  ADMIN_t             adminGroup;
  ADMIN_t*            const ADMIN  = &adminGroup;
  ParamVector<USER_t> userList{"USERS"};
  ParamVector<USER_t>* const USERS = &userList;
  // clang-format on

  /// For whoever walks them. The user list comes last.
  std::array<ParamGroup*, 6> groups() const { return {IKE, LOG, UPDATE, POLICY, ADMIN, USERS}; }
};

}  // namespace LPARAMS::Server
