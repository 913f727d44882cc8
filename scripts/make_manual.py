#!/usr/bin/env python3
"""Makes the manual page and the shell completions from what the program itself says under --help.

usage: make_manual.py PROGRAM FOLDER

Writes vantrel.1, vantrel.bash, _vantrel (zsh) and vantrel.fish into the folder.
"""
import os
import re
import subprocess
import sys


class Option:
    def __init__(self, names, argument, text):
        self.names, self.argument, self.text = names, argument, text


class Command:
    def __init__(self, name, summary):
        self.name, self.summary = name, summary
        self.options, self.notes = [], ""


def help_of(program, *words):
    return subprocess.run([program, *words, "--help"], check=True, capture_output=True, text=True).stdout


def read_options(lines):
    """Options begin in column 2; their text stands behind them or in the deeper lines that follow."""
    options = []
    for line in lines:
        match = re.match(r"  (-\S+)( [A-Z]+)?(?:\s{2,}|$)(.*)", line)
        if match:
            names, argument, text = match.groups()
            options.append(Option(names.split(","), (argument or "").strip(), text.strip()))
        elif line.startswith("   ") and options:
            options[-1].text = (options[-1].text + " " + line.strip()).strip()
    return options


def sections(text):
    """The parts of a help text by their headings; what follows the last empty line behind the options is "notes"."""
    found, name = {"": []}, ""
    for line in text.splitlines():
        if re.fullmatch(r"(Positionals|Options|Commands|Subcommands):", line):
            name = line[:-1]
            found[name] = []
        elif name == "Options" and line and not line.startswith(" "):
            name = "notes"
            found[name] = [line]
        else:
            found[name].append(line)
    return found


def read_commands(program):
    top = sections(help_of(program))
    commands = []
    for line in top["Commands"]:
        match = re.match(r"  (\S+)\s*(.*)", line)
        if match:
            command = Command(*match.groups())
            commands.append(command)
        elif line.strip() and commands:
            commands[-1].summary = (commands[-1].summary + " " + line.strip()).strip()
    for command in commands:
        parts = sections(help_of(program, command.name))
        command.options = read_options(parts["Options"])
        command.notes = "\n".join(parts.get("notes", [])).strip()
    return commands


def roff(text):
    return re.sub(r"^([.'])", r"\\&\1", text.replace("\\", "\\e").replace("-", "\\-"), flags=re.M)


def manual(commands, version):
    out = ['.TH VANTREL 1 "" "%s" "User Commands"' % version, ".SH NAME",
           "vantrel \\- convert disc images between ISO, IML layout, BIN/CUE, CSO and DAX", ".SH SYNOPSIS",
           ".B vantrel", ".I COMMAND", "[options] FILE...", ".SH DESCRIPTION",
           "Converts disc images of PlayStation 2 (CD, DVD) and PSP (UMD) titles between the forms in which they "
           "circulate, checks them, and lists and extracts what they hold.", ".PP",
           "Outputs are written to a temporary file beside the target, which gets its name when everything is "
           "written. After a failure, a full disk or an interrupt nothing unfinished is left, and an older output is "
           "untouched. An existing output is replaced only with", roff("-f") + ".", "The input is never the output.",
           ".SH COMMANDS"]
    for command in commands:
        out += [".SS " + roff(command.name), roff(command.summary) + "."]
        for option in command.options:
            names = ", ".join("\\fB%s\\fR" % roff(name) for name in option.names)
            out += [".TP", names + (" \\fI%s\\fR" % option.argument if option.argument else ""), roff(option.text)]
        if command.notes:
            out += [".PP", ".nf", roff(command.notes), ".fi"]
    out += [".SH EXIT STATUS", ".TP", "0", "Done.", ".TP", "1",
            "A conversion failed, or an inspected file is damaged or differs.", ".TP", "2", "Wrong usage.",
            ".TP", "129, 130, 143",
            "Ended by a signal: hang-up, Ctrl-C, termination (128 and the number of the signal). Nothing unfinished is "
            "left. A signal that is ignored at the start, as under nohup, stays ignored.", ".TP", "141",
            "Nobody reads the results any more: the pipe was closed.", ".SH FILES",
            "Results go to standard output, messages to standard error. On a terminal a line on standard error "
            "shows the progress of a conversion."]
    return "\n".join(out) + "\n"


def bash(commands):
    out = ["# bash completion for vantrel", "_vantrel() {", '    local word="${COMP_WORDS[COMP_CWORD]}" options=',
           "    COMPREPLY=()", "    if [[ $COMP_CWORD -eq 1 ]]; then",
           '        COMPREPLY=($(compgen -W "%s --help --version" -- "$word"))' % " ".join(c.name for c in commands),
           "        return", "    fi", '    case "${COMP_WORDS[1]}" in']
    for command in commands:
        names = " ".join(name for option in command.options for name in option.names)
        out.append('        %s) options="%s" ;;' % (command.name, names))
    out += ["    esac", '    if [[ $word == -* ]]; then', '        COMPREPLY=($(compgen -W "$options" -- "$word"))',
            "    else", "        compopt -o filenames", '        mapfile -t COMPREPLY < <(compgen -f -- "$word")', "    fi", "}",
            "complete -F _vantrel vantrel"]
    return "\n".join(out) + "\n"


def quoted(text):
    return text.replace("'", "'\\''")


def zsh(commands):
    out = ["#compdef vantrel", "# zsh completion for vantrel", "local -a commands", "commands=("]
    out += ["    '%s:%s'" % (c.name, quoted(c.summary.replace(":", ""))) for c in commands]
    out += [")", "if (( CURRENT == 2 )); then", "    _describe command commands", "    return", "fi",
            "case $words[2] in"]
    for command in commands:
        out.append("    %s)" % command.name)
        rows = ["'*:file:_files'"]
        for option in command.options:
            text = quoted(re.sub(r"[][:]", "", option.text))
            argument = {"PATH": ":path:_files", "N": ":number:"}.get(option.argument, "")
            others = " ".join(option.names)
            rows += ["'(%s)%s[%s]%s'" % (others, name, text, argument) for name in option.names]
        out.append("        _arguments " + " ".join(rows) + " ;;")
    out.append("esac")
    return "\n".join(out) + "\n"


def fish(commands):
    every = " ".join(c.name for c in commands)
    out = ["# fish completion for vantrel"]
    for command in commands:
        out.append("complete -c vantrel -n 'not __fish_seen_subcommand_from %s' -f -a %s -d '%s'"
                   % (every, command.name, command.summary.replace("'", "\\'")))
        for option in command.options:
            short = "".join(" -s " + name[1:] for name in option.names if not name.startswith("--"))
            long = "".join(" -l " + name[2:] for name in option.names if name.startswith("--"))
            out.append("complete -c vantrel -n '__fish_seen_subcommand_from %s'%s%s%s -d '%s'"
                       % (command.name, short, long, " -r" if option.argument else "",
                          option.text.replace("'", "\\'")))
    return "\n".join(out) + "\n"


def main(program, folder):
    version = subprocess.run([program, "--version"], check=True, capture_output=True, text=True).stdout.strip()
    commands = read_commands(program)
    os.makedirs(folder, exist_ok=True)
    for name, text in (("vantrel.1", manual(commands, version)), ("vantrel.bash", bash(commands)),
                       ("_vantrel", zsh(commands)), ("vantrel.fish", fish(commands))):
        with open(os.path.join(folder, name), "w", encoding="utf-8") as file:
            file.write(text)


if __name__ == "__main__":
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2])
