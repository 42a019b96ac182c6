"""The clients of the soak. Each goes on until the agent is gone, or it is told to stop."""

import struct
import time

from bridge_client import BridgeClient
from ledger import APPLIED, COUNTERS
from store import Store, Unchanged

CONFIRM_SECONDS = 1
PAUSE = 0.01
WRITES_PER_SAVE = 20
WRITES_PER_SESSION = 100


def writer(era, random):
    """Adds one to counters, and saves now and then; comes anew now and then."""
    while not era.stop.is_set():
        store = Store(era.socket)
        for _ in range(WRITES_PER_SESSION):
            if era.stop.is_set():
                break
            add_one(era.ledger, store, random.choice(COUNTERS), era.careless)
            if random.randrange(WRITES_PER_SAVE) == 0:
                least = era.ledger.begin_save()
                store.save("soak")
                era.ledger.end_save(least)
        store.close()


def add_one(ledger, store, name, careless):
    """`careless`: without a condition, for the control."""
    value, revision = store.get(name)
    wanted = int(value) + 1
    ledger.try_write(name, wanted)
    try:
        made = store.set(name, str(wanted), None if careless else revision)
    except Unchanged:
        return ledger.complain(f"lost updates of {name}: it was {wanted} already")
    if made is None:
        ledger.conflict()
    else:
        ledger.written(name, wanted, made)


def watcher(era, witness, forgets=0):
    """`forgets`: each so many notices one, for the control."""
    store = Store(era.socket)
    store.watch()
    number = 0
    while True:
        notice = store.notice()
        number += 1
        if not forgets or number % forgets:
            witness.hear(notice)


def visitor(era):
    """Comes, asks how the agent fares, and goes."""
    while not era.stop.is_set():
        client = BridgeClient(era.socket)
        client.status()
        client.close()
        time.sleep(PAUSE)


def applier(era, random):
    """Changes a setting for a while; lets it go back, or confirms it."""
    store = Store(era.socket)
    while not era.stop.is_set():
        value = str(random.randrange(1000, 80000))
        if value in era.applied.allowed:
            continue
        era.applied.apply(value)
        while not store.apply(APPLIED, value, CONFIRM_SECONDS):
            era.ledger.conflict()  # others write all the time, of which none may go back with it
        if random.random() < 0.5:
            era.applied.confirm()
            if store.confirm():
                era.applied.confirmed()
                store.save("confirmed")
                era.applied.saved()
            else:
                wait_back(store)  # it went back just before
        else:
            wait_back(store)
        era.applied.settle(store.get(APPLIED)[0], era.ledger)
    store.close()


def wait_back(store):
    """Until nothing waits for confirmation."""
    while True:
        frame = store.client.exchange(struct.pack("<B", 2)).output
        if b'"pendingConfirmation":null' in frame.replace(b" ", b""):
            return
        time.sleep(PAUSE)


class Applied:
    """What the setting may be that is applied and goes back."""

    def __init__(self, value):
        self.base, self.allowed, self.value = value, {value}, value

    def apply(self, value):
        self.value = value
        self.allowed = {self.base}  # as soon as nothing waits

    def confirm(self):
        self.allowed = {self.base, self.value}  # until there is an answer

    def confirmed(self):
        pass  # in memory only: a kill takes it back

    def saved(self):
        self.base, self.allowed = self.value, {self.value}

    def settle(self, found, ledger):
        """Nothing waits any more."""
        if found not in self.allowed:
            ledger.complain(f"{APPLIED} is {found}, and may be {sorted(self.allowed)}")
        self.base, self.allowed = found, {found}
