#!/usr/bin/env python3
"""Manages a fleet of real agents on this machine with Ansible, and says what it costs. Ends with 77
where there is no Ansible.

Usage: run.py [--agents N] [--bin DIR] [--client FILE] [--collections DIR] [--measure]

  --agents N         10, unless N says otherwise; at least 3
  --bin DIR          where lparams_agent and lparams_server.so are; /usr/lib/lparams
  --client FILE      lparamsctl; the one in DIR or, if it has none, on the path
  --collections DIR  where Ansible finds the collection; its own places
  --measure          only what is timed"""

import argparse
import os
import re
import shutil
import sys
import tempfile
import time
import unittest

sys.dont_write_bytecode = True

from gateway import Gateway, with_another_catalogue  # noqa: E402
from playbook import EXAMPLES, Player, Stopwatch  # noqa: E402

HERE = os.path.dirname(os.path.abspath(__file__))
SKIPPED = 77  # exit status
LIMIT = 120  # seconds for anything that is to happen
SECRET = "wEllHiddenOfTheFleet"
OLD_SECRET = "example secret, change it"
SECRET_NAME, OTHER_SECRET_NAME = "QCD_SECRET", "QCD_SECRE2"

arguments = None
fleet = None


class Nobody:
    """A gateway whose agent is down."""

    name = "down"
    def __init__(self, directory):
        self.socket = os.path.join(directory, "nobody")


class Fleet:
    """The first gateway needs no change, the second has users of its own; one more has another
    catalogue, and of another one the agent is down."""

    def __init__(self, directory):
        self.directory = directory
        self.gateways = []
        with open(os.path.join(EXAMPLES, "../localsettings.ini"), "rb") as file:
            settings = file.read()
        for number in range(1, arguments.agents + 1):
            self.add(f"gateway{number:03}", arguments.bin, settings if number == 2 else None)
        other = with_another_catalogue(arguments.bin, os.path.join(directory, "programs"),
                                       SECRET_NAME, OTHER_SECRET_NAME)
        self.other = Gateway("other", os.path.join(directory, "other"), other, arguments.client)
        for gateway in (*self.gateways, self.other):
            gateway.wait_until_it_listens()
        self.player = self.player_for(self.gateways)
        self.mixed = self.player_for([Nobody(directory), self.other, *self.gateways])

    def add(self, name, programs, settings):
        self.gateways.append(Gateway(name, os.path.join(self.directory, name), programs,
                                     arguments.client, settings))

    def player_for(self, gateways, client=None):
        return Player(tempfile.mkdtemp(dir=self.directory), arguments.collections,
                      client or arguments.client, gateways)

    def names(self):
        return [gateway.name for gateway in self.gateways]

    def traces(self):
        return {gateway.name: gateway.traces() for gateway in self.gateways}

    def close(self):
        for gateway in (*self.gateways, self.other):
            gateway.close()


def wait_until(condition):
    deadline = time.monotonic() + LIMIT
    while not condition():
        if time.monotonic() > deadline:
            raise AssertionError("it does not happen")
        time.sleep(0.05)


def per_agent(time):
    """Others that use the machine prolong the first figure, but hardly the second one."""
    seconds, processor = (figure / arguments.agents for figure in time)
    return (f"{seconds:.3f} s per agent, {processor:.3f} s of a processor; "
            f"{time.seconds:.1f} s in all")


