"""What clients were told by one agent, from its start to its end; and what must hold of it.

Every counter is the only parameter of its group that anybody changes, and every change adds one, on
condition of the revision. So of one agent's life the difference of value and revision is the same
all the time."""

import threading

from bridge_client import AGENT_ENDS, DEGRADED, NOT_SAVED, WRITTEN, WRITTEN_IN_PART

COUNTERS = ("LOG.MAX_LOG_SIZE", "POLICY.PMP_TIMEOUT", "UPDATE.CHECK_UPDATE_INTERVAL",
            "USERS[counter].PMP_TIMEOUT")
APPLIED = "ADMIN.SESSION_EXPTIME"
GROUPS = {name.partition(".")[0].partition("[")[0]: name for name in COUNTERS + (APPLIED,)}


class Ledger:
    """Thread-safe."""

    def __init__(self, begin):
        """`begin`: each counter with its value and its revision."""
        self.lock = threading.Lock()
        self.begin = begin
        self.last = {name: value for name, (value, _) in begin.items()}  # acknowledged
        self.revisions = {name: {revision: value} for name, (value, revision) in begin.items()}
        self.tried = dict(self.last)
        self.saved = {}
        self.wrong = []
        self.writes = self.conflicts = self.saves = self.notices = 0

    def complain(self, text):
        with self.lock:
            self.wrong.append(text)

    def try_write(self, name, value):
        with self.lock:
            self.tried[name] = max(self.tried[name], value)

    def written(self, name, value, revision):
        with self.lock:
            self.writes += 1
            self.last[name] = max(self.last[name], value)
            if revision in self.revisions[name]:
                self.wrong.append(f"{name}: revision {revision} was given twice")
            self.revisions[name][revision] = value

    def conflict(self):
        with self.lock:
            self.conflicts += 1

    def begin_save(self):
        """What the save has to hold at least."""
        with self.lock:
            return dict(self.last)

    def end_save(self, least):
        with self.lock:
            self.saves += 1
            for name, value in least.items():
                self.saved[name] = max(self.saved.get(name, 0), value)

    def close(self):
        """Lost updates: two writes made the same of the same value."""
        for name, (value, revision) in self.begin.items():
            odd = {other: found for other, found in self.revisions[name].items()
                   if found - other != value - revision}
            if odd:
                self.wrong.append(f"lost updates of {name}, of {len(odd)} revisions: "
                                  f"{sorted(odd.items())[:3]}, from {value} at {revision}")
        return self.wrong

    def kept(self, values, floor):
        """What a new agent serves: nothing that was saved is missing, nothing is from nowhere."""
        for name, value in values.items():
            if value < floor.get(name, 0):
                self.wrong.append(f"lost save: {name} is {value}, and {floor[name]} was saved")
            if value > self.tried[name]:
                self.wrong.append(f"{name} is {value}, which nobody wrote")


class Witness:
    """What one watcher hears."""

    def __init__(self, ledger):
        self.ledger = ledger
        self.last = {}  # group to revision and value
        self.ended = False

    def hear(self, notice):
        self.ledger.notices += 1
        if self.ended:
            self.ledger.complain("a notice came after that of the end")
        self.ended = notice.what == AGENT_ENDS
        if notice.what in (NOT_SAVED, WRITTEN_IN_PART, DEGRADED):
            self.ledger.complain(f"a notice of trouble: {notice}")
        if notice.what != WRITTEN:
            return
        name = GROUPS[notice.group]
        change = notice.changes.get(name)
        if change is None:
            return self.ledger.complain(f"a notice without its change: {notice}")
        last = self.last.get(notice.group)
        if last and (notice.revision, change.before) != (last[0] + 1, last[1]):
            self.ledger.complain(f"events of {notice.group}: {notice.revision} from {change.before} "
                                 f"follows {last[0]} with {last[1]}")
        self.last[notice.group] = (notice.revision, change.running)
