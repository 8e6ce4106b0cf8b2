# SPDX-License-Identifier: MIT
"""Measures the package beside msgpack and json: python/benchmarks/run.py [ROUNDS]

Best of several rounds, taken in turns, in nanoseconds per node (an order has 16). The collector of
garbage is on, as it is in programs; a second column has it off for everybody. Needs python3-msgpack.
"""

import gc
import io
import json
import os
import sys
import tempfile
import time

import msgpack

import vok
from data import orders

ROUNDS = int(sys.argv[1]) if len(sys.argv) > 1 else 5
COUNT = 100_000
NODES = 16 * COUNT + 1


def main():
    objects = list(orders(COUNT))
    whole = {"order": objects}
    folder = tempfile.mkdtemp()
    path = os.path.join(folder, "orders.dgraph")
    packed_path = os.path.join(folder, "orders.msgpack")
    stream_path = os.path.join(folder, "stream.msgpack")
    vok.dump(whole, path, name="orders")
    packed = msgpack.packb(whole)
    stored = vok.dumps(whole, name="orders")
    text = json.dumps(whole)
    doc = vok.loads(stored)
    assert doc.to_dict() == msgpack.unpackb(packed) == whole
    with open(packed_path, "wb") as out:
        out.write(packed)
    with open(stream_path, "wb") as out:
        for order in objects:
            out.write(msgpack.packb(order))

    def unpack_stream():
        with open(stream_path, "rb") as source:
            for order in msgpack.Unpacker(source):
                pass

    def records(dicts):
        for order in vok.records(path, "/order", dicts=dicts):
            pass

    def read(name, function):
        with open(name, "rb") as source:
            return function(source.read())

    groups = {
        "read whole": {
            "msgpack.unpackb": lambda: msgpack.unpackb(packed),
            "json.loads": lambda: json.loads(text),
            "vok.loads + to_dict": lambda: vok.loads(stored).to_dict(),
            "vok.loads": lambda: vok.loads(stored),
            "to_dict": doc.to_dict,
        },
        "read a file": {
            "msgpack.unpackb(read())": lambda: read(packed_path, msgpack.unpackb),
            "vok.load + to_dict": lambda: vok.load(path).to_dict(),
        },
        "stream": {
            "msgpack.Unpacker": unpack_stream,
            "vok.records, dicts": lambda: records(True),
            "vok.records, nodes": lambda: records(False),
        },
        "write whole": {
            "msgpack.packb": lambda: msgpack.packb(whole),
            "json.dumps": lambda: json.dumps(whole),
            "vok.dumps": lambda: vok.dumps(whole, name="orders"),
            "vok.node": lambda: vok.node(whole),
        },
    }
    for group, functions in groups.items():
        best = {(name, on): float("inf") for name in functions for on in (True, False)}
        for _ in range(ROUNDS):
            for name, function in functions.items():
                for on in (True, False):
                    gc.collect()
                    if not on:
                        gc.disable()
                    start = time.perf_counter()
                    result = function()
                    best[name, on] = min(best[name, on], time.perf_counter() - start)
                    gc.enable()
                    del result
        first = next(iter(functions))
        print(f"\n| {group} | ns per node | ratio | without collector | ratio |\n|---|---|---|---|---|")
        for name in functions:
            cells = [(best[name, on] / NODES * 1e9, best[name, on] / best[first, on]) for on in (True, False)]
            print(f"| {name} | " + " | ".join(f"{ns:.1f} | {ratio:.2f}" for ns, ratio in cells) + " |")


main()
