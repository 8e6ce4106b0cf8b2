#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""german.py TOOLS: all that the program says has its German, in order and with the same values; and nothing else has."""
import pathlib
import re
import sys

TEXT = r'"((?:[^"\\]|\\.)*)"'
folder = pathlib.Path(sys.argv[1])
whole = lambda s: re.sub(r'"\s*\n\s*"', '', s)  # texts in pieces
pairs = re.findall(r'\{' + TEXT + r',\s*' + TEXT + r'\}', whole((folder / 'german.cpp').read_text(encoding='utf-8')))
sources = ''.join(p.read_text(encoding='utf-8') for p in sorted(folder.glob('*.cpp')) if p.name not in ('german.cpp', 'say.cpp'))
sources = whole(sources)
said = set(re.findall(r'\bSay\(\s*' + TEXT, sources))
# What functions say that are given it.
for call in re.findall(r'\b(?:o\.Add|TellCount|RaiseAt)\(([^;]*);', sources):
    said |= set(re.findall(TEXT, call))
english = [e for e, _ in pairs]
plain = lambda s: s.replace('\\"', '"').encode()
faults = [f'no German for: {s}' for s in sorted(said - set(english))]
faults += [f'never said: {s}' for s in english if s not in said]
faults += [f'out of order: {b}' for a, b in zip(english, english[1:]) if plain(a) >= plain(b)]
faults += [f'other values: {e}' for e, g in pairs if sorted(re.findall(r'%\d', e)) != sorted(re.findall(r'%\d', g))]
print('\n'.join(faults + [f'{len(pairs)} passed, {len(faults)} failed']))
sys.exit(bool(faults))
