"""The stored form of a context, written and read apart from the engine.

    block_format.py cases COUNT   prints random contexts, a line each: the version, 1 if there is a
                                  ReportAverage for the subclass 7, the block, the block of
                                  version 3 that a context holding it must give, and what the
                                  formulas compute, "|" between them; all but numbers in hexadecimal
    block_format.py show          reads blocks in hexadecimal, a line each, and prints their content
                                  as a line of text

Values: an item is the sum of its name's bytes modulo 97, a text item that number after a "v"; an
operator that has a routine gives its left operand.
"""

import dataclasses
import random
import re
import struct
import sys

ITEM_SIZE = [54, 60, 85, 85]
NAME_SIZE = [40, 40, 65, 65]
INPUTS, FUNCTIONS, FORMULAS = 250, 251, 252
UNIT = re.compile(rb"(year|month|day|hour|minute|second)s?", re.IGNORECASE)
TOKEN = re.compile(rb'"[^"]*"|[^ \t\r()*+\-/|%,"]+')


@dataclasses.dataclass
class Item:
    name: bytes  # all bytes of the field up to the last that is not zero
    kind: int = 1
    data_type: int = 0
    param_count: int = 0
    sub_class: int = 0
    optional: int = 0
    flags: int = 0
    routine: bytes = b""


@dataclasses.dataclass
class Content:
    operators: list  # 20 texts: + - * / ||, for each the types 0 to 3
    items: list
    formulas: list  # (text, name)
    functions: tuple = ()  # of version 0: (name, count of parameters, routine)

    def write(self, version):
        out = bytes([version][:version]) + b"".join(name + b"\0" for name in self.operators)
        out += section(INPUTS, [fixed_part(i, version) + i.routine + b"\0" for i in self.items])
        if version == 0:
            out += section(FUNCTIONS, [
                struct.pack("<hh8s40sh", 0, 0, b"anything", name, count) + b"parm12" * count +
                routine + b"\0" for name, count, routine in self.functions])
        return out + section(FORMULAS, [b"%s\0%s\0" % row for row in self.formulas])

    def line(self):
        line = b"".join(b"op%d=%s " % (n, name) for n, name in enumerate(self.operators) if name)
        for i in self.items:
            fields = i.kind, i.data_type, i.param_count, i.sub_class, i.optional, i.flags
            line += i.name.split(b"\0")[0] + b"(%d,%d,%d,%d,%d,%d)=" % fields + i.routine + b" "
        return line + b"".join(b"%s:=%s " % (name, text) for text, name in self.formulas)


def section(tag, rows):
    return struct.pack("<HH", tag, len(rows)) + b"".join(rows) if rows else b""


def fixed_part(item, version):
    form = f"<hhII{NAME_SIZE[version]}shHHH"
    stale = 0x08F3A120 if version < 2 else 0  # addresses that a run long ago left there
    return struct.pack(form, item.kind, item.data_type, stale, stale, item.name, item.param_count,
                       item.sub_class, item.optional, item.flags)[:ITEM_SIZE[version]]


class Reader:
    def __init__(self, data):
        self.data, self.at = data, 0

    def take(self, count):
        assert self.at + count <= len(self.data), "the block is too short"
        self.at += count
        return self.data[self.at - count:self.at]

    def text(self):
        return self.take(self.data.index(b"\0", self.at) + 1 - self.at)[:-1]

    def rows(self, tag):
        if self.data[self.at:self.at + 2] != struct.pack("<H", tag):
            return range(0)
        return range(struct.unpack("<Hh", self.take(4))[1])


def read(data):
    """The content of a block and its version."""
    reader, version = Reader(data), data[0]
    reader.take(1 if version else 0)
    content = Content([reader.text() for _ in range(20)], [], [])
    for _ in reader.rows(INPUTS):
        size = NAME_SIZE[version]
        fixed = reader.take(ITEM_SIZE[version]).ljust(12 + size + 8, b"\0")
        kind, data_type, name, *rest = struct.unpack(f"<hh8x{size}shHHH", fixed)
        name = name.rstrip(b"\0") if version > 1 else name.split(b"\0")[0]
        content.items.append(Item(name, kind, data_type, *rest, reader.text()))
    for _ in reader.rows(FUNCTIONS) if version == 0 else []:
        name, count = struct.unpack("<12x40sh", reader.take(54))
        reader.take(6 * max(count, 0))
        content.functions += (name.rstrip(b"\0"), count, reader.text()),
    content.formulas = [(reader.text(), reader.text()) for _ in reader.rows(FORMULAS)]
    assert reader.at == len(data), "bytes are left"
    return content, version


def renamed(text):
    """The text with "_" before every word that is a date unit."""
    return TOKEN.sub(lambda m: b"_" + m[0] if UNIT.fullmatch(m[0]) else m[0], text)


def after_load(content, version, report_class):
    """What a context holds that has read the content from a block of that version."""
    items = [dataclasses.replace(item) for item in content.items]
    formulas, rename = list(content.formulas), False
    if version < 2:
        for item in items:
            item.name = item.name.split(b"\0")[0]
    if version == 0:
        rename = any(UNIT.fullmatch(item.name) for item in items)
        for item in items:
            item.name = b"_" + item.name if UNIT.fullmatch(item.name) else item.name
        for n, (text, name) in enumerate(formulas):
            rename = rename or UNIT.fullmatch(name) is not None
            if rename:
                formulas[n] = (renamed(text), b"_" + name if UNIT.fullmatch(name) else name)
    for item in items if version < 3 and report_class else []:
        item.sub_class = report_class
    return Content(content.operators, items, formulas)


