// A loaded settings module, reached as an agent reaches it.
#pragma once

#include <memory>
#include <string>

#include "lparams/interface/commands.h"
#include "lparams/server.h"
#include "platform/command_bridge.h"

namespace bench {

using LPARAMS::Server::READ_GROUP;
using LPARAMS::Server::WRITE_GROUP;

/// A load log that counts.
class CountingLog : public LPARAMS::Server::LoadLog {
 public:
  void unknownParam(const std::string&, const std::string&) override { ++reports; }
  void paramFailed(const std::string&, const std::string&) override { ++reports; }
  void paramsMissing(int, int, const std::string&) override { ++reports; }
  void rootMismatch(const std::string&, const std::string&) override { ++reports; }
  void fileFailed(const std::string&) override { ++reports; }
  void badValue(const std::string&, const std::string&) override { ++reports; }
  void extraText(const std::string&, const std::string&) override { ++reports; }

  int reports = 0;
};

/// Holds the module loaded. Several can be, each from a file of its own.
class Module {
 public:
  /// Loads the module from `path`; its settings file will be in `directory`.
  Module(const std::string& path, const std::string& directory);

  LPARAMS::Server::Server_t& root() const { return *root_; }

  /// Reads the settings file into an empty user list. Throws if there was anything to report.
  void load();

  void clearUsers();

  /// Appends users with values like those in use.
  void addUsers(unsigned count);

  /// Executes a command, appends to `reply`. Throws if the module refuses.
  void execute(int command, const std::string& input, std::string& reply);

  /// The reply to reading the group.
  std::string read(const std::string& group);

 private:
  struct Closer {
    void operator()(void* handle) const;
  };
  using List = LPARAMS::Server::ParamVector<LPARAMS::Server::USER_t>;

  template <typename T>
  T symbol(const char* name) const;

  const std::string directory_;
  std::unique_ptr<void, Closer> handle_;
  CommandListener* listener_ = nullptr;
  LPARAMS::Server::Server_t* root_ = nullptr;
  LPARAMS::Server::USER_t* (*listAdd_)(List&) = nullptr;
  void (*listClear_)(List&) = nullptr;
};

/// The input of a command on the group, with the record behind its name.
std::string commandInput(const std::string& group, const std::string& record = {});

/// Copies the module into the directory: each copy can be loaded beside the others.
std::string copyModule(const std::string& path, const std::string& directory);

}  // namespace bench
