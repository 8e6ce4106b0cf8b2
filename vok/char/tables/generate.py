#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""generate.py UNICODE [--check]: writes, or compares, what is made of the Unicode character database in the folder UNICODE
(/usr/share/unicode on Debian): vok/char/script.h, names.cpp, properties.cpp and normal.cpp beside this program. Ends with
77 where the folder is not there, or is of another version. vok/char/tables.h says what the tables mean."""
import pathlib
import sys

VERSION = '15.0.0'
CODES = 0x110000
HERE = pathlib.Path(__file__).resolve().parent
CATEGORIES = 'Cn Lu Ll Lt Lm Lo Mn Mc Me Nd Nl No Pc Pd Ps Pe Pi Pf Po Sm Sc Sk So Zs Zl Zp Cc Cf Co Cs'.split()
# In the order of Break in tables.h.
BREAKS = ('Other CR LF Control Extend ZWJ Regional_Indicator Prepend SpacingMark L V T LV LVT Extended_Pictographic').split()
FORMS = ('NFC', 'NFD', 'NFKC', 'NFKD')
HANGUL = range(0xAC00, 0xAC00 + 11172)


def lines(path):
    """The fields of each line, comments left out."""
    for line in path.read_text(encoding='utf-8').splitlines():
        fields = [field.strip() for field in line.partition('#')[0].split(';')]
        if fields != ['']:
            yield fields


def span(text):
    first, _, last = text.partition('..')
    return range(int(first, 16), int(last or first, 16) + 1)


def chars(text):
    return tuple(int(code, 16) for code in text.split())


class Database:
    def __init__(self, folder):
        self.folder = folder
        self.category, self.combining = ['Cn'] * CODES, [0] * CODES
        self.decomposition, self.compatible = {}, {}  # one step, as the file has it
        self.upper, self.lower, self.title, self.fold = {}, {}, {}, {}
        first = 0
        for fields in lines(folder / 'UnicodeData.txt'):
            code = int(fields[0], 16)
            if fields[1].endswith(', First>'):
                first = code
                continue
            for one in range(first if fields[1].endswith(', Last>') else code, code + 1):
                self.category[one], self.combining[one] = fields[2], int(fields[3])
            if fields[5]:
                words = fields[5].split()
                tagged = words[0].startswith('<')
                (self.compatible if tagged else self.decomposition)[code] = tuple(int(w, 16) for w in words[tagged:])
            for where, text in ((self.upper, fields[12]), (self.lower, fields[13]), (self.title, fields[14] or fields[12])):
                if text:
                    where[code] = int(text, 16)
        self.script = self.values('Scripts.txt', 'Unknown')
        self.width = self.values('EastAsianWidth.txt', 'N')
        self.breaks = self.values('auxiliary/GraphemeBreakProperty.txt', 'Other')
        emoji = self.sets('emoji/emoji-data.txt')
        self.emoji = emoji['Emoji']
        for code in emoji['Extended_Pictographic']:
            assert self.breaks[code] == 'Other'
            self.breaks[code] = 'Extended_Pictographic'
        self.derived = self.sets('DerivedCoreProperties.txt')
        self.excluded = self.sets('DerivedNormalizationProps.txt')['Full_Composition_Exclusion']
        self.quick_check()
        self.casing()

    def values(self, name, default):
        found = [default] * CODES
        for fields in lines(self.folder / name):
            for code in span(fields[0]):
                found[code] = fields[1]
        return found

    def sets(self, name):
        found = {}
        for fields in lines(self.folder / name):
            found.setdefault(fields[1], set()).update(span(fields[0]))
        return found

    def quick_check(self):
        """Those that a form may change, by form."""
        self.changed = {form: set() for form in FORMS}
        self.joins_back = set()  # those that may become one with a character before them
        for fields in lines(self.folder / 'DerivedNormalizationProps.txt'):
            if fields[1] in ('NFC_QC', 'NFD_QC', 'NFKC_QC', 'NFKD_QC'):
                self.changed[fields[1][:-3]].update(span(fields[0]))
                if fields[1:] == ['NFC_QC', 'M']:
                    self.joins_back.update(span(fields[0]))

    def casing(self):
        self.full = {}  # code: (lower, title, upper, fold), () where that is the simple one
        for fields in lines(self.folder / 'SpecialCasing.txt'):
            if fields[4] == '':
                self.full[int(fields[0], 16)] = [chars(fields[1]), chars(fields[2]), chars(fields[3]), ()]
        for fields in lines(self.folder / 'CaseFolding.txt'):
            code = int(fields[0], 16)
            if fields[1] in 'CS':
                self.fold[code] = int(fields[2], 16)
            elif fields[1] == 'F':
                self.full.setdefault(code, [(), (), (), ()])[3] = chars(fields[2])
        for code, kinds in self.full.items():
            for index, simple in enumerate((self.lower, self.title, self.upper, self.fold)):
                if kinds[index] == (simple.get(code, code),):
                    kinds[index] = ()

    def whole(self, code, compatible):
        """The full decomposition, in canonical order."""
        if code in HANGUL:
            index = code - HANGUL[0]
            tail = index % 28
            return (0x1100 + index // 588, 0x1161 + index % 588 // 28) + ((0x11A7 + tail,) if tail else ())
        step = self.decomposition.get(code) or (self.compatible.get(code) if compatible else None)
        if step is None:
            return (code,)
        out = [part for one in step for part in self.whole(one, compatible)]
        at = 0
        while at < len(out):
            end = at
            while end < len(out) and self.combining[out[end]]:
                end += 1
            out[at:end] = sorted(out[at:end], key=lambda c: self.combining[c])
            at = end + 1
        return tuple(out)


class Pool:
    """Texts as their length and their bytes, each once; place 0 is no text."""

    def __init__(self):
        self.bytes, self.places = bytearray(1), {(): 0}

    def add(self, text):
        if text not in self.places:
            data = ''.join(map(chr, text)).encode()
            self.places[text] = len(self.bytes)
            self.bytes += bytes([len(data)]) + data
            assert len(self.bytes) < 0x10000 and len(data) < 256
        return self.places[text]


def blocks(values, shift):
    """Values in blocks of 2^shift, each once, and the numbers of the blocks."""
    size, found, index = 1 << shift, {}, []
    for at in range(0, len(values), size):
        index.append(found.setdefault(tuple(values[at:at + size]), len(found)))
    return index, [value for block in found for value in block]


def numbered(rows):
    """Distinct rows in the order of first use, and the number of each row."""
    found = {}
    return [found.setdefault(row, len(found)) for row in rows], list(found)


def array(kind, name, values):
    """Numbers, or what is written of rows."""
    items = [str(v) if isinstance(v, int) else '{' + ', '.join(map(str, v)) + '}' for v in values]
    out, line = [f'const {kind} {name}[{len(items)}] = {{'], '   '
    for item in items:
        if len(line) + len(item) + 2 > 100:
            out.append(line)
            line = '   '
        line += f' {item},'
    return '\n'.join(out + [line, '};']) + '\n'


HEAD = f'''// SPDX-License-Identifier: MIT AND Unicode-DFS-2016
// clang-format off
// Made of the Unicode character database {VERSION} by vok/char/tables/generate.py; see vok/char/tables.h.
#include "vok/char/tables.h"

namespace vok::Char::detail {{

'''
TAIL = '\n}  // namespace vok::Char::detail\n'


def scripts(db):
    names = [f[1:3] for f in lines(db.folder / 'PropertyValueAliases.txt') if f[0] == 'sc']
    used = set(db.script)
    names = sorted(((long, short) for short, long in names if long in used), key=lambda n: (n[0] != 'Unknown', n))
    assert len(names) == len(used) < 256
    return names


def script_header(names):
    return f'''// SPDX-License-Identifier: MIT AND Unicode-DFS-2016
// The scripts of Unicode {VERSION} (Scripts.txt). Made by vok/char/tables/generate.py.
#ifndef VOK_CHAR_SCRIPT_H
#define VOK_CHAR_SCRIPT_H

#include "vok/base/types.h"

namespace vok::Char {{

// By their names, in the order of these. The numbers are not the same in every version.
enum class Script : u0_t {{
''' + ''.join(f'    {long},\n' for long, _ in names) + '''};

}  // namespace vok::Char

#endif  // VOK_CHAR_SCRIPT_H
'''


def names_source(db, names):
    long = {f[1]: f[2] for f in lines(db.folder / 'PropertyValueAliases.txt') if f[0] == 'gc'}
    quoted = lambda rows: [[f'"{text}"' for text in row] for row in rows]
    return (HEAD + array('Name', 'CATEGORIES', quoted((c, long[c]) for c in CATEGORIES)) + '\n' +
            array('Name', 'SCRIPTS', quoted((s, l) for l, s in names)) +
            f'\nconst std::size_t SCRIPT_COUNT = {len(names)};\n' + TAIL)


def zero_width(db, code):
    """Marks, what cannot be seen, and the vowels and tails of Hangul, which join the letter before them."""
    hidden = db.category[code] in ('Mn', 'Me', 'Cc', 'Cf', 'Zl', 'Zp', 'Cs') and code != 0xAD
    return hidden or db.breaks[code] in ('V', 'T') or code == 0x115F


def properties_source(db, names):
    script = {long: index for index, (long, _) in enumerate(names)}
    has = lambda name, code: code in db.derived[name]
    case_numbers, cases = numbered([tuple(m.get(c, c) - c for m in (db.lower, db.upper, db.title, db.fold))
                                    for c in range(CODES)])
    rows = []
    for c in range(CODES):
        width = 0 if zero_width(db, c) else 2 if db.width[c] in 'WF' else 1
        flags = (width | has('XID_Start', c) << 2 | has('XID_Continue', c) << 3 | has('Cased', c) << 4 |
                 has('Case_Ignorable', c) << 5 | (c in db.full) << 6 | (c in db.emoji) << 7)
        rows.append((CATEGORIES.index(db.category[c]), script[db.script[c]], db.combining[c],
                     BREAKS.index(db.breaks[c]), flags, case_numbers[c]))
    assert len(cases) < 256
    row_numbers, rows = numbered(rows)
    # Three stages: most of the code space has no characters.
    middle, bottom = blocks(row_numbers, 5)
    top, middle = blocks(middle, 6)
    pool = Pool()
    full = [[hex(code)] + [pool.add(tuple(text)) for text in db.full[code]] for code in sorted(db.full)]
    return (HEAD + array('u0_t', 'TOP', top) + '\n' + array('u1_t', 'MIDDLE', middle) + '\n' +
            array('u1_t', 'BOTTOM', bottom) + '\n' + array('Properties', 'PROPERTIES', rows) + '\n' +
            array('Case', 'CASES', cases) + '\n' + array('Full_Case', 'FULL_CASES', full) + '\n' +
            f'const std::size_t FULL_CASE_COUNT = {len(full)};\n\n' +
            array('u0_t', 'CASE_TEXTS', list(pool.bytes)) + TAIL)


def normal_source(db):
    pool, pairs, lists = Pool(), {}, [0]
    for code, step in sorted(db.decomposition.items()):
        if len(step) == 2 and code not in db.excluded:
            pairs.setdefault(step[0], []).append((step[1], code))
    places = {}
    for first in sorted(pairs):
        places[first] = len(lists)
        lists += [len(pairs[first])] + [one for pair in sorted(pairs[first]) for one in pair]
    rows = []
    for c in range(CODES):
        canonical, compatible = db.whole(c, False), db.whole(c, True)
        flags = 0
        for bit, form in enumerate(FORMS):
            first = (compatible if 'K' in form else canonical)[0]
            border = db.combining[first] == 0 and not (form in ('NFC', 'NFKC') and first in db.joins_back)
            stays = c not in db.changed[form]
            assert border or not stays or db.combining[c]
            flags |= stays << bit | border << bit + 4
        known = c in HANGUL
        rows.append((db.combining[c], flags, 0 if known or canonical == (c,) else pool.add(canonical),
                     0 if known or compatible == (c,) else pool.add(compatible), places.get(c, 0)))
    inert = rows[0]
    row_numbers, rows = numbered(rows)
    end = max(c for c in range(CODES) if row_numbers[c]) + 1
    end += -end % 64
    top, bottom = blocks(row_numbers[:end], 5)
    # Below these every character stays as it is and begins something new.
    whole = lambda bit: next(c for c in range(CODES) if rows[row_numbers[c]][1] >> bit & 0x11 != 0x11)
    assert inert == (0, 0xFF, 0, 0, 0)
    return (HEAD + f'const u2_t NORMAL_END = {end:#x};\n' + array('u2_t', 'NORMAL_FROM', [whole(b) for b in range(4)]) +
            '\n' + array('u1_t', 'NORMAL_TOP', top) + '\n' + array('u1_t', 'NORMAL_BOTTOM', bottom) + '\n' +
            array('Normal', 'NORMALS', rows) + '\n' + array('u2_t', 'PAIRS', lists) + '\n' +
            array('u0_t', 'DECOMPOSITIONS', list(pool.bytes)) + TAIL)


def main():
    folder = pathlib.Path(sys.argv[1])
    readme = folder / 'ReadMe.txt'
    if not readme.exists() or f'Version {VERSION}' not in readme.read_text(encoding='utf-8'):
        print(f'no Unicode character database {VERSION} in {folder}')
        return 77
    db = Database(folder)
    names = scripts(db)
    files = {HERE.parent / 'script.h': script_header(names), HERE / 'names.cpp': names_source(db, names),
             HERE / 'properties.cpp': properties_source(db, names), HERE / 'normal.cpp': normal_source(db)}
    if '--check' not in sys.argv:
        for path, text in files.items():
            path.write_text(text, encoding='utf-8')
        return 0
    stale = [path.name for path, text in files.items() if path.read_text(encoding='utf-8') != text]
    print(f'{len(files)} files, not up to date: {" ".join(stale) or "none"}')
    return bool(stale)


if __name__ == '__main__':
    sys.exit(main())
