# SPDX-License-Identifier: MIT
"""One tree and many threads: a change while others read is an error, and never more than that."""

import os
import sys
import tempfile
import threading
import unittest

import vok

ROUNDS = int(os.environ.get("VOK_THREAD_ROUNDS", "30"))


class Threads(unittest.TestCase):
    def setUp(self):
        self.addCleanup(sys.setswitchinterval, sys.getswitchinterval())
        sys.setswitchinterval(1e-5)

    def run_all(self, *functions):
        failures = []

        def guarded(function):
            try:
                for _ in range(ROUNDS):
                    function()
            except BaseException as error:  # noqa: B902
                failures.append(error)

        threads = [threading.Thread(target=guarded, args=[function]) for function in functions]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(failures, [])

    def test_readers_and_a_writer(self):
        doc = vok.node({"order": [{"id": n, "text": "x" * 50} for n in range(3000)]})
        vok.dumps(doc)  # the version is on it
        changed, busy = [0], [0]

        def change():
            try:
                doc.add("order", {"id": 0, "text": "new"})
                doc["order"][-1]["text"] = "y" * 100
                doc["order"][-1].delete()
                changed[0] += 1
            except vok.BusyError:
                busy[0] += 1
            except vok.Error:  # the other one has deleted it
                changed[0] += 1

        def delete_left():
            try:
                while len(doc["order"]) > 3000:
                    doc["order"][-1].delete()
            except vok.Error:
                pass

        self.run_all(
            lambda: vok.loads(vok.dumps(doc)),
            lambda: vok.hash(doc),
            lambda: vok.dumps(doc, form="json"),
            lambda: doc.to_dict(),
            lambda: [change() for _ in range(50)],
            delete_left,
            lambda: vok.equal(doc, doc),
            lambda: vok.dumps(doc, form="dump"),
            lambda: doc.find("//id")[0].value,
        )
        self.assertEqual(changed[0] + busy[0], 50 * ROUNDS)
        doc.add("x", 1)  # nobody is left

    def test_reading_at_once(self):
        doc = vok.node({"order": [{"id": n} for n in range(2000)]})
        stored, hashed = vok.dumps(doc), vok.hash(doc)
        self.run_all(
            *[lambda: self.assertEqual(vok.dumps(doc), stored)] * 2,
            *[lambda: self.assertEqual(vok.hash(doc), hashed)] * 2,
            *[lambda: self.assertEqual(vok.hash(vok.loads(stored)), hashed)] * 2
        )

    def test_one_reader_of_records_for_all(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "a.dgraph")
            vok.dump({"item": [{"id": n} for n in range(5000)]}, path)
            for dicts in (True, False):
                found = vok.records(path, "/item", dicts=dicts)
                seen = []

                def take():
                    while True:
                        try:
                            item = next(found)
                        except StopIteration:
                            return
                        except vok.BusyError:
                            continue
                        seen.append(item["id"] if dicts else item["id"].value)

                threads = [threading.Thread(target=take) for _ in range(4)]
                for thread in threads:
                    thread.start()
                for thread in threads:
                    thread.join()
                self.assertEqual(sorted(seen), list(range(5000)))

    def test_others_run_while_a_document_is_loaded(self):
        with tempfile.TemporaryDirectory() as folder:
            path = os.path.join(folder, "a.xml")
            vok.dump({"item": [{"id": n, "text": "x"} for n in range(100000)]}, path)
            done, counted = threading.Event(), [0]

            def count():
                while not done.is_set():
                    counted[0] += 1

            thread = threading.Thread(target=count)
            thread.start()
            before = counted[0]
            doc = vok.load(path)
            between = counted[0] - before
            vok.dump(doc, path)
            done.set()
            thread.join()
            self.assertGreater(between, 100)


if __name__ == "__main__":
    unittest.main()
