# SPDX-License-Identifier: MIT
"""Nodes: finding, editing, and everything that may outlive what it belongs to."""

import copy
import gc
import os
import pickle
import random
import unittest

import vok

CALLS = int(os.environ.get("VOK_RANDOM_CALLS", "4000"))


def sample():
    return vok.node(
        {"order": [{"id": n, "price": n / 2} for n in range(3)], "blob": b"bytes", "note": None},
        name="orders",
    )


class Finding(unittest.TestCase):
    def test_successors(self):
        doc = sample()
        self.assertEqual([n.name for n in doc], ["blob", "note", "order", "order", "order"])
        self.assertEqual((len(doc), doc.names(), bool(vok.node(None))), (5, ["blob", "note", "order"], True))
        self.assertEqual([o["id"].value for o in doc["order"]], [0, 1, 2])
        self.assertEqual([o["id"].value for o in doc["order"][::-1]], [2, 1, 0])
        self.assertEqual((doc["order"][-1]["id"].value, doc[-1].path, doc[1].name), (2, "/order[2]", "note"))
        self.assertIn("order", doc)
        self.assertNotIn("nothing", doc)
        self.assertIn(doc["order"][1], doc["order"])
        for wrong in (3, -4, 10**30):
            with self.assertRaises((IndexError, TypeError)):
                doc["order"][wrong]
        with self.assertRaisesRegex(KeyError, 'no successor named "nothing"'):
            doc["nothing"]
        with self.assertRaisesRegex(vok.Error, "not unique"):
            doc["order"].value
        self.assertEqual((doc["order"][2].get("id"), doc.get("nothing"), doc.get("nothing", 5)), (2, None, 5))
        with self.assertRaisesRegex(vok.Error, "not unique"):
            doc.get("order")
        self.assertFalse(hasattr(doc["blob"], "no_such_attribute"))

    def test_places(self):
        order = sample()["order"][1]
        self.assertEqual(
            (order.path, order.depth, order.parent.name, order.root.id), ("/order[1]", 1, "orders", 0)
        )
        self.assertEqual((order.next.path, order.previous.path), ("/order[2]", "/order[0]"))
        self.assertIsNone(order.root.parent)
        self.assertIsNone(order.next.next)
        self.assertEqual({order: 1}[order.root["order"][1]], 1)
        self.assertNotEqual(order, sample()["order"][1])
        self.assertNotEqual(order, None)
        self.assertEqual(repr(order), "<Node Tree at /order[1]>")

    def test_paths(self):
        doc = sample()
        self.assertEqual([n.value for n in doc.find("//id")], [0, 1, 2])
        self.assertEqual(doc.find_first("/order[2]/id").value, 2)
        self.assertIsNone(doc.find_first("/order[9]"))
        self.assertEqual(doc["order"][1].find("../note")[0].path, "/note[0]")
        with self.assertRaises(vok.Error) as caught:
            doc.find("/order[")
        self.assertTrue(caught.exception.where)
        with self.assertRaises(vok.LimitError):
            doc.find("//*", limits=vok.Limits(path_steps=1))
        with self.assertRaises(ValueError):
            doc.find("a\0b")


