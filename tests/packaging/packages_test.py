#!/usr/bin/env python3
"""Installs, upgrades, exchanges, removes and purges the packages in a clean Debian with a systemd of
its own. Ends with 77 where none can be booted.

Usage: packages_test.py ROOT PACKAGES"""

import glob
import os
import re
import select
import subprocess
import sys
import time
import unittest

sys.dont_write_bytecode = True

from room import WAIT_LIMIT, CannotBoot, Room  # noqa: E402
from walk_through import examples, matches, script  # noqa: E402

SKIPPED = 77  # exit status
UNIT = "lparams-agent.service"
SETTINGS = "/var/lib/lparams/localsettings.ini"
EDITED = f"/etc/systemd/system/{UNIT}"
APPLY_UNIT = "lparams-apply.service"
LAID_DOWN = "/etc/lparams/settings.d/10-image.conf"

room = None
packages = None


def package(name, architecture="amd64"):
    [path] = glob.glob(os.path.join(packages, f"{name}_*_{architecture}.deb"))
    return "/packages/" + os.path.basename(path)


def install(*paths):
    return room.shell("DEBIAN_FRONTEND=noninteractive apt-get install -y --no-install-recommends "
                      + " ".join(paths))


def newer(path):
    """The package once more, as the next version."""
    return room.shell(f"""
        rm -rf /tmp/next && dpkg-deb -R {path} /tmp/next
        sed -i 's/^Version: .*/&+next/' /tmp/next/DEBIAN/control
        dpkg-deb --root-owner-group -b /tmp/next /tmp/{os.path.basename(path)} >/dev/null
        echo /tmp/{os.path.basename(path)}""")


def unit(name):
    return room.shell(f"systemctl show -P {name} {UNIT}")


def ctl(*words, user="root"):
    done = room.run("lparamsctl", *words, user=user)
    return done.returncode, done.stdout


class Terminal:
    """A person at a terminal."""

    def __init__(self, user):
        self.shell = room.terminal(user)
        self.seen = ""
        self.wait_for("$ ")

    def wait_for(self, text):
        """Until it is to be seen; returns what was to be seen before it."""
        deadline = time.monotonic() + WAIT_LIMIT
        while text not in self.seen:
            ready, _, _ = select.select([self.shell.stdout], [], [], deadline - time.monotonic())
            more = os.read(self.shell.stdout.fileno(), 4096) if ready else b""
            if not more:
                raise AssertionError(f"no {text!r}, only {self.seen!r}")
            self.seen += more.decode()
        before, self.seen = self.seen.split(text, 1)
        return before

    def type(self, text):
        self.shell.stdin.write(text.encode())
        self.shell.stdin.flush()

    def end(self):
        self.type("exit\n")
        self.shell.stdin.close()
        self.shell.wait(WAIT_LIMIT)
        self.shell.stdout.close()


