#!/usr/bin/env python3
"""Compares what follows a simple rule, where there is much of it: rules_test.py TOOL"""
import sys
from golden_test import different, run_tool, script_bytes

# The operators in the order of their codes. For each, in the same order across: in which places
# each operator below it stands in parentheses, on both sides (b), on the right one only (r) or
# nowhere (-).
OPERATORS = [row.split() for row in (
    "81 > bbbbbbbbbbbb", "82 >= bbbbbbbbbbbb", "83 < bbbbbbbbbbbb", "84 <= bbbbbbbbbbbb",
    "85 != bbbbbbbbbbbb", "86 == bbbbbbbbbbbb", "90 + bbbbbbrr--bb", "91 - bbbbbbrr--bb",
    "92 * bbbbbbbbrrbb", "93 / bbbbbbbbrrbb", "94 || bbbbbbbbbbrb", "95 && bbbbbbbbbbbr")]

OTHERS = {
    "01 02 91 03 91": "1 - 2 - 3",
    "01 02 86 03 04 86 95": "(1 == 2) && (3 == 4)",
    # A right operand that begins with a parenthesis gets no second pair.
    "01 02 03 90 04 92 92": "1 * (2 + 3) * 4",
    "01 02 03 92 04 92 92": "1 * (2 * 3 * 4)",
    # Functions and brackets separate.
    "01 02 90 CA 03 92": "join(1 + 2) * 3",
    "01 02 90 03 04 85 B4": "data(1 + 2, 3 != 4)",
    "D3 FF D4 34 F2 48 B2 9F": "hasobj(byte 255, int16 0xF234, $var[72])",
    # A long expression is cut at 4095 characters, its line is not.
    "09" + " 09 90" * 1200: ("9" + " + 9" * 1200)[:4095 - len("eval ")],
}


def grid(wraps_all):
    def wrapped(condition, text):
        return f"({text})" if condition else text

    for code, name, sides in OPERATORS:
        for side, (below, below_name, _) in zip(sides, OPERATORS):
            inner = f"1 {below_name} 2"
            yield f"01 02 {below} 03 {code}", wrapped(wraps_all, f"{wrapped(wraps_all or side == 'b', inner)} {name} 3")
            yield f"03 01 02 {below} {code}", wrapped(wraps_all, f"3 {name} {wrapped(wraps_all or side != '-', inner)}")


def expressions(tool, options, expected):
    """Each expression is the operand of a statement of its own."""
    script = b"".join(script_bytes(f"9C {items} A7") for items in expected)
    listing = run_tool(tool, [*options, "script"], script)[1][""].decode().partition("\n\n")[2]
    return different("expressions", "".join(f"    horse eval {text}\n" for text in expected.values()) + "; END\n", listing)


def indentation(tool, depth=40):
    listing = run_tool(tool, ["script"], script_bytes(f'{depth}*(A1 01 A7) "Hi" {depth}*(A2)'))[1][""].decode()
    lines = ["if eval 1"] * depth + ['"Hi"'] + ["endif"] * depth
    return different("indentation", listing.partition("\n\n")[0] + "\n\n" + "".join(
        f"{'    ' * (1 + min(i, 2 * depth - i))}{line}\n" for i, line in enumerate(lines)) + "; END\n", listing)


def what_is_longer_than_a_buffer(tool):
    text = "words and " * 20000
    files = run_tool(tool, ["-V", "-V", "-t", "text", "script"], script_bytes(f'FF 07 "Na" B5 D2 @C 01 A7 "{text}" 00'))[1]
    found = {line for data in files.values() for line in data.decode().splitlines()}
    wanted = (f'    .data "{text}"', f'T0007_0001\t0x0000000C\t"{text}"', f"DEBUG: data block: offset=0000000C, text={text}")
    return different("long lines", "\n".join(wanted), "\n".join(line for line in wanted if line in found))


def main(tool):
    wrapped = {**dict(grid(True)), "01 02 03 91 91 CA": "join((1 - (2 - 3)))"}
    return any([expressions(tool, [], {**dict(grid(False)), **OTHERS}), indentation(tool),
                expressions(tool, ["--verbosity-parenthesis"], wrapped), what_is_longer_than_a_buffer(tool)])


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
