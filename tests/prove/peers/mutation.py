"""What becomes of a well-formed session under way to the agent."""

import struct

EXTREMES = (0, 1, 0x7F, 0x80, 0xFF, 0xFFFF, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 0x1000000,
            0x1000001, 0xFFFFFFF0, 0x3FFFFFF0)
MOST_CHANGES = 4
HELLO_SIZE = 8


def flip(random, data, _others):
    place = random.randrange(len(data))
    data[place] ^= 1 << random.randrange(8)


def replace(random, data, _others):
    data[random.randrange(len(data))] = random.randrange(256)


def insert(random, data, _others):
    place = random.randrange(len(data) + 1)
    data[place:place] = random.randbytes(random.randint(1, 16))


def remove(random, data, _others):
    place = random.randrange(len(data))
    del data[place:place + random.randint(1, 16)]


def cut(random, data, _others):
    del data[random.randrange(len(data)):]


def repeat(random, data, _others):
    place = random.randrange(len(data))
    part = data[place:place + random.randint(1, 200)]
    data[place:place] = part * random.randint(1, 4)


def overwrite(random, data, _others):
    """A length, a number or a count becomes one that nobody expects."""
    place = random.randrange(len(data))
    data[place:place + 4] = struct.pack("<I", random.choice(EXTREMES))


def splice(random, data, others):
    other = random.choice(others)
    data[random.randrange(len(data)):] = other[random.randrange(len(other)):]


KINDS = (flip, flip, replace, insert, remove, cut, repeat, overwrite, overwrite, splice)


def mutated(random, sessions):
    """One of the sessions, changed in up to so many places; its hello is mostly left alone."""
    session = random.choice(sessions)
    kept = HELLO_SIZE if random.random() < 0.95 else 0
    data = bytearray(session[kept:])
    for _ in range(random.randint(1, MOST_CHANGES)):
        if data:
            random.choice(KINDS)(random, data, sessions)
    return session[:kept] + bytes(data)
