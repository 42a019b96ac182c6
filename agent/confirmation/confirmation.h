// Changes that go back by themselves unless somebody confirms them: the agent's commands "apply"
// and "confirm".
#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "agent/access/group_writer.h"
#include "agent/access/set_command.h"
#include "agent/base/bridge_session.h"
#include "agent/base/mutex.h"
#include "agent/bridge/command_service.h"
#include "agent/confirmation/unconfirmed.h"
#include "agent/state/settings_keeper.h"
#include "bridge/apply.h"
#include "editing/record_check.h"
#include "lparams/catalogue/catalogue.h"

namespace agent {

/// Keeps the settings from before a change durably, from before the change until it is confirmed or
/// has gone back; so it goes back also after the agent was killed. One change at a time waits.
///
/// A change goes back in memory by the module's own writes, and in the files by a save if one of
/// them holds it. What fails is tried again until it succeeds; state() tells. Thread-safe; changes
/// go back on a thread of its own.
class Confirmation {
 public:
  /// REQUIRES: all of them outlive it; a save hook is set.
  Confirmation(LPARAMS::Server::Catalogue& settings, SettingsKeeper& keeper,
               const editing::RecordCheck& check, const SetCommand& set, CommandService& service);

  /// What waits is left to the next start.
  ~Confirmation();

  Confirmation(const Confirmation&) = delete;
  Confirmation& operator=(const Confirmation&) = delete;

  /// Goes on with what the agent before this one has left: waits for what is left of its time, or
  /// takes it back at once. Call before the first session.
  void resume();

  /// Changes settings, and saves them if that is asked for.
  bridge::Reply apply(BridgeSession& session, const std::string& input);

  /// Lets the change stay that waits.
  bridge::Reply confirm(BridgeSession& session);

  struct State {
    std::optional<std::time_t> until = {};  ///< when it goes back
    std::string problem = {};  ///< what cannot go back, and why; empty if there is none
  };
  State state() const;

 private:
  enum class Phase {
    Idle,
    Beginning,   ///< the change is being made
    Waiting,     ///< for the confirmation or the end of the time
    Confirming,  ///< the file is being removed
    GoingBack,
  };
  enum class Made { Nothing, File, Changes };
  using Clock = std::chrono::steady_clock;

  struct Plan;

  bridge::Reply applyConfirmed(BridgeSession& session, const bridge::ApplyRequest& request);
  Plan plan(const bridge::NamedChanges& changes);
  bool begin(bridge::Reply& refusal);
  void giveUp(const std::shared_ptr<const Unconfirmed>& changes, Made made);
  void wait(std::shared_ptr<const Unconfirmed> changes, const BridgeSession& session);
  void wait(std::shared_ptr<const Unconfirmed> changes, std::chrono::milliseconds time);
  void becomeIdle();
  void run();
  void takeBack(const std::shared_ptr<const Unconfirmed>& changes);
  std::string tryToTakeBack(const Unconfirmed& changes);
  std::string takeBackInMemory(LPARAMS::Server::Catalogue& before,
                               LPARAMS::Server::Catalogue& after);
  bool holds(LPARAMS::Server::Catalogue& settings, const Unconfirmed& changes) const;
  bool isOnDisk(const Unconfirmed& changes);
  std::string path() const { return keeper_.directory().unconfirmed(); }

  LPARAMS::Server::Catalogue& settings_;
  SettingsKeeper& keeper_;
  const editing::RecordCheck& check_;
  const SetCommand& set_;
  CommandService& service_;
  const GroupWriter writer_;

  mutable Mutex mutex_;  // never held while a file or settings are written
  ConditionVariable changed_;
  Phase phase_ GUARDED_BY(mutex_) = Phase::Idle;
  std::shared_ptr<const Unconfirmed> waiting_ GUARDED_BY(mutex_);  // null while idle
  Clock::time_point end_ GUARDED_BY(mutex_);                       // of the time, or of a pause
  std::string problem_ GUARDED_BY(mutex_);
  bool stopping_ GUARDED_BY(mutex_) = false;

  std::thread thread_;
};

}  // namespace agent
