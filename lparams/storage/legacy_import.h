// The one-time import of the settings of earlier versions.
#pragma once

#include "lparams/catalogue/ike_group.h"
#include "lparams/catalogue/policy_group.h"

namespace LPARAMS::Server {

/// Moves what it knows of the older XML settings file into the two groups and deletes that file, so
/// that it is imported once. Without such a file, or with one that is not well formed, the values
/// stay as they are. A std::exception leaves the old files in place. REQUIRES: g_ioLock is held.
///
/// Values are assigned under their own locks, unchecked, and no observer is called. Nothing is
/// written: the imported values are in memory only until a save finds a later change.
void importLegacySettings(POLICY_t& policy, IKE_t& ike);

}  // namespace LPARAMS::Server
