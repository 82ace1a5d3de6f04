#!/usr/bin/env python3
"""Prints a header with its comments marked for Doxygen, which calls this for each file. Usage: doxygen_comments.py HEADER"""
import re
import sys

from columns import list_columns


def escape(text):
    return re.sub(r"([\\@&#<>%$])", r"\\\1", text)


def item(word, text):
    return f"- <b>{word}</b>: {text}"


def mark(comment, is_of_file):
    """The lines of a comment as one of Doxygen; examples, which are indented by four, stay as they are."""
    lines, plain = ["@file"] if is_of_file else [], []

    def take_plain():
        lines.extend(list_columns(plain, item, escape))
        plain.clear()

    is_code = False
    for line in comment:
        if is_code != line.startswith("    ") and line.strip() and not (line.startswith("     ") and plain):
            take_plain()
            lines.append("@endcode" if is_code else "@code")
            is_code = not is_code
        (lines if is_code else plain).append(line)
    take_plain()
    return lines + (["@endcode"] if is_code else [])


def main():
    text = open(sys.argv[1], encoding="utf-8").read()
    # Specializations in a namespace that is not defined in these headers, which Doxygen cannot place.
    text = re.sub(r"template <[^>]*>\nstruct std::.*?\n};\n", "", text, flags=re.DOTALL).split("\n")
    result, comment, indent = [], [], ""
    for line in text + [""]:
        found = re.match(r"^(\s*)// ?(.*)$", line)
        if found:
            indent = found.group(1)
            comment.append(found.group(2))
            continue
        if comment:
            # What stands by itself is about the file.
            is_of_file = re.match(r"^(namespace\b|#include\b|$)", line) is not None and not indent
            marked = mark(comment, is_of_file)
            result += [f"{indent}/// {row}".rstrip() for row in marked]
            comment = []
        result.append(re.sub(r"(\S.*[,;{])\s+// (.*)$", r"\1 ///< \2", line))
    print("\n".join(result[:-1]))


main()
