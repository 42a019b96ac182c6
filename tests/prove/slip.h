// What the planted slips share.
#pragma once

#include <dlfcn.h>

#include <cstdlib>
#include <string_view>

namespace prove {

/// The function of that name that would be called without the slips.
template <typename Function>
Function* next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

/// Whether this is the slip that the agent is to have.
inline bool slips(std::string_view slip) {
  const char* const planted = std::getenv("SLIP");
  return planted != nullptr && planted == slip;
}

}  // namespace prove
