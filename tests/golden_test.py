#!/usr/bin/env python3
r"""Runs the tool on written-down cases and compares all that it hands out.

    golden_test.py TOOL FILE...             tests each run of the files
    golden_test.py --update TOOL FILE...    rewrites what the runs hand out, for review in the diff, but
                                            leaves a run alone whose status would change
    golden_test.py --seeds FOLDER FILE...   writes the files' scripts and listings as seeds of the fuzz targets

A FILE.case holds cases of one or more runs, each followed by what it hands out:

    === the fault that the case would catch
    options: -d -t text       of the runs below, before the script's name; none at first
    status: 1 ERROR: why      of the runs below, with or without their last message; 0 at first
    script: B0 @5 "Hithe"     runs a script: hex bytes, texts, "@" with an offset of four bytes, low one
                              first; further lines are indented, comments begin with "#", and
                              3*(A1 01 A7) stands for three times what is in parentheses
    arguments: --version      runs a whole command line, without a script
    table: # label ...        the file "table" of the runs of varsul-as below
    listing: ...              runs varsul-as on a listing, with --check if there are no options. The further
                              lines are shifted by one blank, and what is shown as \\x and two hex digits is
                              that byte. The usual first and last lines are added where the first is missing
    as-arguments: --version   runs a whole command line of varsul-as
    | a line of standard output
    ! a line of standard error; a source line is shown as "*", as is a node's identity behind "next="
    NAME| a line of the file NAME, which the run leaves

Empty lines stay empty; a byte that is no printable ASCII is shown as \x and two hex digits. A listing
that begins with the usual lines, of npc id 7 and the first game, and ends as a whole one is shown
without these. Standard input is an empty pipe.

A FILE.hex is the source of the example FILE.scr; its first line with "varsul" is the command that
lists it. FILE.lst is its listing, FILE.txt its text table.
"""
import collections, difflib, os, pathlib, re, subprocess, sys, tempfile

HEAD, END = b"; id: 07(7)\n    .option --kv\n", b"; END\n"
ENTRY = re.compile(r"^(===|[\w-]+:)(.*\n(?: .*\n)*)((?:(?:!|[\w-]*\|).*\n|\n(?=[!|]))*)", re.M)
Run = collections.namedtuple("Run", "name command status start end")  # the span of what it hands out


def script_bytes(source):
    data = b""
    source = re.sub(r"(\d+)\*\(([^()]*)\)", lambda match: int(match[1]) * f"{match[2]} ", source)
    for comment, text, word in re.findall(r'(#.*)|"((?:\\.|[^"\\])*)"|(\S+)', source):
        if word:
            data += int(word[1:], 16).to_bytes(4, "little") if word[0] == "@" else bytes.fromhex(word)
        elif not comment:
            data += re.sub(r"\\(.)", lambda m: {"n": "\n", "t": "\t"}.get(m[1], m[1]), text).encode("cp932")
    return data


def listing_bytes(source):
    data = re.sub(r"^ ", "", source.lstrip(" ").removeprefix("\n"), flags=re.M).encode("cp932")
    return re.sub(rb"\\x([0-9A-F]{2})", lambda match: bytes.fromhex(match[1].decode()), data)


def runs_of(path):
    """Yields the runs of a case file. Their commands are the further arguments of run_tool."""
    for match in ENTRY.finditer(path.read_text()):
        key, value, _ = match.groups()
        words = re.sub("#.*", "", value).split()
        if key == "===":
            title, options, status, table = value, [], "0", b""
        elif key == "options:":
            options = words
        elif key == "status:":
            status = value.strip()
        elif key == "table:":
            table = listing_bytes(value)
        else:
            command = ([*options, "script"], script_bytes(value)) if key == "script:" else (words,)
            if key == "listing:":
                listing = listing_bytes(value)
                usual = listing if listing.startswith(b"; id: ") else HEAD + listing + END
                command = ([*(options or ["--check"]), "listing"], None, {"listing": usual, "table": table})
            elif key == "as-arguments:":
                command = (words, None, {"listing": HEAD + b"    bye\n" + END})
            yield Run(f"{path.name}:{title}{key}{value}", command, status, *match.span(3))


