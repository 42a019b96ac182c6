// The settings module in the agent's process.
#pragma once

#include <string>

#include "lparams/server.h"

namespace agent {

/// Holds the module open. Opening it registers its listener with the bridge; closing takes the
/// listener back and unmaps the module.
class Module {
 public:
  /// Throws StartFailure, with the loader's words, if the file is no such module.
  explicit Module(const std::string& path);
  ~Module();

  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  /// The settings root. Only its virtual operations and its public data are used: the agent links
  /// nothing of the module.
  LPARAMS::Server::Server_t& server() const { return *server_; }

 private:
  void* handle_;
  LPARAMS::Server::Server_t* server_;
};

}  // namespace agent
