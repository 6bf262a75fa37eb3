#!/usr/bin/env python3
"""Writes closed/wren/casemap_table.h: the case mappings of UTF-8 text.

    python3 scripts/make_case_table.py > closed/wren/casemap_table.h

The mappings are the simple ones of the Unicode character data that keep the count of UTF-8 bytes,
so that a text can change case in place. With --list it prints every mapping instead, one
"codepoint upper lower" in hexadecimal per line behind a line with the version of the data; the
tests compare the library with that list.
"""
import sys
import unicodedata


def simple_upper(char):
    """The simple mapping; where str.upper gives several characters the title case has it."""
    for mapped in (char.upper(), char.title()):
        if len(mapped) == 1:
            return mapped
    return char


def simple_lower(char):
    return char.lower() if len(char.lower()) == 1 else char


def mapping(function):
    """{code point: mapped code point} for all characters that change and keep their length."""
    result = {}
    for code in range(0x80, 0x110000):
        if 0xD800 <= code < 0xE000:
            continue
        char = chr(code)
        mapped = function(char)
        if mapped != char and len(mapped.encode()) == len(char.encode()):
            result[code] = ord(mapped)
    return result


def runs(pairs):
    """Rows [first, last, step, delta]: each step-th code point from first to last moves by delta."""
    rows = []
    for code, mapped in pairs.items():
        delta = mapped - code
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


def print_table(upper, lower):
    print("// Made by scripts/make_case_table.py from the Unicode character data,", end=" ")
    print(f"version {unicodedata.unidata_version}.")
    print("// Simple case mappings that keep the count of UTF-8 bytes, as runs in ascending order.")
    print("#ifndef ORLI11_CLOSED_WREN_CASEMAP_TABLE_H")
    print("#define ORLI11_CLOSED_WREN_CASEMAP_TABLE_H")
    print()
    print('#include "closed/wren/casemap.h"')
    print()
    print("// clang-format off")
    print_rows("UPPER_UTF8", upper)
    print()
    print_rows("LOWER_UTF8", lower)
    print("// clang-format on")
    print()
    print("#endif")


def print_list(upper, lower):
    print(unicodedata.unidata_version)
    for code in sorted(upper.keys() | lower.keys()):
        print(f"{code:X} {upper.get(code, code):X} {lower.get(code, code):X}")


if __name__ == "__main__":
    show = print_list if sys.argv[1:] == ["--list"] else print_table
    show(mapping(simple_upper), mapping(simple_lower))