class TheFleet(unittest.TestCase):
    """One after the other, on the same agents."""

    maxDiff = None

    def play(self, *words, player=None, **values):
        values.setdefault("vault_qcd_secret", SECRET)
        done = (player or fleet.player).play(*words, **values)
        for secret in (SECRET, OLD_SECRET):
            self.assertNotIn(secret, done.output)
        return done

    def check_goes(self, done, changed):
        self.assertEqual((done.status, done.changed(), done.failed()), (0, changed, []),
                         done.output)
        self.assertEqual(sorted(done.hosts), sorted(fleet.names()), done.output)

    def hashes(self):
        return {status[name] for gateway in fleet.gateways for status in [gateway.status()]
                for name in ("savedHash", "runningHash", "savedHashWithSecrets")}

    def test_0_a_run_for_one(self):
        done = self.play("gateways.yml", "--limit", fleet.gateways[0].name)
        self.assertEqual(done.changed(), [fleet.gateways[0].name], done.output)

    def test_1_a_check_changes_nothing_and_hides_secrets(self):
        before = fleet.traces()
        done = self.play("gateways.yml", "--check", "--diff", "-vvv")
        self.check_goes(done, fleet.names()[1:])
        for line in ("-IKE.EXCHANGE_TIMEOUT=90", "+IKE.EXCHANGE_TIMEOUT=120",
                     "-IKE.QCD_SECRET=(hidden)", "+IKE.QCD_SECRET=(hidden), another one",
                     "-LOG.WALL_ON=false", "+LOG.WALL_ON=true", "-USERS[alice]", "+USERS[anna]",
                     "+USERS[anna].PMP_PSK_NAME=office"):
            self.assertRegex(done.output, f"(?m)^{re.escape(line)}$")
        self.assertEqual(fleet.traces(), before)

    def test_2_the_first_run_changes_what_differs(self):
        before = fleet.gateways[0].traces()
        done = self.play("gateways.yml", why="all alike")
        print("first run:", per_agent(done.time))
        self.check_goes(done, fleet.names()[1:])
        self.assertEqual(fleet.gateways[0].traces(), before)
        for gateway in fleet.gateways:
            self.assertEqual(gateway.get("IKE.QCD_SECRET"), SECRET)
            self.assertEqual(sorted(gateway.ctl("user", "list").split()), ["anna", "bob"])
            self.assertFalse(gateway.status()["changed"])
        self.assertIn("all alike", fleet.gateways[1].ctl("history"))

    def test_3_the_second_run_changes_nothing(self):
        before = fleet.traces()
        done = self.play("gateways.yml")
        print("second run:", per_agent(done.time))
        self.check_goes(done, [])
        self.assertEqual(fleet.traces(), before)

    def test_4_what_somebody_else_has_left_is_a_change(self):
        one = fleet.gateways[0]
        one.ctl("set", "LOG.BACKUP_DEPTH=7")
        self.check_goes(self.play("gateways.yml", "--check"), [one.name])
        self.assertTrue(one.status()["changed"])
        self.check_goes(self.play("gateways.yml"), [one.name])
        self.assertFalse(one.status()["changed"])
        one.ctl("reset", "--save", "LOG.BACKUP_DEPTH")

    def test_5_those_that_cannot_do_not_hold_up_the_others(self):
        before = fleet.other.traces()
        done = self.play("gateways.yml", "-vvv", player=fleet.mixed, gateway_settings={
            "IKE.EXCHANGE_TIMEOUT": 130, "IKE.QCD_SECRET": SECRET})
        self.assertEqual((done.changed(), done.failed()), (fleet.names(), ["down", "other"]),
                         done.output)
        self.assertEqual(done.said_of("down"), [
            f"cannot reach the agent at {fleet.directory}/nobody: No such file or directory"])
        self.assertEqual(done.said_of("other"), [
            f"IKE.{SECRET_NAME}: no such parameter; did you mean IKE.{OTHER_SECRET_NAME}?\n"
            "nothing was written"])
        self.assertEqual(fleet.other.traces(), before)
        self.assertEqual({gateway.get("IKE.EXCHANGE_TIMEOUT") for gateway in fleet.gateways},
                         {"130"})

    def test_5_a_secret_is_known_by_its_type(self):
        done = self.play("gateways.yml", "--diff", "-vvv", player=fleet.player_for([fleet.other]),
                         gateway_settings={f"IKE.{OTHER_SECRET_NAME}": SECRET})
        self.assertEqual((done.status, done.changed()), (0, ["other"]), done.output)
        self.assertIn(f"+IKE.{OTHER_SECRET_NAME}=(hidden), another one\n", done.output)
        self.assertEqual(fleet.other.get(f"IKE.{OTHER_SECRET_NAME}"), SECRET)

    def test_5_a_secret_is_no_argument_of_a_process(self):
        words = os.path.join(fleet.directory, "words")
        recorder = os.path.join(fleet.directory, "recorder")
        with open(recorder, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\necho "$*" >>{words}\nexec {arguments.client} "$@"\n')
        os.chmod(recorder, 0o700)
        self.play("gateways.yml", player=fleet.player_for(fleet.gateways[:1], recorder))
        with open(words, encoding="utf-8") as file:
            said = file.read()
        self.assertEqual(len(re.findall(r"^--socket=\S+ apply --json ", said, re.MULTILINE)), 2)
        self.assertNotIn(SECRET, said)

    def test_6_every_mistake_is_told_and_nothing_is_written(self):
        before = fleet.traces()
        done = self.play("gateways.yml", "-vvv", gateway_settings={
            "IKE.IKE_PORT": 70000, "IKE.IKE_PROT": 1, "IKE.QCD_SECRET": SECRET + "\n",
            "LOG.LANGUAGE": "LOG_LANG_EN", "LOG.WALL_ON": False})
        self.assertEqual(sorted(done.failed()), sorted(fleet.names()), done.output)
        for name in fleet.names():
            self.assertEqual(done.said_of(name), [
                'IKE.IKE_PORT: "70000" is not a whole number from 1 to 65535\n'
                "IKE.IKE_PROT: no such parameter; did you mean IKE.IKE_PORT?\n"
                "IKE.QCD_SECRET: the value is not one line of text without control characters\n"
                'LOG.LANGUAGE: "LOG_LANG_EN" is not one of LOG_LANG_ENG, LOG_LANG_RUS\n'
                "nothing was written"])
        self.assertEqual(fleet.traces(), before)

    def test_7_what_is_not_confirmed_goes_back(self):
        done = self.play("port.yml", "--skip-tags", "confirm", ike_port=501, seconds=2)
        self.check_goes(done, fleet.names())
        for gateway in fleet.gateways:
            wait_until(lambda: gateway.status()["pendingConfirmation"] is None)
            self.assertEqual(gateway.get("IKE.IKE_PORT"), "500")
            self.assertFalse(gateway.status()["changed"])
            self.assertIn("501 -> 500", gateway.ctl("history"))

    def test_8_what_is_confirmed_stays(self):
        self.check_goes(self.play("port.yml", "--check", ike_port=501), fleet.names())
        self.check_goes(self.play("port.yml", ike_port=501, seconds=86400), fleet.names())
        for gateway in fleet.gateways:
            self.assertIsNone(gateway.status()["pendingConfirmation"])
            self.assertEqual(gateway.get("IKE.IKE_PORT"), "501")
        self.check_goes(self.play("port.yml", ike_port=501), [])

    def test_8_every_form(self):
        one = fleet.gateways[0]
        scratch = tempfile.mkdtemp(dir=fleet.directory)
        done = self.play(os.path.join(HERE, "forms.yml"), "--limit", one.name, scratch=scratch)
        self.assertEqual(done.failed(), [], done.output)

    def test_9_all_are_alike_in_the_end(self):
        self.check_goes(self.play("gateways.yml", "--diff"), fleet.names())
        for gateway in fleet.gateways:
            gateway.ctl("reset", "--save", "--all")
        self.check_goes(self.play("gateways.yml"), fleet.names())
        self.assertEqual(len(self.hashes()), 2)  # with secrets, and without

    def test_9_what_it_costs(self):
        done = self.play(os.path.join(HERE, "nothing.yml"))
        self.check_goes(done, [])
        print("Ansible alone, as many tasks that do nothing:", per_agent(done.time))
        for what, words in (("nothing to change", ["--check"]), ("a change, saved", ["--save"])):
            watch = Stopwatch()
            for gateway in fleet.gateways:
                gateway.ctl("apply", "--json", *words, "-", document="IKE.IKE_PORT=501")
            print(f"the client alone, {what}:", per_agent(watch.time()))


def parse():
    parser = argparse.ArgumentParser(usage=__doc__)
    parser.add_argument("--agents", type=int, default=10)
    parser.add_argument("--bin", default="/usr/lib/lparams")
    parser.add_argument("--client")
    parser.add_argument("--collections")
    parser.add_argument("--measure", action="store_true")
    found = parser.parse_args()
    found.bin = os.path.abspath(found.bin)
    beside = os.path.join(found.bin, "lparamsctl")
    found.client = os.path.abspath(
        found.client or (beside if os.path.exists(beside) else shutil.which("lparamsctl")))
    if found.collections:
        found.collections = os.path.abspath(found.collections)
    return found


def main():
    global arguments, fleet
    arguments = parse()
    if shutil.which("ansible-playbook") is None:
        print("ansible-playbook is not there")
        sys.exit(SKIPPED)
    with tempfile.TemporaryDirectory(prefix="fleet-") as directory:
        fleet = Fleet(directory)
        try:
            measured = ["-k", "run", "-k", "costs"] if arguments.measure else []
            outcome = unittest.main(argv=[*sys.argv[:1], *measured], exit=False, verbosity=2,
                                    failfast=True).result
        finally:
            fleet.close()
    sys.exit(0 if outcome.wasSuccessful() else 1)


if __name__ == "__main__":
    main()
