// The agent's exit statuses.
#pragma once

#include "programs/exit_status.h"

namespace agent {

using namespace programs;

}  // namespace agent
