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

/// Calls that name `path`, or anything below or longer, reach `place` with the rest of the name;
/// one path at a time. Until SYSTEM_DIRECTORY is led to a place of the test, nothing is in it for
/// this process.
void lead(const std::string& path, const std::string& place);

/// From now on the file cannot be opened, with this error number.
void refuseOpening(const std::string& path, int error);

/// From now on calls that would create or write a file fail with this error number.
void refuseWriting(int error);

/// The next rename fails with this error number, and does nothing.
void failNextRename(int error);

/// The next fclose closes the file, but says that it could not.
void failNextClose();

}  // namespace host
