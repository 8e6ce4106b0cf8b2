# SPDX-License-Identifier: MIT
"""The orders of the benchmarks: 100,000 objects of 16 nodes, the same content for everybody."""

import random


def orders(count=100_000):
    rng = random.Random(1)
    symbols = ["ALFA", "BRVO", "CHRL", "DLTA", "ECHO", "FXTR"]
    tags = ["spot", "limit", "urgent", "desk-4", "hedge", "partial"]
    for number in range(count):
        yield {
            "active": rng.random() < 0.5,
            "id": number,
            "leg": {
                "V1": rng.randrange(1000),
                "V2": rng.randrange(1_000_000),
                "V3": -rng.randrange(1000),
                "V4": rng.randrange(100),
            },
            "note": f"customer note number {rng.randrange(1000)}",
            "price": rng.randrange(100_000) / 100,
            "quantity": rng.randrange(10_000),
            "symbol": rng.choice(symbols),
            "tags": {"tag": [rng.choice(tags) for _ in range(3)]},
        }
