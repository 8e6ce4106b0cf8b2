# SPDX-License-Identifier: MIT
# Shows trees in gdb: "print root" a tree to a depth, "print node" the path, type and value of a node; texts and arrays
# as what they hold. Needs no debug information of the library, so it works on core files of optimized programs too.
#
#     set vok depth 5      levels below the node, 3 at first; 0 shows the node alone
#     set vok lines 200    lines at most, 50 at first
#
# gdb finds this file by itself where libvok.so is installed and used; for programs that were linked with libvok.a:
# "source /usr/share/vok/gdb/vok.py".
import datetime
import struct

import gdb
import gdb.printing

NONE = 0xFFFFFFFF
TYPES = {0: 'Empty', 1: 'Boolean', 2: 'Integer', 3: 'Char', 4: 'Float', 5: 'Double', 6: 'Date', 7: 'String',
         8: 'Binary', 9: 'Long', 10: 'Quad', 12: 'Link', 13: 'Tree', 15: 'Zombi'}
# Where the parts of a Data_Base stand, in bytes; each is a pointer and a size. They are those of this version of the
# library, on 64-bit systems.
NODES, NAMES, GROUPS, UNSORTED, HEAP, ATTRIBUTE_NAMES, ATTRIBUTE_ARRAYS, ATTRIBUTE_HEADS = (
    544, 1664, 2320, 2352, 2656, 2720, 2888, 2912)
MOST_SCANNED = 1 << 20   # nodes, where successors are not in order yet
MOST_LEVELS = 10000
MOST_TEXT = 200          # bytes of a text


def parameter(name, value, what):
    class Parameter(gdb.Parameter):
        set_doc = 'Set ' + what
        show_doc = 'Show ' + what

        def __init__(self):
            super().__init__('vok ' + name, gdb.COMMAND_DATA, gdb.PARAM_ZUINTEGER)
            self.value = value

        def get_set_string(self):
            return ''

        def get_show_string(self, shown):
            return shown

    return Parameter()


gdb.Command('set vok', gdb.COMMAND_DATA, prefix=True)
gdb.Command('show vok', gdb.COMMAND_DATA, prefix=True)
DEPTH = parameter('depth', 3, 'how many levels of a tree are printed')
LINES = parameter('lines', 50, 'how many lines of a tree are printed')


def read(address, size):
    return bytes(gdb.selected_inferior().read_memory(address, size))


def excerpt(data):
    text = data[:MOST_TEXT].decode('utf-8', 'replace')
    text = ''.join(c if c.isprintable() and c != '\\' else c.encode('unicode_escape').decode() for c in text)
    return '"' + text.replace('"', '\\"') + ('"...' if len(data) > MOST_TEXT else '"')


