#include "agent/module.h"

#include <dlfcn.h>

#include "agent/base/start_failure.h"

namespace agent {
namespace {

constexpr const char* SERVER_SYMBOL = "_ZN7LPARAMS6serverE";  // LPARAMS::server

[[noreturn]] void fail(const std::string& path) {
  throw StartFailure(EXIT_UNAVAILABLE, "module " + path + " cannot be loaded: " + ::dlerror());
}

}  // namespace

Module::Module(const std::string& path) : handle_(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) fail(path);
  const void* symbol = ::dlsym(handle_, SERVER_SYMBOL);
  if (symbol == nullptr) {
    const std::string reason = ::dlerror();
    (void)::dlclose(handle_);
    throw StartFailure(EXIT_UNAVAILABLE,
                       "module " + path + " is not the settings module: " + reason);
  }
  server_ = *static_cast<LPARAMS::Server::Server_t* const*>(symbol);
}

Module::~Module() { (void)::dlclose(handle_); }

}  // namespace agent
