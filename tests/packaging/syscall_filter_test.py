#!/usr/bin/python3
"""Runs the agent under the filters of system calls that the unit names, built as systemd builds them
(systemd.exec(5)). Needs no right. Ends with 77 where a process may not filter its own calls.

Usage: syscall_filter_test.py BUILD_DIR"""

import grp
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import unittest

import seccomp

HERE = os.path.dirname(os.path.abspath(__file__))
UNIT = os.path.join(HERE, "../../packaging/lparams-agent.service.in")
SKIPPED = 77  # exit status
LIMIT = 60  # seconds for anything that is to happen
ARCHITECTURES = {"native": seccomp.Arch.NATIVE, "x86": seccomp.Arch.X86}
FAMILIES = ("AF_UNIX", "AF_INET", "AF_INET6", "AF_NETLINK", "AF_PACKET")

build = None


def settings_of_unit(name):
    with open(UNIT, encoding="utf-8") as file:
        return re.findall(rf"^{name}=(.*)$", file.read(), re.MULTILINE)


def members_of(group):
    """The calls of one of systemd's groups."""
    text = subprocess.run(["systemd-analyze", "syscall-filter", group], check=True, text=True,
                          stdout=subprocess.PIPE).stdout
    for name in re.findall(r"^    ([@\w-]+)$", text, re.MULTILINE):
        yield from members_of(name) if name.startswith("@") else [name]


def allowed_calls(lines):
    """A list of allowed calls is what the first line begins; '~' takes away from it."""
    allowed = set(members_of("@default"))
    for line in lines:
        names = line.removeprefix("~").split()
        calls = {call for name in names
                 for call in (members_of(name) if name.startswith("@") else [name])}
        allowed = allowed - calls if line.startswith("~") else allowed | calls
    return allowed


def filters():
    calls = seccomp.SyscallFilter(seccomp.KILL_PROCESS)
    families = seccomp.SyscallFilter(seccomp.ALLOW)
    # On 32-bit x86 systemd leaves them all: a filter does not see what socketcall(2) is told.
    families.set_attr(seccomp.Attr.ACT_BADARCH, seccomp.ALLOW)
    for name in " ".join(settings_of_unit("SystemCallArchitectures")).split():
        if not calls.exist_arch(ARCHITECTURES[name]):
            calls.add_arch(ARCHITECTURES[name])
    for call in sorted(allowed_calls(settings_of_unit("SystemCallFilter"))):
        try:
            calls.add_rule(seccomp.ALLOW, call)
        except RuntimeError:
            pass  # of another architecture
    wanted = " ".join(settings_of_unit("RestrictAddressFamilies")).split()
    for family in FAMILIES:
        if family not in wanted:
            families.add_rule(seccomp.ERRNO(97), "socket",  # EAFNOSUPPORT
                              seccomp.Arg(0, seccomp.EQ, getattr(socket, family)))
    return [families, calls]


def load_filters():
    for each in filters():
        each.load()


class Filter(unittest.TestCase):
    def setUp(self):
        self.place = tempfile.TemporaryDirectory()
        self.addCleanup(self.place.cleanup)
        self.socket = os.path.join(self.place.name, "run/agent.sock")

    def ctl(self, *words):
        return subprocess.run([os.path.join(build, "lparamsctl"), "--socket", self.socket, *words],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
                              timeout=LIMIT, check=False).stdout

    def serve(self, *options):
        os.makedirs(os.path.join(self.place.name, "state"), mode=0o700, exist_ok=True)
        agent = subprocess.Popen(
            [os.path.join(build, "lparams_agent"), "--socket", self.socket, "--state-dir",
             os.path.join(self.place.name, "state"), *options],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
            preexec_fn=load_filters)
        log = ""
        try:
            while " listening " not in log:
                line = agent.stderr.readline()
                if not line:
                    self.fail(f"ended with {agent.wait()} after: {log}")
                log += line
            self.assertTrue(self.ctl("set", "IKE.IKE_PORT=501").startswith("IKE.IKE_PORT: "))
            self.assertEqual(self.ctl("save"), "saved\n")
            agent.send_signal(signal.SIGTERM)
            log += agent.stderr.read()
            self.assertEqual(agent.wait(), 0, log)
        finally:
            agent.kill()
            agent.wait()
            agent.stderr.close()

    def test_the_agent_serves_and_ends(self):
        self.serve("--admin-group", "no-such-group")
        self.serve("--admin-group", "no-such-group")  # on the files of the first

    def test_the_agent_gives_its_socket_to_a_group(self):
        self.serve("--admin-group", grp.getgrgid(os.getgid()).gr_name)

    def test_what_the_unit_forbids_ends_the_process(self):
        ended = subprocess.run([sys.executable, "-c", "import os; os.chroot('/')"],
                               preexec_fn=load_filters, check=False)
        self.assertEqual(ended.returncode, -signal.SIGSYS)
        ended = subprocess.run([sys.executable, "-c", "import socket as s; s.socket(s.AF_INET)"],
                               preexec_fn=load_filters, stderr=subprocess.PIPE, text=True,
                               check=False)
        self.assertIn("Address family not supported", ended.stderr)


def main():
    global build
    build = sys.argv.pop()
    try:
        subprocess.run(["true"], preexec_fn=load_filters, check=True)
    except subprocess.SubprocessError as error:
        print("system calls cannot be filtered here:", error)
        sys.exit(SKIPPED)
    unittest.main(verbosity=2)


if __name__ == "__main__":
    main()
