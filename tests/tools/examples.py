#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""examples.py VOK FOLDER: runs the examples in the help of every command; none may be refused, and each command has one."""
import os
import pathlib
import re
import shutil
import subprocess
import sys

vok, folder = map(pathlib.Path, sys.argv[1:3])
vok = vok.resolve()
environment = dict(os.environ, PATH=f'{vok.parent}:{os.environ["PATH"]}', LC_ALL='C.UTF-8')


def run(command):
    return subprocess.run(['bash', '-c', command], cwd=folder, env=environment, stdin=subprocess.DEVNULL,
                          capture_output=True, text=True, timeout=60)


def prepare():
    """What the examples speak of."""
    shutil.rmtree(folder, ignore_errors=True)
    folder.mkdir(parents=True)
    (folder / 'people.csv').write_text('name;born\nAda;1815-12-10\n"Grace ""Amazing""";1906-12-09\n')
    order = '<order id="{}" state="open" time="9"><price>{}</price><note>n</note></order>'
    orders = '<orders>' + ''.join(order.format(i, i + 0.5) for i in range(4, 10)) + '<archive/></orders>'
    for name in ('orders', 'old', 'base', 'mine'):
        (folder / f'{name}.xml').write_text(orders)
    for name in ('new', 'yours'):
        (folder / f'{name}.xml').write_text(orders.replace('<price>7.5', '<price>8'))
    run('vok convert orders.xml orders.dgraph; vok convert orders.xml orders.dgraph.gz; vok convert new.xml new.dgraph;'
        'vok diff old.xml new.xml -o changes.xml; vok zip add archive.zip orders.xml')
    whole = (folder / 'orders.dgraph').read_bytes()
    (folder / 'damaged.dgraph').write_bytes(whole[:200] + b'\xff\xff\xff\x7f' + whole[204:] + bytes(0x1a40))


prepare()
faults = []
verbs = run('vok complete -- ""').stdout.split()
count = 0
for verb in [v for v in verbs if v != 'zip'] + ['zip list', 'zip test', 'zip extract', 'zip add']:
    text = run(f'vok {verb} --help').stdout
    examples = re.findall(r'^(?:Example:| {8}) (vok .*)$', text, re.M)
    if not any(e.startswith(f'vok {verb}') for e in examples):
        faults.append(f'vok {verb} --help has no example')
    for example in examples:
        prepare()
        done = run(example)
        count += 1
        if done.returncode not in (0, 1):
            faults.append(f'{example}: {done.returncode}, {done.stderr}')
print('\n'.join(faults + [f'{count - len(faults)} passed, {len(faults)} failed']))
sys.exit(bool(faults))
