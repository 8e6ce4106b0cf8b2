# SPDX-License-Identifier: MIT
"""What is written about the package: examples run, stubs name what there is."""

import ast
import doctest
import os
import re
import tempfile
import unittest

import vok

DOCS = os.path.join(os.path.dirname(__file__), "..", "..", "docs")
STUBS = os.path.join(os.path.dirname(vok.__file__), "__init__.pyi")


def documented():
    yield "vok", vok.__doc__
    for name in vok.__all__:
        thing = getattr(vok, name)
        yield name, thing.__doc__
        if isinstance(thing, type):
            for member, value in vars(thing).items():
                if not member.startswith("_"):
                    yield f"{name}.{member}", value.__doc__ if hasattr(value, "__doc__") else None


class Documentation(unittest.TestCase):
    def test_examples_in_docstrings(self):
        runner, parser = doctest.DocTestRunner(verbose=False), doctest.DocTestParser()
        count = 0
        for name, text in documented():
            if text and ">>>" in text:
                runner.run(parser.get_doctest(text, {"vok": vok}, name, None, 0))
                count += 1
        self.assertGreater(count, 15)
        self.assertEqual(runner.failures, 0)

    def test_everything_has_a_docstring(self):
        self.assertEqual([name for name in vok.__all__ if not getattr(vok, name).__doc__], [])

    def test_the_guide(self):
        """The code blocks of each page run one behind the other, in a folder of their own."""
        for page in ("python.md", "large-data.md"):
            if not os.path.exists(os.path.join(DOCS, page)):
                continue
            with open(os.path.join(DOCS, page), encoding="utf-8") as file:
                blocks = re.findall(r"```python\n(.*?)```", file.read(), re.S)
            self.assertTrue(blocks)
            before = os.getcwd()
            with tempfile.TemporaryDirectory() as folder:
                os.chdir(folder)
                try:
                    names = {}
                    for number, block in enumerate(blocks):
                        with self.subTest(page=page, block=block):
                            if ">>>" in block:
                                runner = doctest.DocTestRunner(verbose=False, optionflags=doctest.ELLIPSIS)
                                runner.run(
                                    doctest.DocTestParser().get_doctest(
                                        block, names, f"{page}-{number}", None, 0
                                    ),
                                    clear_globs=False,
                                )
                                names = dict(names)
                                self.assertEqual(runner.failures, 0)
                            else:
                                exec(compile(block, f"{page}-{number}", "exec"), names)
                finally:
                    os.chdir(before)

    def test_stubs(self):
        with open(STUBS, encoding="utf-8") as file:
            tree = ast.parse(file.read())
        stubs = {node.name: node for node in tree.body if isinstance(node, (ast.ClassDef, ast.FunctionDef))}
        self.assertEqual([name for name in vok.__all__ if name not in stubs], [])
        for name in ("Node", "Run", "Limits", "records", "Report", "Difference", "Conflict", "Link"):
            told = {n.name for n in stubs[name].body if isinstance(n, ast.FunctionDef)}
            told |= {n.target.id for n in stubs[name].body if isinstance(n, ast.AnnAssign)}
            there = {member for member in vars(getattr(vok, name)) if not member.startswith("_")}
            self.assertEqual(there - told, set(), name)
            self.assertEqual(
                {t for t in told if not hasattr(getattr(vok, name), t)} - {"__buffer__"}, set(), name
            )


if __name__ == "__main__":
    unittest.main()
