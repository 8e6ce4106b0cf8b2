# SPDX-License-Identifier: MIT
"""Comparing, patching, merging, hashing: what the library does, handed over as it is."""

import hashlib
import unittest

import vok


def orders(*prices):
    return vok.node({"order": [{"id": n, "price": price} for n, price in enumerate(prices)]})


class Compare(unittest.TestCase):
    def test_differences(self):
        a, b = orders(1, 2, 3), orders(1, 5)
        b.attributes["k"] = "v"
        found = vok.diff(a, b)
        self.assertEqual(
            [(d.what, d.path, d.attribute) for d in found],
            [
                ("attribute", "/", "k"),
                ("value", "/order[1]/price[0]", None),
                ("only in A", "/order[2]", None),
            ],
        )
        self.assertEqual((found[1].a.value, found[1].b.value, found[2].b), (2, 5, None))
        self.assertEqual((found[1].a.root, found[1].b.root), (a, b))
        self.assertEqual(len(vok.diff(a, b, limit=1)), 1)
        self.assertEqual(vok.diff(a, b, limit=0), [])
        self.assertEqual(vok.diff(orders(1.0), orders(1.25), delta=0.5), [])
        self.assertEqual([d.what for d in vok.diff(a, b, ignore=["/@k", "//price"])], ["only in A"])
        with self.assertRaisesRegex(vok.Error, "no path of names"):
            vok.diff(a, b, key="//")

    def test_keys_align(self):
        a = vok.node({"order": [{"id": n} for n in (1, 2, 3)]})
        b = vok.node({"order": [{"id": n} for n in (2, 3)]})
        self.assertEqual([(d.what, d.path) for d in vok.diff(a, b, key="id")], [("only in A", "/order[0]")])

    def test_patches(self):
        a, b = orders(1, 2, 3), orders(1, 7, 3, 4)
        patch = vok.loads(vok.dumps(vok.patch(a, b)))
        before = vok.hash(a)
        self.assertTrue(vok.equal(vok.apply(a, patch), b))
        self.assertEqual(vok.hash(a), before)
        with self.assertRaisesRegex(vok.Error, "does not fit"):
            vok.apply(orders(1, 9, 3), patch)

    def test_merging(self):
        base, a, b = orders(1, 2), orders(5, 2), orders(6, 2)
        merged, conflicts = vok.merge(base, a, b)
        self.assertIsNone(merged)
        self.assertEqual([tuple(c) for c in conflicts], [("/order[0]/price[0]", None, "changed", "changed")])
        for prefer, want in (("a", 5), ("b", 6)):
            self.assertEqual(vok.merge(base, a, b, prefer=prefer)[0]["order"][0]["price"].value, want)
        self.assertEqual(vok.merge(base, orders(5, 2), orders(1, 9))[0].to_dict(), orders(5, 9).to_dict())
        with self.assertRaises(ValueError):
            vok.merge(base, a, b, prefer="c")

    def test_hashes(self):
        doc = orders(1, 2)
        self.assertEqual(
            {vok.hash(vok.loads(vok.dumps(doc, form=form))) for form in ("xml", "json", "dgraph", "dump")},
            {vok.hash(doc)},
        )
        self.assertNotEqual(vok.hash(doc), vok.hash(orders(2, 1)))
        pieces = []
        vok.canonical(vok.node({"x": [b"0123456789" * 20000]}), pieces.append)
        self.assertGreater(len(pieces), 1)
        sha = hashlib.sha256()
        vok.canonical(doc, sha.update)
        self.assertEqual(len(sha.digest()), 32)
        with self.assertRaises(ZeroDivisionError):
            vok.canonical(doc, lambda piece: 1 // 0)
        with self.assertRaises(vok.BusyError):
            vok.canonical(doc, lambda piece: doc.add("x"))
        doc.add("x")


if __name__ == "__main__":
    unittest.main()
