#!/usr/bin/env python3
"""Compares the option names that a program takes with those of documents and completions.

    check_options.py PROGRAM names          compare those of man page and README
    check_options.py PROGRAM bash|zsh|fish  ask a real shell what it completes
"""
import os, pathlib, pty, re, select, shutil, subprocess, sys, tempfile

ROOT = pathlib.Path(__file__).resolve().parents[2]
UNLISTED = {"varsul": {"--omit-decl", "--omit-eval", "--omit-int32"}, "varsul-as": set()}
# What a shell is to offer first, and what else there is; words, and what it then says of an option.
OFFERS = {"varsul": (".scr", ".lst", "--omit-", "leave out the word eval"),
          "varsul-as": (".lst", ".scr", "-", "make the script, but write nothing")}
NAME = r"--?[?\w][\w-]*"
SKIPPED = 77


def read(name):
    return (ROOT / name).read_text(encoding="utf-8")


def tool_options(tool):
    def messages(*arguments):
        run = subprocess.run([tool, *arguments], capture_output=True, text=True)
        return run.stderr + run.stdout

    options = set(re.findall(rf"(?:^ *|\||, |: ?)({NAME})", messages("--help"), re.M)) | UNLISTED[pathlib.Path(tool).name]
    for option in options:  # an unknown option is reported before the help that follows a known one
        if messages(option, "x", "--help").startswith("ERROR: unknown option"):
            sys.exit(f"{option} is not an option of the tool")
    return options


def man_options(program):
    items = re.findall(r"^\.It (Fl .*)$", read(f"docs/{program}.1"), re.M)
    return {"-" + name.replace("\\&", "") for item in items for name in re.findall(r"Fl (\S+)", item)}


def readme_options(program):
    table = read("README.md").split({"varsul": "## Options", "varsul-as": "## Change a script"}[program])[1].split("\n## ")[0]
    return {name for row in re.findall(r"^\| (`.*?) \|", table, re.M) for name in re.findall(r"`(\S+)`", row)}


def compare(program, options):
    same = True
    for where in man_options, readme_options:
        names = where(program)
        if names != options:
            print(f"{where.__name__}: missing {sorted(options - names)}, too many {sorted(names - options)}")
            same = False
    return same


def ask_bash(line):
    words = " ".join(f"'{word}'" for word in line.split(" "))
    function = "_" + line.split(" ")[0].replace("-", "_")
    script = f"source completions/varsul.bash; COMP_WORDS=({words}); COMP_CWORD=$((${{#COMP_WORDS[@]}} - 1)); {function}; printf '%s\\n' \"${{COMPREPLY[@]}}\""
    return subprocess.run(["bash", "--norc", "-c", script], cwd=ROOT, capture_output=True, text=True).stdout


def ask_fish(line):
    script = f"source completions/{line.partition(' ')[0]}.fish; complete -C '{line}'"
    with tempfile.TemporaryDirectory() as home:
        environment = {**os.environ, "HOME": home, "XDG_CONFIG_HOME": home, "XDG_DATA_HOME": home}
        return subprocess.run(["fish", "-c", script], cwd=ROOT, capture_output=True, text=True, env=environment).stdout


def ask_zsh(line):
    """Types the line and a tab into an interactive zsh and returns what it shows."""
    try:
        child, terminal = pty.fork()
    except OSError as error:
        print(f"no terminal for zsh: {error}")
        sys.exit(SKIPPED)
    if child == 0:
        os.chdir(ROOT)
        os.environ["TERM"] = "dumb"
        os.execvp("zsh", ["zsh", "-f", "-i"])

    def read_until(pattern):
        seen = ""
        while not re.search(pattern, seen, re.S) and select.select([terminal], [], [], 20)[0]:
            seen += os.read(terminal, 65536).decode(errors="replace")
        return seen

    os.write(terminal, b"PROMPT='READY> '; LISTMAX=999; fpath=($PWD/completions $fpath); autoload -Uz compinit; "
                       b"compinit -u -D; stty cols 200 rows 50 -echo; echo STA''RTED\n")
    read_until("STARTED.*READY> ")
    os.write(terminal, line.encode() + b"\t\x15echo DO''NE\n")  # control-U empties the line
    seen = read_until("DONE")
    os.close(terminal)
    os.waitpid(child, 0)
    return seen


def try_shell(shell, program, options):
    if shutil.which(shell) is None:
        print(f"{shell} is not installed")
        sys.exit(SKIPPED)
    ask = {"bash": ask_bash, "zsh": ask_zsh, "fish": ask_fish}[shell]
    faults = []
    shown = set(re.findall(rf"(?<![\w-]){NAME}", ask(program + " -").replace(program + " -", "", 1)))
    if shown != options:
        faults.append(f"missing {sorted(options - shown)}, too many {sorted(shown - options)}")
    for words in "", "-o ", "--text ", "-t ":
        if "README.md" not in ask(f"{program} {words}READ"):
            faults.append(f"no file name behind {words!r}")
    first, other, words, meaning = OFFERS[program]
    files = ask(f"{program} examples/lantern-k")
    if first not in files or 0 <= files.find(other) < files.find(first):
        faults.append(f"no {first} file is offered first")
    if meaning not in ask(f"{program} {words}"):
        faults.append("nothing tells what an option does")
    for fault in faults:
        print(f"{shell}: {fault}")
    return not faults


def main(tool, what):
    program = pathlib.Path(tool).name
    options = tool_options(tool)
    return 0 if (compare(program, options) if what == "names" else try_shell(what, program, options)) else 1


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
