#include "agent/load_timeout.h"

#include <sys/time.h>
#include <unistd.h>

#include <csignal>
#include <string_view>

#include "agent/base/exit_status.h"
#include "agent/base/log.h"

namespace agent {
namespace {

constexpr time_t SECONDS = 1;
constexpr size_t BYTES_PER_SECOND = 256 * 1024;  // far slower than any machine

void setTimer(time_t seconds) {
  itimerval timer{};
  timer.it_value.tv_sec = seconds;
  (void)::setitimer(ITIMER_PROF, &timer, nullptr);
}

/// Runs in the middle of anything: no memory, no streams, no log.
void endProcess(int /*signal*/) {
  constexpr std::string_view LINE =
      "<3>lparams_agent: error: the settings file could not be read: the module does not come "
      "back\n";
  const std::string_view line = LINE.substr(logsForJournal() ? 0 : LINE.find('>') + 1);
  (void)!::write(STDERR_FILENO, line.data(), line.size());
  ::_exit(EXIT_UNAVAILABLE);
}

}  // namespace

LoadTimeout::LoadTimeout(size_t bytes) {
  (void)std::signal(SIGPROF, endProcess);
  setTimer(SECONDS + static_cast<time_t>(bytes / BYTES_PER_SECOND));
}

LoadTimeout::~LoadTimeout() {
  setTimer(0);
  (void)std::signal(SIGPROF, SIG_DFL);
}

}  // namespace agent
