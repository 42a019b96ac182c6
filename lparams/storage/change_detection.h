// Change detection: the text that a save would write now, compared with a snapshot of it.
#pragma once

#include <string>

#include "lparams/params/param_group.h"

namespace LPARAMS::Server {

/// The text that a save would write now, in memory of its own: one that breaks off is given up with
/// it. `size` is the size to expect.
std::string currentText(ParamGroup& group, size_t size);

/// Sets `out` to the text of the group at nesting level 0. Resets enumerations without a name to
/// their defaults, as every save does. Takes the locks of the group and its members. What the
/// building of the text throws, std::bad_alloc among it, leaves `out` as it was.
void raw_settings_(ParamGroup& group, std::string& out);

/// True when the group's current text equals the snapshot `raw`; always leaves the current text in
/// `current`. An empty snapshot counts as changed. Throws as above.
bool is_not_changed_(ParamGroup& group, const std::string& raw, std::string& current);

}  // namespace LPARAMS::Server