class Editing(unittest.TestCase):
    def test_values_and_successors(self):
        doc = sample()
        doc["order"][0]["price"] = 9.5
        doc["note"] = "new"
        doc["more"] = {"x": [1, 2]}
        self.assertEqual(doc["more"]["x"][1].value, 2)
        doc["more"] = 5
        del doc["blob"]
        self.assertEqual(
            doc.to_dict(),
            {
                "order": [{"id": 0, "price": 9.5}, {"id": 1, "price": 0.5}, {"id": 2, "price": 1.0}],
                "note": "new",
                "more": 5,
            },
        )

    def test_table(self):
        for edit, want in [
            (lambda d: d.add("b", 3), {"a": [1, 2], "b": 3}),
            (lambda d: d.add("a", 3), {"a": [1, 2, 3]}),
            (lambda d: d.add("a", [8, 9], 1), {"a": [1, 8, 9, 2]}),
            (lambda d: d.add("c", {"x": [1]}), {"a": [1, 2], "c": {"x": [1]}}),
            (lambda d: d.add("c", d["a"][1]), {"a": [1, 2], "c": 2}),
            (lambda d: d.add("c", d), {"a": [1, 2], "c": {"a": [1, 2]}}),
            (lambda d: d["a"][0].delete(), {"a": 2}),
            (lambda d: d.__delitem__("a"), None),
            (lambda d: d["a"].__delitem__(slice(0, 1)), {"a": 2}),
            (lambda d: d["a"].__setitem__(1, 7), {"a": [1, 7]}),
            (lambda d: d["a"][1].rename("b"), {"a": 1, "b": 2}),
            (lambda d: d["a"][1].rename("a", 0), {"a": [2, 1]}),
            (lambda d: d["a"][0].move_to(d, 1), {"a": [2, 1]}),
            (lambda d: d["a"][0].copy_to(d), {"a": [1, 2, 1]}),
            (lambda d: d.create("/b/c[0]", 5), {"a": [1, 2], "b": {"c": 5}}),
            (lambda d: d.add("#value", 3), {"a": [1, 2], "##value": 3}),
            (lambda d: d.add("##value", [3, 4]), {"a": [1, 2], "###value": [3, 4]}),
            (lambda d: d["a"].__delitem__(slice(None)), None),
            (lambda d: d.clear(), None),
            (lambda d: (d.clear(), d.add("x")), {"x": None}),
        ]:
            doc = vok.node({"a": [1, 2]})
            edit(doc)
            self.assertEqual(doc.to_dict(), want)

    def test_between_trees(self):
        a, b = sample(), vok.node({})
        moved = a["order"][1].move_to(b)
        self.assertEqual(
            (moved.path, len(a["order"]), b.to_dict()), ("/order[0]", 2, {"order": {"id": 1, "price": 0.5}})
        )
        clone = a.clone()
        clone["note"] = "x"
        self.assertIsNone(a["note"].value)

    def test_errors_are_those_of_the_library(self):
        doc = sample()
        for call, text in [
            (lambda: doc.delete(), "no predecessor"),
            (lambda: doc.move_to(doc["note"].one()), "no predecessor"),
            (lambda: doc["order"][0].move_to(doc["order"][0]["id"].one()), "wrong data type|outer structure"),
            (lambda: doc["blob"].add("x", 1), "wrong data type"),
            (lambda: setattr(doc, "value", 5), "wrong data type"),
            (lambda: doc.create("//x"), "invalid character"),
            (lambda: doc.create("/order[0]", 5), "wrong data type"),
            (lambda: doc.__setitem__("order", 5), "not unique"),
            (lambda: setattr(doc["note"].one(), "value", sample()), "wrong data type"),
            (lambda: doc.attributes.__setitem__("", "x"), "unallowed attribute"),
        ]:
            before = vok.hash(doc)
            with self.assertRaisesRegex(vok.Error, text):
                call()
            self.assertEqual(vok.hash(doc), before, text)

    def test_what_cannot_be_stored_changes_nothing(self):
        doc = sample()
        before = vok.hash(doc)
        for change in (
            lambda: doc.__setitem__("note", {"x": object()}),
            lambda: doc.__setitem__("note", object()),
            lambda: doc.__setitem__("new", object()),
            lambda: doc.create("/new", {}),
            lambda: doc.create("/new", object()),
            lambda: doc.add("new", doc["note"].one(), "last"),
            lambda: doc.add("order", [1, 2, object()]),
            lambda: doc.add("order", 1, -1),
            lambda: setattr(doc["note"], "value", object()),
        ):
            with self.assertRaises((TypeError, ValueError, RuntimeError)):
                change()
            self.assertEqual(vok.hash(doc), before)

    def test_placeholders(self):
        doc = vok.node({})
        doc.create("/a[2]", 5)
        self.assertEqual(
            ([n.value for n in doc["a"]], len(doc["a"]), doc["a"][0].value, doc["a"].value), ([5], 1, 5, 5)
        )
        self.assertEqual((doc.find("/a[2]")[0].value, doc.to_dict()), (5, {"a": 5}))
        for form in ("dgraph", "dump", "json", "xml"):
            again = vok.loads(vok.dumps(doc, form=form))
            self.assertEqual((len(again["a"]), again["a"][-1].value), (1, 5), form)
        doc.shrink()
        self.assertEqual(doc["a"].value, 5)

    def test_attributes(self):
        doc = vok.node(None)
        doc.attributes.update(b="2", a="ä")
        self.assertEqual(list(doc.attributes.items()), [("a", "ä"), ("b", "2")])
        del doc.attributes["a"]
        self.assertEqual(
            (doc.attributes.get("a"), len(doc.attributes), doc.attributes.pop("b")), (None, 1, "2")
        )
        with self.assertRaises(KeyError):
            del doc.attributes["a"]
        with self.assertRaises(TypeError):
            doc.attributes["n"] = 5
        with self.assertRaises(ValueError):
            doc.attributes["n"] = "a\0b"

    def test_links(self):
        doc = vok.node({"a": 1, "b": None})
        doc["b"].value = doc["a"].one()
        self.assertEqual(doc["b"].value, doc["a"].one())
        doc["a"].one().delete()
        self.assertIsNone(doc["b"].value)
        self.assertEqual(doc.to_dict(), {"b": vok.Link()})