class Packages(unittest.TestCase):
    """One after the other, on the same system."""

    def check_serves(self, port):
        log = room.shell(f"journalctl --no-pager -o cat -u {UNIT}")
        self.assertEqual(unit("ActiveState"), "active", log)
        self.assertEqual(ctl("get", "IKE.IKE_PORT"), (0, f"{port}\n"))
        self.assertEqual(room.shell("dpkg --audit; dpkg -V"), "")

    def width(self):
        return {"01": 32, "02": 64}[room.shell(
            "od -An -tx1 -j4 -N1 /usr/lib/lparams/lparams_agent").strip()]

    def check_example(self, width):
        """The embedding example is built from what is installed, and loads the installed module."""
        said = room.shell(f"""
            rm -rf /tmp/embed && cp -r /usr/share/doc/lparams-dev/examples/embed /tmp/
            mkdir -m 700 /tmp/embed/state && cd /tmp/embed
            c++ -m{width} embed.cc $(pkg-config --cflags --libs lparams) -o embed
            ./embed $(pkg-config --variable=module lparams) state""")
        self.assertIn("\nIKE has changed\n", said)
        self.assertIn("EXCHANGE_TIMEOUT=120\n", room.shell("cat /tmp/embed/state/localsettings.ini"))

    def test_1_install(self):
        room.shell(f"mkdir -p $(dirname {LAID_DOWN}); echo LOG.WALL_ON=0 >{LAID_DOWN}")
        install(*(package(name) for name in ("lparams-agent", "lparams-client")),
                *(package(name, "all") for name in ("lparams-dev", "lparams-doc", "lparams-ansible")))
        self.assertEqual(self.width(), 64)
        self.check_serves(500)
        self.assertEqual(room.shell(f"systemctl is-enabled {UNIT}"), "enabled")
        self.assertEqual(room.shell("stat -c '%U:%G %a' /var/lib/lparams /run/lparams "
                                    "/run/lparams/agent.sock"),
                         "lparams:lparams 700\nlparams:admin 750\nlparams:admin 660")

    def test_2_administrators_change_and_save(self):
        room.shell("useradd anna; useradd bert; adduser --quiet anna admin 2>/dev/null || "
                   "usermod -aG admin anna; touch /tmp/before")
        self.assertEqual(ctl("set", "IKE.IKE_PORT=501", user="anna")[0], 0)
        self.assertEqual(ctl("save", user="anna"), (0, "saved\n"))
        self.assertEqual(ctl("get", "IKE.IKE_PORT", user="bert")[0], 69)
        self.assertIn("IKE_PORT=501\n", room.shell(f"cat {SETTINGS}"))
        room.shell(f"systemctl restart {UNIT}")
        self.check_serves(501)
        self.assertEqual(room.shell("find /usr -newer /tmp/before"), "")

    def test_2_settings_that_are_laid_down(self):
        self.assertEqual(room.shell(f"systemctl is-enabled {APPLY_UNIT}"), "enabled")
        self.assertEqual(ctl("get", "LOG.WALL_ON"), (0, "0\n"))
        before = ctl("history")
        self.assertIn("settings.d\n    LOG.WALL_ON: 1 -> 0\n", before[1])
        room.shell(f"systemctl restart {APPLY_UNIT}")
        self.assertEqual(ctl("history"), before)
        room.shell(f"echo LOG.WALL_ON=2 >{LAID_DOWN}")
        self.assertNotEqual(room.run("systemctl", "restart", APPLY_UNIT).returncode, 0)
        self.assertIn(f"{LAID_DOWN}:1:1: LOG.WALL_ON: ", room.shell(
            f"journalctl --sync; journalctl --no-pager -o cat -u {APPLY_UNIT}"))
        self.assertEqual(ctl("history"), before)
        self.assertEqual(unit("ActiveState"), "active")
        room.shell(f"echo LOG.WALL_ON=0 >{LAID_DOWN}; systemctl restart {APPLY_UNIT}")

    def play(self):
        """What the playbook has changed."""
        said = room.shell(f"""
            printf '%s\\n' gateways: '  hosts: {{localhost: {{ansible_connection: local}}}}' >/tmp/inventory.yml
            cd /usr/share/doc/lparams-doc/examples/fleet
            HOME=/root ansible-playbook -i /tmp/inventory.yml -e vault_qcd_secret=s3cret \\
              gateways.yml 2>&1""")
        return int(re.search(r"^localhost .* changed=(\d+) .* failed=0 ", said, re.MULTILINE)[1])

    def test_2_the_playbook_twice(self):
        self.assertGreater(self.play(), 0)
        self.assertEqual(ctl("get", "IKE.DPD_IDLE_TIME", "USERS[bob].PMP_TIMEOUT"), (0, "60\n20\n"))
        before = ctl("history"), room.shell(f"stat -c '%i %y' {SETTINGS}")
        self.assertEqual(self.play(), 0)
        self.assertEqual((ctl("history"), room.shell(f"stat -c '%i %y' {SETTINGS}")), before)

    def test_2_tab_completes(self):
        terminal = Terminal("anna")
        terminal.type("lparamsctl set IKE.EXCH\t")
        terminal.wait_for("lparamsctl set IKE.EXCHANGE_TIMEOUT=")
        terminal.type("120\n")
        terminal.wait_for("IKE.EXCHANGE_TIMEOUT: 60 -> 120   (not saved)")
        terminal.wait_for("$ ")
        terminal.type("lparamsctl sav\t")
        terminal.wait_for("lparamsctl save ")
        terminal.type("\n")
        terminal.wait_for("saved")
        terminal.end()
        self.assertIn("EXCHANGE_TIMEOUT=120\n", room.shell(f"cat {SETTINGS}"))

    def test_2_the_embedding_example(self):
        self.check_example(64)

    def test_2_manual(self):
        for page in ("1 lparamsctl", "8 lparams_agent", "5 localsettings.ini",
                     "5 lparams-catalogue", "7 lparams-bridge"):
            said = room.shell(f"MANPAGER=cat man --warnings {page} >/tmp/page")
            self.assertEqual(said, "")
            said = room.shell("cat /tmp/page")
            self.assertTrue(said.split("\n\n")[1].startswith("NAME\n"), said)

    def test_2_walk_through(self):
        """What the client's document shows, as it stands there, on settings that last only so long."""
        document = "/usr/share/doc/lparams-doc"
        room.shell(f"""
            systemctl stop {UNIT}
            mv /var/lib/lparams /var/lib/kept
            install -d -m 700 -o lparams -g lparams /var/lib/lparams
            install -m 600 -o lparams -g lparams {document}/examples/localsettings.ini {SETTINGS}
            install -D {document}/examples/localsettings.ini /tmp/walk/localsettings.ini
            systemctl start {UNIT}""")
        walk = list(examples(room.shell(f"cat {document}/client.md")))
        self.assertGreater(len(walk), 30)
        for command, expected in walk:
            with self.subTest(command):
                said = room.run("sh", "-c", script(command, "/tmp/walk")).stdout
                self.assertTrue(matches(expected, said), said)
        room.shell(f"""
            systemctl stop {UNIT}
            rm -r /var/lib/lparams
            mv /var/lib/kept /var/lib/lparams
            systemctl start {UNIT}""")

    def test_3_upgrade(self):
        room.shell(f"""
            sed 's/^TimeoutStopSec=.*/TimeoutStopSec=31/' /usr/lib/systemd/system/{UNIT} >{EDITED}
            cp {EDITED} /tmp/edited
            systemctl daemon-reload""")
        before = unit("MainPID")
        install(newer(package("lparams-agent")), newer(package("lparams-client")))
        self.assertIn("+next", room.shell("dpkg-query -W -f '${Version}' lparams-agent"))
        self.check_serves(501)
        self.assertNotEqual(unit("MainPID"), before)
        self.assertEqual(unit("TimeoutStopUSec"), "31s")
        room.shell(f"cmp {EDITED} /tmp/edited")

    def test_4_the_agent_in_32_bit_takes_over(self):
        install(package("lparams-agent32"))
        self.assertEqual(self.width(), 32)
        self.check_serves(501)
        self.check_example(32)
        room.shell("dpkg --purge lparams-agent 2>&1")
        room.shell(f"systemctl restart {UNIT}")
        self.check_serves(501)

    def test_5_remove(self):
        room.shell("apt-get remove -y lparams-agent32 lparams-client")
        self.assertEqual(unit("ActiveState"), "inactive")
        self.assertEqual(room.shell("grep -lx lparams_agent /proc/[0-9]*/comm || true"), "")
        self.assertIn("IKE_PORT=501\n", room.shell(f"cat {SETTINGS}"))
        self.assertEqual(room.shell("ls -d /usr/lib/lparams /usr/bin/lparamsctl 2>/dev/null || true"),
                         "")

    def test_6_purge(self):
        room.shell(f"rm {LAID_DOWN}")
        room.shell("apt-get purge -y lparams-agent32 lparams-client lparams-dev lparams-doc "
                   "lparams-ansible")
        self.assertEqual(room.shell("ls -d /var/lib/lparams /run/lparams 2>/dev/null || true"), "")
        self.assertEqual(room.shell("find /usr /etc /var/lib -path /var/lib/dpkg -prune -o "
                                    "-name '*lparams*' -print"), EDITED)


