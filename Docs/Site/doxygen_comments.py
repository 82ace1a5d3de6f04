"""Comments of headers, as Doxygen wants them marked."""
import re

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


def read_member(line):
    """Type and name of a data member that a line declares; those of members that make a pair, such as a start and an end,
    are the same."""
    found = re.match(r"^\t+(\w[\w:<>,&* ]*) m([A-Z]\w*)( = .*|\{.*)?;$", line)
    return found and (found.group(1), re.sub(
        r"(Start|End|First|Last|Before|After|In|Out|Incoming|Outgoing|Minimum|Maximum|Pitch|Yaw|Roll)(?![a-z])", "", found.group(2)))


def mark_header(text):
    """A header with its comments marked for Doxygen."""
    # Specializations in a namespace that is not defined in these headers, which Doxygen cannot place.
    text = re.sub(r"template <[^>]*>\nstruct std::.*?\n};\n", "", text, flags=re.DOTALL).split("\n")
    result, comment, indent, shared = [], [], "", ([], None)
    for line in text + [""]:
        found = re.match(r"^(\s*)// ?(.*)$", line)
        if found:
            indent = found.group(1)
            comment.append(found.group(2))
            continue
        marked = []
        if comment:
            # What stands by itself is about the file.
            is_of_file = re.match(r"^(namespace\b|#include\b|$)", line) is not None and not indent
            marked = [f"{indent}/// {row}".rstrip() for row in mark(comment, is_of_file)]
            comment, shared = [], (marked, read_member(line))
        elif read_member(line) and read_member(line) == shared[1]:
            # A comment counts for all members of a pair right below it.
            marked = shared[0]
        else:
            shared = ([], None)
        result += marked
        result.append(re.sub(r"(\S.*[,;{])\s+// (.*)$", r"\1 ///< \2", line))
    return "\n".join(result[:-1])
