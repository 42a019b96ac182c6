#include "client/directory_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "client/failure.h"
#include "text/escape.h"

namespace client {

DirectoryLock::DirectoryLock(const std::string& file, Kind kind, const char* advice) {
  std::error_code unknown;
  const auto directory = std::filesystem::canonical(file, unknown).parent_path();
  descriptor_ = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int operation = kind == Alone ? LOCK_EX : LOCK_SH;
  if (descriptor_ < 0 || ::flock(descriptor_, operation | LOCK_NB) == 0) return;
  const bool used = errno == EWOULDBLOCK;
  (void)::close(descriptor_);
  descriptor_ = -1;
  if (!used) return;
  throw Failure(programs::EXIT_TRY_AGAIN,
                text::escaped(file) + " is in the directory of a running agent; " + advice);
}

DirectoryLock::~DirectoryLock() {
  if (descriptor_ >= 0) (void)::close(descriptor_);
}

}  // namespace client
