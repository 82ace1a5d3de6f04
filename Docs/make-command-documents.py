#!/usr/bin/env python3
"""Writes the documents of the sonaro command: its man page, the page of its options and the completions for bash and zsh.

    Docs/make-command-documents.py PROGRAM            writes them
    Docs/make-command-documents.py PROGRAM --check    only reports the ones that are out of date

They are made from the program's --help, except for the values that an option takes.
"""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent

# The words that options take, for completion; those for one command alone stand under "command option".
VALUES = {
    "render --format": "wav aiff flac caf",
    "plan --format": "wav aiff flac caf",
    "waveform --format": "png svg json dat",
    "graph --format": "svg png dot",
    "render --bits": "16 24 32f",
    "waveform --bits": "8 16",
    "serve --bits": "16 24 32f",
    "plan --bits": "16 24 32f",
    "--dither": "tpdf none",
    "--mixdown": "front front-rear front-lfe all",
    "--stems": "track marker",
    "--fades": "linear equal-power s-curve",
    "waveform --channels": "stacked merged",
    "waveform --theme": "light dark",
    "--scale": "linear db",
    "--stretch": "scaler omega rubberband",
    "--layout": "mono stereo 5.1 ambisonic1",
}
FOLDERS = {"--media", "--cache", "--pieces-in"}


class Option:
    def __init__(self, names, value, text):
        self.names = names
        self.value = value
        self.text = text


class Help:
    """What --help of the program or of one of its commands says."""

    def __init__(self, program, command=None):
        words = [program] + ([command] if command else []) + ["--help"]
        text = subprocess.run(words, check=True, capture_output=True, text=True).stdout
        self.command = command
        head, *rest = text.split("\n")
        self.summary = head
        self.usage = re.sub(r"^Usage: sonaro *\S*", "", rest[0]) if command else rest[0]
        # By title; options stand under one or several titles of their own.
        self.entries = {"Positionals": [], "Subcommands": []}
        section = None
        self.footer = []
        for line in rest[1:]:
            title = re.fullmatch(r"(?!Examples)(\w[\w ]*):", line) if section != "footer" else None
            if title:
                section = title.group(1)
                self.entries.setdefault(section, [])
            elif section and line.startswith("  "):
                self.add(section, line)
            elif section and not line.strip() and not self.footer:
                continue
            elif section:
                section = "footer"
                self.footer.append(line)

    def add(self, section, line):
        entry = re.fullmatch(r"  (\S.*?)(?: {2,}(\S.*))?", line)
        if section == "footer":
            self.footer.append(line)
        elif line.startswith(" " * 10):
            self.entries[section][-1].text += line.strip()
        else:
            names, _, value = entry.group(1).partition(" ")
            self.entries[section].append(Option(names.split(","), re.sub(r" ?\(required\) ?", "", value), entry.group(2) or ""))

    def table(self, title):
        """Of the footer: the rows under a title, each a word and a text."""
        rows = []
        for line in self.footer[self.footer.index(title + ":") + 1:]:
            row = re.fullmatch(r"  (\S+) {2,}(\S.*)", line)
            if row:
                rows.append([row.group(1), row.group(2)])
            elif rows and line.startswith("     "):
                rows[-1][1] += " " + line.strip()
            else:
                break
        return rows

    def groups(self):
        """Titles and options under them."""
        return [(title, options) for title, options in self.entries.items()
                if title not in ("Positionals", "Subcommands")]

    def options(self):
        return [option for _, options in self.groups() for option in options]


def roff(text):
    return re.sub(r"^([.'])", r"\\&\1", text.replace("\\", "\\e").replace("-", "\\-"), flags=re.M)


def footer_roff(lines):
    """Sentences as they are, examples line by line."""
    text = []
    for line in lines:
        if not line.strip():
            text.append(".PP")
        elif line.startswith("  "):
            text += [".nf", ".RS", roff(line.strip()), ".RE", ".fi"]
        else:
            text.append(roff(line))
    while text and text[-1] == ".PP":
        text.pop()
    return text


def option_roff(option):
    value = " \\fI" + roff(option.value) + "\\fR" if option.value else ""
    return [".TP", ".B " + roff(", ".join(option.names)) + value, roff(option.text) + "."]


def man_page(main, commands):
    page = [
        "'\\\" t",
        ".\\\" Written by make-command-documents.py from what --help says.",
        ".TH SONARO 1",
        ".SH NAME",
        "sonaro \\- render the sound of timelines and sound files, exact to the sample",
        ".SH SYNOPSIS",
    ]
    for command in commands:
        page += [".B sonaro " + command.command, roff(command.usage.strip()), ".br"]
    page += [
        ".SH DESCRIPTION",
        "Renders OpenTimelineIO timelines (.otio, .otioz, .otiod) and sound files to sound files, draws their",
        "waveforms and graphs, and shows their formats and contents.",
        "A file appears under its name only when it is complete.",
        ".SH OPTIONS",
    ]
    page += [line for option in main.options() for line in option_roff(option)]
    for command in commands:
        page += [".SH SONARO " + command.command.upper(), roff(command.summary) + "."]
        for title, options in [(None, command.entries["Positionals"])] + command.groups():
            page += [".SS " + title] if title else []
            page += [line for option in options for line in option_roff(option)]
        page += [".PP"] + footer_roff(command.footer)
    page += [".SH EXIT STATUS", ".TS", "tab(@);", "n lx."]
    page += [code + "@T{\n" + roff(text) + ".\nT}" for code, text in main.table("Exit codes")]
    page += [".TE", ".SH ENVIRONMENT"]
    for name, text in main.table("Environment"):
        page += [".TP", ".B " + name, roff(text) + "."]
    return "\n".join(page) + "\n"


