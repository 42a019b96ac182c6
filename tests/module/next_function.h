// Passing on a call that this process takes in front of a library.
#pragma once

#include <dlfcn.h>

namespace host {

/// The library's function behind the one of that name that this process exports.
template <typename Function>
Function* nextFunction(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace host
