#!/usr/bin/env python3
"""Runs the agent's unit under a real systemd: as it is packaged, with its filters, its directories
and its user. Ends with 77 where none can be booted.

Usage: unit_test.py BUILD_DIR"""

import os
import sys
import time
import unittest

sys.dont_write_bytecode = True

from room import WAIT_LIMIT, CannotBoot, Room  # noqa: E402

SKIPPED = 77  # exit status
UNIT = "lparams-agent.service"
SOCKET_UNIT = "lparams-agent.socket"
APPLY_UNIT = "lparams-apply.service"
SETTINGS = "/var/lib/lparams/localsettings.ini"
LAID_DOWN = "/etc/lparams/settings.d"
GROUP = "admin"  # the default of ADMIN.ADMIN_GROUP
OTHER_GROUP = "operators"

room = None


class Unit(unittest.TestCase):
    def setUp(self):
        room.shell(f"""
            systemctl stop {APPLY_UNIT} {SOCKET_UNIT} {UNIT}
            systemctl reset-failed {UNIT} {APPLY_UNIT} || true
            for group in {GROUP} {OTHER_GROUP}; do groupdel $group 2>/dev/null || true; done
            rm -rf /var/lib/lparams /etc/lparams /run/systemd/system/{UNIT}.d \\
              /run/systemd/system/gateway.service
            systemctl daemon-reload
            journalctl --rotate -q
            journalctl --vacuum-time=1us -q""")

    def make_group(self, name, members):
        room.shell(f"groupadd {name}\n"
                   + "\n".join(f"usermod -aG {name} {member}" for member in members))

    def start(self):
        done = room.run("systemctl", "start", UNIT)
        self.assertEqual((done.returncode, self.property("ActiveState")), (0, "active"),
                         self.log())

    def stop(self):
        room.shell(f"systemctl stop {UNIT}")
        self.assertEqual([self.property(name) for name in ("Result", "ExecMainStatus")],
                         ["success", "0"], self.log())
        self.assertEqual(room.run("ls", "/run/lparams/agent.sock").returncode, 2)

    def property(self, name, unit=UNIT):
        return room.shell(f"systemctl show -P {name} {unit}")

    def log(self, unit=UNIT):
        return room.shell(f"journalctl --sync; journalctl --no-pager -o cat -u {unit}")

    def wait_until(self, what, condition):
        deadline = time.monotonic() + WAIT_LIMIT
        while not condition():
            self.assertLess(time.monotonic(), deadline, f"{what} did not happen:\n{self.log()}")
            time.sleep(0.05)

    def ctl(self, *words, user="root"):
        done = room.run("lparamsctl", *words, user=user)
        return done.returncode, done.stdout

    def state(self, name):
        _, text = self.ctl("status")
        return dict(line.split(": ", 1) for line in text.splitlines())[name]

    def check_writes(self, user, port):
        self.assertEqual(self.ctl("set", f"IKE.IKE_PORT={port}", user=user)[0], 0)
        self.assertEqual(self.ctl("save", user=user), (0, "saved\n"))
        self.assertIn(f"IKE_PORT={port}\n", room.shell(f"cat {SETTINGS}"))
        self.assertIn(", lparamsctl[", self.ctl("history")[1].splitlines()[0])

    def check_is_refused(self, user):
        for words in (["get", "IKE.IKE_PORT"], ["set", "IKE.IKE_PORT=1"], ["save"]):
            status, text = self.ctl(*words, user=user)
            self.assertEqual(status, 69)
            self.assertIn("Permission denied", text)

    def check_comes_back(self, before):
        self.wait_until("a restart", lambda: self.property("NRestarts") == "1"
                        and self.property("ActiveState") == "active")
        self.assertNotEqual(self.property("MainPID"), before)
        self.assertEqual(self.ctl("get", "IKE.IKE_PORT"), (0, "501\n"))

    def check_belongs_to(self, group):
        self.assertEqual(room.shell("stat -c '%U:%G %a' /run/lparams /run/lparams/agent.sock"),
                         f"lparams:{group} 750\nlparams:{group} 660")

    def test_without_the_administrators_group(self):
        self.start()
        self.check_belongs_to("lparams")
        self.assertIn("no such group", self.state("groupProblem"))
        self.check_writes("root", 501)
        self.check_is_refused("member")
        self.check_is_refused("stranger")
        self.stop()

    def test_with_the_administrators_group(self):
        self.make_group(GROUP, ["lparams", "member"])
        self.start()
        self.assertEqual(self.state("groupProblem"), "no")
        self.check_belongs_to(GROUP)
        self.check_writes("member", 501)
        self.check_writes("root", 502)
        self.check_is_refused("stranger")
        self.stop()

    def test_with_another_group_while_it_runs(self):
        self.make_group(OTHER_GROUP, ["lparams", "member"])
        self.start()
        self.check_is_refused("member")
        self.assertEqual(self.ctl("set", f"ADMIN.ADMIN_GROUP={OTHER_GROUP}")[0], 0)
        self.wait_until("a change of the group", lambda: self.state("groupProblem") == "no")
        self.check_belongs_to(OTHER_GROUP)
        self.check_writes("member", 501)
        self.check_is_refused("stranger")
        self.stop()

    def test_with_a_group_that_the_agent_is_not_in(self):
        self.make_group(GROUP, ["member"])
        self.start()
        self.assertIn("Operation not permitted", self.state("groupProblem"))
        self.assertIn("warning: the administrators' group cannot reach the socket", self.log())
        self.check_belongs_to("lparams")
        self.check_writes("root", 501)
        self.check_is_refused("member")
        self.stop()

    def test_comes_back_after_a_kill(self):
        self.start()
        self.check_writes("root", 501)
        self.ctl("set", "IKE.IKE_PORT=502")
        before = self.property("MainPID")
        room.shell(f"systemctl kill -s KILL {UNIT}")
        self.check_comes_back(before)
        self.stop()

    def test_the_watchdog(self):
        room.shell(f"""
            mkdir -p /run/systemd/system/{UNIT}.d
            printf '[Service]\\nWatchdogSec=6\\n' >/run/systemd/system/{UNIT}.d/watchdog.conf
            systemctl daemon-reload""")
        self.start()
        self.check_writes("root", 501)
        last = self.property("WatchdogTimestampMonotonic")
        self.wait_until("a sign of life",
                        lambda: self.property("WatchdogTimestampMonotonic") != last)
        before = self.property("MainPID")
        self.assertEqual(self.property("NRestarts"), "0", self.log())
        room.shell(f"systemctl kill -s STOP {UNIT}")
        self.check_comes_back(before)
        self.assertIn("Watchdog timeout", self.log())
        self.stop()

    def test_a_reload_of_the_units_changes_nothing(self):
        self.start()
        before = self.property("MainPID")
        room.shell("systemctl daemon-reload")
        self.check_writes("root", 501)
        self.assertEqual(self.property("MainPID"), before)
        self.stop()

    def test_a_reload_of_the_unit_says_that_it_does_nothing(self):
        self.start()
        before = self.property("MainPID")
        self.assertEqual(room.run("systemctl", "reload", UNIT).returncode, 1)
        self.wait_until("an explanation", lambda: "nothing is loaded again" in self.log())
        self.check_writes("root", 501)
        self.assertEqual(self.property("MainPID"), before)
        self.stop()

    def test_tells_what_it_does(self):
        room.shell(f"install -d -m 700 -o lparams -g lparams /var/lib/lparams\n"
                   f"printf '/ROOT=\\nend=\\n' >{SETTINGS}\n"
                   f"chown lparams: {SETTINGS}; chmod 600 {SETTINGS}")
        self.start()
        self.assertEqual(self.property("StatusText"),
                         "listening on /run/lparams/agent.sock; degraded, saves are refused until "
                         "one is forced: the settings file lacks groups")
        self.assertEqual(self.ctl("save", "--force"), (0, "saved\n"))
        self.wait_until("another status", lambda: self.property("StatusText")
                        == "listening on /run/lparams/agent.sock")
        self.stop()

    def test_is_started_by_a_client(self):
        self.make_group(GROUP, ["lparams", "member"])
        room.shell(f"systemctl start {SOCKET_UNIT}")
        self.assertEqual(self.property("ActiveState"), "inactive")
        self.check_writes("root", 501)
        self.assertEqual(self.property("ActiveState"), "active", self.log())
        self.check_belongs_to(GROUP)
        self.check_writes("member", 502)
        self.check_is_refused("stranger")
        # The socket stays where it is, and the next client starts the next agent.
        room.shell(f"systemctl stop {UNIT}")
        self.assertEqual(self.property("ExecMainStatus"), "0", self.log())
        self.assertEqual(room.run("test", "-S", "/run/lparams/agent.sock").returncode, 0)
        self.assertEqual(self.ctl("get", "IKE.IKE_PORT"), (0, "502\n"))
        self.assertEqual(self.property("ActiveState"), "active", self.log())
        room.shell(f"systemctl stop {SOCKET_UNIT} {UNIT}")
        self.assertEqual(room.run("ls", "/run/lparams/agent.sock").returncode, 2)

    def lay_down(self, **parts):
        room.shell(f"mkdir -p {LAID_DOWN}; rm -f {LAID_DOWN}/*")
        for name, text in parts.items():
            room.shell(f"cat >{LAID_DOWN}/{name}.conf <<'END'\n{text}\nEND")

    def apply(self):
        """Whether the unit has done it."""
        started = room.run("systemctl", "restart", APPLY_UNIT).returncode == 0
        self.assertEqual(self.property("ActiveState", APPLY_UNIT),
                         "active" if started else "failed")
        return started

    def revisions(self):
        return [self.state("history"), self.ctl("history")]

    def test_applies_what_is_laid_down(self):
        self.start()
        self.lay_down(a="IKE.IKE_PORT=501\nIKE.QCD_SECRET=s3cret",
                      b='{"IKE": {"IKE_PORT": 502}, "USERS": {"eve": {}}}')
        room.shell(f"chown root:lparams {LAID_DOWN}/a.conf; chmod 640 {LAID_DOWN}/a.conf")
        self.assertTrue(self.apply(), self.log(APPLY_UNIT))
        log = self.log(APPLY_UNIT)
        self.assertIn("IKE.IKE_PORT: 500 -> 502\n", log)
        self.assertIn("3 changes made and saved", log)
        self.assertNotIn("s3cret", log)
        settings = room.shell(f"cat {SETTINGS}")
        self.assertIn("IKE_PORT=502\n", settings)
        self.assertIn("QCD_SECRET=s3cret\n", settings)
        self.assertIn("settings.d", self.ctl("history")[1])
        # Nothing differs: nothing is changed or saved, also of what is somebody else's.
        self.ctl("set", "IKE.NATT_PORT=4501")
        before = self.revisions()
        self.assertTrue(self.apply(), self.log(APPLY_UNIT))
        self.assertIn("nothing to change", self.log(APPLY_UNIT))
        self.assertEqual(self.revisions(), before)
        self.assertEqual(self.state("changed"), "yes")
        self.stop()

    def test_mistakes_in_what_is_laid_down_change_nothing(self):
        self.start()
        self.lay_down(a="IKE.IKE_PORT=501\nIKE.NATT_PORT=0", b="IKE.IKE_PROT=1")
        before = self.revisions()
        self.assertFalse(self.apply())
        self.assertEqual(self.property("ExecMainStatus", APPLY_UNIT), "65")
        log = self.log(APPLY_UNIT)
        self.assertIn(f"{LAID_DOWN}/a.conf:2:1: IKE.NATT_PORT: ", log)
        self.assertIn(f"{LAID_DOWN}/b.conf:1:1: IKE.IKE_PROT: ", log)
        self.assertEqual(self.revisions(), before)
        self.assertEqual(self.state("changed"), "no")
        self.assertEqual(self.ctl("get", "IKE.IKE_PORT"), (0, "500\n"))
        self.assertEqual(self.property("ActiveState"), "active")
        self.stop()

    def test_what_is_laid_down_is_in_place_before_the_gateway(self):
        """Also where the service manager has the agent's socket."""
        room.shell(f"""cat >/run/systemd/system/gateway.service <<'END'
[Unit]
Requires={APPLY_UNIT}
After={APPLY_UNIT}
[Service]
Type=oneshot
RemainAfterExit=yes
ExecStart=/bin/sh -c 'lparamsctl get IKE.IKE_PORT >/run/got'
END
systemctl daemon-reload""")
        for socket in ([], [SOCKET_UNIT]):
            with self.subTest(socket):
                self.stop_all()
                self.lay_down(a="IKE.IKE_PORT=501")
                for unit in (*socket, "gateway.service"):
                    room.shell(f"systemctl start {unit}")
                self.assertEqual(room.shell("cat /run/got"), "501")
                self.stop_all()
                self.lay_down(a="IKE.IKE_PORT=0")
                self.assertEqual(room.run("systemctl", "start", "gateway.service").returncode, 1)
                self.assertEqual(room.run("test", "-e", "/run/got").returncode, 1)
        # Where nothing is laid down, the gateway is started all the same.
        self.stop_all()
        room.shell(f"rm -r {LAID_DOWN}; systemctl start gateway.service")
        self.assertEqual(room.shell("cat /run/got"), "500")
        self.stop_all()

    def stop_all(self):
        room.shell(f"systemctl stop gateway.service {APPLY_UNIT} {SOCKET_UNIT} {UNIT}; "
                   f"systemctl reset-failed {APPLY_UNIT} || true; "
                   "rm -rf /var/lib/lparams /run/got")

    def test_is_not_started_again_on_damaged_settings(self):
        room.shell(f"install -d -m 700 -o lparams -g lparams /var/lib/lparams\n"
                   f"install -m 600 -o lparams -g lparams /dev/null {SETTINGS}")
        self.assertNotEqual(room.run("systemctl", "start", UNIT).returncode, 0)
        self.assertEqual([self.property(name) for name in
                          ("ActiveState", "ExecMainStatus", "NRestarts")], ["failed", "78", "0"])


def main():
    global room
    try:
        room = Room("machine", os.path.abspath(sys.argv.pop()))
    except CannotBoot as reason:
        print("systemd cannot be booted here:", reason)
        sys.exit(SKIPPED)
    try:
        outcome = unittest.main(exit=False, verbosity=2).result
    finally:
        room.end()
    sys.exit(0 if outcome.wasSuccessful() else 1)


if __name__ == "__main__":
    main()
