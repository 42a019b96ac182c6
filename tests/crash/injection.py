"""Runs in which one recorded call is the agent's last one, or fails."""

import os
import shutil

from agent_process import Hung
from disk_trouble import Trouble
from performance import SAVE, START, Performance
from power_cut import Disk
from recovery_check import Lost, read_files, recover, settings_of, unsealed, write_files
from scenarios import SETTINGS, SHADOW_COPY

EXIT_CODES = (69, 74, 78)  # module or socket, settings not durable, directory or settings file
ATTEMPTS = 40  # threads take turns differently each time, the more so on a busy machine

ERRORS = {
    "read": ("EIO",),
    "write": ("ENOSPC", "EIO"),
    "writev": ("ENOSPC", "EIO"),
    "fsync": ("ENOSPC", "EIO"),
    "close": ("ENOSPC", "EIO"),
    "rename": ("EIO", "EROFS", "ENOSPC", "EACCES"),
    "renameat2": ("EIO", "EROFS", "ENOSPC", "EACCES"),
    "unlink": ("EIO", "EROFS", "EACCES"),
    "flock": ("ENOLCK",),
    "fchmod": ("EPERM", "EROFS"),
}


def errors_of(call):
    if call.name != "openat":
        return ERRORS[call.name]
    errors = ("EACCES", "EMFILE", "EIO")
    if "O_CREAT" in call.flags:
        return errors + ("EROFS", "ENOSPC")
    return errors + ("EROFS",) if "O_WRONLY" in call.flags else errors


class Missed(Exception):
    """The run says nothing: the injection hit another call than the one that was meant, or so."""


def require_hit(performance, phase, call, hit):
    if not hit or hit[-1].label() != call.label():
        raise Missed(f"{phase}: {call.label()} #{call.nth}, but hit "
                     f"{[other.label() for other in hit]}")


def inject(build, reference, phase, call, what, directory):
    injection = f"{call.name}:{what}:when={call.nth}"
    return Performance(build, reference.scenario, directory, (phase,), injection)


def kill_at(build, reference, phase, call, directory):
    """Kills the agent at the entry of the call; raises Lost. Without a call: after the reply."""
    performance = (inject(build, reference, phase, call, "signal=KILL", directory) if call
                   else Performance(build, reference.scenario, directory))
    reply = None
    try:
        if performance.start():
            performance.change()
            reply = performance.save()
    except OSError:
        pass  # the agent went away while it was spoken to
    finally:
        performance.close()
    if reply and reply.result == 1:
        check_acknowledged(reference, performance)
    if call:
        ended = [other for other in performance.calls[phase] if other.result is None]
        require_hit(performance, phase, call, ended)
    expectation = reference.expectation(phase)
    if reply and reply.result == 1:
        expectation = reference.after_save
    recover(build, performance.state, performance.run, expectation)


def fail_call(build, reference, phase, call, error, directory):
    """Lets the call fail; raises Lost. Returns what became of it, in a word."""
    performance = inject(build, reference, phase, call, f"error={error}", directory)
    try:
        listens = performance.start()
        if phase == START:
            require_hit(performance, phase, call,
                        [other for other in performance.calls[phase] if other.injected])
        if not listens:
            return check_refused_start(build, reference, performance)
        return check_saves(build, reference, performance, phase, call=call)
    except (OSError, Hung) as problem:
        raise no_answer(performance, problem) from None
    finally:
        performance.close()


def trouble_disk(build, reference, phase, kind, count, directory):
    """Lets the disk become full or read-only after so many calls of the phase, until a save has
    failed; raises Lost. Returns what became of it, in a word."""
    trouble = Trouble(build, os.path.join(directory, "run"))
    performance = Performance(build, reference.scenario, directory, disk=trouble)
    try:
        if phase == START:
            trouble.begin(kind, count)
        if not performance.start():
            if reference.scenario.is_complete():
                raise Lost(f"a complete file is not served: {performance.agent.said()}")
            return check_refused_start(build, reference, performance)
        return check_saves(build, reference, performance, phase, trouble=(kind, count))
    except (OSError, Hung) as problem:
        raise no_answer(performance, problem) from None
    finally:
        performance.close()


