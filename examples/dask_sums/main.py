# SPDX-License-Identifier: MIT
"""Counts and sums over a folder of documents, in one process and in several that Dask leads.

    python3 main.py FOLDER [--make DOCUMENTS ORDERS] [--workers N | --scheduler ADDRESS]

Every document is one task: a worker goes through it record by record, so that it holds no more than
a record, and what goes over the network are a path and a few numbers. With --scheduler the workers
may be on other machines that have the package and see the folder under the same name.
"""

import argparse
import os
import random
import time

import vok


def summarize(path):
    """Orders, quantity and value of each symbol in one document."""
    sums = {}
    for order in vok.records(path, "/order", dicts=True):
        count, quantity, value = sums.get(order["symbol"], (0, 0, 0))
        cents = round(order["price"] * 100)
        sums[order["symbol"]] = (count + 1, quantity + order["quantity"], value + cents * order["quantity"])
    return sums


def combine(parts):
    """The sums of all documents. Whole numbers: they are the same in whatever order."""
    total = {}
    for part in parts:
        for symbol, numbers in part.items():
            total[symbol] = tuple(map(sum, zip(numbers, total.get(symbol, (0, 0, 0)))))
    return dict(sorted(total.items()))


def in_one_process(paths):
    return combine(map(summarize, paths))


def with_dask(paths, client):
    return combine(client.gather(client.map(summarize, paths, pure=False)))


def make(folder, documents, orders):
    """Zipped documents of random orders."""
    rng = random.Random(1)
    os.makedirs(folder, exist_ok=True)
    for number in range(documents):
        content = [
            {
                "id": n,
                "price": rng.randrange(100_000) / 100,
                "quantity": rng.randrange(1, 1000),
                "symbol": rng.choice(["ALFA", "BRVO", "CHRL", "DLTA"]),
            }
            for n in range(orders)
        ]
        vok.dump({"order": content}, os.path.join(folder, f"orders-{number:03}.dgraph.zip"), name="orders")


def main():
    parser = argparse.ArgumentParser(
        description="Sums over a folder of documents, in one process and with Dask."
    )
    parser.add_argument("folder")
    parser.add_argument(
        "--make", nargs=2, type=int, metavar=("DOCUMENTS", "ORDERS"), help="make the documents first"
    )
    parser.add_argument("--workers", type=int, default=2, help="processes on this machine")
    parser.add_argument("--scheduler", help="the address of a Dask scheduler that is running")
    arguments = parser.parse_args()
    from distributed import Client, LocalCluster

    if arguments.make:
        make(arguments.folder, *arguments.make)
    names = sorted(name for name in os.listdir(arguments.folder) if name.endswith(".dgraph.zip"))
    paths = [os.path.abspath(os.path.join(arguments.folder, name)) for name in names]

    start = time.perf_counter()
    alone = in_one_process(paths)
    print(f"one process  {time.perf_counter() - start:.2f} s")

    def run(client):
        client.wait_for_workers(1)
        start = time.perf_counter()
        together = with_dask(paths, client)
        print(
            f"Dask         {time.perf_counter() - start:.2f} s, {len(client.scheduler_info()['workers'])} workers"
        )
        return together

    if arguments.scheduler:
        with Client(arguments.scheduler) as client:
            together = run(client)
    else:
        with LocalCluster(
            n_workers=arguments.workers, threads_per_worker=1, host="127.0.0.1", dashboard_address=None
        ) as cluster:
            with Client(cluster) as client:
                together = run(client)

    for symbol, (count, quantity, cents) in alone.items():
        print(f"{symbol:12} {count:9} orders {quantity:12} pieces {cents / 100:18.2f}")
    if together != alone:
        print("DIFFERENT:", together)
        return 1
    print("the same from both")
    return 0


if __name__ == "__main__":
    raise SystemExit(main())
