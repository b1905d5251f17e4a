#!/usr/bin/env python3
"""Reads listings by the forms and the grammar that docs/listing.md prints.

    check_forms.py TOOL LIST_LINES

Every line of every listing of the golden cases and of the document itself, and every line that
LIST_LINES prints, must have one of the forms, and no line two; what is a statement must be one by the
grammar.
"""
import pathlib, re, subprocess, sys

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.append(str(TESTS))
from golden_test import run_tool, runs_of
IMPLICIT = "decl", "eval", "int32"
# What is nested is read from the inside to the outside, and stands there as one character then.
NESTED = {"element": "\0", "call": "\1", "group": "\1"}
CUT = 4095  # characters of an expression


def block(text, name):
    return re.search(rf"<!-- {name} -->\n```\w*\n(.*?)^```$", text, re.S | re.M)[1].splitlines()


class Grammar:
    def __init__(self, lines, left_out):
        self.rules = dict(re.split(" += ", line, maxsplit=1) for line in lines)
        for i, word in enumerate(IMPLICIT):
            for rule in self.rules if left_out >> i & 1 else ():
                if word != "int32" or rule == "literal":
                    self.rules[rule] = self.rules[rule].replace(f'"{word} "', "")
        self.nested = [(re.compile(self.expression_of(rule)), mark) for rule, mark in NESTED.items()]
        self.statement = re.compile(self.expression_of("statement"))

    def expression_of(self, rule):
        def part(match):
            expression, word, name, sign = match.groups()
            if name in NESTED:
                return NESTED[name]
            return expression or word and re.escape(word) or name and self.expression_of(name) or {
                "[": "(?:", "]": ")?", "{": "(?:", "}": ")*", "(": "(?:"}.get(sign, sign or "")
        return "(?:" + re.sub(r'^/(.+)/$|"(.*?)"|(\w+)|([][{}()|])| +', part, self.rules[rule]) + ")"

    def has(self, line):
        at = 0
        while at < len(self.nested):  # a group only where no call is left: it could be a call's operand
            expression, mark = self.nested[at]
            line, count = expression.subn(mark, line)
            at = 0 if count else at + 1
        return self.statement.fullmatch(line) is not None


class Reader:
    def __init__(self, document):
        self.forms = [(line[:13].strip(), re.compile(line[14:], re.S)) for line in block(document, "forms")]
        self.grammars = [Grammar(block(document, "grammar"), left_out) for left_out in range(8)]
        self.lines = self.cut = self.wrong = 0
        self.unused = {name for name, _ in self.forms}

    def read(self, line, left_out):
        # A double-byte character counts as one, which is all that its conversion matters here.
        line = re.sub(rb"[\x81-\x9F\xE0-\xFC][\x40-\x7E\x80-\xFC]", b"?", line).decode("latin-1")
        names = [name for name, form in self.forms if form.fullmatch(line)]
        self.lines += 1
        self.unused -= set(names)
        good = len(names) == 1
        if names == ["statement"] and not self.grammars[left_out].has(line.lstrip()):
            good = len(line.lstrip()) > CUT
            self.cut += 1
        if not good:
            self.wrong += 1
            if self.wrong <= 20:
                print(f"{names} with {left_out} left out: {line!r}")


def bits_of(options):
    return sum(1 << i for i, word in enumerate(IMPLICIT) if f"--omit-{word}" in options)


def listings(tool, document):
    """Each with what is left out in it."""
    for options, sample in re.findall(r"<!-- sample \S+ listing.*?:(.*?)-->\n```\w*\n(.*?)```", document, re.S):
        yield sample.encode("cp932"), bits_of(options)
    for path in sorted((TESTS / "cases").glob("*.case")):
        for run in runs_of(path):
            status, files = run_tool(tool, *run.command)
            if status == 0 and files[""].startswith(b"; id: "):
                yield files[""], bits_of(run.command[0])


def main(tool, list_lines):
    document = (TESTS.parent / "docs/listing.md").read_text(encoding="utf-8")
    reader = Reader(document)
    for listing, left_out in listings(tool, document):
        for line in listing.removesuffix(b"\n").split(b"\n"):
            reader.read(line, left_out)
    examples = sorted(map(str, (TESTS.parent / "examples").glob("*.scr")))
    printed = subprocess.run([list_lines, *examples], capture_output=True, check=True).stdout.split(b"\n")
    for line, left_out in zip(printed[::2], printed[1::2]):
        reader.read(line, int(left_out))
    print(f"{reader.lines} lines, {reader.cut} cut, {reader.wrong} of no form or several; forms not met: {reader.unused or 'none'}")
    return 1 if reader.wrong or reader.unused or reader.lines < 100000 else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
