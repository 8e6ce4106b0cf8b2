# SPDX-License-Identifier: MIT
"""What Python answers: for each line FILE, depth limit, PATH of the file that is named, a line."""
import sys

import vok


def line(file, depth, path):
    limits = vok.Limits(depth=depth) if depth else vok.Limits()
    try:
        doc = vok.load(file, limits=limits)
        found = [f'{doc.node_count} {vok.hash(doc)}']
        found += [f'{node.path} {node.type} {vok.hash(node)}' for node in doc.find(path)]
        return ' | '.join(found)
    except vok.Error as e:
        return f'error: {e.text} @ {e.offset or 0} {e.line or 0} {e.column or 0} {e.path or ""}'


for text in open(sys.argv[1], encoding='utf-8'):
    name, most, where = text.rstrip('\n').split('\t')
    print(line(name, int(most), where))
