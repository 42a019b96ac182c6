"""Plays a scenario with the real agent, traced or disturbed in one of its two phases."""

import os

from agent_process import Agent, Hung, Tracer
from recovery_check import Expectation, Lost, read_files, settings_of, write_files
from scenarios import CHANGED_GROUP, CHANGED_VALUE, SETTINGS
from trace import parse_trace

START, SAVE = "start", "save"


class Performance:
    """A scenario under way, in a directory of its own. Used in this order: start(), change(),
    save(), close()."""

    def __init__(self, build, scenario, directory, traced=(), injection=None):
        self.build, self.scenario, self.directory = build, scenario, directory
        self.traced, self.injection = traced, injection
        self.state = os.path.join(directory, "state")
        self.run = os.path.join(directory, "run")
        self.calls = {}  # of the state directory, by phase
        self.agent = None
        self.client = None
        os.makedirs(self.run, 0o700, exist_ok=True)
        write_files(self.state, scenario.files)

    def trace(self, phase):
        if phase not in self.traced:
            return None
        return Tracer(self.agent.process.pid, os.path.join(self.run, phase + ".trace"),
                      self.injection)

    def finish_trace(self, phase, tracer, alive):
        if tracer:
            calls = parse_trace(tracer.finish(alive))
            self.calls[phase] = [call for call in calls if call.touches(self.state)]

    def start(self):
        """True: the agent listens. Else it has ended."""
        self.agent = Agent(self.build, self.state, self.run, stopped=START in self.traced)
        tracer = self.trace(START)
        if tracer:
            self.agent.go()
        listens = self.agent.listening()
        self.finish_trace(START, tracer, alive=listens)
        return listens

    def change(self):
        if self.scenario.edit:
            with open(os.path.join(self.state, SETTINGS), "wb") as file:
                file.write(self.scenario.edit)
        self.client = self.agent.connect()
        record = self.client.read(CHANGED_GROUP)
        reply = self.client.write(CHANGED_GROUP, CHANGED_VALUE + record[len(CHANGED_VALUE):])
        if reply.result != 1:
            raise Lost("the change was refused: " + reply.text)

    def save(self, force=None):
        """The reply to a save, forced as in the scenario unless told; None if the agent is gone."""
        tracer = self.trace(SAVE)
        try:
            reply = self.client.save(self.scenario.save.force if force is None else force)
        except TimeoutError:
            raise Hung("no reply to a save") from None
        except OSError:
            reply = None
        self.finish_trace(SAVE, tracer, alive=reply is not None)
        return reply

    def close(self):
        """Kills the agent. Returns its exit status."""
        if self.client:
            self.client.close()
        return self.agent.kill() if self.agent else None


class Reference:
    """What an undisturbed performance did."""

    def __init__(self, build, scenario, directory):
        self.scenario = scenario
        performance = Performance(build, scenario, directory, traced=(START, SAVE))
        try:
            if not performance.start():
                raise RuntimeError(f"{scenario.name}: {performance.agent.said()}")
            loaded = settings_of(performance.agent, performance.state)
            self.files_at_save = None
            performance.change()
            self.files_at_save = read_files(performance.state)
            reply = performance.save()
            if (reply.result == 1) != scenario.save.succeeds:
                raise RuntimeError(f"{scenario.name}: save answered {reply}")
            if reply.result != 1 and performance.client.save(force=True).result != 1:
                raise RuntimeError(f"{scenario.name}: the forced save failed")
            changed = settings_of(performance.agent, performance.state)
        finally:
            performance.close()
        self.calls = performance.calls
        self.state = performance.state
        before = self.edited_settings(build, directory) if scenario.edit else loaded
        if len({loaded, before, changed}) != (3 if scenario.edit else 2):
            raise RuntimeError(f"{scenario.name}: its settings do not differ")

        at_save = (before, changed) if scenario.save.succeeds else (before,)
        self.after_start = Expectation((loaded,), () if scenario.edit else scenario.keeps)
        self.during_save = Expectation(at_save, scenario.keeps)
        self.without_success = Expectation((before,), scenario.keeps)
        self.after_save = Expectation((changed,), scenario.keeps)

    def edited_settings(self, build, directory):
        only_edited = self.scenario._replace(files={SETTINGS: self.scenario.edit})
        performance = Performance(build, only_edited, os.path.join(directory, "edited"))
        try:
            performance.start()
            return settings_of(performance.agent, performance.state)
        finally:
            performance.close()

    def expectation(self, phase):
        return self.after_start if phase == START else self.during_save
