#!/usr/bin/env python3
"""Compares the samples in documents with what the tool prints.

    check_samples.py [--update] TOOL DOCUMENT...

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
import pathlib, re, shlex, sys

TESTS = pathlib.Path(__file__).resolve().parents[1]
EXAMPLES = TESTS.parent / "examples"
sys.path.append(str(TESTS))
from golden_test import run_tool, script_bytes
SCRIPT = re.compile(r"<!-- script (\S+)\n(.*?)-->", re.S)
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

        def check(match):
            nonlocal failures, count
            head, script, kind, first, last, options, shown, tail = match.groups()
            data = scripts[script] if script in scripts else (EXAMPLES / script).read_bytes()
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
        if len(SAMPLE.findall(text)) != text.count("<!-- sample ") or not scripts:
            sys.exit(f"{name}: a sample comment without its fenced block, or no script at all")
        if update and checked != text:
            document.write_text(checked, encoding="utf-8")
    print(f"{count} samples, {failures} {'updated' if update else 'different'}")
    return 1 if failures and not update else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
