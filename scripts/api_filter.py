#!/usr/bin/env python3
"""api_filter.py HEADER: prints a public header with its comments as Doxygen reads them.

The headers use plain comments. A comment in front of declarations describes all of them up to
the next blank line or comment, one after code describes that code and the members below it that
have none. One that a blank line follows belongs to the whole header, and one with dashes is a
title.
"""

import re
import sys

SECTION = re.compile(r"/\* -{4} ([^\n]*?) -+\s*\*/")
TITLE = re.compile(SECTION.pattern + r"\n\n/\* (?=(?:(?!\*/).)*\*/\n\n)", re.DOTALL)
COMMENT = re.compile(r"/\*.*?\*/", re.DOTALL)
EXPORT_MARK = re.compile(r"^#define (?:ORL|WREN)_API\b.*$", re.MULTILINE)
DECLARATION = re.compile(r"(?:ORL_API|WREN_API|ORL_FUNCTION_ROUTINE\(FUN)")
RECORD = re.compile(r"(/\*\*[^/]*?\*/\n)?(typedef struct (?:\w+ )?\{\n)(.*?)(\n\} \w+;)", re.DOTALL)
MEMBER = re.compile(r"^( +(?:const )?\w+ )([*\w\[\], ]+);(?: */\*\*< (.*?)\*/)?", re.DOTALL | re.MULTILINE)


def marked(text):
    """Each comment as one of Doxygen's."""
    def mark(match):
        line_begin = text.rfind("\n", 0, match.start()) + 1
        if text[line_begin:match.start()].strip():
            begin = "/**< "
        elif match.start() == 0:
            begin = "/** @file\n * "
        elif text.startswith("\n\n", match.end()):
            begin = "/** @file\n * @details "
        else:
            begin = "/** "
        return begin + match[0][2:].lstrip()
    return COMMENT.sub(mark, text)


def distributed(text):
    """With the comment of a group of routines in front of each of them."""
    out, comment, reading, first = [], "", [], False
    for line in text.split("\n"):
        if line.startswith("/** ") or reading:
            reading.append(line)
            if "*/" in line:
                comment, reading, first = "\n".join(reading), [], True
        elif not line.strip():
            comment = ""
        elif comment and DECLARATION.match(line):
            if not first:
                out.append(comment)
            first = False
        elif line.startswith("#define "):
            first = False
        out.append(line)
    return "\n".join(out)


def described_members(match):
    """A record with a description for each member."""
    comment = (match[1] or "/** */").strip()[4:-2].strip()

    def describe(member):
        nonlocal comment
        comment = member[3] or comment
        return " ".join(f"{member[1]}{name.strip()}; /**< {comment} */" for name in member[2].split(","))
    return (match[1] or "") + match[2] + MEMBER.sub(describe, match[3]) + match[4]


def main():
    with open(sys.argv[1], encoding="utf-8") as header:
        text = EXPORT_MARK.sub("", header.read())
    text = SECTION.sub("", TITLE.sub(r"/* @par \1\n * ", text))
    text = distributed(marked(text))
    print(RECORD.sub(described_members, text), end="")


if __name__ == "__main__":
    main()
