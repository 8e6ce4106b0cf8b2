# SPDX-License-Identifier: MIT
"""Documents of every form and wrapping, on disk, in memory and through file objects."""

import contextlib
import gzip
import io
import os
import stat
import tempfile
import unittest
import zipfile
import zlib

import vok

OBJECT = {"order": [{"id": 7, "tags": ["a"]}, {"id": 8}], "blob": b"\0\1", "text": "größe"}


class Folder(unittest.TestCase):
    def setUp(self):
        self._folder = tempfile.TemporaryDirectory()
        self.addCleanup(self._folder.cleanup)

    def path(self, name):
        return os.path.join(self._folder.name, name)

    def names(self):
        return sorted(os.listdir(self._folder.name))


class Files(Folder):
    def test_endings_tell(self):
        for name, start in [
            ("a.xml", b"<?xml"),
            ("a.dgraph", b"DGraphBin"),
            ("a.json", b"{"),
            ("a.dump", None),
            ("a.xml.gz", b"\x1f\x8b"),
            ("a.JSON.GZ", b"\x1f\x8b"),
            ("a.dgraph.zip", b"PK"),
            ("größe.dg", b"DGraphBin"),
        ]:
            vok.dump(OBJECT, self.path(name))
            with open(self.path(name), "rb") as file:
                self.assertTrue(file.read().startswith(start or b""), name)
            self.assertEqual(vok.load(self.path(name)).to_dict(), OBJECT, name)
            with open(self.path(name), "rb") as file:
                self.assertEqual(vok.load(file).to_dict(), OBJECT, name)
        with zipfile.ZipFile(self.path("a.dgraph.zip")) as archive:
            self.assertEqual(archive.namelist(), ["a.dgraph"])
            self.assertEqual(vok.loads(archive.read("a.dgraph")).to_dict(), OBJECT)
        vok.dump(OBJECT, self.path("b.zip"), form="xml")
        with zipfile.ZipFile(self.path("b.zip")) as archive:
            self.assertEqual(archive.namelist(), ["b.xml"])
        with self.assertRaisesRegex(ValueError, "does not tell a form"):
            vok.dump(OBJECT, self.path("c.txt"))

    def test_other_programs_read_what_is_compressed(self):
        plain = vok.dumps(OBJECT)
        self.assertEqual(zlib.decompress(vok.dumps(OBJECT, wrapping="zlib")), plain)
        self.assertEqual(gzip.decompress(vok.dumps(OBJECT, wrapping="gzip")), plain)
        for packed in (zlib.compress(plain), gzip.compress(plain)):
            self.assertEqual(vok.loads(packed).to_dict(), OBJECT)

    def test_files_take_their_place_whole(self):
        path = self.path("a.xml")
        vok.dump({"a": 1}, path)
        os.chmod(path, 0o640)
        os.symlink("a.xml", self.path("link.xml"))
        vok.dump({"a": 2}, self.path("link.xml"))
        self.assertTrue(os.path.islink(self.path("link.xml")))
        self.assertEqual((vok.load(path)["a"].value, stat.S_IMODE(os.stat(path).st_mode)), (2, 0o640))
        with self.assertRaises(vok.Error):
            vok.dump({"a": 3}, path, form="dgraph", version=(9, 9, 9))
        self.assertEqual((vok.load(path)["a"].value, self.names()), (2, ["a.xml", "link.xml"]))
        vok.dump({"a": 1}, "/dev/null", form="xml")
        with self.assertRaises(OSError):
            vok.dump({"a": 1}, self.path("no/such/folder.xml"))

    def test_files_that_are_not_there(self):
        with self.assertRaises(OSError) as caught:
            vok.load(self.path("none.xml"))
        self.assertIsInstance(caught.exception, vok.FileError)
        self.assertEqual(caught.exception.source, self.path("none.xml"))
        for path in ("", "a\0b"):
            with self.assertRaises(ValueError):
                vok.load(path)
        with self.assertRaises(TypeError):
            vok.load(5)
        with self.assertRaises(TypeError):
            vok.loads("text")

    def test_attached_where_they_lie(self):
        place = self.path("a.dump")
        vok.dump(OBJECT, place, attachable=True)
        with open(place, "rb") as file:
            before = file.read()
        one, two = vok.attach(place), vok.attach(place, checked=True)
        one["order"][0]["id"].value = 9
        one.add("more", [1.5, None])
        vok.dump({"other": 1}, place, attachable=True)  # in its place: both keep what they have
        self.assertEqual(two.to_dict(), OBJECT)
        self.assertEqual(one["order"][0]["id"].value, 9)
        self.assertEqual(len(one["order"]), 2)
        vok.dump(OBJECT, self.path("b.dump"))  # loaded
        self.assertEqual(vok.attach(self.path("b.dump")).to_dict(), OBJECT)
        with open(place, "wb") as file:
            file.write(before[:-1])
        with self.assertRaises(vok.LoadError) as raised:
            vok.attach(place)
        self.assertGreater(raised.exception.offset, 0)
        for name in ("none.dump", "."):
            with self.assertRaises(vok.FileError):
                vok.attach(self.path(name))

    def test_versions(self):
        for version in [(1, 0, 0), (1, 2, 0), (1, 3, 0), (2, 0, 0)]:
            stored = vok.dumps({"a": 5}, version=version)
            self.assertEqual(vok.loads(stored)["a"].value, 5)
            self.assertEqual(tuple(stored[9:12]), version)
        doc = vok.loads(vok.dumps({"a": 5}, version=(1, 2, 0)))
        self.assertEqual(doc.user_tag, "DGraphBin 1.2.0")


