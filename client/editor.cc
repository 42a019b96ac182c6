#include "client/editor.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "client/failure.h"
#include "client/user_file.h"
#include "documents/document.h"
#include "text/escape.h"

namespace client {
namespace {

[[noreturn]] void fail(const std::string& what) {
  const int reason = errno;
  throw Failure(programs::EXIT_IO, what + ": " + std::generic_category().message(reason));
}

/// What the shell is to run; it has the path as its first argument.
std::string editorCommand() {
  for (const char* variable : {"VISUAL", "EDITOR"}) {
    const char* const value = std::getenv(variable);  // NOLINT(concurrency-mt-unsafe): one thread
    if (value != nullptr && *value != '\0') return std::string(value) + " \"$1\"";
  }
  return "if command -v editor >/dev/null; then editor \"$1\"; else vi \"$1\"; fi";
}

/// Keys that interrupt are for the editor meanwhile.
class WithoutInterrupts {
 public:
  WithoutInterrupts()
      : interrupt_(std::signal(SIGINT, SIG_IGN)), quit_(std::signal(SIGQUIT, SIG_IGN)) {}
  ~WithoutInterrupts() { restore(); }
  WithoutInterrupts(const WithoutInterrupts&) = delete;
  WithoutInterrupts& operator=(const WithoutInterrupts&) = delete;

  void restore() const {
    (void)std::signal(SIGINT, interrupt_);
    (void)std::signal(SIGQUIT, quit_);
  }

 private:
  void (*const interrupt_)(int);
  void (*const quit_)(int);
};

}  // namespace

EditedFile::EditedFile() {
  std::error_code error;
  const auto temporary = std::filesystem::temp_directory_path(error);
  directory_ = (error ? "/tmp" : temporary.string()) + "/lparamsctl-XXXXXX";
  if (::mkdtemp(directory_.data()) == nullptr) fail("cannot make a directory for the editor");
  path_ = directory_ + "/settings.txt";
}

EditedFile::~EditedFile() {
  std::error_code ignored;
  if (!kept_) std::filesystem::remove_all(directory_, ignored);
}

void EditedFile::write(const std::string& text) const {
  writePrivateFile(path_, text, Existing::Replaced);
}

void EditedFile::edit() const {
  const std::string command = editorCommand();
  const WithoutInterrupts ignoring;
  const pid_t child = ::fork();
  if (child < 0) fail("cannot start the editor");
  if (child == 0) {
    ignoring.restore();
    ::execl("/bin/sh", "sh", "-c", command.c_str(), "sh", path_.c_str(), nullptr);
    ::_exit(127);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) fail("cannot wait for the editor");
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    throw Failure(programs::EXIT_IO, "the editor failed");
  }
}

std::string EditedFile::read() const { return readUserFile(path_, documents::MAX_SIZE); }

}  // namespace client
