#!/usr/bin/env python3
"""Writes the man page of `veldan` and its bash, zsh and fish completions from the
command's own --help texts, so that they list exactly the commands and options the
built program has.

    python3 scripts/shell-support.py BUILD/cli/veldan OUTPUT_FOLDER
"""
import datetime
import os
import re
import subprocess
import sys

OPTION = re.compile(r"^  (-\S+)(.*)$")


def help_text(veldan, *words):
    return subprocess.run([veldan, *words, "--help"], check=True, capture_output=True,
                          text=True, env={**os.environ, "NO_COLOR": "1"}).stdout


def sections(text):
    """The lines of each 'Name:' section of a CLI11 help text."""
    result, current = {}, None
    for line in text.splitlines():
        if re.match(r"^[A-Z][A-Za-z]+:$", line):
            current = result.setdefault(line[:-1], [])
        elif current is not None and line.strip():
            current.append(line)
    return result


def parse_entries(lines):
    """(head, description) pairs; a description may sit on the next, indented line."""
    entries = []
    for line in lines:
        if line.startswith("    ") and entries:
            head, description = entries[-1]
            entries[-1] = (head, (description + " " + line.strip()).strip())
            continue
        head, _, description = line.strip().partition("  ")
        entries.append((head.strip(), description.strip()))
    return entries


def parse_option(head, description):
    names_part, _, rest = head.partition(" ")
    names = names_part.split(",")
    value, choices = "", []
    rest = re.sub(r"\s*(Excludes|Needs):.*$", "", rest).strip()
    if rest:
        value = re.split(r"[:=]", rest)[0]
        found = re.search(r"\{([^}]*)\}", rest)
        if found:
            choices = found.group(1).split(",")
    return {"names": names, "value": value, "choices": choices, "description": description}


def read_commands(veldan):
    top = sections(help_text(veldan))
    commands = []
    for name, description in parse_entries(top.get("Subcommands", [])):
        text = help_text(veldan, name)
        parts = sections(text)
        usage = next(line for line in text.splitlines() if line.startswith("Usage:"))
        commands.append({
            "name": name,
            "description": description,
            "usage": usage[len("Usage: "):],
            "positionals": [(head.split()[0], d) for head, d in parse_entries(parts.get("Positionals", []))],
            "options": [parse_option(h, d) for h, d in parse_entries(parts.get("Options", []))
                        if h.split()[0] != "-h,--help"],
        })
    return commands


def completes_files(option):
    return option["value"] in ("FILE", "PATH", "SUB") or option["names"][-1] in ("--output", "-o")


def roff(text):
    text = text.replace("\\", "\\e").replace("-", "\\-")
    text = "".join(c if ord(c) < 128 else "\\[u%04X]" % ord(c) for c in text)
    return "\\&" + text if text.startswith((".", "'")) else text


def man_page(commands):
    lines = [
        '.TH VELDAN 1 "%s" "veldan" "User Commands"' % datetime.date.today().strftime("%B %Y"),
        ".SH NAME", "veldan \\- map where disk space goes and reclaim it safely",
        ".SH SYNOPSIS", ".B veldan", ".I command", "[\\fIoptions\\fR] [\\fIpath\\fR]",
        ".SH DESCRIPTION",
        roff("Veldan measures a folder or the whole disk and shows where the space goes: as a "
             "tree of sizes, as treemap or orbit pictures, as a text report, and as cleanup "
             "suggestions. Nothing is ever deleted outright: items are moved to the Trash "
             "after Veldan checks once more that they are exactly what it measured, a tool's "
             "own cleanup command runs under a time limit, or a guarded shell script is "
             "printed for you to run. Sizes are allocated space in decimal units."),
        ".PP", roff("The desktop app is veldan-app; veldan-app --scan PATH opens it on a fresh "
                    "map of PATH."),
        ".SH COMMANDS",
    ]
    for command in commands:
        lines += [".SS " + roff(command["usage"]), roff(command["description"] + ".")]
        for name, description in command["positionals"]:
            lines += [".TP", ".I " + name, roff(description)]
        for option in command["options"]:
            head = ", ".join("\\fB%s\\fR" % roff(n) for n in option["names"])
            if option["value"]:
                head += " \\fI%s\\fR" % roff(option["value"])
            lines += [".TP", head, roff(option["description"])]
    lines += [
        ".SH EXIT STATUS",
        roff("0 on success, 1 when the command failed or something stayed in place, 2 for "
             "bad arguments, 130 after Ctrl-C."),
        ".SH ENVIRONMENT",
        ".TP", ".B NO_COLOR", roff("Turns colour off."),
        ".TP", ".B XDG_CACHE_HOME", roff("Saved maps live in $XDG_CACHE_HOME/Veldan/Scans/."),
        ".TP", ".B XDG_CONFIG_HOME", roff("Preferences live in $XDG_CONFIG_HOME/Veldan/Veldan.conf."),
        ".TP", ".B XDG_STATE_HOME", roff("The activity record lives in $XDG_STATE_HOME/Veldan/."),
        ".SH SEE ALSO", ".BR trash-list (1),", ".BR trash-restore (1)",
    ]
    return "\n".join(lines) + "\n"


