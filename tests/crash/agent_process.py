"""The real agent as a child process, and the tracer that watches and disturbs it."""

import os
import select
import signal
import subprocess
import time

from bridge_client import BridgeClient

DEADLINE = 120  # seconds; only to end a hung child
# The tracer counts calls: none may depend on which thread allocates memory first.
ENVIRONMENT = dict(os.environ, LC_ALL="C", MALLOC_ARENA_MAX="1")
if "AGENT_PRELOAD" in os.environ:  # a library for the agent alone
    ENVIRONMENT["LD_PRELOAD"] = os.environ["AGENT_PRELOAD"]
# What load and save do to files. "?": not every architecture knows each name.
TRACED = ("execve", "openat", "?open", "?creat", "read", "write", "writev", "?pwrite64", "fsync",
          "?fdatasync", "?rename", "?renameat", "renameat2", "?unlink", "?unlinkat", "?link",
          "?linkat", "ftruncate", "?ftruncate64", "?chmod", "?fchmod", "?rmdir", "flock", "close")


class Hung(Exception):
    """The agent neither answered nor ended."""


def read_until(stream, text, collected):
    """Reads from the stream, into `collected`, until the text or the end has come. True: the text
    has come."""
    end = time.monotonic() + DEADLINE
    while text not in collected:
        ready, _, _ = select.select([stream], [], [], max(0, end - time.monotonic()))
        if not ready:
            raise Hung(bytes(collected).decode(errors="replace"))
        data = os.read(stream.fileno(), 65536)
        if not data:
            return False
        collected += data
    return True


class Tracer:
    """strace, attached to a process."""

    def __init__(self, pid, output, injection=None):
        self.output = output
        command = ["strace", "-f", "-y", "-s", "4194304", "-o", output,
                   "-e", "trace=" + ",".join(TRACED), "-p", str(pid)]
        if injection:
            command += ["-e", f"inject={injection}"]
        self.process = subprocess.Popen(command, stderr=subprocess.PIPE, bufsize=0)
        said = bytearray()
        if not read_until(self.process.stderr, b" attached", said):
            raise RuntimeError("strace: " + said.decode())

    def finish(self, alive):
        """Returns the text of the trace. `alive`: the process is, and runs on without the tracer."""
        if alive:
            self.process.send_signal(signal.SIGINT)
        self.process.wait(DEADLINE)  # ends with its process: must not be stopped meanwhile
        self.process.stderr.close()
        with open(self.output, encoding="latin-1") as file:
            return file.read()


def why_no_tracer():
    """What keeps a tracer from a process that it has not started; empty if nothing does."""
    with subprocess.Popen(["sleep", "60"]) as sleeper:
        try:
            Tracer(sleeper.pid, os.devnull).finish(alive=True)
        except (OSError, RuntimeError) as error:
            return str(error).strip().splitlines()[-1]
        finally:
            sleeper.kill()
    return ""


class Agent:
    """Runs between its construction and kill()."""

    def __init__(self, build, state, run, stopped=False, options=(), environment=None,
                 prefix=()):
        """`stopped`: the process waits for go() before it becomes the agent. `prefix`: the command
        that starts it."""
        self.socket = os.path.join(run, "agent.sock")
        command = [*prefix, os.path.join(build, "lparams_agent"), "--state-dir", state,
                   "--socket", self.socket, *options]
        if stopped:
            command = ["/bin/sh", "-c", 'kill -STOP $$; exec "$0" "$@"'] + command
        self.log = bytearray()
        self.process = subprocess.Popen(command, stderr=subprocess.PIPE, bufsize=0,
                                        env=dict(ENVIRONMENT, **(environment or {})))
        if stopped:
            os.waitpid(self.process.pid, os.WUNTRACED)

    def go(self):
        self.process.send_signal(signal.SIGCONT)

    def listening(self):
        """Waits until the agent listens or ends. True: it listens."""
        return read_until(self.process.stderr, b": listening ", self.log)

    def connect(self):
        return BridgeClient(self.socket)

    def kill(self):
        """Returns the exit status: that of an agent that had ended by itself, or -SIGKILL."""
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait(DEADLINE)
        self.process.stderr.close()
        return self.process.returncode

    def wait(self):
        """The exit status of an agent that ends by itself."""
        try:
            return self.process.wait(DEADLINE)
        except subprocess.TimeoutExpired:
            raise Hung(self.said()) from None

    def said(self):
        """What it has said; all of it if it has ended."""
        if self.process.poll() is not None and not self.process.stderr.closed:
            self.log += self.process.stderr.read()
        return self.log.decode(errors="replace")
