# SPDX-License-Identifier: MIT
"""The package database of a Debian machine: stanzas of "Field: value" lines."""

import codecs
import re

NUMBERS = {"Installed-Size", "Size"}
DEPENDENCIES = {
    "Breaks",
    "Conflicts",
    "Depends",
    "Enhances",
    "Pre-Depends",
    "Provides",
    "Recommends",
    "Replaces",
    "Suggests",
}
BLANKS = " \t\r\n"
SMALLEST, LARGEST = -(2**31), 2**31 - 1


class StatusError(Exception):
    """Says what is wrong and where: "FILE:LINE: reason" or "FILE: reason"."""


def _as_latin1(error):
    # A byte that is no UTF-8 is the Latin-1 character of its value; those behind it are looked at anew.
    return chr(error.object[error.start]), error.start + 1


codecs.register_error("latin1-bytes", _as_latin1)


def read_status_file(path):
    """All packages of a database, as `vok.dump` takes them, and its size in bytes."""
    with open(path, "rb") as file:
        data = file.read()
    return _Parser(path, data.decode("utf-8", "latin1-bytes")).run(), len(data)


class _Parser:
    def __init__(self, path, text):
        self._path = path
        lines = text.split("\n")
        # A line break at the end starts no line.
        self._lines = lines[:-1] if lines[-1] == "" else lines
        self._packages = []
        self._line = 0
        self._start()

    def _start(self):
        self._field, self._value, self._field_line = "", "", 0
        self._name, self._texts, self._numbers, self._relations = "", {}, {}, {}
        self._stanza = False

    def _fail(self, reason, line=None):
        raise StatusError(f"{self._path}:{line or self._line}: {reason}")

    def run(self):
        for line in self._lines:
            self._line += 1
            if "\0" in line:
                self._fail("NUL byte: this is no package database")
            if not line.strip(BLANKS):
                self._end_stanza()
            elif line[0] in " \t":
                if not self._field:
                    self._fail("continuation without a field before it")
                self._value += "\n" + line
            else:
                self._end_field()
                self._start_field(line)
        self._line += 1
        self._end_stanza()
        if not self._packages:
            raise StatusError(f"{self._path}: no packages in it: this is no package database")
        return self._packages

    def _start_field(self, line):
        field, colon, value = line.partition(":")
        if not colon:
            self._fail("expected 'Field: value'")
        self._field = field.strip(BLANKS)
        if not self._field:
            self._fail("field without a name")
        self._value = value.strip(BLANKS)
        self._field_line = self._line

    def _end_field(self):
        field, value = self._field, self._value
        if not field:
            return
        if field == "Package":
            if self._name:
                self._fail("second Package field in a stanza", self._field_line)
            self._name = value
        elif field in NUMBERS:
            if not re.fullmatch("-?[0-9]+", value) or not SMALLEST <= int(value) <= LARGEST:
                self._fail(f"{field} is no number of 32 bits: '{value}'", self._field_line)
            self._numbers[field] = int(value)
        elif field in DEPENDENCIES:
            self._relations[field] = [
                _alternatives(group) for group in value.split(",") if group.strip(BLANKS)
            ]
        else:
            self._texts[field] = value
        self._stanza = True
        self._field = ""

    def _end_stanza(self):
        self._end_field()
        if not self._stanza:
            return
        if not self._name:
            self._fail("stanza without a Package field ends here")
        package = {
            "name": self._name,
            "number": _entries(self._numbers, "value"),
            "relation": _entries(self._relations, "any-of"),
            "text": _entries(self._texts, "value"),
        }
        self._packages.append(_without_empty_lists(package))
        self._start()


def _entries(fields, name):
    """Names of fields are values, so that they need not be known when reading."""
    return [
        _without_empty_lists({name: fields[field], "field": field})
        for field in sorted(fields, key=str.encode)
    ]


def _without_empty_lists(members):
    return {key: value for key, value in members.items() if value != []}


def _alternatives(group):
    """ "libc6:any (>= 2.36) [amd64] | libc7" in its parts; one of them has to be there."""
    group = group.rstrip(BLANKS)
    # Blanks behind the last bar are none of the alternatives.
    return {"package": [_alternative(text.strip(BLANKS)) for text in group.removesuffix("|").split("|")]}


def _alternative(text):
    word = re.match(r"[^ \t\n(\[]*", text)[0]
    text = text[len(word) :].strip(BLANKS)
    name, _, architecture = word.partition(":")
    version = ""
    if text.startswith("("):
        version, _, text = text[1:].partition(")")
        version, text = version.strip(BLANKS), text.strip(BLANKS)
    parts = {"architecture": architecture, "name": name, "rest": text, "version": version}
    return {key: value for key, value in parts.items() if value or key == "name"}
