#!/usr/bin/env python3
"""Fails for a place in the sources whose message no golden case brings out: witness_test.py TOOL"""
import ast, pathlib, re, sys
from golden_test import run_tool, runs_of

ROOT = pathlib.Path(__file__).resolve().parents[1]

# Messages that no case can show, by reason; some only in one folder of the sources.
UNSEEN = {
    "shown by the test with failing allocations": [
        "memory exhausted! (size=%zu)", "memory exhausted! (size=%d)", "memory exhausted! (strdup)",
        "can't add code offset table", "can't add jump offset table", "can't add data offset table"],
    "takes memory that runs out in a message longer than the writer has room": ["memory exhausted! (a message was cut)"],
    "a system that opens and measures a file does this as well": ["can't dup file descriptor", "can't seek(SEEK_SET) '%s'"],
    "excluded by the opcode table": [
        "BUG: code_info[%02X].num_params=%d", "BUG: code_info[%02X].params[0].type=%02X",
        "BUG: code_info[%02X].params[%d].type=%02X", "BUG: offset=%08X, code=%02X, type=STORE",
        "BUG: illegal parameter type: offset=%08X, param=%08X, type=%02X"],
    "no pass types an offset twice": ["change offset type: offset=%08X, type=%02X -> %02X"],
    "an answer ends in one of the ways before": [
        "'endanswer' not found: 'keywords'=%08X, offset=%08X, code=%02X",
        "'endanswer' not found: offset=%08X, code=%02X, type=%02X"],
    "shown by the tests of failing memory and files": ["memory exhausted", "can't write standard output"],
    "takes a file of 2 GB": ["can't read '%s': it is larger than 2 GB"],
    "takes thousands of lines or characters": [
        "blocks are nested too deep here",
        "this expression was cut at %zu characters when it was listed: its end must be written here"],
    "a line in front of it differs as well": ["this line would be listed otherwise"],
    "phase 1 fails when what phase 2 looks for is cut off": [
        "can't get sub block: offset=%08X", "assign without value: offset=%08X", "phase2: nesting too deep: offset=%08X",
        "phase2: 'eval' not found: offset=%08X"],
}

# What opens a message in the sources and how it begins. Four severities show the source line, which is
# the first or the last of the call's lines.
SEVERITIES = {"ERROR(": r"ERROR\(%s\): ", "WARNING(": r"WARNING\(%s\): ", "INFORMATION(": r"INFORMATION\(%s\): ",
              "DEBUG(": r"DEBUG\(%s\): ", "RUN_ERROR(": "ERROR: ", "TRACE(": "DEBUG: ",
              'report("WARNING",': "WARNING: ", 'report("DEBUG",': "DEBUG: "}
CALL = re.compile(r'\b((?:RUN_ERROR|ERROR|WARNING|INFORMATION|DEBUG|TRACE)\(|report\("[A-Z]+",)(?:\s*\d,)?\s*"((?:[^"]|"\s*")*)"')
NODE = re.compile(r'()"(parse_conv_2\(\): [^"]*)"')  # what trace_node() says before a node


def places():
    """Yields for each message in the sources where it stands, its format and what it looks like."""
    for path in ROOT.glob("src/**/*.cpp"):
        source = path.read_text()
        calls = [(match, match[2]) for match in CALL.finditer(source)]
        nodes = [(match, match[2] + ": offset=%08X, code=%02X, type=%02X") for match in NODE.finditer(CALL.sub("", source))]
        for match, form in calls + nodes:
            form = re.sub(r'"\s*"', "", form)
            line = source.count("\n", 0, match.start()) + 1
            begin = SEVERITIES.get(match[1], "DEBUG: ").replace("%s", f"(?:{line}|{line + 1}|{line + 2})")
            pattern = re.sub(r"%0(\d)X", r"[0-9A-F]{\1,}", re.sub(r"([.*+?^$()|\[\]{}])", r"\\\1", form))
            pattern = re.sub(r"%(\\\.\\\*)?s", ".*", re.sub(r"%\d?d", r" *-?\\d+", pattern))
            yield f"{path.relative_to(ROOT)}:{line}", form, re.compile(begin + pattern)


def fault_places():
    """The same for what is said about a listing: texts of five words and more, and in explain.cpp the second ones of pairs."""
    for path in [*ROOT.glob("src/assemble/*.cpp"), ROOT / "src/driver/explain.cpp"]:
        source = re.sub(r'"\s*\n\s*"', lambda match: "\0" * match[0].count("\n"), path.read_text())
        opened = r'",\s*"' if path.name == "explain.cpp" else r'(?<!\w)"'
        for match in re.finditer(opened + r'((?:[^"\\\n]|\\.)* [^"\\\n](?:[^"\\\n]|\\.)*)"', source):
            if len(match[1].split()) < 5:
                continue
            form = ast.literal_eval(f'"{match[1]}"'.replace("\0", ""))
            text = ".*".join(map(re.escape, re.split(r"%[0-9.*]*z?[a-zA-Z]", form)))
            line = source.count("\n", 0, match.start()) + source.count("\0", 0, match.start()) + 1
            yield f"{path.relative_to(ROOT)}:{line}", form, re.compile(r".*:\d+:\d+: (?:error|warning): " + text)


def main(tool):
    runs = [run for path in ROOT.glob("tests/cases/*.case") for run in runs_of(path)]
    messages = {line for run in runs for line in run_tool(tool, *run.command)[1]["messages"].decode("cp932", "replace").splitlines()}
    exceptions = {form for forms in UNSEEN.values() for form in forms}
    found, faults = 0, []
    for place, form, pattern in [*places(), *fault_places()]:
        found += 1
        is_seen = any(map(pattern.fullmatch, messages))
        is_exception = form in exceptions or f"{place.split('/')[1]}: {form}" in exceptions
        if is_seen == is_exception:
            faults.append(f"{place}: {form}: " + ("no exception any more" if is_seen else "no case"))
    print(found, "messages", *faults, sep="\n")
    return faults != [] or found < 80


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
