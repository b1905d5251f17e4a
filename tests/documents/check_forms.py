#!/usr/bin/env python3
"""Reads listings by the forms and the grammar that docs/listing.md prints.

    check_forms.py TOOL LIST_LINES

Every line of every listing of the golden cases and of the document itself, and every line that
LIST_LINES prints, must have one of the forms, and no line two; what is a statement must be one by the
grammar.
"""
import pathlib, re, subprocess, sys, threading

TESTS = pathlib.Path(__file__).resolve().parents[1]
sys.path.append(str(TESTS))
from golden_test import run_tool, runs_of
IMPLICIT = "decl", "eval", "int32"
CUT = 4095  # characters of an expression


def block(text, name):
    return re.search(rf"<!-- {name} -->\n```\w*\n(.*?)^```$", text, re.S | re.M)[1].splitlines()


def compile_grammar(lines):
    """Returns a function that tells whether a text is a statement. The first alternative that fits is taken."""
    rules = {}

    def pattern(expression):
        compiled = re.compile(expression)
        return lambda text, at: (found := compiled.match(text, at)) and found.end()

    def sequence(parts):
        def match(text, at):
            for part in parts:
                if at is not None:
                    at = part(text, at)
            return at
        return match

    def choice(options):
        def match(text, at):
            for option in options:
                if (end := option(text, at)) is not None:
                    return end
            return None
        return match

    def repeated(part, most):
        def match(text, at):
            for _ in range(most):
                end = part(text, at)
                if end is None or end == at:
                    break
                at = end
            return at
        return match

    def read(tokens):
        options = [[]]
        for expression, word, name, sign in tokens:
            if sign == "|":
                options.append([])
            elif sign and sign in ")]}":
                break
            elif sign:
                part = read(tokens)
                options[-1].append(part if sign == "(" else repeated(part, 1 if sign == "[" else 9999))
            elif name:
                options[-1].append(lambda text, at, name=name: rules[name](text, at))
            else:
                options[-1].append(pattern(expression or re.escape(word)))
        return choice([sequence(parts) for parts in options])

    for line in lines:
        name, rule = re.fullmatch(r"(\w+) += (.*)", line).groups()
        rules[name] = read(iter(re.findall(r'^/(.+)/$|"([^"]*)"|(\w+)|([][{}()|])', rule)))
    return lambda text: rules["statement"](text, 0) == len(text)


def without_implicit(grammar, left_out):
    for i, word in enumerate(IMPLICIT):
        if left_out >> i & 1:
            grammar = [line.replace(f'"{word} "', '""') if word != "int32" or line.startswith("literal") else line for line in grammar]
    return grammar


class Reader:
    def __init__(self, document):
        self.forms = [(line[:13].strip(), re.compile(line[14:], re.S)) for line in block(document, "forms")]
        self.grammars = [compile_grammar(without_implicit(block(document, "grammar"), bits)) for bits in range(8)]
        self.lines = self.cut = self.wrong = 0
        self.unused = {name for name, _ in self.forms}

    def read(self, line, left_out):
        # A double-byte character counts as one, which is all that its conversion matters here.
        line = re.sub(rb"[\x81-\x9F\xE0-\xFC][\x40-\x7E\x80-\xFC]", b"?", line).decode("latin-1")
        names = [name for name, form in self.forms if form.fullmatch(line)]
        self.lines += 1
        self.unused -= set(names)
        good = len(names) == 1
        if names == ["statement"] and not self.grammars[left_out](line.lstrip()):
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


def check(tool, list_lines):
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


def main(arguments):
    result = []
    sys.setrecursionlimit(10**6)  # an expression can be nested a thousand deep
    threading.stack_size(512 << 20)
    thread = threading.Thread(target=lambda: result.append(check(*arguments)))
    thread.start()
    thread.join()
    return result[0] if result else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
