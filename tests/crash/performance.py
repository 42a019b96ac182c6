"""Plays a scenario with the real agent, traced or disturbed in one of its two phases."""

import os

from agent_process import Agent, Hung, Tracer
from recovery_check import Expectation, Lost, read_files, settings_of, write_files
from scenarios import CHANGED_GROUP, SETTINGS, SHADOW_COPY
from trace import parse_trace

START, SAVE = "start", "save"


class Performance:
    """A scenario under way, in a directory of its own. Used in this order: start(), change(),
    save(), close()."""

    def __init__(self, build, scenario, directory, traced=(), injection=None, disk=None):
        """`disk`: of class Trouble, if the disk is to be in any."""
        self.build, self.scenario, self.directory = build, scenario, directory
        self.disk = disk
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
        self.agent = Agent(self.build, self.state, self.run, START in self.traced,
                           self.scenario.options(),
                           self.disk.environment(self.state) if self.disk else None)
        tracer = self.trace(START)
        if tracer:
            self.agent.go()
        listens = self.agent.listening()
        self.finish_trace(START, tracer, alive=listens)
        return listens

    def change(self):
        for name, content in self.scenario.edits.items():
            path = os.path.join(self.state, name)
            if content is None:
                os.unlink(path)
                continue
            with open(path, "wb") as file:
                file.write(content)
        self.client = self.agent.connect()
        if not self.scenario.changes:
            return
        record = self.client.read(CHANGED_GROUP)
        reply = self.client.write(CHANGED_GROUP, self.scenario.changed_record(record))
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
            forced = reply if reply.result == 1 else performance.client.save(force=True)
            if (forced.result == 1) != scenario.save.ever:
                raise RuntimeError(f"{scenario.name}: the forced save answered {forced}")
            changed = (settings_of(performance.agent, performance.state) if scenario.save.ever
                       else None)
        finally:
            performance.close()
        self.calls = performance.calls
        self.state = performance.state
        self.shadow_copy = self.files_at_save.get(SHADOW_COPY)
        replaced = SETTINGS in scenario.edits
        before = self.edited_settings(build, directory) if replaced else loaded
        if (loaded.degraded != scenario.degraded or
                len({loaded, before, changed}) != 1 + scenario.changes + replaced):
            raise RuntimeError(f"{scenario.name}: its settings are not what they should be")

        at_save = (before, changed) if scenario.save.succeeds else (before,)
        self.after_start = Expectation((loaded,), () if scenario.edits else scenario.keeps)
        self.during_save = Expectation(at_save, scenario.keeps)
        self.without_success = Expectation((before,), scenario.keeps)
        self.after_save = (Expectation((changed,), scenario.keeps) if changed
                           else self.without_success)

    def edited_settings(self, build, directory):
        only_edited = self.scenario._replace(files={SETTINGS: self.scenario.edits[SETTINGS]})
        performance = Performance(build, only_edited, os.path.join(directory, "edited"))
        try:
            performance.start()
            return settings_of(performance.agent, performance.state)
        finally:
            performance.close()

    def expectation(self, phase):
        return self.after_start if phase == START else self.during_save
