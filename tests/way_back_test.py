#!/usr/bin/env python3
"""Lists scripts, changes the listings as users do, and makes scripts of them again: way_back_test.py TOOL"""
import os, pathlib, re, resource, stat, subprocess, sys, tempfile, unittest

EXAMPLES = {path.stem: path for path in pathlib.Path(__file__).resolve().parents[1].glob("examples/*.scr")}
GAMES = {"lantern-keeper": "--kv", "salt-ferry": "--bh", "clockwork-orchard": "--qf"}
TOOL = os.path.abspath(sys.argv.pop(1))
LABEL = re.compile(rb"\bL[0-9A-F]{4}_[0-9A-F]{8}\b")


def run(program, *arguments, **streams):
    done = subprocess.run([TOOL + program, *arguments], capture_output="stdout" not in streams, timeout=60, **streams)
    return done.returncode, done.stdout, done.stderr


def lines_of(listing):
    """The lines without labels and comments; what they name is numbered."""
    names = {}
    lines = [line.strip() for line in listing.split(b"\n") if line.strip() and line[:1] not in b";L"]
    return [line if line.startswith((b'"', b".data")) else
            LABEL.sub(lambda match: names.setdefault(match[0], b"L%d" % len(names)), line) for line in lines]


class way_back_test(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, "/")
        os.chdir(folder.name)

    def list(self, game, script, *options):
        self.assertEqual(run("", game, "--verbosity-parenthesis", *options, "-o", "listing", script)[0], 0)
        return pathlib.Path("listing").read_bytes()

    def make(self, *options):
        self.assertEqual(run("-as", *options, "-o", "made", "listing"), (0, b"", b""))
        return pathlib.Path("made").read_bytes()

    def test_examples_come_back(self):
        for name, game in GAMES.items():
            for options in [], ["-d", "--omit-decl"], ["--omit-eval", "--omit-int32"], ["-T", "-t", "table"]:
                with self.subTest(name=name, options=options):
                    self.list(game, EXAMPLES[name], *options)
                    self.assertEqual(self.make(*options[1:] if "-t" in options else []), EXAMPLES[name].read_bytes())

    def test_edits(self):
        """Longer and shorter texts, new statements, texts, labels and answers: the result lists as it was edited."""
        edits = [(rb'^( +)"(?=[A-Z])', rb'\1"New: '), (rb'^( +"[^"{\\\n]{4})[^"{\\\n]{5}', rb"\1"), (rb"^( +)(answer)$", rb'\1\2\n\1sleep\n\1"A new line.\\n"'),
                 (rb"^( +)(keywords .*)$", rb'\1keywords "new"\n\1    answer\n\1    addkarma eval (byte 1 + byte 2)\n\1\2'),
                 (rb"^( +)(ask)$", rb"own:\n\1\2\n\1if eval $var[200]\n\1    jump own\n\1endif")]
        for name, game in GAMES.items():
            listing = self.list(game, EXAMPLES[name], "-d")
            for pattern, text in edits:
                with self.subTest(name=name, pattern=pattern):
                    edited = re.sub(pattern, text, listing, flags=re.M)
                    self.assertNotEqual(edited, listing)
                    pathlib.Path("listing").write_bytes(edited)
                    self.make()
                    expected = re.sub(rb"\bown\b", b"L0000_00000000", edited).replace(b"L0000_00000000:\n", b"")
                    self.assertEqual(lines_of(self.list(game, "made", "-d")), lines_of(expected))

    def test_translated_table(self):
        for name, game in GAMES.items():
            self.list(game, EXAMPLES[name], "-T", "-t", "table")
            table = pathlib.Path("table")
            translated = re.sub(rb'\t"(?=[a-zA-Z ])', b'\t"Xyzzy ', table.read_bytes())
            table.write_bytes(translated)
            self.make("-t", "table")
            self.list(game, "made", "-T", "-t", "again")
            texts = [[row.split(b"\t")[2] for row in rows.splitlines()[1:-1]] for rows in (translated, pathlib.Path("again").read_bytes())]
            self.assertEqual(*texts)

    def test_many_labels(self):
        targets = [i * 7 % 300 for i in range(300)]
        pathlib.Path("listing").write_bytes(b"".join(b"own_%d:\n    jump own_%d\n" % jump for jump in enumerate(targets)) + b"; END\n")
        self.assertEqual(self.make(), b"".join(b"\xB0" + (5 * target).to_bytes(4, "little") for target in targets))

    def test_cut_expression(self):
        pathlib.Path("script").write_bytes(b"\x9C\x09" + b"\x09\x90" * 3000 + b"\xA7\xB6")
        self.list("--kv", "script")
        status, _, messages = run("-as", "--check", "listing")
        self.assertEqual((status, messages.split(b"\n")[0]), (1, b"listing:4:4106: error: this expression was cut at 4095 "
                         b"characters when it was listed: its end must be written here"))

    def test_files(self):
        """A script is replaced as a whole or keeps its bytes and its place, and nothing else is left."""
        pathlib.Path("listing").write_bytes(b"    bye\n; END\n")
        pathlib.Path("wrong").write_bytes(b"    byte\n; END\n")
        old = "o" * 255
        pathlib.Path(old).write_bytes(b"old")
        os.chmod(old, 0o640)
        os.symlink(old, "link")
        limited = {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (0, 0))}
        for status, output, listing, streams in (1, old, "wrong", {}), (1, "link", "listing", limited), (0, "link", "listing", {}):
            with self.subTest(output=output, listing=listing):
                self.assertEqual(run("-as", "-o", output, listing, **streams)[0], status)
                self.assertEqual(pathlib.Path(old).read_bytes(), b"old" if status else b"\xB6")
                self.assertEqual(sorted(os.listdir()), ["link", "listing", old, "wrong"])
        self.assertEqual((os.readlink("link"), stat.S_IMODE(os.stat(old).st_mode)), (old, 0o640))
        with open("listing", "rb") as listing:
            self.assertEqual(run("-as", "-o", "-", "-", stdin=listing), (0, b"\xB6", b""))
        with open("/dev/full", "wb") as full:
            for arguments, what in (["-o", "-", "listing"], b"'standard output': No space left on device"), (["--help"], b"standard output"):
                done = run("-as", *arguments, stdout=full, stderr=subprocess.PIPE)
                self.assertEqual((done[0], done[2]), (1, b"ERROR: can't write " + what + b"\n"))


if __name__ == "__main__":
    unittest.main()
