# SPDX-License-Identifier: MIT
"""Files: what their names ask for."""

import errno
import os

WRAPPINGS = ("plain", "zlib", "gzip", "zip")
FORMS = {".xml": "xml", ".dgraph": "dgraph", ".dg": "dgraph", ".dump": "dump", ".json": "json"}


def path_of(path):
    """The text of a path, as the library takes it."""
    text = os.fsdecode(path)
    if not text or "\0" in text:
        raise ValueError("a path that is empty, or has a NUL in it")
    return text


def path_to_write(path):
    """The same; folders that are missing are not made, as nowhere in Python."""
    text = path_of(path)
    if not os.path.isdir(os.path.dirname(os.path.realpath(text))):
        raise FileNotFoundError(errno.ENOENT, os.strerror(errno.ENOENT), text)
    return text


def checked(wrapping):
    if wrapping not in WRAPPINGS:
        raise ValueError("wrapping is " + ", ".join(map(repr, WRAPPINGS)))
    return wrapping


def form_of(path, form, wrapping):
    """Form, wrapping, and the name of the member of an archive."""
    stem, ending = os.path.splitext(os.path.basename(path))
    if wrapping is None:
        wrapping = {".gz": "gzip", ".zip": "zip"}.get(ending.lower(), "plain")
    if ending.lower() not in (".gz", ".zip"):
        stem += ending
    told = FORMS.get(os.path.splitext(stem)[1].lower())
    form = form or told
    if form is None:
        raise ValueError(
            f"{path!r} does not tell a form by its ending (.xml, .dgraph, .dump, .json): give one"
        )
    return form, checked(wrapping), stem if told else f"{stem}.{form}"
