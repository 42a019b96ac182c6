"""Each request in a session of its own, with each allocation of it failing in turn."""

import time

from afterwards import what_is_wrong
from bridge_client import assignment
from every_request import NAME, SAVES, requests, some_value

MOST_GROWTH = 16384  # bytes of a command over all of its trials: the history may grow
PATIENCE = 10  # seconds


class Sessions:
    def __init__(self, trials):
        self.trials, self.memory = trials, trials.memory
        self.record = None

    def go(self, seconds):
        trials = self.trials
        trials.renew()
        agent = trials.start()
        try:
            if not agent.listening():
                raise RuntimeError(agent.said())
            client = agent.connect()
            self.record = client.read("ADMIN")
            client.close()
            every = requests(self.record, 0)
            for what in every:
                if len(trials.finds) >= trials.enough:
                    return
                agent = self.command(agent, what, seconds / len(every))
                trials.context.say_some(f"{what}: {trials.counts[what]} allocations")
        finally:
            agent.kill()

    def command(self, agent, what, seconds):
        """Returns the agent, or another one in its place."""
        trials = self.trials
        for number in range(3):
            self.asked(agent, what, 1000 + number, None, False)
        self.memory.count()
        self.asked(agent, what, 2000, None, False)
        count = self.memory.counted()
        before = self.memory.live()
        for for_good in (False, True):
            for number in trials.chosen(what, count, seconds / 2):
                said = self.asked(agent, what, number, number, for_good)
                wrong = what_is_wrong(agent, trials.state, what, said)
                if wrong:
                    trials.find(what, number, for_good, wrong)
                    agent.kill()
                    agent = trials.start()
                    agent.listening()
                    before = None
                    if len(trials.finds) >= trials.enough:
                        return agent
        self.asked(agent, what, 3000, None, False)
        grown = 0 if before is None else self.grown(before)
        if grown > MOST_GROWTH:
            trials.find(what, 0, False, f"{grown} bytes are kept")
        return agent

    def grown(self, before):
        """Bytes, when the sessions that end have given back what was theirs."""
        end = time.monotonic() + PATIENCE
        while (grown := self.memory.live() - before) > MOST_GROWTH and time.monotonic() < end:
            time.sleep(0.05)
        return grown

    def asked(self, agent, what, value, number, for_good):
        """The reply, or why there is none. `number`: of the allocation that fails."""
        client = None
        try:
            client = agent.connect()
            if what == "confirm":
                client.exchange(requests(self.record, value)["apply"])
            elif what.startswith("apply"):
                client.ask("confirm")
            elif what in SAVES:
                client.ask("set", assignment(NAME, some_value(value)))
            if number:
                self.memory.begin(number, for_good)
            return client.exchange(requests(self.record, value)[what])
        except TimeoutError:
            return "no answer"
        except OSError as error:
            return error
        finally:
            if number:
                self.memory.end()
            if client:
                client.close()
