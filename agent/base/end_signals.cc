#include "agent/base/end_signals.h"

#include <pthread.h>

#include <csignal>
#include <initializer_list>

namespace agent {
namespace {

void changeMask(int how) {
  sigset_t signals;
  (void)::sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) (void)::sigaddset(&signals, signal);
  (void)::pthread_sigmask(how, &signals, nullptr);
}

}  // namespace

void holdEndSignals() { changeMask(SIG_BLOCK); }

void acceptEndSignals() { changeMask(SIG_UNBLOCK); }

bool endsWithTerminal() {
  struct sigaction action {};
  return ::sigaction(SIGHUP, nullptr, &action) != 0 || action.sa_handler != SIG_IGN;
}

}  // namespace agent
