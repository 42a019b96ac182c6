"""A life of the agent, of which a part is disturbed: start, session, stop."""

import os
import re
import shutil
import socket
import subprocess
import time

import disturbance
import errnos
import session
from agent_process import Agent, Hung
from bridge_client import block
from recovery_check import read_files, unsealed, write_files
from scenarios import SETTINGS, SHADOW_COPY

START, RECOVERY, FIRST, SESSION, STOP = "start", "recovery", "first start", "session", "stop"
PARTS = (START, RECOVERY, FIRST, SESSION, STOP)
STARTS = (START, RECOVERY, FIRST)
PATIENCE = 60  # seconds; only to end what hangs
EXIT_STATUSES = (69, 70, 74, 78)
OF_THE_START_UP = re.compile(r"terminate called after throwing|terminate called without")
FIRST_VALUE = 60


class Wrong(Exception):
    """What should not have been."""


class Life:
    def __init__(self, build, settings, directory, point, part=None, more=None):
        """`settings`: of the file that the agent finds. `part`: which is looked at without a
        point. `more`: variables of the agent's, for the controls."""
        self.build, self.directory, self.point = build, directory, point
        self.part = point.part if point else part
        self.state, self.run = (os.path.join(directory, name) for name in ("state", "run"))
        self.trace = os.path.join(directory, "trace")
        os.makedirs(self.run, 0o700)
        self.settings = re.sub(rb"\bEXCHANGE_TIMEOUT=\d+", b"EXCHANGE_TIMEOUT=%d" % FIRST_VALUE,
                               settings, 1)
        files = {SETTINGS: self.settings, SHADOW_COPY: self.settings}
        if self.part == RECOVERY:
            files[SETTINGS] = self.settings[:len(self.settings) // 2]
        write_files(self.state, {} if self.part == FIRST else files)
        self.notices = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.notices.bind(os.path.join(self.run, "notify"))
        self.notices.settimeout(0.05)
        self.more = disturbance.environment(build, point, dict(more or {}, **{
            "NOTIFY_SOCKET": os.path.join(self.run, "notify"), "WATCHDOG_USEC": "2000000"}))
        self.agent = None
        self.tracer = None
        self.gentle = point is None or errnos.is_gentle(point.name, point.effect)
        self.unread_log = point is not None and point.name in ("write", "send", "poll")

    # A life

    def live(self):
        """Raises Wrong. Returns the calls of the part, the disturbed ones alone with a point."""
        try:
            traced = self.part in STARTS
            self.agent = self.started(disturbance.strace(self.trace, self.point, "-D")
                                      if traced else ())
            if not self.ready():
                self.refused()
            else:
                self.serve()
            return [call for call in disturbance.seen_in(self.trace)
                    if self.point is None or call.disturbed]
        except Hung as hung:
            raise Wrong(f"it hangs: {hung}; {self.said()}") from None
        finally:
            if self.agent:
                self.agent.kill()
            if self.tracer:
                self.tracer.kill()
                self.tracer.wait()
                self.tracer.stderr.close()
            self.notices.close()

    def started(self, prefix=(), more=None, options=("--save-on-exit",)):
        return Agent(self.build, self.state, self.run, options=options, prefix=prefix,
                     environment=self.more if more is None else more)

    def said(self):
        return self.agent.said()[-600:] if self.agent else ""

    def attach(self, part):
        if self.part == part:
            self.tracer = disturbance.attach(self.agent.process.pid, self.trace, self.point)

    def ready(self):
        """Waits until the agent says that it is, or serves. False: it has ended."""
        begun = time.monotonic()
        while self.agent.process.poll() is None:
            try:
                if b"READY=1" in self.notices.recv(1000):
                    return True
            except TimeoutError:
                pass
            waited = time.monotonic() - begun
            if waited > 1 and self.can_connect():
                return True
            if waited > PATIENCE:
                raise Hung("no start")
        return False

    def can_connect(self):
        try:
            with socket.socket(socket.AF_UNIX) as probe:
                probe.settimeout(PATIENCE)
                probe.connect(self.agent.socket)
            return True
        except OSError:
            return False

    def refused(self):
        """A start that cannot be. The next one serves what was there."""
        if self.gentle:
            raise Wrong(f"no start: {self.said()}")
        self.check_end(self.agent.wait())
        self.check_next({FIRST_VALUE} if self.part != FIRST else None)

    def check_end(self, status):
        said = self.agent.said()
        if status in EXIT_STATUSES and (": error: " in said or self.unread_log):
            return
        if self.part in STARTS and status == -6 and OF_THE_START_UP.search(said):
            return
        raise Wrong(f"the agent ended with {status}: {said[-600:]}")

    def serve(self):
        pid = self.agent.process.pid
        disturbance.detach(pid)
        told = session.Told(self.value())
        self.attach(SESSION)
        try:
            session.converse(self.agent.connect, told)
        except TimeoutError:
            raise Wrong(f"no answer; {self.said()}") from None
        except OSError as error:
            if self.gentle:
                raise Wrong(f"a session ended: {error}; {self.said()}") from None
        if self.agent.process.poll() is not None:
            raise Wrong(f"the agent ended with {self.agent.process.returncode}: {self.said()}")
        disturbance.detach(pid)
        self.check_after(told)
        self.end(told)

    def value(self):
        """What the agent serves."""
        try:
            client = self.agent.connect()
            reply = client.ask("get", block(session.NAME.encode()))
            client.read_all()
            client.close()
        except OSError as error:
            raise Wrong(f"not served: {error!r}; {self.said()}") from None
        found = re.search(rb"TIMEOUT.....(\d+)", reply.output, re.S)
        return int(found[1])

    def check_after(self, told):
        """Undisturbed again."""
        if told.wordless:
            raise Wrong(f"without a word: {', '.join(told.wordless)} failed")
        if self.gentle and told.refused:
            raise Wrong(f"it was noticed: {', '.join(told.refused)} failed")
        value = self.value()
        if value not in told.maybe:
            raise Wrong(f"{told.running} was acknowledged, {value} is served")
        told.running, told.maybe = value, {value}
        client = self.agent.connect()
        status = client.status()
        if self.file_value() not in told.maybe_saved and not status["degraded"]:
            raise Wrong(f"{told.saved} was saved, the file holds {self.file_value()}")
        if not client.save().result == 1 and client.save(force=True).result != 1:
            raise Wrong(f"no save afterwards; {self.said()}")
        told.saved, told.maybe_saved = value, {value}
        files = read_files(self.state)
        if self.file_value() != value or unsealed(files[SHADOW_COPY]) != files[SETTINGS]:
            raise Wrong("a save was acknowledged, and is not in both files")
        session.change(client, told, 104)
        client.close()

    def file_value(self):
        """Of the file; of the shadow copy where a save could not put the file in its place."""
        files = read_files(self.state)
        text = files.get(SETTINGS) or unsealed(files.get(SHADOW_COPY, b""))
        found = re.search(rb"\bEXCHANGE_TIMEOUT=(\d+)", text)
        return int(found[1]) if found else None

    def end(self, told):
        """Saves what is unsaved; see `--save-on-exit`."""
        self.attach(STOP)
        self.agent.process.terminate()
        try:
            status = self.agent.process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            raise Hung("no end") from None
        if status != 0:
            if self.part != STOP or self.gentle:
                raise Wrong(f"the agent ended with {status}: {self.said()}")
            self.check_end(status)
        self.check_next({told.running} if status == 0 else {told.running, told.saved})

    def check_next(self, allowed):
        """A new agent starts, and serves one of the values; None: any."""
        self.agent.kill()
        said = self.agent.said()
        self.agent = self.started(more={}, options=())
        if not self.agent.listening():
            raise Wrong(f"no start afterwards: {self.said()}")
        value = self.value()
        if allowed is not None and value not in allowed:
            raise Wrong(f"lost: {value} is served afterwards, and not {allowed}; {said[-600:]}")


def remove(directory):
    shutil.rmtree(directory, ignore_errors=True)
