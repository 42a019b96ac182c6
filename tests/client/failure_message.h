// What a call of the client's code fails with.
#pragma once

#include <string>

#include "client/failure.h"

namespace client_testing {

/// "2: the message" with the exit code; "no failure" if the call returns.
template <typename Call>
std::string failureOf(Call call) {
  try {
    call();
  } catch (const client::Failure& failure) {
    return std::to_string(static_cast<int>(failure.code)) + ": " + failure.what();
  }
  return "no failure";
}

}  // namespace client_testing
