# SPDX-License-Identifier: MIT
"""Dicts, lists and values into trees and back, held to JSON where that says the same."""

import array
import dataclasses
import datetime
import json
import math
import random
import types
import unittest

import vok

try:
    import numpy
except ImportError:
    numpy = None

UTC = datetime.timezone.utc


def random_object(rng, depth=0):
    kind = rng.randrange(8 if depth < 5 else 5)
    if kind == 0:
        return rng.choice([None, True, False, "", "text", "größe\u20ac\U0001f600", "a\0b"])
    if kind == 1:
        return rng.choice([0, -1, 7, 2**31 - 1, -(2**31), 2**31, 2**63, 2**64 - 1])
    if kind in (2, 3, 4):
        return rng.choice([0.0, -0.0, 1.5, 1e300, 5e-324, 0.1])
    if kind == 5:
        return [random_object(rng, depth + 1) for _ in range(rng.randrange(4))]
    names = ["a", "b", "", "ä", "#", "#json", "#type", "a/b[1]", "longer name than twelve"]
    return {rng.choice(names): random_object(rng, depth + 1) for _ in range(rng.randrange(4))}


class Values(unittest.TestCase):
    TABLE = [
        (None, "Empty"),
        (True, "Boolean"),
        (False, "Boolean"),
        (0, "Integer"),
        (-(2**31), "Integer"),
        (2**31 - 1, "Integer"),
        (2**31, "Long"),
        (2**64 - 1, "Long"),
        (vok.Long(7), "Long"),
        (0.5, "Double"),
        (-0.0, "Double"),
        (math.inf, "Double"),
        (vok.Float(0.1), "Float"),
        (vok.Char(65), "Char"),
        (vok.Char(-5), "Char"),
        ("", "String"),
        ("ä\U0001f600", "String"),
        (b"", "Binary"),
        (bytes(range(256)), "Binary"),
        (datetime.datetime(2026, 1, 2, 3, 4, 5, 678901, UTC), "Date"),
        (datetime.datetime(1, 1, 1, tzinfo=UTC), "Date"),
        (datetime.datetime(9999, 12, 31, 23, 59, 59, tzinfo=UTC), "Date"),
        (datetime.datetime(1969, 12, 31, 23, 59, 59, 999999, UTC), "Date"),
        (vok.Date(1e300), "Date"),
        (vok.Date(0.12345678901), "Date"),
        (vok.Quad(0, 1, 2, 2**32 - 1), "Quad"),
        (vok.Link(), "Link"),
        (vok.Link("/"), "Link"),
    ]

    def test_they_keep_type_and_value(self):
        for value, kind in self.TABLE:
            with self.subTest(value=value):
                doc = vok.node({"x": value})
                self.assertEqual(doc["x"].type, kind)
                again = doc.to_dict()["x"]
                self.assertEqual((again, type(again)), (value, type(value)))
                self.assertEqual(repr(again), repr(value))  # the sign of zero
                self.assertEqual((vok.node(value).to_dict(), vok.node(value).type), (value, kind))
                if kind != "Link":
                    self.assertEqual(doc["x"].value, value)
                    doc["x"].value = None
                    doc["x"].value = value
                    self.assertEqual((doc["x"].value, doc["x"].type), (value, kind))
        self.assertTrue(math.isnan(vok.node({"x": math.nan}).to_dict()["x"]))

    def test_microseconds(self):
        rng = random.Random(3)
        first = datetime.datetime(1700, 1, 1, tzinfo=UTC)
        for _ in range(2000):
            date = first + datetime.timedelta(
                days=rng.randrange(195000), seconds=rng.randrange(86400), microseconds=rng.randrange(10**6)
            )
            self.assertEqual(vok.node({"x": date}).to_dict()["x"], date)

    def test_what_is_refused(self):
        loop = {}
        loop["again"] = loop
        aware = "time zone"
        for value, error, text in [
            (-(2**31) - 1, OverflowError, "whole numbers"),
            (2**64, OverflowError, "whole numbers"),
            (vok.Long(-1), OverflowError, "whole numbers"),
            (vok.Quad(0, 0, 0, 2**32), OverflowError, "Quad"),
            (object(), TypeError, "object cannot be stored"),
            ({1, 2}, TypeError, "set cannot be stored"),
            ({1: 2}, TypeError, "names are texts"),
            ({"a\0": 1}, ValueError, "NUL"),
            ("\ud800", UnicodeEncodeError, "surrogates"),
            (datetime.datetime(2026, 1, 1), ValueError, aware),
            ({"#value": 1, "x": 2}, ValueError, "beside"),
            ({"#value": [1]}, ValueError, "no value"),
            ({"#attributes": 1}, ValueError, "no dict of texts"),
            ({"#attributes": {"a": 1}}, ValueError, "no dict of texts"),
            (vok.Link("/nowhere"), ValueError, "link to nothing"),
            (loop, vok.LimitError, "depth"),
            (vok.node({}), TypeError, "Node cannot be stored"),
            (memoryview(b"abcd").cast("B", (2, 2)), TypeError, "cannot be stored"),
        ]:
            with self.subTest(value=type(value)):
                with self.assertRaisesRegex(error, text):
                    vok.node({"x": value})
        doc = vok.node({"a": 1})
        before = vok.hash(doc)
        with self.assertRaises(TypeError):
            doc.add("x", [1, 2, {"deep": object()}])
        with self.assertRaises(TypeError):
            doc["y"] = object()
        self.assertEqual(vok.hash(doc), before)

    def test_deep_ones_take_no_stack(self):
        deep = inner = []
        for _ in range(200000):
            inner.append([])
            inner = inner[0]
        tree = vok.node({"x": deep})
        again = tree.to_dict()["x"]
        depth = 0
        while again:
            again, depth = again[0], depth + 1
        self.assertEqual(depth, 200000)

    def test_one_that_changes_meanwhile(self):
        victim = {"a": 1, "odd": object(), "z": 2}

        def change(_):
            victim.clear()
            return 5

        with self.assertRaises(RuntimeError):
            vok.node(victim, default=change)
        items = [object(), 1, 2, 3, 4]
        self.assertEqual(vok.node({"x": items}, default=lambda _: items.clear() or 5).to_dict(), {"x": 5})

    def test_keys_that_run_code(self):
        class Key(str):
            def __hash__(self):
                return hash("#attributes")

            def __eq__(self, other):
                if armed:
                    victim.clear()
                return False

        armed, victim = [], {}
        victim.update({Key("k"): 1, "#attributes": {"a": "b" * 100}, "x": 2})
        armed.append(True)
        with self.assertRaises((RuntimeError, ValueError)):
            vok.node({"v": victim})

    def test_default(self):
        self.assertEqual(
            vok.node({"x": {3}, "y": 1j}, default=lambda o: list(o) if type(o) is set else str(o)).to_dict(),
            {"x": {"#attributes": {"#json": "list"}, "": 3}, "y": "1j"},
        )
        with self.assertRaises(TypeError):
            vok.node(object(), default=lambda o: o)  # for ever
        with self.assertRaises(ZeroDivisionError):
            vok.node(object(), default=lambda o: 1 // 0)


class Containers(unittest.TestCase):
    TABLE = [
        {},
        [],
        [1],
        [[]],
        [[], {}],
        {"a": []},
        {"a": {}},
        {"a": [1]},
        {"a": [[]]},
        {"a": [{}]},
        {"a": [[1], [2, [3]]]},
        {"a": ["x\0y"]},
        {"a": [None]},
        {"": 1, "ä": 2},
        {"##value": 1, "###attributes": 2, "#type": 3},
        {"a": {"#attributes": {"lang": "en"}, "#value": 12.5}},
        {"a": {"#attributes": {"lang": "en"}, "b": [1, 2]}},
        {"a": {"#attributes": {"lang": "en"}}},
        {"a": [{"#attributes": {"lang": "en"}, "#value": b"x"}]},
        {"#attributes": {"k": "v"}, "a": 1},
        {"#attributes": {"k": "v"}, "#value": b"x"},
        5,
    ]

    def test_they_come_back(self):
        for value in self.TABLE:
            with self.subTest(value=value):
                self.assertEqual(vok.node(value).to_dict(), value)
                if not str(value).count("#type"):  # a word of JSON
                    again = vok.loads(vok.dumps(value, form="json"), form="json")
                    self.assertEqual(again.to_dict(), value)
                for form in ("xml", "dgraph", "dump"):
                    self.assertEqual(vok.loads(vok.dumps(value, form=form)).to_dict(), value, form)

    def test_they_are_what_json_makes_of_the_same(self):
        rng = random.Random(1)
        for _ in range(500):
            value = {"top": random_object(rng)}
            text = json.dumps(value)
            if '"#type"' in text:
                continue
            tree = vok.loads(text.encode())
            self.assertEqual(tree.to_dict(), json.loads(text), text)
            self.assertEqual(vok.hash(vok.node(value)), vok.hash(tree), text)
            self.assertEqual(vok.node(tree.to_dict()).to_dict(), value)

    def test_runs_and_single_ones(self):
        doc = vok.node({"order": [{"id": 1}]})
        self.assertEqual(doc.to_dict(), {"order": [{"id": 1}]})
        doc.add("order", {"id": 2})
        self.assertEqual(doc.to_dict(), {"order": [{"id": 1}, {"id": 2}]})
        doc["order"][1].delete()
        self.assertEqual(doc.to_dict(), {"order": {"id": 1}})
        for change, want in [
            (lambda d: d["a"][0].copy_to(d), {"a": [[1], [1]], "b": "x\0y", "c": {}, "d": [7]}),
            (lambda d: setattr(d["b"], "value", b"z"), {"a": [[1]], "b": b"z", "c": {}, "d": [7]}),
            (lambda d: d["d"].one().move_to(d["c"].one()), {"a": [[1]], "b": "x\0y", "c": {"d": [7]}}),
            (lambda d: d["d"].one().rename("a"), {"a": [[1], 7], "b": "x\0y", "c": {}}),
            (lambda d: d["a"].one().clear(), {"a": [None], "b": "x\0y", "c": {}, "d": [7]}),
            (lambda d: d["a"].one().add("", 2), {"a": [[1, 2]], "b": "x\0y", "c": {}, "d": [7]}),
        ]:
            doc = vok.node({"a": [[1]], "b": "x\0y", "c": {}, "d": [7]})
            change(doc)
            self.assertEqual(doc.to_dict(), want)
        for old in (5, [5], {"a": 1}, []):
            for new in (6, [6], {"b": 2}, [], {}, [[]]):
                doc = vok.node({"x": old})
                doc["x"] = new
                self.assertEqual(doc.to_dict(), {"x": new}, (old, new))
        empty = vok.node({})
        empty["x"] = {}
        empty["x"].create("y/z", 1)
        empty.attributes["k"] = "v"
        self.assertEqual(empty.to_dict(), {"#attributes": {"k": "v"}, "x": {"y": {"z": 1}}})

    def test_other_containers(self):
        @dataclasses.dataclass
        class Leg:
            ratio: int
            strike: float = 0.5
            names: list = dataclasses.field(default_factory=list)

        self.assertEqual(vok.node(Leg(1)).to_dict(), {"ratio": 1, "strike": 0.5, "names": []})
        self.assertEqual(vok.node({"x": [Leg(1), Leg(2)]})["x"][1]["ratio"].value, 2)
        self.assertEqual(
            vok.node({"x": types.MappingProxyType({"a": (1, 2)})}).to_dict(), {"x": {"a": [1, 2]}}
        )
        self.assertEqual(
            vok.node({"x": bytearray(b"ab"), "y": memoryview(b"cd")}).to_dict(), {"x": b"ab", "y": b"cd"}
        )

    def test_rows_of_numbers(self):
        for row, kind, want in [
            (array.array("i", [1, -2]), "Integer", [1, -2]),
            (array.array("d", [1.5, 2]), "Double", [1.5, 2.0]),
            (array.array("f", [1.5, 2]), "Float", [1.5, 2.0]),
            (array.array("Q", [2**64 - 1, 2**31]), "Long", [2**64 - 1, 2**31]),
            (memoryview(array.array("h", [1, 2, 3, 4]))[::2], "Integer", [1, 3]),
            (array.array("d", [1.5]), "Double", [1.5]),
        ]:
            with self.subTest(row=row):
                doc = vok.node({"x": row})
                self.assertEqual(doc["x"][0].type, kind)
                self.assertEqual(doc.to_dict()["x"], want)
        self.assertEqual(
            vok.node({"x": array.array("d"), "y": [array.array("i", [1, 2])]}).to_dict(),
            {"x": [], "y": [[1, 2]]},
        )
        with self.assertRaises(OverflowError):
            vok.node({"x": array.array("q", [-(2**40)])})


@unittest.skipIf(numpy is None, "NumPy is not installed")
class Arrays(unittest.TestCase):
    def test_columns(self):
        doc = vok.node(
            {
                "o": [
                    {"i": 1, "d": 0.5, "b": True, "l": 2**63, "m": 1},
                    {"i": -2, "d": 1.5, "b": False, "l": vok.Long(1), "m": 2**31},
                ]
            }
        )
        for name, dtype, want in [
            ("i", "int32", [1, -2]),
            ("d", "float64", [0.5, 1.5]),
            ("b", "bool", [True, False]),
            ("l", "uint64", [2**63, 1]),
            ("m", "int64", [1, 2**31]),
        ]:
            column = doc["o"].array(name)
            self.assertEqual((column.dtype.name, column.tolist()), (dtype, want))
            self.assertEqual(vok.array(list(doc["o"]), f"./{name}").tolist(), want)
        doc.create("/o[3]/i", 9)
        self.assertEqual(doc["o"].array("i").tolist(), [1, -2, 9])
        doc["o"][2].delete()
        column[0] = 5  # its own
        self.assertEqual(vok.array(doc.find("//i"), dtype="float32").tolist(), [1.0, -2.0])
        with self.assertRaisesRegex(TypeError, "no number: Tree"):
            doc["o"].array()
        with self.assertRaises(KeyError):
            doc["o"].array("nothing")
        doc["o"][0]["i"] = 2**63
        doc["o"][1]["i"] = 0.5
        with self.assertRaisesRegex(TypeError, "no array holds"):
            doc["o"].array("i")

    def test_arrays_are_stored(self):
        doc = vok.node(
            {
                "x": numpy.arange(3, dtype="float64"),
                "s": numpy.float32(0.5),
                "t": numpy.bool_(True),
                "n": numpy.int64(7),
                "b": numpy.frombuffer(b"ab", "uint8"),
            }
        )
        self.assertEqual(doc.to_dict(), {"x": [0.0, 1.0, 2.0], "s": 0.5, "t": True, "n": 7, "b": b"ab"})
        self.assertEqual(doc["s"].type, "Float")


if __name__ == "__main__":
    unittest.main()
