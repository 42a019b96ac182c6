// Loads of settings texts take turns.
#pragma once

#include <mutex>

#include "lparams/params/load_log.h"

namespace inspection {

/// Held while a text is loaded: there is one log for all loads in the process. Thread-safe.
class Loading {
 public:
  /// Waits for the load that runs. Reports go to the log from then on, or nowhere if it is null.
  explicit Loading(LPARAMS::Server::LoadLog* log) : turn_(loading()) {
    LPARAMS::Server::g_loadlog = log;
  }
  ~Loading() { LPARAMS::Server::g_loadlog = nullptr; }
  Loading(const Loading&) = delete;
  Loading& operator=(const Loading&) = delete;

 private:
  static std::mutex& loading() {
    static std::mutex mutex;
    return mutex;
  }

  const std::lock_guard<std::mutex> turn_;
};

}  // namespace inspection
