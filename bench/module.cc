#include "bench/module.h"

#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>

#include "bench/settings.h"
#include "lparams/params/command_stream.h"
#include "tests/support/fake_platform.h"

namespace bench {

using namespace LPARAMS::Server;
using testing_support::fakePlatform;

void Module::Closer::operator()(void* handle) const { (void)::dlclose(handle); }

template <typename T>
T Module::symbol(const char* name) const {
  void* const address = ::dlsym(handle_.get(), name);
  if (address == nullptr) throw std::runtime_error(std::string("the module lacks ") + name);
  return reinterpret_cast<T>(address);
}

Module::Module(const std::string& path, const std::string& directory)
    : directory_(directory + "/"), handle_(::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) throw std::runtime_error(::dlerror());
  listener_ = fakePlatform().listeners.back();
  root_ = *symbol<Server_t**>("_ZN7LPARAMS6serverE");
  listAdd_ =
      symbol<USER_t* (*)(List&)>("_ZN7LPARAMS6Server7listAddERNS0_11ParamVectorINS0_6USER_tEEE");
  listClear_ =
      symbol<void (*)(List&)>("_ZN7LPARAMS6Server9listClearERNS0_11ParamVectorINS0_6USER_tEEE");
}

void Module::load() {
  fakePlatform().varDir = directory_;  // the module remembers what it saw first
  CountingLog log;
  const bool loaded = root_->load(&log);
  if (!loaded || log.reports != 0) throw std::runtime_error("the load was not clean");
}

void Module::clearUsers() { listClear_(*root_->USERS); }

void Module::addUsers(unsigned count) {
  for (unsigned i = 0; i < count; ++i) fillUser(*listAdd_(*root_->USERS), i);
}

void Module::execute(int command, const std::string& input, std::string& reply) {
  BridgeSession session;
  if (listener_->ExecCommand(session, command, input, reply) == 0) {
    throw std::runtime_error("the module refused a command");
  }
}

std::string Module::read(const std::string& group) {
  std::string reply;
  execute(READ_GROUP, commandInput(group), reply);
  return reply;
}

std::string commandInput(const std::string& group, const std::string& record) {
  std::string input;
  CommandStreamOut out{input};
  put(out, group);
  return input + record;
}

std::string copyModule(const std::string& path, const std::string& directory) {
  std::filesystem::create_directories(directory);
  const auto copy = directory + "/lparams_server.so";
  std::filesystem::copy_file(path, copy, std::filesystem::copy_options::overwrite_existing);
  return copy;
}

}  // namespace bench
