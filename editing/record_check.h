// Checks a write before the module, which takes every value as it stands, sees it.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <string_view>

#include "lparams/catalogue/catalogue.h"
#include "lparams/values/values.h"

namespace editing {

/// Decodes the whole input of a write command as the module does, into a catalogue that is thrown
/// away: exact length, numbers within their limits, named values only, no control characters in
/// strings (a newline would write other settings into the file), no text of more than 64 KiB, no
/// more users than allowed. What the settings hold already, from a file or from before the check,
/// may stay: the same value of the same parameter (and user), as many users, as large a group.
/// Thread-safe.
class RecordCheck {
 public:
  /// Upper limit of the whole settings as a text, in bytes: half of what a start accepts, and
  /// little enough that every group fits a reply.
  static constexpr size_t MAX_SETTINGS_TEXT = 8 * 1024 * 1024;

  /// Upper limit of a single text, in bytes.
  static constexpr size_t MAX_TEXT = LPARAMS::Server::MAX_TEXT_SIZE;

  /// REQUIRES: the settings outlive the check.
  RecordCheck(LPARAMS::Server::Catalogue& settings, size_t maxUsers)
      : settings_(settings), maxUsers_(maxUsers) {}

  struct Finding {
    /// Why the input must not be written: the parameter, its value and what would be right; empty
    /// if it may.
    std::string refusal;
    size_t textSize = 0;  ///< of the group, as the settings file would hold it, in bytes
  };
  Finding look(const std::string& input) const;

  /// How many bytes of the settings file the group takes.
  static size_t textSizeOf(LPARAMS::Server::ParamGroup& group);

  /// Why these groups may not take so many bytes of the settings file, beside the others as they
  /// are; empty if they may. Call it while nobody else writes settings.
  std::string refusalOfSize(const std::map<std::string_view, size_t>& textSizes) const;

  size_t maxUsers() const { return maxUsers_; }

 private:
  LPARAMS::Server::Catalogue& settings_;
  const size_t maxUsers_;
};

}  // namespace editing
