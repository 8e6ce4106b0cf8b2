# SPDX-License-Identifier: MIT
"""Object trees, stored and read back: XML, binary DGraph, JSON and native dumps.

>>> doc = vok.loads(b'<orders><order id="7"><price dt:dt="r8">9.5</price></order></orders>')
>>> doc["order"][0]["price"].value
9.5
>>> doc.to_dict()
{'order': {'#attributes': {'id': '7'}, 'price': 9.5}}
"""

import os as _os

from ._types import (
    BusyError,
    Char,
    Conflict,
    Date,
    Difference,
    Error,
    FileError,
    Float,
    LimitError,
    Link,
    LoadError,
    Long,
    NoMemoryError,
    NotFoundError,
    Quad,
    Report,
)
from ._views import Attributes, Run
from . import _files, _vok
from ._vok import Limits, Node, apply, canonical, diff, equal, hash, merge, node, patch, records

__all__ = [
    "Attributes", "BusyError", "Char", "Conflict", "Date", "Difference", "Error", "FileError",
    "Float", "LimitError", "Limits", "Link", "LoadError", "Long", "NoMemoryError", "Node",
    "NotFoundError", "Quad", "Report", "Run", "apply", "array", "attach", "canonical", "diff", "dump",
    "dumps", "equal", "hash", "load", "loads", "merge", "node", "patch", "records",
]


def load(source, *, form=None, limits=None):
    """The root of the tree in a file: a path, or a file object opened for reading bytes.

    What is compressed or the only member of a zip archive is told by its first bytes, and so is
    the form; form ("xml", "dgraph", "json", "dump") says what it must be. A document that was cut
    short, or has something behind it, is read as far as it goes: `Node.report` tells.

    >>> import io
    >>> vok.load(io.BytesIO(b'{"a": [1, 2]}')).to_dict()
    {'a': [1, 2]}
    """
    if hasattr(source, "read"):
        return loads(source.read(), form=form, limits=limits)
    return _vok._load_file(_files.path_of(source), form or "", limits)


def attach(path, *, checked=False, limits=None):
    """The root of the tree in a dump that was written as attachable, without copying it.

    All processes that attach a file share its pages; what is changed is this process' own. Replace
    such a file, as `dump` does, and never write into it. With checked=True it is not verified, and
    takes no time, however large it is: for what this program has attached before, and nobody else
    can have changed. Other dumps are loaded.

    >>> import os, tempfile
    >>> folder = tempfile.TemporaryDirectory()
    >>> path = os.path.join(folder.name, "numbers.dump")
    >>> vok.dump({"a": [1, 2]}, path, attachable=True)
    >>> vok.attach(path).to_dict()
    {'a': [1, 2]}
    """
    return _vok._attach_file(_files.path_of(path), checked, limits)


def loads(data, *, form=None, limits=None):
    """The root of the tree in a document in memory: bytes, or anything that gives bytes.

    bytes are read where they are; of others a copy is made first, which nobody can change.
    """
    if isinstance(data, str):
        raise TypeError("a document is bytes, not str")
    return _vok._load_bytes(data if type(data) is bytes else bytes(memoryview(data)), form or "", limits)


def dump(
    value,
    target,
    *,
    form=None,
    wrapping=None,
    name=None,
    version=(1, 3, 0),
    compact=False,
    attachable=False,
    default=None,
    marks=True
):
    """Writes a node with all below it, or whatever `node` takes, to a file: a path or a file object.

    form ("xml", "dgraph", "json", "dump") and wrapping ("plain", "zlib", "gzip", "zip") are told by
    the endings of a path unless they are given. A file takes its place whole: if writing fails,
    what was there stays. A dump that is attachable is for `attach`.

    >>> import io
    >>> out = io.BytesIO()
    >>> vok.dump({"a": [1, 2]}, out, form="json", compact=True)
    >>> out.getvalue()
    b'{"a":[1,2]}\\n'
    """
    top = _top(value, name, default, marks)
    if hasattr(target, "write"):
        packed = _vok._Form(form or "dgraph", _files.checked(wrapping or "plain"), "", compact, attachable)
        return _vok._save_object(top, target, packed, version)
    path = _files.path_to_write(target)
    form, wrapping, member = _files.form_of(path, form, wrapping)
    _vok._save_file(top, path, _vok._Form(form, wrapping, member, compact, attachable), version)


def dumps(
    value,
    *,
    form="dgraph",
    wrapping="plain",
    name=None,
    version=(1, 3, 0),
    compact=False,
    default=None,
    marks=True
):
    """The same as bytes; a zip archive has to be a file.

    >>> vok.dumps({"a": 1}, form="json", compact=True)
    b'{"a":1}\\n'
    """
    packed = _vok._Form(form, _files.checked(wrapping), "", compact, False)
    return _vok._save_bytes(_top(value, name, default, marks), packed, version)


def array(nodes, path=None, *, dtype=None):
    """The values of nodes - a run, a list - as a NumPy array; with a path, those of the first node at it, seen from each.

    Integers become int32, Booleans bool, Longs uint64, reals and dates float64; what is mixed
    becomes the type that holds all of it exactly. Other values raise TypeError.
    """
    if isinstance(nodes, Run):
        data, code = _vok._column_of_run(nodes._node, nodes._name, path)
    else:
        data, code = _vok._column(nodes, path)
    try:
        import numpy
    except ImportError:
        raise ImportError("vok.array needs NumPy (python3-numpy)") from None
    made = numpy.frombuffer(data, dtype=code)
    return made if dtype is None else made.astype(dtype)


def _top(value, name, default, marks):
    if isinstance(value, Run):
        value = value.one()
    if isinstance(value, Node) and name is None:
        return value
    return node(value, name=name, default=default, marks=marks)


def _node_reduce(self):
    # A dump keeps every bit of a tree.
    return _unpickle, (dumps(self, form="dump"),)


def _unpickle(data):
    return loads(data, form="dump")


Node.__reduce__ = _node_reduce

# Tracebacks and pickles know them by the names that programs use.
for _name in __all__:
    if isinstance(globals()[_name], type):
        globals()[_name].__module__ = "vok"
