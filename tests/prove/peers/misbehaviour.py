"""What peers do to an agent that they mean no good. Each returns what was wrong with the agent, in
words, as a list."""

import os
import signal
import socket
import struct
import subprocess
import sys
import time

from mutation import mutated

DEADLINE = 60  # seconds; only to end what hangs
HELLO = b"LPBR\x01\0\0\0"
READ_ALL = struct.pack("<IBI", 8, 4, 3) + b"get"
CONFIRM = struct.pack("<BI", 4, 7) + b"confirm"
STATUS = b"\x01\0\0\0\x02"
REPLY, EVENT, NOTICE = 129, 130, 131


def connected(path):
    peer = socket.socket(socket.AF_UNIX)
    peer.connect(path)  # waits while too many others do
    peer.settimeout(DEADLINE)
    return peer


def send(peer, data):
    """As far as the agent takes it before it closes the session."""
    try:
        peer.sendall(data)
    except (BrokenPipeError, ConnectionResetError):
        pass


def rest(peer):
    """All that the agent still says, until it closes the session."""
    parts = []
    try:
        while data := peer.recv(65536):
            parts.append(data)
    except ConnectionResetError:
        pass  # it has not read all that was sent
    return b"".join(parts)


def converse(path, data):
    """Sends, sends no more, and takes what comes."""
    with connected(path) as peer:
        send(peer, data)
        try:
            peer.shutdown(socket.SHUT_WR)
        except OSError:
            pass  # closed already
        return rest(peer)


def kinds_of(said):
    """The first bytes of the frames that the agent has said; None if it is no whole protocol."""
    if said and said[:4] != HELLO[:4]:
        return None
    place, kinds = len(HELLO), []
    while place < len(said):
        if place + 5 > len(said):
            return None
        size, kind = struct.unpack_from("<IB", said, place)
        place += 4 + size
        if kind not in (REPLY, EVENT, NOTICE) or place > len(said):
            return None
        kinds.append(kind)
    return kinds


def mutations(path, random, sessions, count, go_on):
    """Returns also how many there were: `go_on` is asked before each."""
    wrong = []
    for number in range(count):
        if not go_on(number):
            return wrong, number
        data = mutated(random, sessions)
        try:
            if kinds_of(converse(path, data)) is None:
                wrong.append(f"session {number}: what the agent said is cut off: {data.hex()}")
        except TimeoutError:
            wrong.append(f"session {number}: the agent did not end it: {data.hex()}")
        except ConnectionRefusedError:
            return wrong + [f"session {number}: the agent has gone"], number
    return wrong, count


def crowd(path, size, seconds):
    """So many clients at once; those beyond the limit are turned away."""
    peers = []
    for _ in range(size):
        peers.append(connected(path))
        send(peers[-1], HELLO + STATUS)
    time.sleep(seconds)
    served = 0
    for peer in peers:
        with peer:
            try:
                peer.shutdown(socket.SHUT_WR)
            except OSError:
                pass
            served += len(kinds_of(rest(peer)) or ())
    return [] if served >= size // 2 else [f"of {size} clients {served} were served"]


def slow_bytes(path, size, seconds):
    """Clients that send a byte now and then."""
    peers = [connected(path) for _ in range(size)]
    data = HELLO + STATUS
    for byte in range(len(data)):
        for peer in peers:
            send(peer, data[byte:byte + 1])
        time.sleep(seconds / len(data))
    wrong = []
    for peer in peers:
        with peer:
            peer.shutdown(socket.SHUT_WR)
            if kinds_of(rest(peer)) != [REPLY]:
                wrong.append("a slow client got no answer")
    return wrong


def no_reads(path, size, seconds):
    """Clients that ask for much and take nothing."""
    peers = [connected(path) for _ in range(size)]
    for peer in peers:
        peer.settimeout(0)
        try:
            peer.sendall(HELLO + READ_ALL * 200)
        except OSError:
            pass  # as much as the agent takes
    time.sleep(seconds)
    for peer in peers:
        peer.close()
    return []


def half_closes(path, count, _seconds):
    """Clients that say all at once, and that nothing follows."""
    wrong = []
    for number in range(count):
        requests = number % 7
        kinds = kinds_of(converse(path, HELLO + STATUS * requests))
        if kinds != [REPLY] * requests:
            wrong.append(f"{requests} requests before a half close got {kinds}")
    return wrong


def connects(path, _count, seconds):
    """Clients that come and go, as fast as they can."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        connected(path).close()
    return []


STOPPED_IN_THE_MIDDLE = """
import os, signal, socket, sys
peer = socket.socket(socket.AF_UNIX)
peer.connect(sys.argv[1])
peer.sendall(bytes.fromhex(sys.argv[2]))
os.kill(os.getpid(), signal.SIGSTOP)
peer.sendall(bytes.fromhex(sys.argv[3]))
peer.shutdown(socket.SHUT_WR)
while peer.recv(65536):
    pass
"""


def stopped(path, count, seconds):
    """Client processes that are stopped in the middle of a request, and go on later."""
    data = HELLO + STATUS
    halves = [data[:10].hex(), data[10:].hex()]
    processes = [subprocess.Popen([sys.executable, "-c", STOPPED_IN_THE_MIDDLE, path, *halves])
                 for _ in range(count)]
    try:
        for process in processes:
            os.waitpid(process.pid, os.WUNTRACED)
        time.sleep(seconds)
        for process in processes:
            process.send_signal(signal.SIGCONT)
        return [f"a client that went on ended with {process.returncode}"
                for process in processes if process.wait(DEADLINE) != 0]
    finally:
        for process in processes:
            if process.poll() is None:
                process.kill()
                process.wait()


def greeters(path, size):
    """Clients that say hello and wait; as many as the queue of those who wait takes."""
    peers = []
    for _ in range(size):
        peer = socket.socket(socket.AF_UNIX)
        peer.settimeout(0)
        try:
            peer.connect(path)
        except BlockingIOError:
            peer.close()
            break
        send(peer, HELLO)
        peers.append(peer)
    return peers


def is_greeted(peer):
    """Whether the agent has answered within a moment."""
    peer.settimeout(0.1)
    try:
        return peer.recv(len(HELLO)) == HELLO
    except OSError:
        return False
