// What the agent's exit status says. The numbers above 63 are those of sysexits(3).
#pragma once

namespace agent {

inline constexpr int EXIT_OK = 0;
inline constexpr int EXIT_BAD_USAGE = 64;    // the command line
inline constexpr int EXIT_UNAVAILABLE = 69;  // the module or the socket
inline constexpr int EXIT_STUCK = 70;        // a command did not end in time after SIGTERM
inline constexpr int EXIT_NOT_SAVED = 74;    // the settings could not be made durable
inline constexpr int EXIT_IN_USE = 75;       // another agent uses the state directory
inline constexpr int EXIT_BAD_CONFIG = 78;   // the state directory or the settings file

}  // namespace agent