def run_tool(tool, arguments, script=None, sources=None):
    """Returns the exit status and what was written, by file; standard output is "", standard error is "messages". Where
    there are sources, varsul-as reads them."""
    given = {"script": script} if script is not None else sources or {}
    program = f"{os.path.abspath(tool)}-as" if sources else os.path.abspath(tool)
    with tempfile.TemporaryDirectory() as folder:
        for name, data in given.items():
            pathlib.Path(folder, name).write_bytes(data)
        run = subprocess.run([program, *arguments], cwd=folder, input=b"", capture_output=True, timeout=120)
        for name in given:
            pathlib.Path(folder, name).unlink()
        files = {file.name: file.read_bytes() for file in sorted(pathlib.Path(folder).iterdir())}
        return run.returncode, {"": run.stdout, **files, "messages": run.stderr}


def shown(data):
    text = "".join(chr(byte) if 32 <= byte < 127 or byte in b"\t\n" else f"\\x{byte:02X}" for byte in data)
    text = re.sub(r"^(ERROR|WARNING|INFORMATION|DEBUG)\(\d+\): ", r"\1(*): ", text, flags=re.M)
    text = re.sub(r"(next=)(?!0{8})[0-9A-F]{8}", r"\1*", text)
    return text + "\n\\ no newline at the end\n" if text and text[-1] != "\n" else text


def outcome(tool, run):
    """The status, and all that the run hands out as the lines of a case."""
    status, files = run_tool(tool, *run.command)
    if files[""].startswith(HEAD) and files[""].endswith(b"\n" + END):
        files[""] = files[""][len(HEAD):-len(END)]
    parts = {"!" if name == "messages" else name + "|": shown(data) for name, data in files.items()}
    if run.status == f"{status} " + "".join(parts["!"].splitlines()[-1:]):
        status, parts["!"] = run.status, "".join(parts["!"].splitlines(True)[:-1])
    lines = [f"{mark} {line}" if line != "\n" else line for mark, text in parts.items() for line in text.splitlines(True)]
    return str(status), "".join(lines)


def different(name, expected, actual):
    if expected == actual:
        return False
    print(name, *difflib.unified_diff(expected.splitlines(), actual.splitlines(), "expected", "actual", lineterm=""), sep="\n")
    return True


def check_cases(tool, path, update):
    text = path.read_text()
    runs = list(runs_of(path))
    failures = not runs
    for run in reversed(runs):
        status, lines = outcome(tool, run)
        if update and status == run.status:
            text = text[:run.start] + lines + text[run.end:]
        else:
            expected = text[run.start:run.end]
            failures += different(run.name, f"status: {run.status}\n{expected}", f"status: {status}\n{lines}")
    if update:
        path.write_text(text)
    return failures


def check_example(tool, path, update):
    source = path.read_text()
    script = path.with_suffix(".scr").read_bytes()
    options = re.search(r"varsul (.*)", source)[1].split()[:-1]
    status, files = run_tool(tool, [*options, "-t", "text", "script"], script)
    failures = (status, files["messages"], script_bytes(source)) != (0, b"", script)
    if failures:
        print(f"{path}: status {status}, or messages, or a script that is not that of the source")
    for name, suffix in ("", ".lst"), ("text", ".txt"):
        if update:
            path.with_suffix(suffix).write_bytes(files[name])
        failures += different(path.stem + suffix, shown(path.with_suffix(suffix).read_bytes()), shown(files[name]))
    return failures


def write_seeds(folder, *paths):
    """Each script in the three game modes, once with dump and text table alone and once with all the other options, and
    beside them the listings."""
    listings = folder.with_name("listings")
    folder.mkdir(exist_ok=True)
    listings.mkdir(exist_ok=True)
    for path in paths:
        if path.suffix == ".lst":
            (listings / path.name).write_bytes(path.read_bytes())
            continue
        for i, (_, _, *sources) in enumerate(run.command for run in runs_of(path) if len(run.command) == 3):
            (listings / f"{path.stem}.{i}").write_bytes(b"".join(sources[0].values()))
        commands = [run.command for run in runs_of(path)] or [(path, script_bytes(path.read_text()))]
        for i, (_, script) in enumerate(command for command in commands if len(command) == 2):
            for mode in range(3):
                (folder / f"{path.stem}.{i}.{mode}").write_bytes(bytes([mode + 0x30, 0]) + script)
                (folder / f"{path.stem}.{i}.{mode + 3}").write_bytes(bytes([mode + 0xE8, 0x0F]) + script)


def main(arguments):
    if arguments[0] == "--seeds":
        return write_seeds(*map(pathlib.Path, arguments[1:]))
    update = arguments[0] == "--update"
    tool, *paths = map(pathlib.Path, arguments[update:])
    return any([(check_cases if path.suffix == ".case" else check_example)(tool, path, update) for path in paths])


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
