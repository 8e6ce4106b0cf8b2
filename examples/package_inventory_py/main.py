# SPDX-License-Identifier: MIT
"""Reads the package database of a Debian machine, writes all of it to a DGraph file and to an XML
file, reads them back and compares every field.

    python3 main.py [STATUS] [--output FILE]
"""

import argparse
import os
import sys
import tempfile
import time

import vok
from status_file import StatusError, read_status_file


def main():
    parser = argparse.ArgumentParser(
        description="Writes a package database as DGraph and XML, reads it back, compares."
    )
    parser.add_argument("status", nargs="?", default="/var/lib/dpkg/status")
    parser.add_argument(
        "-o", "--output", default=os.path.join(tempfile.gettempdir(), "package_inventory.dgraph")
    )
    arguments = parser.parse_args()
    try:
        return run(arguments.status, arguments.output)
    except (StatusError, vok.Error, OSError) as error:
        print(f"package_inventory: {error}", file=sys.stderr)
        return 2


def run(status, output):
    start = time.perf_counter()
    packages, size = read_status_file(status)
    print(f"read      {len(packages)} packages, {size} bytes of {status} in {lap(start):.0f} ms")

    start = time.perf_counter()
    # As programs in other languages write it: without the attributes that tell lists of one item.
    tree = vok.node({"package": packages}, marks=False)
    vok.dump(tree, output, form="dgraph", version=(1, 2, 0))
    print(f"wrote     {os.path.getsize(output)} bytes to {output} in {lap(start):.0f} ms")

    start = time.perf_counter()
    copy = read_back(vok.load(output))
    print(f"read back in {lap(start):.0f} ms, dicts included")

    start = time.perf_counter()
    vok.dump(tree, output + ".xml")
    from_xml = read_back(vok.load(output + ".xml"))
    print(f"as XML    {os.path.getsize(output + '.xml')} bytes in {lap(start):.0f} ms")

    if not compare(packages, copy) or not compare(packages, from_xml):
        return 1
    print("equal in every field")
    return 0


def read_back(doc):
    return doc.to_dict(lists=("any-of", "number", "package", "relation", "text"))["package"]


def lap(start):
    return (time.perf_counter() - start) * 1000


def compare(written, read):
    """Prints every difference; true when there is none."""
    if len(written) != len(read):
        print(f"DIFFERENT: {len(written)} packages written, {len(read)} read")
    different = [a["name"] for a, b in zip(written, read) if a != b]
    for name in different:
        print(f"DIFFERENT: package {name}")
    return not different and len(written) == len(read)


if __name__ == "__main__":
    sys.exit(main())
