// What the exit statuses of the agent and of its client say: one table for both. The numbers above
// 63 are those of sysexits(3). Scripts depend on the numbers: do not change one.
#pragma once

namespace programs {

enum ExitStatus : int {
  EXIT_OK = 0,
  EXIT_DIFFERS = 1,          ///< what was compared is not the same
  EXIT_CHANGED = 2,          ///< something would be changed, or has been; only if asked for
  EXIT_USAGE = 64,           ///< the command line
  EXIT_ILLEGAL = 65,         ///< a name or value; nothing was written
  EXIT_UNAVAILABLE = 69,     ///< no agent, or the agent's module or socket
  EXIT_STUCK = 70,           ///< a command of the agent did not end in time after SIGTERM
  EXIT_IO = 74,              ///< settings that could not be made durable, input or output
  EXIT_TRY_AGAIN = 75,       ///< a conflict, a time-out, another agent in the state directory
  EXIT_NOT_AUTHORISED = 77,  ///< the user may not do that
  EXIT_BAD_FILE = 78,        ///< the state directory or a settings file
};

/// The table for the help of both programs.
inline constexpr const char* EXIT_STATUSES =
    R"~(Exit status:
   0  done
   1  what was compared differs ("diff")
   2  something would change, or has changed (only with --detailed-exitcode)
  64  wrong usage
  65  an unknown name or an illegal value; nothing was written
  69  no agent, or the module or the socket cannot be had
  70  a command did not end when the agent was stopped
  74  input, output or a save failed
  75  try again: a conflict, a busy agent, a time-out, another agent
  77  not authorised
  78  a settings file or the state directory is not usable)~";

}  // namespace programs