def no_answer(performance, problem):
    """An agent that has not ended may have waited for its client for too long, on a busy machine."""
    kind = Missed if performance.agent.process.poll() is None else Lost
    return kind(f"no answer: {problem}, exit {performance.agent.process.poll()}; "
                f"{performance.agent.said()}")


def check_refused_start(build, reference, performance):
    code = performance.agent.wait()
    if code not in EXIT_CODES or ": error: " not in performance.agent.said():
        raise Lost(f"the start ended with {code}: {performance.agent.said()}")
    recover(build, performance.state, performance.run, reference.after_start)
    return "no start"


def check_saves(build, reference, performance, phase, call=None, trouble=None):
    """After the first save, with the error in it or before it, the agent is killed; or it saves once
    more, without an error."""
    save = reference.scenario.save
    degraded = check_loaded(reference, performance) if phase == START else False
    performance.change()
    at_save = read_files(performance.state)
    if trouble and phase == SAVE:
        performance.disk.begin(*trouble)
    reply = performance.save(force=False if degraded else None)
    if reply is None:
        raise Lost(f"the agent ended while it saved: {performance.close()}")
    if call and phase == SAVE:
        require_hit(performance, phase, call,
                    [other for other in performance.calls[phase] if other.injected])
    if reply.result == 1:
        if degraded or not save.succeeds:
            raise Lost("a save that has to be refused was not")
        check_acknowledged(reference, performance)
        if call and phase == SAVE:
            check_durable(build, reference, performance, at_save)
        performance.close()
        recover(build, performance.state, performance.run, reference.after_save)
        return "saved"
    if not reply.text:
        raise Lost("a save failed without a reason")
    expectation = reference.without_success if degraded else reference.during_save
    check_copy(build, performance, expectation)
    if degraded:
        return "degraded"
    if trouble:
        performance.disk.end()
    reply = performance.client.save(save.force or not save.succeeds)
    if (reply.result == 1) != save.ever:
        raise Lost("the next save answered " + str(reply))
    if reply.result == 1:
        check_acknowledged(reference, performance)
    performance.close()
    recover(build, performance.state, performance.run, reference.after_save)
    return "save failed"


def check_acknowledged(reference, performance):
    """Both files hold the settings that were saved."""
    files = read_files(performance.state)
    text = reference.after_save.allowed[0].text
    if files.get(SETTINGS) != text or unsealed(files.get(SHADOW_COPY, b"")) != text:
        raise Lost("a save was acknowledged, and not both files hold it")


def check_loaded(reference, performance):
    """True: the agent has said that the settings were not loaded whole, for once."""
    found = settings_of(performance.agent, performance.state)
    if found in reference.after_start.allowed:
        return False
    if found.degraded:
        return True
    raise Lost(f"other settings are served, and not as degraded: {performance.agent.said()}")


def check_copy(build, performance, expectation):
    """What a crash at this moment would leave."""
    copy = os.path.join(performance.directory, "copy")
    run = os.path.join(performance.directory, "copy.run")
    os.makedirs(run, 0o700, exist_ok=True)
    shutil.rmtree(copy, ignore_errors=True)
    write_files(copy, read_files(performance.state))
    recover(build, copy, run, expectation)


def check_durable(build, reference, performance, files):
    """The save was acknowledged: a power cut must not take it back, whatever failed on the way."""
    disk = Disk(performance.state, files)
    for call in performance.calls[SAVE]:
        disk.replay(call)
    copy = os.path.join(performance.directory, "cut")
    run = os.path.join(performance.directory, "cut.run")  # the agent still has its own socket
    os.makedirs(run, 0o700, exist_ok=True)
    for state in set(disk.states()):
        if state == frozenset(read_files(performance.state).items()):
            continue  # is looked at anyway
        shutil.rmtree(copy, ignore_errors=True)
        write_files(copy, dict(state))
        recover(build, copy, run, reference.after_save)
