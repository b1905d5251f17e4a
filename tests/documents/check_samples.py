#!/usr/bin/env python3
"""Compares the samples in documents with what the tool prints.

    check_samples.py [--update] TOOL DOCUMENT...     (TOOL is varsul; varsul-as lies beside it)

In a document, a comment gives a script's bytes (hex, quoted texts with the escapes of a listing and
@ with a hex offset, as in tests/cases), and a comment before a fenced block says what it shows:

    <!-- script NAME
    FF 07 "Ada"
    -->
    <!-- sample NAME KIND [FIRST-LAST]: [OPTIONS] -->

NAME is such a script or a file of examples/. KIND is bytes (a hex dump of the script), listing, table
(the text table) or messages; FIRST-LAST picks lines of it. Numbers of source lines in messages are
compared as any number. --update rewrites the blocks.
"""
import os, pathlib, re, shlex, subprocess, sys, tempfile

TESTS = pathlib.Path(__file__).resolve().parents[1]
EXAMPLES = TESTS.parent / "examples"
sys.path.append(str(TESTS))
from golden_test import run_tool, script_bytes
SCRIPT = re.compile(r"<!-- script (\S+)\n(.*?)-->", re.S)
BUILD = re.compile(r"<!-- build (\S+)(?: from (\S+): ?(.*?))? -->\n```\w*\n(.*?)^```$", re.S | re.M)
SAMPLE = re.compile(r"(<!-- sample (\S+) (\w+)(?: (\d+)-(\d+))?: ?(.*?) ?-->\n```\w*\n)(.*?)(^```$)", re.S | re.M)


def run(tool, script, kind, arguments):
    with_table = ["-t", "text"] if kind == "table" or "-T" in arguments else []
    status, files = run_tool(tool, [*arguments, *with_table, "script"], script)
    if kind != "messages" and status != 0:
        sys.exit(f"status {status}: {files['messages'].decode()}")
    return files[{"table": "text", "messages": "messages"}.get(kind, "")].decode("cp932")


def hex_dump(data):
    """What xxd -g 1 prints."""
    rows = [(at, data[at:at + 16]) for at in range(0, len(data), 16)]
    return "".join(f"{at:08x}: {row.hex(' '):47}  {re.sub(rb'[^ -~]', b'.', row).decode()}\n" for at, row in rows)


def change(listing, diff):
    """Applies the hunks of a diff, each of which fits in one place."""
    for hunk in re.split(r"^@@.*\n", diff, flags=re.M)[1:]:
        old, new = ("".join(line[1:] for line in hunk.splitlines(True) if line[0] in marks) for marks in (" -", " +"))
        if listing.count(old) != 1:
            sys.exit(f"a hunk that does not fit in one place:\n{hunk}")
        listing = listing.replace(old, new)
    return listing


def build(tool, name, listing):
    """Returns the script, empty when there is none, and what varsul-as says."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder, name)
        path.with_suffix(".lst").write_bytes(listing.encode("cp932"))
        command = [os.path.abspath(tool) + "-as", "-o", name, name + ".lst"]
        run = subprocess.run(command, cwd=folder, capture_output=True, text=True, encoding="cp932")
        if (run.returncode == 0) != path.exists():
            sys.exit(f"{name}: status {run.returncode}")
        return path.read_bytes() if path.exists() else b"", run.stderr


def without_numbers(text):
    return re.sub(r"^([A-Z]+)\(\d+\):", r"\1:", text, flags=re.M)


def main(arguments):
    update = "--update" in arguments
    tool, *documents = [a for a in arguments if a != "--update"]
    failures = count = 0
    for name in documents:
        document = pathlib.Path(name)
        text = document.read_text(encoding="utf-8")
        scripts = {match[1]: script_bytes(match[2]) for match in SCRIPT.finditer(text)}
        faults = {}
        for made, other, options, block in BUILD.findall(text):
            listing = change(run(tool, scripts[other], "listing", shlex.split(options)), block) if other else block
            scripts[made], faults[made] = build(tool, other or made, listing)
            if faults[made] and f"<!-- sample {made} faults" not in text:
                sys.exit(f"{name}: {faults[made]}")

        def check(match):
            nonlocal failures, count
            head, script, kind, first, last, options, shown, tail = match.groups()
            data = scripts[script] if script in scripts else (EXAMPLES / script).read_bytes()
            if kind == "faults":
                wanted = faults[script]
            else:
                wanted = hex_dump(data) if kind == "bytes" else run(tool, data, kind, shlex.split(options))
            if first:
                wanted = "".join(wanted.splitlines(True)[int(first) - 1:int(last)])
            count += 1
            if without_numbers(wanted) == without_numbers(shown):
                return match[0]
            failures += 1
            if not update:
                print(f"{name}: {head.splitlines()[0]}\n--- shown\n{shown}--- the tool prints\n{wanted}")
            return head + wanted + tail

        checked = SAMPLE.sub(check, text)
        if (len(SAMPLE.findall(text)), len(BUILD.findall(text))) != (text.count("<!-- sample "), text.count("<!-- build ")):
            sys.exit(f"{name}: a comment without its fenced block")
        if update and checked != text:
            document.write_text(checked, encoding="utf-8")
    print(f"{count} samples, {failures} {'updated' if update else 'different'}")
    return 1 if failures and not update else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
