// Why a request failed.
#pragma once

#include <cstdint>

namespace bridge {

/// The numbers travel: do not change one.
enum class Reason : uint32_t {
  None = 0,            ///< it did not fail
  ModuleRefused = 1,   ///< the module answered 0
  NotAuthorised = 2,   ///< the session may not do that
  MalformedInput = 3,  ///< the module could not read the input to its end
  NoSuchModule = 4,    ///< no module with that identifier is loaded
  MalformedFrame = 5,  ///< the frame holds no request; the session is closed after this reply
  ModuleFailed = 6,    ///< the module ran into an error of its own
  ReplyTooLarge = 7,   ///< the command succeeded, but its output does not fit a frame
  IllegalValue = 8,    ///< the record to be written holds what the settings do not allow
  Conflict = 9,        ///< the group has changed since the stated revision
  SaveRefused = 10,    ///< the settings were not saved, or not durably
  NoSuchCommand = 11,  ///< the agent has no command with that name
  Busy = 12,           ///< too much is under way for it: to be tried again
};

}  // namespace bridge
