// The module as an agent has it: loaded from its file, reached through LPARAMS::server and through
// the listener that it registers.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "lparams/interface/commands.h"
#include "lparams/server.h"
#include "tests/module/platform_services.h"
#include "tests/module/temp_directory.h"

namespace host {

inline const std::string MODULE_FILE = PRODUCTS_DIR "/lparams_server.so";

using LPARAMS::Server::READ_GROUP;
using LPARAMS::Server::SAVE;
using LPARAMS::Server::WRITE_GROUP;

/// How a command ended.
struct CommandResult {
  int result = 0;
  std::string output;
  std::string thrown;  ///< the text of the `const char*` that was thrown; empty if none was
};

/// Executes a command of the registered listener for the session. Thread-safe.
CommandResult execute(BridgeSession& session, long command, const std::string& input = {});
CommandResult execute(long command, const std::string& input = {});

/// The input of commands 0 and 1: the framed name of the group and, for 0, its record.
std::string framed(std::string_view group, std::string_view record = {});

/// Loads the module at construction and unloads it at destruction; what it holds is fresh each
/// time.
class LoadedModule {
 public:
  /// Throws std::runtime_error with the loader's words.
  LoadedModule();
  ~LoadedModule();

  LoadedModule(const LoadedModule&) = delete;
  LoadedModule& operator=(const LoadedModule&) = delete;

  void unload();
  void reload();

  /// REQUIRES: not unloaded.
  LPARAMS::Server::Server_t& root() const;

  /// Appends a user at its defaults to the root's list, by the exported function.
  LPARAMS::Server::USER_t* addUser() const;

  /// An exported function by its mangled name. Throws std::runtime_error.
  template <typename Function>
  Function* function(const char* mangledName) const {
    return reinterpret_cast<Function*>(symbol(mangledName));
  }

 private:
  void load();
  void* symbol(const char* mangledName) const;

  void* handle_ = nullptr;
};

/// The module's identifier in its listener, also while the module is being loaded. REQUIRES: the
/// module is in the process.
ModuleIdType moduleIdInPlace();

/// A test with a loaded module and a private directory in which it keeps its settings file.
class ModuleTest : public testing::Test {
 protected:
  ModuleTest();
  ~ModuleTest() override;

  LPARAMS::Server::Server_t& root() const { return module.root(); }

  const TempDirectory directory;
  const std::string settingsPath = directory.path + "localsettings.ini";
  const std::string temporaryPath = settingsPath + ".bak";
  LoadedModule module;
};

}  // namespace host