def bash_completion(commands):
    cases = []
    for command in commands:
        options = " ".join(n for o in command["options"] for n in o["names"]) + " --help"
        values = []
        for option in command["options"]:
            pattern = "|".join(option["names"])
            if option["choices"]:
                values.append('            %s) COMPREPLY=($(compgen -W "%s" -- "$cur")); return ;;'
                              % (pattern, " ".join(option["choices"])))
            elif completes_files(option):
                values.append('            %s) COMPREPLY=($(compgen -f -- "$cur")); return ;;' % pattern)
            elif option["value"]:
                values.append("            %s) return ;;" % pattern)
        cases.append("""        %s)
        case "$prev" in
%s
        esac
        if [[ "$cur" == -* ]]; then
            COMPREPLY=($(compgen -W "%s" -- "$cur"))
        else
            COMPREPLY=($(compgen -d -- "$cur"))
        fi
        ;;""" % (command["name"], "\n".join(values) or "            *) ;;", options))
    return """# bash completion for veldan, generated from its --help texts
_veldan() {
    local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]}
    if [[ $COMP_CWORD -eq 1 ]]; then
        COMPREPLY=($(compgen -W "%s --help --version" -- "$cur"))
        return
    fi
    case "${COMP_WORDS[1]}" in
%s
    esac
}
complete -o filenames -F _veldan veldan
""" % (" ".join(c["name"] for c in commands), "\n".join(cases))


def zsh_quote(text):
    return text.replace("'", "'\\''").replace("[", "\\[").replace("]", "\\]").replace(":", "\\:")


def zsh_completion(commands):
    functions, listing = [], []
    for command in commands:
        listing.append("        '%s:%s'" % (command["name"], zsh_quote(command["description"])))
        specs = []
        for option in command["options"]:
            action = ""
            if option["choices"]:
                action = ":%s:(%s)" % (option["value"].lower(), " ".join(option["choices"]))
            elif completes_files(option):
                action = ":%s:_files" % option["value"].lower()
            elif option["value"]:
                action = ":%s: " % option["value"].lower()
            names = option["names"]
            exclusive = "(%s)" % " ".join(names) if len(names) > 1 else ""
            spec_names = "{%s}" % ",".join(names) if len(names) > 1 else names[0]
            specs.append("        '%s'%s'[%s]%s'" % (exclusive, spec_names,
                                                    zsh_quote(option["description"]), action)
                         if exclusive else
                         "        '%s[%s]%s'" % (spec_names, zsh_quote(option["description"]), action))
        specs.append("        '1:folder:_directories'")
        functions.append("_veldan_%s() {\n    _arguments -s \\\n%s\n}\n" % (
            command["name"], " \\\n".join(specs)))
    return """#compdef veldan
# zsh completion for veldan, generated from its --help texts

%s
_veldan() {
    local -a commands
    commands=(
%s
    )
    if (( CURRENT == 2 )); then
        _describe -t commands 'veldan command' commands
        return
    fi
    local handler=_veldan_${words[2]}
    (( $+functions[$handler] )) && { shift words; (( CURRENT-- )); $handler; }
}

_veldan "$@"
""" % ("\n".join(functions), "\n".join(listing))


def fish_quote(text):
    return "'" + text.replace("\\", "\\\\").replace("'", "\\'") + "'"


def fish_completion(commands):
    names = " ".join(c["name"] for c in commands)
    lines = ["# fish completion for veldan, generated from its --help texts",
             "complete -c veldan -f"]
    for command in commands:
        lines.append("complete -c veldan -n 'not __fish_seen_subcommand_from %s' -a %s -d %s"
                     % (names, command["name"], fish_quote(command["description"])))
    for command in commands:
        condition = "-n '__fish_seen_subcommand_from %s'" % command["name"]
        lines.append("complete -c veldan %s -a '(__fish_complete_directories)'" % condition)
        for option in command["options"]:
            flags = []
            for name in option["names"]:
                flags.append(("-l " + name[2:]) if name.startswith("--") else ("-s " + name[1:]))
            extra = ""
            if option["choices"]:
                extra = " -x -a %s" % fish_quote(" ".join(option["choices"]))
            elif completes_files(option):
                extra = " -r -F"
            elif option["value"]:
                extra = " -x"
            lines.append("complete -c veldan %s %s%s -d %s" % (
                condition, " ".join(flags), extra, fish_quote(option["description"])))
    return "\n".join(lines) + "\n"


def main():
    veldan, output = sys.argv[1], sys.argv[2]
    commands = read_commands(veldan)
    files = {
        "veldan.1": man_page(commands),
        "completions/veldan": bash_completion(commands),
        "completions/_veldan": zsh_completion(commands),
        "completions/veldan.fish": fish_completion(commands),
    }
    for name, text in files.items():
        path = os.path.join(output, name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path + ".tmp", "w", encoding="utf-8") as out:
            out.write(text)
        os.replace(path + ".tmp", path)


if __name__ == "__main__":
    main()
