# SPDX-License-Identifier: MIT
"""Files: what their names ask for, and how they take their place."""

import os
import stat
from contextlib import contextmanager

WRAPPINGS = ("plain", "zlib", "gzip", "zip")
FORMS = {".xml": "xml", ".dgraph": "dgraph", ".dg": "dgraph", ".dump": "dump", ".json": "json"}


def path_of(path):
    """The text of a path, as the library takes it."""
    text = os.fsdecode(path)
    if not text or "\0" in text:
        raise ValueError("a path that is empty, or has a NUL in it")
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


@contextmanager
def replacing(path):
    """The name of a file to be written that then takes the place of another one, or goes away.

    Links stay, and what they lead to is replaced; what is no regular file is written directly.
    """
    path = os.path.realpath(path)
    try:
        before = os.stat(path)
    except FileNotFoundError:
        before = None
    if before is not None and not stat.S_ISREG(before.st_mode):
        yield path
        return
    beside, made = None, None
    for number in range(1 << 20):
        beside = os.path.join(os.path.dirname(path), f".vok-{os.getpid()}-{number}")
        try:
            made = os.open(beside, os.O_CREAT | os.O_EXCL | os.O_WRONLY, 0o666)
            break
        except FileExistsError:
            continue
    if made is None:
        raise FileExistsError(beside)
    os.close(made)
    try:
        if before is not None:
            os.chmod(beside, stat.S_IMODE(before.st_mode))
        yield beside
        os.replace(beside, path)
    except BaseException:
        os.unlink(beside)
        raise
