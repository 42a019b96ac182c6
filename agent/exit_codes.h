// What the agent's exit status says. The numbers above 63 are those of sysexits(3).
#pragma once

namespace agent {

inline constexpr int EXIT_OK = 0;
inline constexpr int EXIT_BAD_USAGE = 64;    // the command line
inline constexpr int EXIT_UNAVAILABLE = 69;  // the module or the socket
inline constexpr int EXIT_BAD_CONFIG = 78;   // the state directory or the settings file

}  // namespace agent