class Lifetimes(unittest.TestCase):
    def test_what_outlives_the_root(self):
        doc = sample()
        node, run, iterator, attributes, view = (
            doc["order"][1],
            doc["order"],
            iter(doc),
            doc.attributes,
            memoryview(doc["blob"].one()),
        )
        del doc
        gc.collect()
        self.assertEqual(
            (node["id"].value, len(run), next(iterator).name, dict(attributes), bytes(view)),
            (1, 3, "blob", {}, b"bytes"),
        )

    def test_bytes_without_a_copy(self):
        doc = sample()
        view = memoryview(doc["blob"].one())
        self.assertTrue(view.readonly)
        part = view[1:3]
        view.release()
        for change in (
            lambda: doc.add("x", 1),
            lambda: doc["blob"].one().delete(),
            doc.shrink,
            doc.clear,
            lambda: setattr(doc["blob"], "value", b"longer than it was"),
            lambda: doc.create("/y"),
            lambda: doc.attributes.__setitem__("a", "b"),
            lambda: setattr(doc, "name", "x"),
            lambda: doc.__delitem__("order"),
            lambda: sample()["note"].one().move_to(doc),
            lambda: doc["order"][0].move_to(vok.node(None)),
        ):
            with self.assertRaises(BufferError):
                change()
        self.assertEqual(bytes(part), b"yt")
        self.assertEqual(doc.clone()["blob"].value, b"bytes")
        part.release()
        doc["blob"] = b"new"
        with self.assertRaisesRegex(BufferError, "no Binary"):
            memoryview(doc["note"].one())

    def test_deleted_nodes(self):
        doc = sample()
        order, price = doc["order"][0], doc["order"][0]["price"].one()
        run = order["price"]
        order.delete()
        for node in (order, price):
            self.assertFalse(node.alive)
            self.assertEqual(repr(node), "<deleted Node>")
            for use in (
                lambda n: n.value,
                lambda n: n.to_dict(),
                lambda n: n.add("x", 1),
                lambda n: n.path,
                len,
                list,
                lambda n: n.find("//*"),
                lambda n: n.delete(),
                pickle.dumps,
                lambda n: n.copy_to(doc),
                vok.hash,
                lambda n: dict(n.attributes),
                lambda n: setattr(n, "value", 1),
                lambda n: memoryview(n),
            ):
                with self.assertRaises((vok.Error, BufferError)):
                    use(node)
        with self.assertRaises(vok.Error):
            run.value
        before = doc["order"][0]
        doc.shrink()
        with self.assertRaisesRegex(vok.Error, "taken anew"):
            before.value
        self.assertEqual([o["id"].value for o in doc["order"]], [1, 2])

    def test_changes_during_iteration(self):
        doc = sample()
        for order in doc["order"]:
            order.add("total", 5)
            doc.add("order", {"id": 9})
        self.assertEqual(len(doc["order"]), 6)
        seen = []
        with self.assertRaises(vok.Error):
            for order in doc["order"]:
                seen.append(order["id"].value)
                del doc["order"]
        self.assertEqual(seen, [0])
        with self.assertRaises(vok.Error):
            for child in doc:
                child.root.shrink()
                child.path

    def test_pickles_and_copies(self):
        doc = sample()
        doc["order"][1].attributes["k"] = "v"
        doc["order"][1]["see"] = doc["order"][1]["id"].one()
        for node in (doc, doc["order"][1], doc["blob"].one()):
            for again in (pickle.loads(pickle.dumps(node)), copy.copy(node), copy.deepcopy(node)):
                self.assertTrue(vok.equal(node, again))
                self.assertEqual((again.path, again.name), ("/", node.name))
        error = pickle.loads(pickle.dumps(vok.LoadError("x", offset=5, where=["f"])))
        self.assertEqual((error.offset, error.where, error.text), (5, ("f",), "x"))

    def test_random_calls(self):
        """Whatever is done in whatever order ends in a value or an error."""
        rng = random.Random(CALLS)
        docs = [sample(), vok.node({})]
        kept = []
        names = ["a", "b", "order", "", "ä"]
        for _ in range(CALLS):
            node = rng.choice(kept) if kept and rng.random() < 0.6 else rng.choice(docs)
            other = rng.choice(kept + docs)
            name = rng.choice(names)
            call = rng.choice(
                [
                    lambda: node.add(
                        name, rng.choice([1, "x", b"bytes", {"a": [1, {"b": 2}]}, [1, 2], None])
                    ),
                    lambda: node.add(name, other) if len(kept) < 50 else None,
                    lambda: node.__setitem__(name, rng.choice([1, "text" * 10, other])),
                    lambda: node.__delitem__(name),
                    lambda: node.delete(),
                    lambda: node.clear(),
                    lambda: node.to_dict(),
                    lambda: node.move_to(other),
                    lambda: node.rename(name, rng.randrange(3)),
                    lambda: list(node),
                    lambda: node.create(rng.choice(["a/b", "/order[3]", "b[1]/a"])),
                    lambda: node.find("//*")[-1:],
                    lambda: node.shrink() if rng.random() < 0.1 else None,
                    lambda: memoryview(node),
                    lambda: node[name][0],
                    lambda: node.attributes.__setitem__("k", "v"),
                    lambda: node.value,
                    lambda: vok.hash(node),
                    lambda: pickle.loads(pickle.dumps(node)),
                    lambda: vok.diff(node, other),
                    lambda: node.parent,
                ]
            )
            try:
                made = call()
            except (vok.Error, BufferError, TypeError):
                continue
            kept += [
                n
                for n in (made if isinstance(made, list) else [made])
                if isinstance(n, (vok.Node, memoryview))
            ]
            kept = [
                n
                for n in rng.sample(kept, min(len(kept), 30))
                if isinstance(n, vok.Node) or rng.random() < 0.5
            ]
            kept = [n if isinstance(n, vok.Node) else bytes(n) and docs[0] for n in kept]
            if len(docs[0].find("//*")) > 500:
                docs[0] = sample()


if __name__ == "__main__":
    unittest.main()