class ForAnotherSystem(unittest.TestCase):
    """The i386 package cannot be installed here: it is looked into."""

    def setUp(self):
        self.path = os.path.join(packages, os.path.basename(package("lparams-agent", "i386")))

    def look(self, *words):
        return subprocess.run(["dpkg-deb", *words], check=True, text=True,
                              stdout=subprocess.PIPE).stdout

    def test_holds_what_the_other_one_holds(self):
        other = os.path.join(packages, os.path.basename(package("lparams-agent")))
        names = [[line.split()[-1] for line in self.look("-c", path).splitlines()]
                 for path in (self.path, other)]
        self.assertEqual(*names)

    def test_asks_for_the_libraries_that_its_programs_need(self):
        depends = dict(re.findall(r"([\w.+-]+) \(>= ([\d.]+)\)", self.look("-f", self.path, "Depends")))
        stage = subprocess.run(["mktemp", "-d"], check=True, text=True,
                               stdout=subprocess.PIPE).stdout.strip()
        self.addCleanup(subprocess.run, ["rm", "-rf", stage], check=True)
        self.look("-x", self.path, stage)
        text = subprocess.run(["objdump", "-p", *glob.glob(f"{stage}/usr/lib/lparams/*")],
                              check=True, text=True, stdout=subprocess.PIPE).stdout
        self.assertEqual(set(re.findall(r"file format (\S+)", text)), {"elf32-i386"})
        self.assertLessEqual(set(re.findall(r"NEEDED +(\S+)", text)),
                             {"libc.so.6", "libstdc++.so.6", "libgcc_s.so.1", "libm.so.6",
                              "ld-linux.so.2"})

        def numbers(version):
            return tuple(int(part) for part in version.split("."))

        # GLIBCXX_3.4.30 came with GCC 12.
        for symbols, name, since in (("GLIBC", "libc6", None),
                                     ("GLIBCXX", "libstdc++6", {(3, 4, 30): "12"})):
            needed = max(numbers(found) for found in re.findall(rf"{symbols}_([\d.]+)\b", text))
            if since is not None:
                self.assertLessEqual(needed, max(since))
                needed = numbers(since[max(since)])
            self.assertGreaterEqual(numbers(depends[name]), needed)


def main():
    global room, packages
    root, packages = sys.argv[1:]
    del sys.argv[1:]
    try:
        room = Room("root", os.path.abspath(root), os.path.abspath(packages))
    except CannotBoot as reason:
        print("a clean Debian cannot be booted here:", reason)
        sys.exit(SKIPPED)
    try:
        outcome = unittest.main(exit=False, verbosity=2, failfast=True).result
    finally:
        room.end()
    sys.exit(0 if outcome.wasSuccessful() else 1)


if __name__ == "__main__":
    main()