def cell(text):
    return re.sub(r"([|<*_])", r"\\\1", text)


def options_table(title, options):
    rows = [f"| `{', '.join(option.names)}{' ' if option.value else ''}{option.value}` | {cell(option.text)} |"
            for option in options]
    return [f"### {title}", "", "| Option | Meaning |", "|---|---|", *rows, ""] if rows else []


def footer_markdown(lines):
    """Sentences as they are, what is indented as a block."""
    def block(match):
        return "\n```text\n" + re.sub(r"(?m)^  ", "", match.group(1)).rstrip("\n") + "\n```\n"
    return re.sub(r"(?m)^((?:  .*\n?)+)", block, "\n".join(lines).strip("\n") + "\n").split("\n") + [""]


def options_page(commands):
    page = ["# Options of the command", "",
            "What `--help` says, written by `Docs/make-command-documents.py`. [The command](../command.md) says what they are "
            "for.", ""]
    for command in commands:
        page += [f"## sonaro {command.command}", "", command.summary + ".", "", "```text",
                 f"sonaro {command.command}{command.usage}".rstrip(), "```", ""]
        page += [line for title, options in [("Arguments", command.entries["Positionals"])] + command.groups()
                 for line in options_table(f"{command.command}: {title[0].lower() + title[1:]}", options)]
        page += footer_markdown(command.footer)
    return re.sub(r"\n{3,}", "\n\n", "\n".join(page)).rstrip("\n") + "\n"


def values_of(command, option):
    for name in option.names:
        values = VALUES.get(command.command + " " + name, VALUES.get(name))
        if values:
            return values
    return None


def bash_completion(commands):
    text = ["# Completion of the sonaro command for bash. Written by make-command-documents.py.", "_sonaro()", "{",
            "\tlocal word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command=${COMP_WORDS[1]}",
            "\tif [ \"$COMP_CWORD\" -eq 1 ]; then",
            "\t\tCOMPREPLY=($(compgen -W \"" + " ".join(c.command for c in commands) + " --help --version --features --json\" -- \"$word\"))",
            "\t\treturn", "\tfi", "\tcase \"$command $before\" in"]
    for command in commands:
        for option in command.options():
            values = values_of(command, option)
            pattern = " | ".join('"' + command.command + " " + name + '"' for name in option.names)
            if values:
                text += [f"\t{pattern}) COMPREPLY=($(compgen -W \"{values}\" -- \"$word\")); return ;;"]
            elif FOLDERS.intersection(option.names):
                text += [f"\t{pattern}) compopt -o filenames; COMPREPLY=($(compgen -d -- \"$word\")); return ;;"]
    text += ["\tesac", "\tcase \"$word\" in", "\t-*)", "\t\tcase \"$command\" in"]
    for command in commands:
        names = " ".join(name for option in command.options() for name in option.names)
        text += [f"\t\t{command.command}) COMPREPLY=($(compgen -W \"{names}\" -- \"$word\")) ;;"]
    text += ["\t\tesac", "\t\t;;", "\t*)", "\t\tcompopt -o filenames", "\t\tCOMPREPLY=($(compgen -f -- \"$word\"))",
             "\t\t;;", "\tesac", "}", "complete -F _sonaro sonaro"]
    return "\n".join(text) + "\n"


def zsh_text(text):
    return re.sub(r"([\[\]:])", r"\\\1", text.replace("'", "'\\''"))


def zsh_completion(commands):
    text = ["#compdef sonaro", "# Completion of the sonaro command for zsh. Written by make-command-documents.py.", "",
            "local context state line", "_arguments -C '1:command:((" +
            " ".join(f"{c.command}\\:\"{zsh_text(c.summary)}\"" for c in commands) + "))' '*::argument:->rest'", "",
            "case $line[1] in"]
    for command in commands:
        text += [command.command + ")", "\t_arguments \\"]
        for option in command.options():
            values = values_of(command, option)
            action = f"({values})" if values else "_files -/" if FOLDERS.intersection(option.names) else "_files"
            argument = f":{zsh_text(option.value.lower().replace(' ...', ''))}:{action}" if option.value else ""
            repeat = "*" if option.value.endswith("...") else ""
            for name in option.names:
                text += [f"\t\t'{repeat}{name}[{zsh_text(option.text)}]{argument}' \\"]
        text += ["\t\t'*:input:_files'", "\t;;"]
    return "\n".join(text + ["esac"]) + "\n"


def main():
    program = sys.argv[1]
    top = Help(program)
    commands = [Help(program, option.names[0]) for option in top.entries["Subcommands"]]
    behind = []
    for path, text in ((ROOT / "Docs/sonaro.1", man_page(top, commands)),
                       (ROOT / "Docs/reference/options.md", options_page(commands)),
                       (ROOT / "Host/Completions/sonaro.bash", bash_completion(commands)),
                       (ROOT / "Host/Completions/_sonaro", zsh_completion(commands))):
        if "--check" not in sys.argv:
            path.write_text(text)
        elif not path.exists() or path.read_text() != text:
            behind.append(str(path))
    for path in behind:
        print(f"{path} is out of date: run Docs/make-command-documents.py PROGRAM")
    return 1 if behind else 0


sys.exit(main())
