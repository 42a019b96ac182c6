// Writes the settings file.
#pragma once

#include <string>

#include "lparams/params/param_group.h"

namespace LPARAMS::Server {

enum class WriteOutcome {
  Written,       ///< the new file is in place
  WriteFailed,   ///< the old file is untouched; the temporary file may be there, empty or partial
  RenameFailed,  ///< the old file is gone; the temporary file holds the new text
};

/// Writes the root's text to `path` + ".bak" and renames that over `path`. A failure appends its
/// reason to `error`, if there is one to append to. REQUIRES: g_ioLock is held.
///
/// Guarantees: a reader never sees half a file under `path`. A crash of the program between the
/// removal of the old file and the rename leaves no file under `path`, and the new text in the
/// temporary one. Nothing is promised for a crash of the system: the file is not synced.
WriteOutcome writeSettingsFile(ParamGroup& root, const std::string& path, std::string* error);

}  // namespace LPARAMS::Server
