// The real module with a keeper, as the agent puts them together.
#pragma once

#include <optional>
#include <string>

#include "agent/load_report.h"
#include "agent/module.h"
#include "agent/services/paths_service.h"
#include "agent/state/recovery.h"
#include "agent/state/sealed_text.h"
#include "agent/state/settings_keeper.h"
#include "agent/state/state_directory.h"
#include "tests/agent/state/scratch_directory.h"

namespace agent_testing {

inline const char* const SETTINGS = "localsettings.ini";
inline const char* const SHADOW_COPY = "localsettings.ini.good";
inline const char* const BACKUP = "localsettings.ini.bak";

/// What the shadow copy holds, without its seal; "(broken)" if that does not fit.
inline std::string shadowCopyOf(const ScratchDirectory& directory) {
  const agent::SealedText text = agent::unsealed(directory.text(SHADOW_COPY));
  return text.seal == agent::SealedText::Intact ? text.text : "(broken)";
}

/// A state directory, its module and its keeper. One exists at a time.
class KeptSettings {
 public:
  /// Loads and adopts what lies in the directory.
  explicit KeptSettings(const ScratchDirectory& directory, const std::string& degradedReason = {})
      : state_(directory.path) {
    agent::StartingPoint start = agent::prepareStart(state_, false);
    if (start.source == agent::StartingPoint::FirstStart) agent::keepLegacySettings(state_);
    agent::setSystemVarDir(directory.path);
    module_.emplace(PRODUCTS_DIR "/lparams_server.so");
    agent::LoadReport report;
    loaded = server().load(&report);
    keeper_.emplace(server(), state_);
    keeper_->adopt(std::move(start), degradedReason, report.reports());
  }

  LPARAMS::Server::Server_t& server() { return module_->server(); }
  agent::SettingsKeeper& keeper() { return *keeper_; }
  const agent::StateDirectory& directory() const { return state_; }

  /// Makes a change that is to be saved.
  void setPort(unsigned short port) { server().IKE->IKE_PORT.value = port; }

  bool loaded = false;

 private:
  agent::StateDirectory state_;
  std::optional<agent::Module> module_;
  std::optional<agent::SettingsKeeper> keeper_;
};

}  // namespace agent_testing
