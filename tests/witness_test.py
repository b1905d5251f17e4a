#!/usr/bin/env python3
"""Fails for a message of the sources that no golden case shows: witness_test.py"""
import pathlib, re, sys

ROOT = pathlib.Path(__file__).resolve().parents[1]

# Messages that no case can show, by reason.
UNSEEN = {
    "shown by the test with failing allocations": [
        "ERROR(*): memory exhausted! (size=%zu)", "ERROR(*): memory exhausted! (size=%d)",
        "ERROR(*): memory exhausted! (strdup)", "ERROR: memory exhausted! (size=%d)",
        "ERROR(*): can't add code offset table", "ERROR(*): can't add jump offset table",
        "ERROR(*): can't add data offset table"],
    "takes memory that runs out in a message longer than the writer has room": [
        "ERROR: memory exhausted! (a message was cut)"],
    "shown by the test of deep nesting": ["ERROR(*): nesting too deep: offset=%08X"],
    "a system that opens and measures a file does this as well": [
        "ERROR: can't dup file descriptor", "ERROR(*): can't seek(SEEK_SET) '%s'"],
    "excluded by the opcode table": [
        "ERROR(*): BUG: code_info[%02X].num_params=%d", "ERROR(*): BUG: code_info[%02X].params[0].type=%02X",
        "ERROR(*): BUG: code_info[%02X].params[%d].type=%02X",
        "ERROR(*): BUG: illegal parameter type: offset=%08X, param=%08X, type=%02X",
        "ERROR(*): BUG: offset=%08X, code=%02X, type=STORE"],
    "no pass types an offset twice; shown by the test of the offset table": [
        "INFORMATION(*): change offset type: offset=%08X, type=%02X -> %02X"],
    "an answer ends in one of the ways before": [
        "ERROR(*): 'endanswer' not found: 'keywords'=%08X, offset=%08X, code=%02X",
        "ERROR(*): 'endanswer' not found: offset=%08X, code=%02X, type=%02X"],
    "phase 1 fails when what phase 2 looks for is cut off": [
        "ERROR(*): can't get sub block: offset=%08X", "ERROR(*): assign without value: offset=%08X"],
}

# How messages begin, by what the sources call them.
SEVERITIES = {"ERROR(": "ERROR(*): ", "WARNING(": "WARNING(*): ", "INFORMATION(": "INFORMATION(*): ", "DEBUG(": "DEBUG(*): ",
              "TRACE(": "DEBUG: ", "RUN_ERROR(": "ERROR: ", 'report("WARNING",': "WARNING: ", 'report("DEBUG",': "DEBUG: "}
CALL = re.compile(r'\b((?:RUN_ERROR|ERROR|WARNING|INFORMATION|DEBUG|TRACE)\(|report\("[A-Z]+",)(?:\s*\d,)?\s*"([^"]*)"')
NODE = re.compile(r'"(parse_conv_2\(\): [^"]*)"')  # what trace_node() says before a node


def formats_of_sources():
    sources = "".join(path.read_text() for path in ROOT.glob("src/**/*.cpp"))
    sources = re.sub(r'"\s*\n\s*"', "", sources)
    calls = {SEVERITIES[call] + text for call, text in CALL.findall(sources)}
    nodes = {f"DEBUG: {text}: offset=%08X, code=%02X, type=%02X" for text in NODE.findall(CALL.sub("", sources))}
    return calls | nodes | {text for text in re.findall(r'"(dump count[^"]*?)(?:\\n)?"', sources)}


def lines_of(form):
    """The lines that can come from a format."""
    pattern = re.sub(r"%0(\d)X", r"(?:[0-9A-F]{\1,}|\\*)", re.sub(r"([.*+?^$()|\[\]{}])", r"\\\1", form))
    return re.compile(re.sub(r"%(\\\.\\\*)?s", ".*", re.sub(r"%\d?d", r" *-?\\d+", pattern)))


def main():
    cases = "\n".join(path.read_text() for path in ROOT.glob("tests/cases/*.case"))
    messages = "".join(re.findall(r"^--- .*message.*\n((?:(?!---|===).*\n)*)", cases, re.M)).splitlines()
    exceptions = {form for forms in UNSEEN.values() for form in forms}
    formats = formats_of_sources()
    faults = [f"{form}: gone" for form in exceptions - formats]
    for form in formats:
        if any(map(lines_of(form).fullmatch, messages)) == (form in exceptions):
            faults.append(f"{form}: " + ("no exception any more" if form in exceptions else "no case"))
    print(len(formats), "messages", *sorted(faults), sep="\n")
    return faults != [] or len(formats) < 80


if __name__ == "__main__":
    sys.exit(main())