class Generator:
    """Makes one random content, and knows what its formulas compute."""

    def __init__(self, rng, version):
        self.rng, self.version = rng, version
        some = rng.choice([0, 0.2, 0.5])
        self.operators = [b"Op%d" % n * (rng.random() < some) for n in range(20)]
        self.operators[0] *= version > 0
        units = [b"Days", b"hour", b"MINUTES", b"Second", b"years"] if version == 0 else []
        self.names = rng.sample(units, len(units) and rng.randrange(3))
        self.items = [self.item(n) for n in range(rng.randrange(9))]
        self.values = {}  # of formulas that can be called
        self.formulas = []  # (text, name, value)
        for n in range(rng.randrange(rng.choice([2, 12, 40]))):
            name = self.names.pop() if self.names else b"F%d" % n
            if rng.randrange(4) == 0:
                name = rng.choice([b"Formula%d", b"A.b_%d", b"L" + b"o" * 60 + b"%03d"]) % n
            self.formulas.append(self.formula(name))
        if version > 1:
            rng.shuffle(self.formulas)

    def item(self, n):
        rng = self.rng
        most = NAME_SIZE[self.version] - 1
        name = rng.choice([b"Item%d", b'"unit price %d"', b'A."my column".c%d', b"`a '%d`"]) % n
        name = name.ljust(most, b"x") if rng.randrange(5) == 0 and name[0] == 73 else name
        if self.names and rng.randrange(2):
            name = self.names.pop()
        three = [rng.choice([0, 1, rng.randrange(65536)]) * (self.version > 0) for _ in range(3)]
        data_type, count = rng.choice([0, 0, 0, 1, 2, 3, 255]), rng.choice([0, -1, 2])
        item = Item(name, 1, data_type, count, *three, b"Get%d" % rng.randrange(9))
        if len(name) < most - 2 and rng.randrange(3) == 0:
            item.name += b"\0?\x01"  # left by a longer name that stood there before
        return item

    def leaf(self):
        rng = self.rng
        numbers = [i.name.split(b"\0")[0] for i in self.items if i.data_type == 0]
        called = [name for name in self.values if b"." not in name]
        kind = rng.randrange(4)
        if kind == 0 and numbers:
            name = rng.choice(numbers)
            return name, sum(name) % 97
        if kind > 1 and called:
            name = rng.choice(called)
            return name + b" " * rng.choice([0, 0, 2]) + b"()", self.values[name]
        number = rng.randrange(1000)
        return b"%d" % number, number

    def number(self, depth):
        text, value = self.leaf()
        if depth == 0 or self.rng.randrange(3) == 0:
            return text, value
        op = self.rng.randrange(2)
        right, right_value = self.number(depth - 1)
        result = value if self.operators[op * 4] else [value + right_value, value - right_value][op]
        return b"%s %s (%s)" % (text, b"+-"[op:op + 1], right), result

    def formula(self, name):
        rng = self.rng
        texts = [i.name.split(b"\0")[0] for i in self.items if i.data_type == 2]
        kind = rng.randrange(8)
        if kind == 0:
            # A number beside the word might be a date, which hides that a name is still to come.
            return b"(" + self.number(1)[0] + b") AND " + self.number(1)[0], name, "range"
        if kind == 1:
            return b", ".join(self.number(1)[0] for _ in range(rng.randint(2, 4))), name, "set"
        if kind == 2:
            text = rng.choice([b"a word", b"two days on", b"Days", b"a (Hours)"])
            return b"'" + text + b"'", name, "text"
        if kind == 3 and texts:
            text = rng.choice(texts)
            return text, name, f"'v{sum(text) % 97}'"
        text, self.values[name] = self.number(2)
        return text, name, self.values[name]

    def content(self):
        old = range(-2, self.rng.randrange(-2, 4)) if self.version == 0 else []
        return Content(self.operators, self.items, [f[:2] for f in self.formulas],
                       tuple((b"Old%d" % n, n, b"Run" * (n % 2)) for n in old))


def print_case(rng, version):
    generator = Generator(rng, version)
    content, report_class = generator.content(), rng.choice([0, 7])
    block = content.write(version)
    assert read(block)[0].line() == content.line() and read(block)[0].functions == content.functions
    expected = after_load(content, version, report_class)
    values = [text.decode("latin-1") if value == "text" else str(value)
              for (text, _), (_, _, value) in zip(expected.formulas, generator.formulas)]
    print(version, report_class and 1, block.hex(), expected.write(3).hex(), "|".join(values) + "|")


def main():
    if sys.argv[1] == "show":
        for line in sys.stdin:
            sys.stdout.buffer.write(read(bytes.fromhex(line))[0].line() + b"\n")
        return
    rng = random.Random(20240608)
    for n in range(int(sys.argv[2])):
        print_case(rng, n % 4)


if __name__ == "__main__":
    main()
