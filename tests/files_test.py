#!/usr/bin/env python3
"""Runs the tool where files and streams fail: clear messages in time, and no file harmed: files_test.py TOOL"""
import os, pathlib, select, subprocess, sys, tempfile, unittest
from golden_test import shown

SCRIPTS = {"script": b"\xFF\x07Na\xF2Hi\xB6", "warned": b"\xFF\x07Na\xA2", "broken": b"\xA7", "empty": b"",
           "unprintable": b"\xFF\x07Na\xA1\x01\xA7\x05\xB2\xA8\x07\xA7\xA2", "loud": b"a\xF6" * 20000}
BAD_NODE = """ERROR(*): BUG: illegal instruction type: offset=00000008, code=B2, type=07
ERROR(*): can't print: offste=00000008
ERROR(*): can't print: offste=00000004
ERROR: print error
"""
IS_ROOT = os.geteuid() == 0  # whom no permission stops
TOOL = os.path.abspath(sys.argv.pop(1))


def run(*arguments, **streams):
    return subprocess.run([TOOL, *arguments], timeout=120, **{"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, **streams})


def pipe_without_reader():
    reader, writer = os.pipe()
    os.close(reader)
    return os.fdopen(writer)


class files_test(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, "/")
        os.chdir(folder.name)
        for name, data in SCRIPTS.items():
            pathlib.Path(name).write_bytes(data)
        for name in "old", "sealed":
            pathlib.Path(name).write_bytes(SCRIPTS["script"])
        os.chmod("sealed", 0)
        os.mkdir("folder")
        os.mkdir("sealed-folder", 0o500)
        os.mkfifo("pipe")
        os.symlink("script", "symbolic")
        os.symlink("new", "dangling")
        os.link("script", "hard")
        pathlib.Path("huge").touch()
        os.truncate("huge", 1 << 31)

    def snapshot(self):
        """Every file but "errors", where "-E" writes."""
        return {file.name: file.lstat().st_size < 100000 and file.is_file() and os.access(file, os.R_OK) and file.read_bytes()
                for file in pathlib.Path().glob("**/*") if file.name != "errors"}

    def expect(self, messages, *arguments, **streams):
        """A run that fails, handing out nothing but these messages."""
        with self.subTest(arguments=arguments, **streams):
            before = self.snapshot()
            done = run(*arguments, **streams)
            errors = pathlib.Path("errors")
            said = shown(done.stderr) + (shown(errors.read_bytes()) if errors.exists() else "")
            self.assertEqual((done.returncode, done.stdout or b"", said), (1, b"", messages))
            self.assertEqual(self.snapshot(), before)
            errors.unlink(missing_ok=True)

    def test_scripts_that_cannot_be_read(self):
        folder = os.open("folder", os.O_RDONLY)
        self.addCleanup(os.close, folder)
        try:
            os.lseek(folder, 0, os.SEEK_END)
            of_folder = "read"
        except OSError:
            of_folder = "seek(SEEK_END)"  # where the file system has folders without a length
        reasons = {"missing": "open", "sealed": "open", "pipe": "seek(SEEK_END)", "folder": of_folder, "empty": "read",
                   "huge": "read", "/dev/zero": "read", "/dev/null": "read"}
        for name, reason in reasons.items():
            if name != "sealed" or not IS_ROOT:
                self.expect(f"ERROR(*): can't {reason} '{name}'\nERROR: read error '{name}'\n", name)

    def test_outputs_that_cannot_be_opened(self):
        for option in "-o", "-t", "-E":
            for name in ["missing/new", "folder", ""] + ["sealed-folder/new"] * (not IS_ROOT):
                self.expect(f"ERROR: can't open file '{name}'\n", option, name, "script")
            for name in "script", "folder/../script", "symbolic", "hard":
                self.expect(f"ERROR: can't open file '{name}'\n", option, name, "script")
                self.expect(f"ERROR: can't open file '{name}'\n", option, name, "symbolic")
        for one, other in ("old", "old"), ("new", "new"), ("new", "dangling"), ("dangling", "new"):
            self.expect(f"ERROR: can't open file '{one}'\n", "-o", one, "-t", other, "script")
        for outputs in ("-o", "errors"), ("-o", "/dev/null", "-t", "errors"):
            self.expect("ERROR: can't open file 'errors'\n", *outputs, "-E", "errors", "script")

    def test_outputs_that_cannot_be_written(self):
        full = "ERROR: can't write file '/dev/full'\n"
        self.expect(full, "-o", "/dev/full", "script")
        self.expect(full, "-o", "/dev/null", "-t", "/dev/full", "script")
        self.expect(full, "-o", "/dev/null", "-E", "/dev/full", "warned")
        self.expect(BAD_NODE + full, "-o", "/dev/full", "unprintable")
        lost = "ERROR: can't write file '(standard output)'\n"
        self.expect(lost, "script", stdout=open("/dev/full", "w"))
        self.expect(lost, "script", stdout=pipe_without_reader(), restore_signals=False)

    def test_outputs_of_a_failed_analysis(self):
        self.expect("ERROR(*): eval without expression: offset=00000000-00000000\n"
                    "ERROR(*): parse expression error: offset=00000000\nERROR: parse code error: phase 2\n",
                    "-o", "old", "-t", "new", "broken")

    def test_one_device_for_everything(self):
        done = run("-d", "-o", "/dev/null", "-t", "/dev/null", "-E", "/dev/null", "warned")
        self.assertEqual((done.returncode, done.stdout + done.stderr), (0, b""))

    def test_no_file_takes_the_place_of_a_closed_stream(self):
        done = run("-t", "new", "script", preexec_fn=lambda: os.close(1))
        self.assertEqual(shown(done.stderr), "ERROR: can't write file '(standard output)'\n")
        self.assertEqual(pathlib.Path("new").read_text().count("\n"), 3)
        run("-o", "new", "warned", preexec_fn=lambda: os.close(2))
        self.assertEqual(pathlib.Path("new").read_bytes(), run("warned").stdout)

    def test_messages_come_before_an_output_is_opened(self):
        with subprocess.Popen([TOOL, "-o", "pipe", "warned"], stderr=subprocess.PIPE) as waiting:
            heard = select.select([waiting.stderr], [], [], 30)[0]
            pathlib.Path("pipe").read_bytes()
        self.assertTrue(heard)

    def test_messages_come_before_the_reader_of_the_listing_is_missed(self):
        done = run("unprintable", stdout=pipe_without_reader())
        self.assertEqual((done.returncode, shown(done.stderr)), (-13, BAD_NODE))

    def test_no_line_is_torn_where_messages_and_listing_share_a_stream(self):
        for options in (), ("-d",):
            apart = run("-V", "-V", *options, "loud")
            both = run("-V", "-V", *options, "loud", stderr=subprocess.STDOUT).stdout
            self.assertTrue(sorted(both.splitlines()) == sorted((apart.stdout + apart.stderr).splitlines()))


if __name__ == "__main__":
    unittest.main(warnings="ignore")
