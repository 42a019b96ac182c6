"""Well-formed sessions, as the client itself has them: what it sends is recorded on the way."""

import os
import socket
import subprocess
import threading

# Every request of the protocol is in one of these. {} stands for a directory.
CONVERSATIONS = (
    ("status",), ("status", "--json", "--findings"), ("show",), ("show", "USERS"), ("list",),
    ("describe", "IKE.IKE_PORT"), ("get", "IKE.IKE_PORT", "LOG.WALL_ON"), ("backup", "{}/first"),
    ("set", "IKE.EXCHANGE_TIMEOUT=120"), ("set", "LOG.WALL_ON=0", "ADMIN.SESSION_EXPTIME=77"),
    ("apply", "--check", "{}/first"), ("user", "add", "anna", "PMP_TIMEOUT=5"),
    ("user", "set", "anna", "PMP_TIMEOUT=7"), ("save", "--message", "a note"), ("diff",),
    ("set", "IKE.NATT_PORT=4501"), ("revert", "IKE"), ("user", "del", "anna"),
    ("reset", "LOG"), ("apply", "--confirm", "60", "{}/first"), ("confirm",), ("reset", "--all"),
    ("set", "IKE.IKE_PORT=502"),
    ("apply", "--confirm", "60", "--save", "{}/first"), ("confirm",), ("save",), ("history",),
    ("set", "IKE.IKE_PORT=501"), ("restore", "--save", "{}/first"), ("rollback", "1"),
    ("save", "--force"),
)
HELLO = b"LPBR\x01\0\0\0"
# What the client never asks for: a module's write, a module's save, events, notices.
RAW = (
    HELLO + bytes.fromhex("1b000000 0100 0d000000 01000000 0000000000000000 05000000 5553455253"),
    HELLO + bytes.fromhex("1f000000 0100 0d000000 00000000 0000000000000000 05000000 5553455253"
                          "00000000"),
    HELLO + bytes.fromhex("12000000 0102 0d000000 02000000 0000000000000000"),
    HELLO + bytes.fromhex("01000000 03 01000000 02"),
    HELLO + bytes.fromhex("0a000000 04 05000000 7761746368 01000000 02"),
)


class Relay:
    """Listens beside the agent, hands everything on, and keeps what clients send."""

    def __init__(self, path, agent):
        self.path, self.agent = path, agent
        self.sessions = []
        self.listener = socket.socket(socket.AF_UNIX)
        self.listener.bind(path)
        self.listener.listen()
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            try:
                client, _ = self.listener.accept()
            except OSError:
                return
            agent = socket.socket(socket.AF_UNIX)
            agent.connect(self.agent)
            sent = bytearray()
            self.sessions.append(sent)
            threading.Thread(target=hand_on, args=(client, agent, sent), daemon=True).start()
            threading.Thread(target=hand_on, args=(agent, client), daemon=True).start()

    def close(self):
        # Wakes accept(), which a close alone does not.
        self.listener.shutdown(socket.SHUT_RDWR)
        self.listener.close()
        os.unlink(self.path)


def hand_on(source, target, kept=None):
    try:
        while data := source.recv(65536):
            if kept is not None:
                kept += data
            target.sendall(data)
        target.shutdown(socket.SHUT_WR)
    except OSError:
        pass  # one of them has gone


def record(build, agent_socket, directory):
    """The bytes of whole sessions; the agent carries them out meanwhile."""
    relay = Relay(os.path.join(directory, "relay.sock"), agent_socket)
    try:
        for conversation in CONVERSATIONS:
            command = [os.path.join(build, "lparamsctl"), "--socket", relay.path]
            command += [word.format(directory) for word in conversation]
            ended = subprocess.run(command, stdin=subprocess.DEVNULL, capture_output=True,
                                   timeout=120, check=False)
            if ended.returncode != 0:
                raise RuntimeError(f"{' '.join(conversation)}: {ended.stderr.decode()}")
    finally:
        relay.close()
    recorded = {bytes(session) for session in relay.sessions if session}
    return sorted(recorded | set(RAW))
