#include "tests/client/client_on_terminal.h"

#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <system_error>
#include <utility>

namespace client_testing {
namespace {

constexpr const char* CLIENT = PRODUCTS_DIR "/lparamsctl";
constexpr unsigned PATIENCE = 100;  // seconds; only a client that hangs sees it

int checked(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

void setUp(int terminal, ClientOnTerminal::Echo echo) {
  termios settings{};
  checked(tcgetattr(terminal, &settings), "tcgetattr");
  if (echo == ClientOnTerminal::Silent) settings.c_lflag &= ~static_cast<tcflag_t>(ECHO);
  settings.c_oflag &= ~static_cast<tcflag_t>(OPOST);
  checked(tcsetattr(terminal, TCSANOW, &settings), "tcsetattr");
}

}  // namespace

ClientOnTerminal::ClientOnTerminal(std::vector<std::string> arguments,
                                   const std::map<std::string, std::string>& variables, Echo echo)
    : terminal_(checked(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC), "posix_openpt")) {
  checked(grantpt(terminal_), "grantpt");
  checked(unlockpt(terminal_), "unlockpt");
  const std::string name = ptsname(terminal_);
  const int user = checked(open(name.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC), "open terminal");
  setUp(user, echo);
  arguments.insert(arguments.begin(), CLIENT);
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);
  id_ = checked(fork(), "fork");
  if (id_ == 0) {
    for (const auto& [variable, value] : variables) setenv(variable.c_str(), value.c_str(), 1);
    (void)setsid();
    (void)ioctl(user, TIOCSCTTY, 0);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
      (void)dup2(user, standard);
    }
    (void)alarm(PATIENCE);
    (void)execv(CLIENT, argv.data());
    _exit(127);
  }
  (void)close(user);
}

ClientOnTerminal::~ClientOnTerminal() {
  if (id_ > 0) {
    (void)kill(id_, SIGKILL);
    (void)exitCode();
  }
  (void)close(terminal_);
}

std::string ClientOnTerminal::outputUntil(const std::string& text) {
  std::string output;
  while (text.empty() || !output.ends_with(text)) {
    char c = 0;  // one by one: the next output is for the next call
    const ssize_t count = read(terminal_, &c, 1);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;  // nobody has the other end open any more
    output += c;
  }
  return output;
}

void ClientOnTerminal::type(const std::string& line) const {
  checked(static_cast<int>(write(terminal_, line.data(), line.size())), "write");
}

int ClientOnTerminal::exitCode() {
  int status = 0;
  checked(waitpid(std::exchange(id_, -1), &status, 0), "waitpid");
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace client_testing
