#!/usr/bin/env python3
"""bystander.py SOCKET: a well-behaved client. It reads a group again and again, one read each few
milliseconds. Each line of its input ends a stretch; what it measured is one line of JSON: how many
reads there were, and their 99th percentile and their longest in microseconds."""

import json
import os
import select
import sys
import time

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../crash"))

from bridge_client import BridgeClient  # noqa: E402

PAUSE = 0.002  # seconds between two reads


def percentile(times, part):
    return sorted(times)[min(len(times) - 1, int(len(times) * part))]


def main():
    client = BridgeClient(sys.argv[1])
    print("{}", flush=True)
    times = []
    while True:
        begin = time.perf_counter()
        client.read("IKE")
        times.append(time.perf_counter() - begin)
        if select.select([sys.stdin], [], [], PAUSE)[0]:
            if not sys.stdin.readline():
                return
            print(json.dumps({"reads": len(times), "p99": round(percentile(times, 0.99) * 1e6),
                              "longest": round(max(times) * 1e6)}), flush=True)
            times = []


main()
