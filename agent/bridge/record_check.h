// Checks a write before the module, which takes every value as it stands, sees it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "lparams/server.h"

namespace agent {

/// Decodes the whole input of a write command against the parameters of the module: exact length,
/// numbers within their limits, named values only, no control characters in strings (a newline
/// would write other settings into the file), no more users than allowed.
class RecordCheck {
 public:
  /// REQUIRES: outlived by the module; built before the first command.
  RecordCheck(LPARAMS::Server::Server_t& server, size_t maxUsers);
  ~RecordCheck();

  RecordCheck(const RecordCheck&) = delete;
  RecordCheck& operator=(const RecordCheck&) = delete;

  /// Why the input must not be written: the parameter, its value and what would be right; empty if
  /// it may. Thread-safe.
  std::string refusal(std::string_view input) const;

 private:
  const LPARAMS::Server::Server_t& server_;
  const size_t maxUsers_;
  LPARAMS::Server::USER_t* const user_;  // owned; what an entry of the list consists of
};

}  // namespace agent