class Errors(unittest.TestCase):
    def test_places(self):
        for data, text, offset, line, path in [
            (b"<a>\n<b></a>", "corrupted", 7, 2, "/b[0]"),
            (b"", "no XML stream", None, 1, None),
            (b'{"a": [1, nul]}', "invalid JSON", 10, 1, "/a[0]"),
            (b"DGraphBin\x01\x02\x00" + b"\xff" * 40, "", 13, None, None),
            (b"DGraphBin\x07\x02\x00", "wrong version", None, None, None),
            (b"PK\x03\x04", "zip", None, None, None),
            (b"x\x9c\xff\xff", "zip", None, None, None),
        ]:
            with self.subTest(data=data):
                with self.assertRaises(vok.LoadError) as caught:
                    vok.loads(data)
                e = caught.exception
                self.assertIn(text, e.text)
                self.assertTrue(e.where[0].startswith("vok::"))
                if offset is not None:
                    self.assertGreaterEqual(e.offset, offset)
                    self.assertIn(f"byte {e.offset}", str(e))
                self.assertEqual(e.line, line)
                self.assertIsNone(e.source)

    def test_every_document_that_is_cut(self):
        for form in ("xml", "json", "dgraph", "dump"):
            for wrapping in ("plain", "gzip"):
                stored = vok.dumps(OBJECT, form=form, wrapping=wrapping)
                for size in range(len(stored)):
                    try:
                        doc = vok.loads(stored[:size])
                    except vok.Error:
                        continue
                    doc.to_dict()
                    self.assertTrue(form == "dgraph" and wrapping == "plain" or doc.report.complete)

    def test_reports(self):
        doc = vok.loads(b"<a><!-- c --><b/>text</a> behind")
        self.assertEqual(
            (doc.report.comments, doc.report.dropped_texts, doc.report.bytes_left, doc.report.complete),
            (1, 1, 7, False),
        )
        self.assertIsNone(vok.node(None).report)
        self.assertFalse(vok.loads(vok.dumps(OBJECT)[:-1]).report.complete)

    def test_limits(self):
        stored = vok.dumps({"a": ["x" * 100] * 100})
        for limits in (vok.Limits(nodes=10), vok.Limits(depth=1), vok.Limits(text_bytes=10)):
            with self.assertRaises(vok.LimitError) as caught:
                vok.loads(stored, limits=limits)
            self.assertIsInstance(caught.exception, vok.Error)
        with self.assertRaises(vok.LimitError):
            vok.loads(
                zlib.compress(b"<a>" + b" " * 10**6 + b"</a>"), limits=vok.Limits(inflated_bytes=1000)
            )
        limits = vok.Limits.trusted()
        limits.nodes = 5
        self.assertEqual((limits.nodes, repr(vok.Limits(depth=7))), (5, "Limits(depth=7)"))
        with self.assertRaises(TypeError):
            vok.Limits(nothing=5)
        with self.assertRaises(TypeError):
            vok.Limits(nodes=-1)

    def test_bytes_of_others_are_copied(self):
        data = bytearray(vok.dumps(OBJECT))
        self.assertEqual(vok.loads(data).to_dict(), OBJECT)
        data.clear()  # not held
        self.assertEqual(vok.loads(memoryview(b" " + vok.dumps(OBJECT))[1:]).to_dict(), OBJECT)


class FileObjects(unittest.TestCase):
    def test_writing(self):
        for form in ("xml", "json", "dgraph", "dump"):
            for wrapping in ("plain", "zlib", "gzip"):
                out = io.BytesIO()
                vok.dump(OBJECT, out, form=form, wrapping=wrapping)
                self.assertEqual(out.getvalue(), vok.dumps(OBJECT, form=form, wrapping=wrapping))
        with self.assertRaisesRegex(ValueError, "zip archive needs a path"):
            vok.dump(OBJECT, io.BytesIO(), wrapping="zip")

    def test_ones_that_take_little_or_nothing(self):
        class Slow(io.RawIOBase):
            def __init__(self):
                self.taken = bytearray()

            def write(self, data):
                self.taken += data[:3]
                return min(3, len(data))

        slow = Slow()
        vok.dump(OBJECT, slow)
        self.assertEqual(bytes(slow.taken), vok.dumps(OBJECT))
        for wrong in (0, -1, 10**9):
            with self.assertRaisesRegex(OSError, "did not take"):
                vok.dump(OBJECT, type("Wrong", (), {"write": lambda self, data: wrong})())

    def test_what_they_raise_comes_out(self):
        class Failing:
            calls = 0

            def write(self, data):
                self.calls += 1
                raise KeyboardInterrupt("from write")

        for wrapping in ("plain", "gzip"):
            failing = Failing()
            with self.assertRaisesRegex(KeyboardInterrupt, "from write"):
                vok.dump({"x": b"0123456789" * 500000}, failing, wrapping=wrapping)
            self.assertEqual(failing.calls, 1)
        with self.assertRaises(TypeError):
            vok.dump(OBJECT, io.StringIO())

    def test_what_they_do_to_the_tree(self):
        doc = vok.node({"x": ["text"] * 1000})
        seen = []

        class Meddling:
            def write(self, data):
                for change in (lambda: doc.add("y", 1), doc.shrink, doc.clear):
                    with contextlib.suppress(vok.BusyError):
                        change()
                        seen.append(change)
                seen.append(doc["x"][5].value)

        out = Meddling()
        for form in ("xml", "json", "dgraph", "dump"):
            vok.dump(doc, out, form=form)
        self.assertEqual(set(seen), {"text"})
        doc.add("y", 1)


if __name__ == "__main__":
    unittest.main()
