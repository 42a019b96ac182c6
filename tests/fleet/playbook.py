"""Plays playbooks on gateways of this machine."""

import json
import os
import re
import resource
import subprocess
import time
from typing import NamedTuple

HERE = os.path.dirname(os.path.abspath(__file__))
EXAMPLES = os.path.join(HERE, "../../examples/fleet")
LIMIT = 1800  # seconds; only to end a hung playbook
RECAP = re.compile(r"^(\S+) +: ok=(\d+) +changed=(\d+) +unreachable=(\d+) +failed=(\d+) ",
                   re.MULTILINE)


class Time(NamedTuple):
    seconds: float
    processor: float  # seconds that processes have used it which have ended since


class Stopwatch:
    def __init__(self):
        self.begin = self.now()

    @staticmethod
    def now():
        used = resource.getrusage(resource.RUSAGE_CHILDREN)
        return Time(time.monotonic(), used.ru_utime + used.ru_stime)

    def time(self):
        return Time(*(end - begin for begin, end in zip(self.begin, self.now())))


class Counts(NamedTuple):
    ok: int
    changed: int
    unreachable: int
    failed: int


class Play(NamedTuple):
    """How it went."""

    status: int
    output: str
    time: Time
    hosts: dict  # the counts, by the host's name

    def changed(self):
        return [name for name, counts in self.hosts.items() if counts.changed]

    def failed(self):
        return [name for name, counts in self.hosts.items() if counts.failed or counts.unreachable]

    def said_of(self, host):
        """The reasons that the host has failed for."""
        found = re.findall(rf"^fatal: \[{host}\]: FAILED! => (.*?)^}}$", self.output,
                           re.MULTILINE | re.DOTALL)
        return [json.loads(text + "}")["msg"] for text in found]


class Player:
    def __init__(self, directory, collections, client, gateways):
        """`collections`: where Ansible finds them; its own places if it is None."""
        self.directory = directory
        self.inventory = os.path.join(directory, "inventory.json")
        self.environment = {
            "PATH": os.environ["PATH"],
            "HOME": directory,
            "LC_ALL": "C.UTF-8",
            "ANSIBLE_CONFIG": os.path.join(directory, "ansible.cfg"),
            "ANSIBLE_HOME": os.path.join(directory, "ansible"),
            "ANSIBLE_NOCOLOR": "1",
            "ANSIBLE_RETRY_FILES_ENABLED": "0",
            "ANSIBLE_CALLBACK_RESULT_FORMAT": "json",
            "ANSIBLE_CALLBACK_FORMAT_PRETTY": "true",
        }
        with open(self.environment["ANSIBLE_CONFIG"], "x", encoding="utf-8"):
            pass  # none of the machine's
        if collections is not None:
            self.environment["ANSIBLE_COLLECTIONS_PATH"] = collections
        hosts = {gateway.name: {"lparams_client": {"socket": gateway.socket, "executable": client}}
                 for gateway in gateways}
        with open(self.inventory, "w", encoding="utf-8") as file:
            json.dump({"gateways": {"hosts": hosts, "vars": {
                "ansible_connection": "local",
                "ansible_pipelining": True,
                "ansible_python_interpreter": "/usr/bin/python3",
            }}}, file)

    def play(self, playbook, *options, **values):
        """The values are those of variables, and may be secrets."""
        variables = os.path.join(self.directory, "variables.json")
        with open(variables, "w", encoding="utf-8") as file:
            json.dump(values, file)
        watch = Stopwatch()
        done = subprocess.run(
            ["ansible-playbook", "-i", self.inventory, "-e", "@" + variables, *options,
             os.path.join(EXAMPLES, playbook)],
            env=self.environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT, text=True, timeout=LIMIT, check=False)
        needed = watch.time()
        hosts = {name: Counts(*map(int, counts)) for name, *counts in RECAP.findall(done.stdout)}
        return Play(done.returncode, done.stdout, needed, hosts)
