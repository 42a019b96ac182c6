#include "tests/module/loaded_module.h"

#include <dlfcn.h>

#include <stdexcept>

#include "lparams/params/command_stream.h"
#include "tests/module/file_calls.h"

namespace host {
namespace {

constexpr const char* ROOT_SYMBOL = "_ZN7LPARAMS6serverE";

}  // namespace

CommandResult execute(BridgeSession& session, long command, const std::string& input) {
  CommandResult reply;
  try {
    reply.result = platform().listener->ExecCommand(session, command, input, reply.output);
  } catch (const char* thrown) {
    reply.thrown = thrown;
  }
  return reply;
}

CommandResult execute(long command, const std::string& input) {
  BridgeSession session;
  return execute(session, command, input);
}

std::string framed(std::string_view group, std::string_view record) {
  std::string input;
  LPARAMS::Server::CommandStreamOut out{input};
  put(out, std::string(group));
  return input.append(record);
}

LoadedModule::LoadedModule() { load(); }
LoadedModule::~LoadedModule() { unload(); }

void LoadedModule::load() {
  handle_ = dlopen(MODULE_FILE.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) throw std::runtime_error(dlerror());
}

void LoadedModule::unload() {
  if (handle_ != nullptr) dlclose(handle_);
  handle_ = nullptr;
}

void LoadedModule::reload() {
  unload();
  load();
}

LPARAMS::Server::Server_t& LoadedModule::root() const {
  return **static_cast<LPARAMS::Server::Server_t**>(symbol(ROOT_SYMBOL));
}

LPARAMS::Server::USER_t* LoadedModule::addUser() const {
  using LPARAMS::Server::USER_t;
  return function<USER_t*(LPARAMS::Server::ParamVector<USER_t>&)>(
      "_ZN7LPARAMS6Server7listAddERNS0_11ParamVectorINS0_6USER_tEEE")(*root().USERS);
}

void* LoadedModule::symbol(const char* mangledName) const {
  void* address = dlsym(handle_, mangledName);
  if (address == nullptr) throw std::runtime_error(dlerror());
  return address;
}

ModuleIdType moduleIdInPlace() {
  void* handle = dlopen(MODULE_FILE.c_str(), RTLD_NOW | RTLD_NOLOAD);
  const auto* root = *static_cast<const char* const*>(dlsym(handle, ROOT_SYMBOL));
  dlclose(handle);
  // The root is the listener's own field, behind the inherited one.
  return reinterpret_cast<const CommandListener*>(root - sizeof(CommandListener))->moduleId;
}

ModuleTest::ModuleTest() {
  resetPlatform(directory.path);
  watchDirectory(directory.path);
}

ModuleTest::~ModuleTest() { watchDirectory({}); }

}  // namespace host