class Tree:
    """A tree in the memory of the program, read as it is needed. Nothing in it is trusted."""

    def __init__(self, address):
        self.address = address
        self.nodes, self.count = self.array(NODES)
        self.names, self.name_count = self.array(NAMES)
        self.groups, self.group_words = self.array(GROUPS)
        self.heap, self.heap_size = self.array(HEAP)

    def array(self, offset):
        return struct.unpack('<QQ', read(self.address + offset, 16))

    def node(self, id):
        if id >= self.count:
            raise gdb.MemoryError('no node %d' % id)
        key, flags, low, high = struct.unpack('<4I', read(self.nodes + 16 * id, 16))
        above = flags >> 4
        return key, flags & 15, above - 1 if above not in (0, 0xFFFFFFF) else NONE, low, high

    def text_of_key(self, names, count, key):
        if key == 0 or key >= count:
            return ''
        text, _, length = struct.unpack('<QQI', read(names + 24 * key, 20))
        return read(text, min(length, 4096)).decode('utf-8', 'replace')

    def name(self, id):
        return self.text_of_key(self.names, self.name_count, self.node(id)[0])

    def successors(self, id):
        _, type, _, start, size = self.node(id)
        if type != 13 or size == 0:
            return []
        if start != NONE and start + 2 + size <= self.group_words:
            placed, = struct.unpack('<I', read(self.groups + 4 * start, 4))
            if placed == size:
                return list(struct.unpack('<%dI' % size, read(self.groups + 4 * (start + 2), 4 * size)))
        # Some are pending: they are put in order when somebody asks for them.
        end = min(self.count, MOST_SCANNED)
        records = read(self.nodes, 16 * end)
        below = [i for i in range(end) if struct.unpack_from('<I', records, 16 * i + 4)[0] >> 4 == id + 1]
        return sorted(below, key=lambda i: (self.name(i).encode(), i))

    def path(self, id):
        steps = []
        while id != 0 and len(steps) < MOST_LEVELS:
            above = self.node(id)[2]
            if above == NONE:
                return '(removed)'
            key = self.node(id)[0]
            position = 0
            for other in self.successors(above):
                if other == id:
                    break
                position += self.node(other)[0] == key
            steps.append('%s[%d]' % (self.name(id), position))
            id = above
        return '/' + '/'.join(reversed(steps))

    def value(self, id):
        _, type, _, low, high = self.node(id)
        whole = struct.pack('<II', low, high)
        if type == 1:
            return 'true' if low else 'false'
        if type in (2, 3):
            return str(struct.unpack('<i', whole[:4])[0])
        if type in (4, 5):
            return repr(struct.unpack('<d', whole)[0])
        if type == 6:
            seconds = struct.unpack('<d', whole)[0]
            try:
                return (datetime.datetime(1970, 1, 1) + datetime.timedelta(seconds=seconds)).isoformat() + 'Z'
            except (OverflowError, ValueError):
                return repr(seconds)
        if type in (7, 8):
            size = high - 1 if type == 7 else high
            if low + size > self.heap_size:
                return '(no text)'
            data = read(self.heap + low, min(size, MOST_TEXT + 1))
            return excerpt(data) if type == 7 else '%d bytes: %s' % (size, data[:32].hex(' '))
        if type == 9:
            return str(struct.unpack('<Q', whole)[0])
        if type == 10:
            return '%d,%d,%d,%d' % ((high,) + struct.unpack('<3I', read(self.heap + low, 12)))
        if type == 12:
            return self.path(low) if low != NONE else '(nothing)'
        return ''

    def attributes(self, id):
        names, count = self.array(ATTRIBUTE_NAMES)
        heads, size = self.array(ATTRIBUTE_HEADS)
        arrays, _ = self.array(ATTRIBUTE_ARRAYS)
        found = []
        key = struct.unpack('<I', read(heads + 4 * id, 4))[0] if id < size else 0
        while 0 < key < count and len(found) < 1000:
            array, = struct.unpack('<Q', read(arrays + 8 * (key - 1), 8))
            records, records_size = struct.unpack('<QQ', read(array, 16))
            data = read(records, 12 * records_size)
            record = next((r for r in struct.iter_unpack('<3I', data) if r[0] == id), None)
            if record is None:
                break
            if record[1] != NONE:
                end = read(self.heap + record[1], min(MOST_TEXT + 1, self.heap_size - record[1]))
                found.append((self.text_of_key(names, count, key), excerpt(end.split(b'\0')[0])))
            key = record[2]
        return sorted(found)

    def line(self, id, name):
        type = self.node(id)[1]
        words = [name] + ['@%s=%s' % pair for pair in self.attributes(id)]
        below = self.node(id)[4] if type == 13 else 0
        words.append(TYPES.get(type, 'Unknown') if type != 13 else '(%d)' % below)
        words.append(self.value(id))
        return ' '.join(word for word in words if word)

    def lines(self, id):
        yield self.line(id, self.path(id) if id != 0 else '/ ' + self.name(id))
        open = [(id, iter(self.successors(id) if DEPTH.value else ()))]
        while open:
            below = next(open[-1][1], None)
            if below is None:
                open.pop()
                continue
            yield '  ' * len(open) + self.line(below, self.name(below) or '""')
            if len(open) < DEPTH.value:
                open.append((below, iter(self.successors(below))))


def show(address, id):
    if address == 0:
        return '(no node)'
    try:
        lines = []
        for line in Tree(address).lines(id):
            if len(lines) == LINES.value:
                lines.append('...')
                break
            lines.append(line)
        return '\n'.join(lines)
    except (gdb.MemoryError, struct.error) as error:
        return '(no tree: %s)' % error


class DataPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return show(int(self.value['m_oBase']['m_pObject']), int(self.value['m_uId']))


class ViewPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        if not self.value['m_pNode']:
            return '(no node)'
        return show(int(self.value['m_pBase']), int(self.value['m_pNode'] - self.value['m_pNodes']))


class StrPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        size = int(self.value['m_uSize'])
        return self.value['m_sText'].string('utf-8', 'replace', size - 1) if size > 1 else ''

    def display_hint(self):
        return 'string'


class ArrPrinter:
    def __init__(self, value):
        self.value = value

    def to_string(self):
        return '%d of %d' % (int(self.value['m_uSize']), int(self.value['m_uCapacity']))

    def children(self):
        for i in range(int(self.value['m_uSize'])):
            yield '[%d]' % i, self.value['m_pData'][i]

    def display_hint(self):
        return 'array'


def register(objfile=None):
    printers = gdb.printing.RegexpCollectionPrettyPrinter('vok')
    printers.add_printer('Data', '^vok::Data$', DataPrinter)
    printers.add_printer('Data_View', '^vok::Data_View$', ViewPrinter)
    printers.add_printer('Str', '^vok::Str$', StrPrinter)
    printers.add_printer('Arr', '^vok::Arr<.*>$', ArrPrinter)
    gdb.printing.register_pretty_printer(objfile, printers, replace=True)


register(gdb.current_objfile())
