// The names of the files that the module reads and writes.
#pragma once

namespace LPARAMS::Server {

/// The settings, in the system's variable-data directory.
inline constexpr const char* SETTINGS_FILE_NAME = "localsettings.ini";

/// Behind that name: what is renamed over the settings once it is written.
inline constexpr const char* TEMPORARY_SUFFIX = ".bak";

/// The settings of earlier versions: in the same directory, or else for the whole system. Imported
/// and deleted when there is no settings file.
inline constexpr const char* LEGACY_FILE_NAME = "localsettings.xml";
inline constexpr const char* LEGACY_SYSTEM_FILE = "/etc/kestrel/localsettings.xml";

}  // namespace LPARAMS::Server
