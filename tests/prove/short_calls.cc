// Loaded before a program's libraries: of the calls of one name that read or write a file or a
// connection, the one that the variable SHORT_CALLS tells, such as "recv 3", takes one byte, or
// each
// ("recv 0").
#include <dlfcn.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <string_view>

#include "tests/prove/slip.h"

namespace {

using prove::next;

/// Messages are whole, and so is what is small in a pipe (pipe(7)), an eventfd or a timerfd.
bool canBeShort(int file) {
  struct stat status {};
  if (fstat(file, &status) != 0) return false;
  int type = 0;
  socklen_t size = sizeof type;
  return S_ISREG(status.st_mode) ||
         (S_ISSOCK(status.st_mode) && getsockopt(file, SOL_SOCKET, SO_TYPE, &type, &size) == 0 &&
          type == SOCK_STREAM);
}

bool isShort(std::string_view name, int file) {
  static std::atomic<int> made = 0;
  const char* const wanted = std::getenv("SHORT_CALLS");
  if (wanted == nullptr) return false;
  const std::string_view text = wanted;
  if (text.substr(0, text.find(' ')) != name || !canBeShort(file)) return false;
  const int number = std::atoi(wanted + name.size());
  return ++made == number || number == 0;
}

size_t sized(std::string_view name, int file, size_t size) {
  return size > 1 && isShort(name, file) ? 1 : size;
}

/// The first part that holds something, as if it were one byte.
iovec firstByte(const iovec* parts, int count) {
  for (int i = 0; i < count; ++i) {
    if (parts[i].iov_len > 0) return {parts[i].iov_base, 1};
  }
  return {nullptr, 0};
}

}  // namespace

#pragma GCC visibility push(default)
extern "C" {

ssize_t read(int file, void* bytes, size_t size) {
  return next<ssize_t(int, void*, size_t)>("read")(file, bytes, sized("read", file, size));
}

ssize_t write(int file, const void* bytes, size_t size) {
  return next<ssize_t(int, const void*, size_t)>("write")(file, bytes, sized("write", file, size));
}

ssize_t writev(int file, const iovec* parts, int count) {
  const auto real = next<ssize_t(int, const iovec*, int)>("writev");
  if (!isShort("writev", file)) return real(file, parts, count);
  const iovec part = firstByte(parts, count);
  return real(file, &part, 1);
}

ssize_t recv(int socket, void* bytes, size_t size, int flags) {
  return next<ssize_t(int, void*, size_t, int)>("recv")(socket, bytes, sized("recv", socket, size),
                                                        flags);
}

ssize_t send(int socket, const void* bytes, size_t size, int flags) {
  return next<ssize_t(int, const void*, size_t, int)>("send")(socket, bytes,
                                                              sized("send", socket, size), flags);
}

ssize_t recvmsg(int socket, msghdr* message, int flags) {
  const auto real = next<ssize_t(int, msghdr*, int)>("recvmsg");
  if (!isShort("recvmsg", socket)) return real(socket, message, flags);
  iovec part = firstByte(message->msg_iov, static_cast<int>(message->msg_iovlen));
  msghdr shortened = *message;
  shortened.msg_iov = &part;
  shortened.msg_iovlen = 1;
  return real(socket, &shortened, flags);
}

ssize_t sendmsg(int socket, const msghdr* message, int flags) {
  const auto real = next<ssize_t(int, const msghdr*, int)>("sendmsg");
  if (!isShort("sendmsg", socket)) return real(socket, message, flags);
  iovec part = firstByte(message->msg_iov, static_cast<int>(message->msg_iovlen));
  msghdr shortened = *message;
  shortened.msg_iov = &part;
  shortened.msg_iovlen = 1;
  return real(socket, &shortened, flags);
}

}  // extern "C"
#pragma GCC visibility pop
