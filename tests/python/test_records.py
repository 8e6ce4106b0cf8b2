# SPDX-License-Identifier: MIT
"""Parts of documents one after the other."""

import io
import os
import subprocess
import sys
import tempfile
import threading
import unittest

import vok

ITEMS = [{"id": n, "name": f"item {n}", "tags": ["a", "b"] * (n % 3), "see": None} for n in range(300)]


class Records(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)

    def path(self, name):
        return os.path.join(self._folder.name, name)

    def test_every_form_and_source(self):
        for name in ("a.xml", "a.dgraph", "a.xml.gz", "a.dgraph.zip"):
            path = self.path(name)
            vok.dump({"item": ITEMS, "z": 1}, path)
            self.assertEqual(list(vok.records(path, "/item", dicts=True)), ITEMS)
            kept = list(vok.records(path, "/item"))
            self.assertEqual([node.to_dict() for node in kept], ITEMS)
            kept[0].add("own", 1)
            self.assertNotIn("own", kept[1])
            self.assertEqual([n["id"].value for n in vok.records(path, "/item[7]")], [7])
            self.assertEqual(len(list(vok.records(path))), 301)
            if name.endswith(".zip"):
                continue
            with open(path, "rb") as file:
                self.assertEqual(list(vok.records(file, "/item", dicts=True)), ITEMS)

    def test_parts_within_parts(self):
        source = vok.dumps({"a": {"n": 1, "a": {"n": 2, "a": {"n": 3}}}}, form="xml")
        found = vok.records(io.BytesIO(source), "//a")
        seen = []
        for node in found:
            seen.append((found.path, node["n"].value))
            node.clear()  # those that are still to come are none of its own
        self.assertEqual(seen, [("/a[0]", 1), ("/a[0]/a[0]", 2), ("/a[0]/a[0]/a[0]", 3)])

    def test_links_keep_their_trees(self):
        doc = vok.node({"item": [{"a": n, "b": None} for n in range(100)]})
        for item in doc["item"]:
            item["b"] = item["a"].one()
        made = list(vok.records(io.BytesIO(vok.dumps(doc)), "/item", dicts=True))
        self.assertEqual([item["b"].target.value for item in made], list(range(100)))

    def test_closing(self):
        path = self.path("a.xml")
        vok.dump({"item": ITEMS}, path)
        with vok.records(path, "/item") as found:
            first = next(found)
        self.assertEqual((list(found), first["id"].value), ([], 0))
        with self.assertRaises(vok.Error):
            found.path
        found.close()

    def test_errors(self):
        path = self.path("a.xml")
        with self.assertRaises(OSError):
            vok.records(path)
        vok.dump({"item": ITEMS}, path)
        with self.assertRaisesRegex(vok.Error, "whole tree"):
            vok.records(path, "/item/..")
        with open(path, "r+b") as file:
            file.truncate(os.path.getsize(path) - 40)
        seen = []
        with self.assertRaises(vok.LoadError) as caught:
            for item in vok.records(path, "/item", dicts=True):
                seen.append(item)
        self.assertEqual(seen, ITEMS[: len(seen)])
        self.assertGreater(len(seen), 290)
        self.assertEqual(caught.exception.source, path)
        self.assertGreater(caught.exception.offset, 10000)
        with self.assertRaises(vok.LimitError):
            list(vok.records(io.BytesIO(vok.dumps({"item": ITEMS})), limits=vok.Limits(nodes=100)))
        with self.assertRaises(TypeError):
            vok.records(5)
        with self.assertRaisesRegex(TypeError, "binary"):
            vok.records(io.StringIO("<a/>"))

    def test_file_objects_that_misbehave(self):
        data = vok.dumps({"item": ITEMS * 20}, form="xml")

        class Source:
            def __init__(self, action):
                self.at, self.action = 0, action

            def read(self, size):
                piece = data[self.at : self.at + min(size, 5000)]
                self.at += len(piece)
                return self.action(self, piece, size)

        def fail(source, piece, size):
            if source.at > 50000:
                raise ZeroDivisionError
            return piece

        with self.assertRaises(ZeroDivisionError):
            list(vok.records(Source(fail), "/item"))
        with self.assertRaisesRegex(ValueError, "more than it was asked"):
            list(vok.records(Source(lambda s, p, n: b"x" * (n + 1)), "/item"))
        found = None
        tried = []

        def again(source, piece, size):
            if found is not None:
                for call in (found.close, lambda: next(found), lambda: found.path):
                    try:
                        call()
                    except vok.Error:
                        tried.append(call)
            return piece

        found = vok.records(Source(again), "/item", dicts=True)
        self.assertEqual(list(found), ITEMS * 20)
        self.assertTrue(tried and len(tried) % 3 == 0)

    def test_a_pipe_whose_writer_is_another_thread(self):
        path = self.path("pipe")
        os.mkfifo(path)

        def write():
            with open(path, "wb") as pipe:
                vok.dump({"item": ITEMS * 20}, pipe, form="xml")

        for dicts in (True, False):
            writer = threading.Thread(target=write)
            writer.start()
            self.assertEqual(sum(1 for _ in vok.records(path, "/item", dicts=dicts)), 20 * len(ITEMS))
            writer.join()

    def test_memory_is_constant(self):
        path = self.path("large.dgraph")
        vok.dump({"item": [{"text": "x" * 1000}] * 40000}, path)
        # In a process that has never had more.
        script = (
            "import resource, sys, vok\n"
            "peak = lambda: resource.getrusage(resource.RUSAGE_SELF).ru_maxrss\n"
            "before = peak()\n"
            "size = sum(len(item['text']) for item in vok.records(sys.argv[1], '/item', dicts=True))\n"
            "size += sum(len(item.get('text')) for item in vok.records(sys.argv[1], '/item'))\n"
            "print(size, peak() - before)\n"
        )
        done = subprocess.run([sys.executable, "-c", script, path], capture_output=True, text=True, check=True)
        size, grown = map(int, done.stdout.split())
        self.assertEqual(size, 80_000_000)
        self.assertLess(grown, 8000)


if __name__ == "__main__":
    unittest.main()
