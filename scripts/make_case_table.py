#!/usr/bin/env python3
"""Writes closed/wren/casemap_table.h: the case mappings of UTF-8 text.

    python3 scripts/make_case_table.py > closed/wren/casemap_table.h

The mappings are the simple ones of the Unicode character data that keep the count of UTF-8 bytes,
so that a text can change case in place. Title forms are in the table if they differ from the capitals.

    python3 scripts/make_case_table.py --list cp1252|cp932|utf-8

prints every character of a code page that has case instead, one "bytes upper lower title" in
hexadecimal per line after a line with the version of the data; the tests compare the library with
that list.
"""
import itertools
import sys
import unicodedata


def simple_upper(char):
    """The simple mapping; if str.upper returns several characters, str.title returns it."""
    for mapped in (char.upper(), char.title()):
        if len(mapped) == 1:
            return mapped
    return char


def simple_lower(char):
    return char.lower() if len(char.lower()) == 1 else char


def simple_title(char):
    return char.title() if len(char.title()) == 1 else simple_upper(char)


def characters(encoding):
    """Every character above ASCII with its bytes; in cp932 some characters have two codes."""
    if encoding == "utf-8":
        codes = (code for code in range(0x80, 0x110000) if not 0xD800 <= code < 0xE000)
        for char in map(chr, codes):
            yield char, char.encode()
        return
    singles = (bytes([byte]) for byte in range(0x80, 0x100))
    pairs = (bytes(pair) for pair in itertools.product(range(0x81, 0xFD), range(0x40, 0xFD)))
    for data in itertools.chain(singles, pairs if encoding == "cp932" else ()):
        try:
            char = data.decode(encoding)
        except UnicodeDecodeError:
            continue
        if len(char) == 1:
            yield char, data


def mapping(function, encoding):
    """{bytes: mapped bytes} for all characters that change and keep their count of bytes."""
    result = {}
    for char, data in characters(encoding):
        mapped = function(char).encode(encoding, errors="replace")
        if function(char) != char and len(mapped) == len(data) and mapped != b"?":
            result[data] = mapped
    return result


def own_titles(upper, title):
    """The title forms that differ from the capitals; a character may be its own."""
    return {data: title.get(data, data) for data in sorted(upper.keys() | title.keys())
            if title.get(data, data) != upper.get(data, data)}


def runs(pairs):
    """Rows [first, last, step, delta]: each step-th code point from first to last moves by delta."""
    rows = []
    for data, mapped in pairs.items():
        code = ord(data.decode())
        delta = ord(mapped.decode()) - code
        if rows and rows[-1][3] == delta:
            first, last, step, _ = rows[-1]
            gap = code - last
            if gap == step or (first == last and gap == 2):
                rows[-1][1:3] = [code, gap]
                continue
        rows.append([code, code, 1, delta])
    return rows


def print_rows(name, pairs):
    print(f"inline constexpr CaseRun {name}[] = {{")
    for first, last, step, delta in runs(pairs):
        print(f"    {{0x{first:04X}, 0x{last:04X}, {step}, {delta}}},")
    print("};")


def print_table(upper, lower, title):
    print("// Made by scripts/make_case_table.py from the Unicode character data,", end=" ")
    print(f"version {unicodedata.unidata_version}.")
    print("// Simple case mappings that keep the count of UTF-8 bytes, as runs in ascending order.")
    print("#ifndef ORLI11_CLOSED_WREN_CASEMAP_TABLE_H")
    print("#define ORLI11_CLOSED_WREN_CASEMAP_TABLE_H")
    print()
    print('#include "closed/wren/casemap.h"')
    print()
    print("// clang-format off")
    print_rows("kUpperUtf8", upper)
    print()
    print_rows("kLowerUtf8", lower)
    print()
    print_rows("kTitleUtf8", title)
    print("// clang-format on")
    print()
    print("#endif")


def print_list(upper, lower, title):
    print(unicodedata.unidata_version)
    for data in sorted(upper.keys() | lower.keys()):
        print(data.hex(), *(forms.get(data, data).hex() for forms in (upper, lower, title)))


def main():
    listed = sys.argv[1:2] == ["--list"]
    encoding = sys.argv[2] if listed else "utf-8"
    upper, lower, title = (mapping(function, encoding)
                           for function in (simple_upper, simple_lower, simple_title))
    if listed:
        print_list(upper, lower, title)
    else:
        print_table(upper, lower, own_titles(upper, title))


if __name__ == "__main__":
    main()
