// The agent's bridge and paths service as fakes, put in their place at link time. They record what
// the module asks and answer what the test says.
#pragma once

#include <string>
#include <vector>

#include "platform/command_bridge.h"

/// A session has nothing that the module could look at.
class BridgeSession {};

namespace testing_support {

struct FakePlatform {
  struct AuthRequest {
    BridgeSession* session;
    ModuleIdType module;
    long level;
  };

  /// The listeners that are registered now. The module that the test links is one of them.
  std::vector<CommandListener*> listeners;
  /// Every registration ("add") and its end ("del"), in order.
  std::vector<std::string> listenerCalls;

  /// What an authorisation answers, and what was asked.
  bool authorised = true;
  std::vector<AuthRequest> authRequests;

  /// What systemVarDir() answers, and how often it was asked.
  std::string varDir = "/nonexistent/";
  int varDirCalls = 0;
};

/// The one state of the fakes. Built by its first user, which is the start-up of the module if that
/// is linked.
FakePlatform& fakePlatform();

}  // namespace testing_support
