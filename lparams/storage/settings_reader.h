// Reads the settings file.
#pragma once

#include <iosfwd>

#include "lparams/params/load_log.h"
#include "lparams/params/param_group.h"

namespace LPARAMS::Server {

/// Fills the root from the text of a settings file, up to the root's end line. Returns false, with
/// the values read so far in place, if the text does not begin with the root's head or ends inside
/// a block. REQUIRES: g_ioLock is held and g_loadlog points at `log`.
///
/// Kept oddity, for whoever calls it: a text that is empty or made only of "=" is read for ever.
/// The writer makes no such file; the agent looks before it loads.
bool readSettings(ParamGroup& root, std::istream& is, LoadLog& log);

}  // namespace LPARAMS::Server
