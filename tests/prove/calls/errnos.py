"""Which errors a system call can give that is called as it should be: of section 2 of the manual
pages those that come from outside. Not the errors of a wrong argument (EBADF, EFAULT, EINVAL), nor
what cannot be: a call that is not listed does not fail."""

import re

FILE = "EACCES EIO ELOOP ENOENT ENOMEM"
CHANGE = "EACCES EPERM EIO EROFS ENOSPC EDQUOT ENOMEM"

ERRNOS = {
    # files
    "access": FILE,
    "chmod": "EACCES EPERM EIO EROFS",
    "chown32": "EACCES EPERM EIO EROFS",
    "close": "EIO EINTR ENOSPC EDQUOT",
    "fchmod": "EPERM EIO EROFS",
    "fchmodat": "EACCES EPERM EIO EROFS",
    "fchown32": "EPERM EIO EROFS",
    "fchownat": "EACCES EPERM EIO EROFS",
    "flock": "EINTR ENOLCK",
    "fsync": "EIO EINTR ENOSPC EDQUOT EROFS",
    "ftruncate64": "EIO EINTR EPERM",
    "getdents64": "EIO",
    "_llseek": "EIO",
    "lseek": "EIO",
    "mkdir": CHANGE,
    "openat": "EACCES EMFILE ENFILE EIO ELOOP EINTR ENOENT ENOMEM",
    "pread64": "EIO EINTR",
    "read": "EIO EINTR",
    "readlink": "EACCES EIO ELOOP ENOENT ENOMEM",
    "readv": "EIO EINTR",
    "rename": CHANGE,
    "renameat2": CHANGE,
    "statx": FILE,
    "unlink": "EACCES EPERM EIO EROFS EBUSY",
    "write": "EIO EINTR ENOSPC EDQUOT EFBIG EPIPE",
    "writev": "EIO EINTR ENOSPC EDQUOT EFBIG EPIPE",
    # sockets
    "accept4": "ECONNABORTED EINTR EMFILE ENFILE ENOBUFS ENOMEM EPERM EPROTO",
    "bind": "EACCES EADDRINUSE ENOENT ENOMEM ENOTDIR EROFS",
    "connect": "EACCES EAGAIN ECONNREFUSED EINTR ENOENT EPERM ETIMEDOUT",
    "getsockopt": "ENOBUFS ENOMEM",
    "listen": "EADDRINUSE",
    "recv": "ECONNRESET EINTR ENOMEM",
    "recvfrom": "ECONNRESET EINTR ENOMEM",
    "recvmsg": "ECONNRESET EINTR ENOMEM",
    "send": "ECONNRESET EINTR ENOBUFS ENOMEM EPIPE",
    "sendmsg": "ECONNRESET EINTR ENOBUFS ENOMEM EPIPE",
    "sendto": "ECONNREFUSED EINTR ENOBUFS ENOMEM EPIPE EAGAIN",
    "setsockopt": "ENOBUFS ENOMEM",
    "shutdown": "ENOTCONN",
    "socket": "EACCES EMFILE ENFILE ENOBUFS ENOMEM",
    "socketpair": "EMFILE ENFILE ENOMEM",
    # waiting
    "epoll_create1": "EMFILE ENFILE ENOMEM",
    "epoll_ctl": "ENOMEM ENOSPC",
    "epoll_wait": "EINTR",
    "eventfd2": "EMFILE ENFILE ENODEV ENOMEM",
    "pipe2": "EMFILE ENFILE",
    "poll": "EINTR ENOMEM",
    "ppoll": "EINTR ENOMEM",
    "timerfd_create": "EMFILE ENFILE ENODEV ENOMEM",
    # memory, threads, processes
    "clone3": "EAGAIN ENOMEM EPERM ENOSYS",
    "fcntl64": "EMFILE",
    "getrandom": "EINTR ENOSYS",
    "mmap2": "ENOMEM EAGAIN",
    "mprotect": "ENOMEM",
    "mremap": "ENOMEM",
    "vfork": "EAGAIN ENOMEM",
    "wait4": "EINTR",
    "waitpid": "EINTR",
}
IN_64_BIT = {"mmap": "mmap2", "fcntl": "fcntl64", "chown": "chown32", "fchown": "fchown32",
             "ftruncate": "ftruncate64", "newfstatat": "statx"}
ERRNOS.update({name: ERRNOS[same] for name, same in IN_64_BIT.items()})
DELAY = "delay_enter=200000"  # microseconds
SHORT = "short"


# As if nothing had happened is what follows then.
WAITS = ("accept4", "connect", "epoll_wait", "poll", "recv", "recvfrom", "recvmsg", "send",
         "sendmsg", "sendto")


def is_gentle(name, effect):
    """Nobody is to notice it."""
    return effect in (DELAY, SHORT) or (effect == "error=EINTR" and name in WAITS)


def is_socket(arguments):
    """Whether the call is of no file's descriptor; as strace(1) shows it with -y."""
    return re.match(r"\d+<(socket|UNIX|anon_inode|pipe)", arguments) is not None


def effects(name, arguments):
    """What is tried of a call, each as strace(1) wants it."""
    errors = ERRNOS.get(name, "").split()
    # What a call with these arguments cannot give.
    if name in ("close", "read") and is_socket(arguments):
        errors = []
    if name == "write" and re.match(r"([3-9]|\d\d+)<(anon_inode|pipe)", arguments):
        errors = []  # to itself, of a signal or another thread's work: never full, never closed
    if name in ("fcntl", "fcntl64") and "F_DUPFD" not in arguments:
        errors = []
    if name == "epoll_ctl" and not re.search("EPOLL_CTL_ADD, [0-9]+<(socket|UNIX)", arguments):
        errors = []  # of what asio adds for itself, it looks at no error
    if name == "openat" and "O_CREAT" in arguments:
        errors = errors + ["EROFS", "ENOSPC", "EDQUOT"]
    return [f"error={error}" for error in errors] + [DELAY]
