# SPDX-License-Identifier: MIT
"""Views of a node: the successors of one name, and the attributes."""

from collections.abc import MutableMapping, Sequence

from ._types import NotFoundError


class Run(Sequence):
    """The successors of one name below a node, in their order: a sequence.

    It is a view and holds nothing but the node and the name. Where there is just one, the run
    has its value, attributes and methods as well:

    >>> doc = vok.node({"order": [{"price": 9.5}, {"price": 7.25}]})
    >>> len(doc["order"])
    2
    >>> doc["order"][1]["price"].value
    7.25
    >>> doc["order"].value
    Traceback (most recent call last):
    vok.Error: node is not unique
    """

    __slots__ = ("_node", "_name")

    def __init__(self, node, name):
        self._node = node
        self._name = name

    def __len__(self):
        return self._node._count(self._name)

    def __getitem__(self, key):
        if isinstance(key, str):
            return self.one()[key]
        if isinstance(key, slice):
            return self._node._list(self._name)[key]
        return self._node._nth(self._name, key)

    def __iter__(self):
        return iter(self._node._list(self._name))

    def __setitem__(self, key, value):
        if isinstance(key, str):
            self.one()[key] = value
        else:
            self[key].value = value

    def __delitem__(self, key):
        if isinstance(key, str):
            del self.one()[key]
        else:
            # From the end: those behind a node move down.
            for node in reversed(self[key]) if isinstance(key, slice) else [self[key]]:
                node.delete()

    def __contains__(self, item):
        if isinstance(item, str):
            return item in self.one()
        return any(item == node for node in self)

    def __repr__(self):
        return f"<Run of {len(self)} at {self._node.path} named {self._name!r}>"

    def one(self):
        """The only node of the run. Raises `NotFoundError` for none, "node is not unique" for more."""
        return self._node._one(self._name)

    @property
    def value(self):
        """The value of the only node."""
        return self.one().value

    @value.setter
    def value(self, value):
        self.one().value = value

    def array(self, path=None, dtype=None):
        """The values of its nodes, or of those at a path below each, as a NumPy array: `vok.array`."""
        from . import array

        return array(self, path, dtype=dtype)

    def to_list(self):
        """What `to_dict` gives of each node."""
        return [node.to_dict() for node in self]

    def __getattr__(self, name):
        if name.startswith("_"):
            raise AttributeError(name)
        return getattr(self.one(), name)


class Attributes(MutableMapping):
    """The attributes of a node: names and values are texts.

    >>> doc = vok.node({})
    >>> doc.attributes["lang"] = "en"
    >>> dict(doc.attributes)
    {'lang': 'en'}
    """

    __slots__ = ("_node",)

    def __init__(self, node):
        self._node = node

    def __getitem__(self, name):
        value = self._node._attribute(name)
        if value is None:
            raise NotFoundError(f'no attribute "{name}"', path=self._node.path)
        return value

    def __setitem__(self, name, value):
        self._node._set_attribute(name, value)

    def __delitem__(self, name):
        self[name]
        self._node._set_attribute(name, None)

    def __iter__(self):
        return iter([name for name, _ in self._node._attributes()])

    def __len__(self):
        return len(self._node._attributes())

    def __repr__(self):
        return f"Attributes({dict(self._node._attributes())!r})"
