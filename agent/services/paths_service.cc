#include "agent/services/paths_service.h"

#include <utility>

#include "platform/paths_service.h"

namespace {

std::string g_systemVarDir;

}  // namespace

namespace agent {

void setSystemVarDir(std::string directory) {
  g_systemVarDir = std::move(directory);
  if (!g_systemVarDir.ends_with('/')) g_systemVarDir += '/';
}

}  // namespace agent

std::string systemVarDir() { return g_systemVarDir; }
