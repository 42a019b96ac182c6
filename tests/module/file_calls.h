// The file calls that the module makes, itself or through the stream library: this process exports
// open, open64, fopen, fopen64, remove and rename in front of the C library's, so that the calls
// can be recorded, refused, and kept away from the machine's own settings.
#pragma once

#include <string>

namespace host {

/// Where the module looks for an older settings file, besides the paths service's directory.
inline constexpr const char* SYSTEM_DIRECTORY = "/etc/kestrel/";

/// Calls that name a file in this directory are recorded, with the rest of the path.
void watchDirectory(const std::string& path);

/// Until this is called, nothing in SYSTEM_DIRECTORY is there for this process. REQUIRES: what is
/// mounted there belongs to the test.
void allowSystemDirectory();

/// The next rename fails with this error number, and does nothing.
void failNextRename(int error);

/// The next fclose closes the file, but says that it could not.
void failNextClose();

}  // namespace host
