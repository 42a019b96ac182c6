#include "client/terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <iterator>
#include <string_view>

#include "client/failure.h"

namespace client {
namespace {

/// Turns the echo off. A signal that would end the program or stop it waits until it is on again.
class NoEcho {
 public:
  explicit NoEcho(int terminal) : terminal_(terminal) {
    sigset_t ends{};
    (void)sigemptyset(&ends);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
      (void)sigaddset(&ends, signal);
    }
    (void)sigprocmask(SIG_BLOCK, &ends, &before_);
    signals_ = ::signalfd(-1, &ends, SFD_CLOEXEC);
    if (::tcgetattr(terminal_, &attributes_) != 0) return;
    termios silent = attributes_;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    silent.c_lflag |= ECHONL;
    changed_ = ::tcsetattr(terminal_, TCSAFLUSH, &silent) == 0;
  }
  ~NoEcho() {
    if (changed_) (void)::tcsetattr(terminal_, TCSAFLUSH, &attributes_);
    if (signals_ >= 0) (void)::close(signals_);
    (void)sigprocmask(SIG_SETMASK, &before_, nullptr);
  }
  NoEcho(const NoEcho&) = delete;
  NoEcho& operator=(const NoEcho&) = delete;

  /// Can be read from when such a signal waits.
  int signals() const { return signals_; }

 private:
  const int terminal_;
  termios attributes_{};
  sigset_t before_{};
  int signals_ = -1;
  bool changed_ = false;
};

}  // namespace

Terminal::Terminal() : terminal_(::open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC)) {
  if (terminal_ < 0) {
    throw Failure(programs::EXIT_USAGE,
                  "there is no terminal to ask on; NAME=@FILE and NAME=@- read a value");
  }
}

Terminal::~Terminal() { (void)::close(terminal_); }

std::string Terminal::askHidden(const std::string& question, size_t limit) {
  const NoEcho silence(terminal_);
  write(question);
  return readLine(silence.signals(), limit);
}

void Terminal::write(const std::string& text) const {
  for (std::string_view rest = text; !rest.empty();) {
    const ssize_t written = ::write(terminal_, rest.data(), rest.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) throw Failure(programs::EXIT_IO, "cannot write to the terminal");
    rest.remove_prefix(static_cast<size_t>(written));
  }
}

std::string Terminal::readLine(int signals, size_t limit) const {
  std::string line;
  for (char c = 0; line.size() < limit;) {
    pollfd ready[] = {{terminal_, POLLIN, 0}, {signals, POLLIN, 0}};
    if (::poll(ready, std::size(ready), -1) < 0 && errno == EINTR) continue;
    if (ready[1].revents != 0) break;
    const ssize_t got = ::read(terminal_, &c, 1);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) throw Failure(programs::EXIT_IO, "the question was not answered");
    if (c == '\n') return line;
    line += c;
  }
  throw Failure(programs::EXIT_IO, "the question was not answered");
}

}  // namespace client
