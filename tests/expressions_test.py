#!/usr/bin/env python3
"""Compares how expressions are listed, each as the operand of a statement of its own: expressions_test.py TOOL"""
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


def check(tool, options, expressions):
    script = b"".join(script_bytes(f"9C {items} A7") for items in expressions)
    listing = run_tool(tool, [*options, "script"], script)[1][""].decode().partition("\n\n")[2]
    return different("expressions", "".join(f"    horse eval {text}\n" for text in expressions.values()) + "; END\n", listing)


def main(tool):
    wrapped = {**dict(grid(True)), "01 02 03 91 91 CA": "join((1 - (2 - 3)))"}
    return any([check(tool, [], {**dict(grid(False)), **OTHERS}), check(tool, ["--verbosity-parenthesis"], wrapped)])


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
