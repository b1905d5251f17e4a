#!/usr/bin/env python3
"""Runs the tool on written-down cases and compares all that it hands out.

    golden_test.py TOOL FILE...            tests each case of the files
    golden_test.py --update TOOL FILE...   rewrites what the cases expect, for review in the diff, but
                                           leaves a case alone whose status would change

A FILE.case holds cases in this form; of the parts below the status, those that are empty or were
not written are left out:

    === the fault that the case would catch
    options: -d -t text        what stands before the script's name, none if left out
    script: B0 @5 "Hithe"      its bytes, see support/script_text.h; further lines are indented
    status: 0
    --- listing                standard output
    --- text table             the file named "text"
    --- file NAME              any other file that the run leaves
    --- messages               standard error
    --- last message of each run

Each further "script:" is a run of its own; what the runs hand out follows one another in each
part, and in the status where they differ there. A last message that all of several runs share is
shown once. "options:" holds for the scripts below it. "arguments:" gives the whole command line of
a run, without a script. Standard input is an empty pipe.

A listing that begins with the usual lines, of npc id 7 and the first game, and ends as a whole one
is shown without these. A message's source line is shown as "*", as is a node's identity behind
"next="; a byte that is no printable ASCII as \\x and two hex digits.

A FILE.hex is the source of the example FILE.scr; its first line with "varsul" is the command that
lists it. FILE.lst is its listing, FILE.txt its text table.
"""
import difflib, os, pathlib, re, subprocess, sys, tempfile

HEAD, END = b"; id: 07(7)\n    .option --kv\n", b"; END\n"


def script_bytes(source):
    data = b""
    for comment, text, word in re.findall(r'(#.*)|"((?:\\.|[^"\\])*)"|(\S+)', source):
        if word:
            data += int(word[1:], 16).to_bytes(4, "little") if word[0] == "@" else bytes.fromhex(word)
        elif not comment:
            data += re.sub(r"\\(.)", lambda m: {"n": "\n", "t": "\t"}.get(m[1], m[1]), text).encode("cp932")
    return data


def run_tool(tool, arguments, script=None):
    """Returns the exit status and what was written, by file; standard output is "", standard error is "messages"."""
    with tempfile.TemporaryDirectory() as folder:
        file = pathlib.Path(folder, "script")
        if script is not None:
            file.write_bytes(script)
        run = subprocess.run([os.path.abspath(tool), *arguments], cwd=folder, input=b"", capture_output=True, timeout=120)
        file.unlink(missing_ok=True)
        files = {file.name: file.read_bytes() for file in pathlib.Path(folder).iterdir()}
        return run.returncode, {"": run.stdout, **files, "messages": run.stderr}


def shown(data):
    text = "".join(chr(byte) if 32 <= byte < 127 or byte in b"\t\n" else f"\\x{byte:02X}" for byte in data)
    text = re.sub(r"^(ERROR|WARNING|INFORMATION|DEBUG)\(\d+\): ", r"\1(*): ", text, flags=re.M)
    text = re.sub(r"(next=)(?!0{8})[0-9A-F]{8}", r"\1*", text)
    return text + "\n\\ no newline at the end\n" if text and text[-1] != "\n" else text


def outcome(tool, case):
    statuses, options, parts = [], [], {}
    for key, value in re.findall(r"^(\w+):(.*(?:\n .*)*)", case, re.M):
        words = re.sub("#.*", "", value).split()
        if key == "options":
            options = words
            continue
        status, files = run_tool(tool, *([[*options, "script"], script_bytes(value)] if key == "script" else [words]))
        statuses.append(str(status))
        if files[""].startswith(HEAD) and files[""].endswith(b"\n" + END):
            files[""] = files[""][len(HEAD):-len(END)]
        for name, data in files.items():
            title = {"": (1, "listing"), "text": (2, "text table"), "messages": (4, "messages")}.get(name, (3, "file " + name))
            parts.setdefault(title, []).append(shown(data))
    messages = [text.splitlines(True) for text in parts[4, "messages"]]
    if len(messages) > 1 and all(messages) and len({lines[-1] for lines in messages}) == 1:
        parts[4, "messages"] = ["".join(lines[:-1]) + "\n" for lines in messages]
        parts[5, "last message of each run"] = [messages[0][-1]]
    texts = [(title, "".join(parts[title]).rstrip("\n")) for title in sorted(parts)]
    shown_parts = "".join(f"--- {title[1]}\n{text}\n" for title, text in texts if text)
    return f"status: {' '.join(statuses if len(set(statuses)) > 1 else statuses[:1])}\n{shown_parts}"


def different(name, expected, actual):
    if expected == actual:
        return False
    print(name, *difflib.unified_diff(expected.splitlines(), actual.splitlines(), "expected", "actual", lineterm=""), sep="\n")
    return True


def check_cases(tool, path, update):
    head, *cases = re.split(r"^(?==== )", path.read_text(), flags=re.M)
    cases = [re.split(r"^(?=status:)", case, flags=re.M) for case in cases]
    actual = [outcome(tool, case[0]) for case in cases]
    if update:
        refused = [len(case) > 1 and case[1].split("\n")[0] != text.split("\n")[0] for case, text in zip(cases, actual)]
        path.write_text(head + "\n".join(case[0] + (case[1].rstrip("\n") + "\n" if refuses else text)
                                         for case, text, refuses in zip(cases, actual, refused)))
        return any(different(case[0], case[1], text) for case, text, refuses in zip(cases, actual, refused) if refuses)
    return (not cases) + sum(different(case[0], case[1].rstrip("\n") + "\n", text) for case, text in zip(cases, actual))


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


def main(arguments):
    update = "--update" in arguments
    tool, *paths = [pathlib.Path(a) for a in arguments if a != "--update"]
    return any([(check_cases if path.suffix == ".case" else check_example)(tool, path, update) for path in paths])


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
