"""Comments in columns, as headers and docstrings have them: a word, spaces, and what is to be said of it,

    Length    In samples; the next line
              goes on below it.

become lists for the builder of the site."""
import re

_ROW = re.compile(r"^( {0,3})(\S+(?:[ ,]{1,2}\S+){0,3}?)( {2,})(\S.*)$")


def find_row(line, following, column):
    """The word and the text of a line that begins a row, and where its text begins. column: of the rows before, or None."""
    match = _ROW.match(line)
    if match:
        start = match.start(4)
        if len(match.group(3)) > 1 or re.match(rf"^ {{{start}}}\S", following):
            return match.group(2), match.group(4), start
    # A word as long as the column is wide, and one without a text.
    if column and len(line) > column and line[column - 1] == " " and re.match(r"^\w+$", line[:column - 1]):
        return line[:column - 1], line[column:], column
    return None


def list_columns(lines, item, escape):
    """Lines with rows as items of a list; item(word, text) gives the first line of one, escape(text) any other text."""
    result, column = [], None
    for number, line in enumerate(lines):
        row = find_row(line, lines[number + 1] if number + 1 < len(lines) else "", column)
        if row:
            if column is None and result and result[-1].strip():
                result.append("")
            column = row[2]
            result.append(item(escape(row[0]), escape(row[1])))
        elif column is not None and line.startswith(" " * column):
            result.append("  " + escape(line.strip()))
        elif column is not None and re.match(r"^ {2,3}\S+$", line):
            result.append(item(escape(line.strip()), ""))
        else:
            if column is not None and line.strip():
                result.append("")
            column = column if not line.strip() and column is not None else None
            result.append(escape(line))
    return result
