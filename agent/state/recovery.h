// What the agent does to the state directory before the module sees it, and after its load.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "agent/state/state_directory.h"

namespace agent {

/// What the module is going to load.
struct StartingPoint {
  enum Source {
    Settings,    ///< the settings file, as it lies there
    Recovered,   ///< a complete copy, which has been put in the settings file's place
    FirstStart,  ///< nothing: defaults, or the settings of earlier versions
  };
  Source source;
  std::string text;  ///< of the settings file; empty on a first start
};

/// Chooses the settings file if it is complete, else the shadow copy, else the module's temporary
/// file. Damaged files are moved aside, and the choice is put in the settings file's place durably;
/// the log says so. The settings file is the only file that is overwritten, and only by a complete
/// copy.
///
/// Throws std::exception if a file cannot be read. Throws it also if there are damaged files but no
/// complete one, unless `allowDefaults` is given. Nothing has been changed then.
StartingPoint prepareStart(const StateDirectory& directory, bool allowDefaults);

/// The text of the shadow copy if it is intact: what was saved last. Throws std::system_error if
/// there is one that cannot be read: that is not the same as none.
std::optional<std::string> readShadowCopy(const StateDirectory& directory);

/// Why the shadow copy is not as it was written; empty if it is, or if there is none. Throws as
/// readShadowCopy() does.
std::string shadowCopyDamage(const StateDirectory& directory);

/// Keeps the settings of earlier versions while the module imports and deletes them. Brings back
/// those of an import that was cut short. Returns how many bytes will be imported, or nothing if
/// there are no such settings. REQUIRES: it is a first start.
std::optional<size_t> keepLegacySettings(const StateDirectory& directory);

/// Gives kept settings that could not be imported, if there are any, their final name. REQUIRES:
/// somebody wants to do without them, and the settings are durable.
void giveUpImport(const StateDirectory& directory);

/// Gives the kept settings, if there are any, their final name. REQUIRES: what was imported from
/// them is durable.
void finishImport(const StateDirectory& directory);

}  // namespace agent
