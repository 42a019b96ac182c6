// The text form of groups and parameters written with the operators of streams and nothing else:
// how it was before it was fast, and what it still has to mean.
#pragma once

#include <iosfwd>

#include "lparams/params/param_group.h"

namespace testing_support {

/// What group.save does.
void plainSave(LPARAMS::Server::ParamGroup& group, std::ostream& os, int indent);

/// What group.load does. Reports to g_loadlog.
bool plainLoad(LPARAMS::Server::ParamGroup& group, std::istream& is);

}  // namespace testing_support
