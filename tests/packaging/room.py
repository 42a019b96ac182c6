"""A systemd of its own that the tests of the unit talk to."""

import os
import select
import subprocess
import time

HERE = os.path.dirname(os.path.abspath(__file__))
START_LIMIT = 60  # seconds; some three are enough
WAIT_LIMIT = 180  # seconds for anything that is to happen
ENVIRONMENT = ["PATH=/usr/bin:/usr/sbin:/usr/lib/lparams", "LANG=C.UTF-8"]


class CannotBoot(Exception):
    pass


class Room:
    """What boot.sh boots with these arguments. Throws CannotBoot, with the reason, where it cannot."""

    def __init__(self, *arguments):
        if os.geteuid() != 0:
            raise CannotBoot("only root can boot it")
        self.process = subprocess.Popen(
            ["setpriv", "--pdeathsig", "TERM", os.path.join(HERE, "boot.sh"),
             *arguments],
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        ready, _, _ = select.select([self.process.stdout], [], [], START_LIMIT)
        line = self.process.stdout.readline().strip() if ready else "nothing happens"
        if not line.isdigit():
            self.end()
            raise CannotBoot(line)
        self.init = line
        deadline = time.monotonic() + START_LIMIT
        while (state := self.state()) not in ("running", "degraded"):
            if self.process.poll() is not None or time.monotonic() > deadline:
                self.end()
                raise CannotBoot(f"it does not come up: {state or 'no answer'}")
            time.sleep(0.05)

    def state(self):
        return self.run("systemctl", "is-system-running").stdout.strip()

    def end(self):
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()

    def inside(self, user):
        """What runs a command in the room."""
        as_user = [] if user == "root" else ["setpriv", "--reuid", user, "--regid", user,
                                             "--init-groups"]
        return ["nsenter", f"--target={self.init}", "--pid", "--mount", "--uts", "--ipc", "--net",
                "--cgroup", "--root", "env", "-i", "-C", "/", *ENVIRONMENT, *as_user]

    def run(self, *command, user="root"):
        """How the command ends in the room."""
        return subprocess.run(
            self.inside(user) + list(command), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            timeout=WAIT_LIMIT, check=False)

    def terminal(self, user):
        """A login shell of the user on a terminal: a program that takes what is typed."""
        return subprocess.Popen(
            self.inside(user) + ["env", "TERM=dumb", "script", "-qefc", "bash -il", "/dev/null"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)

    def shell(self, script):
        """What the script writes; it has to succeed."""
        done = self.run("sh", "-ec", script)
        if done.returncode != 0:
            raise AssertionError(f"{script}: {done.stdout}")
        return done.stdout.strip()
