#!/usr/bin/env python3
"""Checks what a terminal emulator shows of runs of VelExtracta.

Usage: StatusLineTest.py BIN SYSTEM_CALLS     (the built programs, the library of SystemCalls.cpp)
"""

import fcntl
import os
import pty
import re
import resource
import select
import signal
import struct
import subprocess
import sys
import tempfile
import termios
import time
import unittest
from pathlib import Path

import pyte

BIN = Path(sys.argv.pop(1)).resolve()
SYSTEM_CALLS = sys.argv.pop(1)
HEIGHT = 100  # rows: nothing scrolls away
PATIENCE = 120  # seconds, for the slowest machine

WRITTEN = r"VLX file written: 0x[0-9a-f]+"
NOT_CREATED = r"view creation failed \(1\)\."
NOT_PACKED = r"view creation failed \(2\)\."
REASON = r"\nerror: [^\n]+"
SUMMARY = r"\n\d+ views(, \d+ nets)?, [\d.]+ [KM]?i?B in \d:\d\d: /\S+"


class TerminalRun:
    """A program on a pseudo-terminal, and the terminal's screen."""

    def __init__(self, arguments, environment, directory, width, stdout=None):
        self.master, slave = pty.openpty()
        self.screen = pyte.Screen(width, HEIGHT)
        self.stream = pyte.ByteStream(self.screen)
        self.bytes = b""
        self.mostRows = 0
        self.isOpen = True
        self.resize(width)

        def takeTerminal():
            resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
            fcntl.ioctl(0, termios.TIOCSCTTY, 0)

        self.process = subprocess.Popen(
            arguments, env=environment, cwd=directory, stdin=slave, stdout=stdout or slave,
            stderr=slave, start_new_session=True, preexec_fn=takeTerminal)
        os.close(slave)

    def stop(self):
        self.process.kill()
        self.process.wait()
        os.close(self.master)

    def resize(self, width):
        fcntl.ioctl(self.master, termios.TIOCSWINSZ, struct.pack("HHHH", HEIGHT, width, 0, 0))
        self.screen.resize(columns=width)

    def text(self):
        """The text on the screen: its rows without blanks at their ends."""
        return "\n".join(row.rstrip() for row in self.screen.display).rstrip("\n")

    def look(self):
        """Reads what is written, until nobody can write any more."""
        if select.select([self.master], [], [], 0.01)[0]:
            try:
                written = os.read(self.master, 1 << 16)
            except OSError:
                self.isOpen = False
                return
            self.bytes += written
            for line in re.findall(rb"[^\r]*\r?", written):  # no shown line is missed
                self.stream.feed(line)
                if not re.search("VLX|view|warning|[0-9]{6} ", self.text()):
                    self.mostRows = max(self.mostRows, len(self.text().split("\n")))

    def until(self, condition):
        deadline = time.monotonic() + PATIENCE
        while not condition():
            if time.monotonic() > deadline or not self.isOpen:
                raise AssertionError(f"it never came; there is: {self.text()!r}")
            self.look()

    def shows(self, pattern):
        self.until(lambda: re.fullmatch(pattern, self.text()))

    def end(self):
        """The exit code, once the screen shows all that the program has written."""
        self.until(lambda: not self.isOpen)
        return self.process.wait(PATIENCE)


class StatusLine(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.directory = Path(folder.name)
        subprocess.run([BIN / "make-design", "--nets", "30", "--records", "1500", "design.mcm"],
                       cwd=self.directory, check=True)
        self.environment = dict(
            os.environ, TERM="xterm", LC_ALL="C", LD_PRELOAD=SYSTEM_CALLS, HARDWARE_THREADS="5",
            ASAN_OPTIONS="verify_asan_link_order=0")  # two extractions at once
        self.environment.pop("TKCORE_LOG", None)
        self.hold("-")

    def hold(self, *names, meanwhile="sleep 0.01"):
        """Makes extractions whose file, $6, matches wait until they are released."""
        script = self.directory / "extracta"
        waiting = "|".join(f"*/{name}.txt" for name in names)
        script.write_text(
            f"#!/bin/sh\ncase $6 in {waiting}) until [ -e ../go ]; do {meanwhile}; done;; esac\nexec '{BIN}/extracta-standin' \"$@\"\n")
        script.chmod(0o755)
        self.environment["VELTAR_EXTRACTA_PATHOVERRIDE"] = str(script)

    def letGo(self):
        (self.folder / "go").touch()

    def run_(self, *arguments, width=80, program=(BIN / "VelExtracta",), **how):
        # Each run has its own folder: in one folder only one run a second is possible.
        self.folder = Path(tempfile.mkdtemp(dir=self.directory))
        (self.folder / "design.mcm").symlink_to(self.directory / "design.mcm")
        run = TerminalRun([*program, *arguments], self.environment, self.folder, width, **how)
        self.addCleanup(run.stop)
        return run

    def test_shows_on_any_width_what_goes_on_and_leaves_the_outcome_alone(self):
        self.hold("layer", "paddef")
        run = self.run_("-z", "design.mcm", "out.vlx", width=40)
        for width, line in ((20, r"0/\d+\+  layer \d:\d\d"),
                            (40, r"0/\d+\+  \d:\d\d  layer \d:\d\d  \+\d+ waiting"),
                            (100, r"0/(\d+)\+  \d:\d\d  layer \d:\d\d  paddef \d:\d\d  \+(\d+) waiting")):
            run.resize(width)
            run.shows(line)
        known, waiting = map(int, re.match(line, run.text()).groups())
        self.assertEqual(waiting, known - 3)  # of all but the remainder two run
        run.resize(200)
        self.letGo()
        self.assertEqual(run.end(), 0)
        self.assertRegex(run.text(), f"^{WRITTEN}{SUMMARY}$")
        self.assertEqual(run.mostRows, 1)

    def test_says_why_a_run_failed_and_leaves_nothing_else(self):
        cell = ("-z", "-cell", "design.mcm", "out.vlx")
        failing = ("-z", "-cell", "design.mcm", "no/out")
        cases = (
            (failing, lambda run: self.letGo(), 1,
             f"warning: the archive will not be written: .*no/out: No such file or directory\n"
             f"{WRITTEN}\n{NOT_PACKED}{REASON}"),
            (("-z", "-cell", "-add", ".", "design.mcm", "out.vlx"), lambda run: self.letGo(),
             -signal.SIGABRT, "warning: the file . cannot be added: it is no regular file\n"
             "uncaught exception: cannot copy .*: Is a directory"),
            (cell, lambda run: run.process.terminate(), -signal.SIGTERM,
             NOT_CREATED + "\nerror: extracta run failed: interrupted by signal 15"),
            (cell, lambda run: run.process.send_signal(signal.SIGQUIT), -signal.SIGQUIT, ""),
            (cell, lambda run: os.write(run.master, b"\x03"), -signal.SIGINT,
             NOT_CREATED + REASON),
        )
        self.hold("layer")
        for arguments, happens, code, left in cases:
            run = self.run_(*arguments, width=300)
            run.shows(r"(?s).*0/4  \d:\d\d  layer \d:\d\d .*")
            happens(run)
            self.assertEqual(run.end(), code, arguments)
            self.assertRegex(run.text(), f"^{left}$")

    def test_says_what_an_extractor_said_and_what_its_end_means(self):
        script = self.directory / "extracta"
        script.write_text("#!/bin/sh\nseq 1 20\nkill -XFSZ $$\n")
        run = self.run_("-z", "design.mcm", "out.vlx", width=300)
        self.assertEqual(run.end(), 1)
        outcome, *reasons, more = run.text().split("\n")
        self.assertRegex(outcome, NOT_CREATED)
        self.assertEqual(len(reasons), 10)
        self.assertEqual(reasons[0],
                         "error: exit code 153 means an end by SIGXFSZ, the limit on the size of files")
        self.assertRegex(reasons[1], "^error: extraction of (layer|paddef) failed: .*/extracta -")
        self.assertRegex(reasons[2], "^error: createExtracta.* exited with .* exit code 153: 1$")
        self.assertRegex(more, r"^1\d more lines: ")
        self.environment["VELTAR_EXTRACTA_PATHOVERRIDE"] = "/no/such/extracta"
        run = self.run_("-z", "-cell", "design.mcm", "out.vlx", width=300)
        self.assertEqual(run.end(), 1)
        self.assertIn("cannot start /no/such/extracta: No such file or directory: there is no /no\n",
                      run.text())

    def test_answers_who_does_not_know_the_command_line(self):
        usage = "Usage: VelExtracta "
        for arguments, code, shown in (((), 1, usage), (("design.mcm",), 1, usage),
                                       (("--help",), 0, usage), (("--version",), 0, "VelExtracta "),
                                       (("-z", "design.mcm", "o.vlx", "-n", "GND"), 1,
                                        "mcm file does not exist")):
            run = self.run_(*arguments, width=200)
            self.assertEqual(run.end(), code)
            self.assertTrue(run.text().startswith(shown), run.text())
            self.assertLessEqual(run.text().count("\n"), 25)
            silent = subprocess.run([BIN / "VelExtracta", *arguments], text=True,
                                    cwd=self.folder, env=self.environment, capture_output=True)
            self.assertEqual(bool(silent.stdout), code == 0)
            self.assertEqual(silent.stderr.startswith(shown), "GND" in arguments)
        with open("/dev/full", "w") as full:
            self.assertEqual(subprocess.call([BIN / "VelExtracta", "--help"], stdout=full), 1)
        self.assertIn("`-n` stands behind the design: options come first", run.text())
        self.environment["TKCORE_LOG"] = "full"
        run = self.run_("-z", "-cell", "no.mcm", "out.vlx", width=200)
        run.end()
        self.assertIn("warning: TKCORE_LOG is not of the form LEVEL:FILE: full", run.text())

    def test_is_suspended_and_goes_on_with_all_extractions(self):
        count = self.directory / "count"
        self.hold("layer", meanwhile=f"echo >> {count}; sleep 0.01")
        shell = ["/bin/bash", "-m", "-c",
                 '"$0" "$@"; echo suspended; read line; fg >/dev/null; echo', BIN / "VelExtracta"]
        run = self.run_("-z", "-cell", "design.mcm", "out.vlx", program=shell, width=200)
        run.shows(r"0/4  \d:\d\d  layer .*")
        os.write(run.master, b"\x1a")
        run.until(lambda: "suspended" in run.text())
        self.assertNotIn("layer", run.text())
        time.sleep(0.1)  # each keeper suspends its extraction by itself
        size = count.stat().st_size
        time.sleep(0.3)
        self.assertEqual(count.stat().st_size, size)
        os.write(run.master, b"\n")
        run.until(lambda: re.search(r"0/4  \d:\d\d  layer ", run.text()))
        self.assertGreater(count.stat().st_size, 0)
        self.letGo()
        self.assertEqual(run.end(), 0)
        self.assertRegex(run.text(), WRITTEN)

    def test_makes_room_for_the_log(self):
        self.environment["TKCORE_LOG"] = "1:/dev/stderr"
        self.hold("layer", "paddef")
        run = self.run_("-z", "design.mcm", "out.vlx", width=500)
        run.until(lambda: "waiting" in run.text())
        self.letGo()
        self.assertEqual(run.end(), 0)
        *logged, outcome, summary = run.text().split("\n")
        self.assertGreater(len(logged), 40)
        for line in logged:
            self.assertRegex(line, r"^\d+\.\d{6} \S")
            self.assertNotIn("waiting", line)
        self.assertRegex(outcome, f"^{WRITTEN}$")

    def test_is_not_there_where_there_is_no_terminal_for_it(self):
        program = [BIN / "VelExtracta"]
        background = ["/bin/sh", "-m", "-c", '"$0" "$@" & wait $!', *program]
        for terminal, command in (("dumb", program), ("", program), ("xterm", background),
                                  ("xterm", ["env", "-u", "TERM", *program])):
            self.environment["TERM"] = terminal
            run = self.run_("-z", "-cell", "design.mcm", "no/out", program=command)
            run.end()
            lines = f"{WRITTEN}\r\n{NOT_PACKED}\r\n"
            if command is background:  # standard error is a terminal there, too
                self.assertRegex(run.bytes.decode(), lines)
                self.assertNotIn("layer", run.bytes.decode())
            else:
                self.assertRegex(run.bytes.decode(), f"^{lines}$")
        ended = subprocess.run([*program, "-z", "-cell", "design.mcm", "no/out"], text=True,
                               cwd=self.directory, env=self.environment, capture_output=True)
        self.assertRegex(ended.stdout + ended.stderr, f"^{WRITTEN}\n{NOT_PACKED}\n$")

    def test_shows_merging_and_packing(self):
        self.environment["READ_IS_SLOW"] = ".txt"
        self.hold("conn0_*_CONDUCTOR_ETCH")
        run = self.run_("-z", "design.mcm", "out.vlx", width=200)
        run.shows(r"\d+/\d+  \d:\d\d  conn0_\w+~TOR_ETCH \d+:\d\d  [\d.]+ KiB written")
        done, known = map(int, re.match(r"(\d+)/(\d+)", run.text()).groups())
        self.assertEqual(done, known - 1)
        self.letGo()
        size = r"[\d.]+ [KM]iB"
        progress = rf"\d+%  {size} of {size}  {size}/s  \d:\d\d left"
        run.shows(rf"{known}/{known}  \d:\d\d  merging {progress}  {size} written")
        run.shows(rf"packing \d+%  \d:\d\d  {progress.partition('  ')[2]}")
        self.assertEqual(run.end(), 0)
        self.assertRegex(run.text(), f"^{WRITTEN}{SUMMARY}$")

    def test_shows_warnings_but_nothing_that_a_terminal_obeys(self):
        self.hold("connremainder")
        for locale, net, shown in (("C", b"\x1b[2J\x07\xff\xc2\x9b\xe6\xbc\xa2", r"\?\[2J\?\?\?\?"),
                                   ("C.UTF-8", "\u6f22".encode() * 60, "(\u6f22 ?){9,}")):
            self.environment["LC_ALL"] = locale
            run = self.run_("-z", "-n", net, "design.mcm", "out.vlx", width=79)
            run.until(lambda: re.search("remainder", run.text()))
            self.assertRegex(run.text(), f'^warning: the selected net "{shown}')
            self.assertNotRegex(run.bytes, rb"\x1b\[2J|\x07|\xff|\xc2\x9b")

    def test_never_holds_up_a_run(self):
        self.hold("layer")
        run = self.run_("-z", "-cell", "design.mcm", "out.vlx", stdout=subprocess.DEVNULL)
        run.until(lambda: b"layer" in run.bytes)
        os.write(run.master, b"\x13")  # the terminal stops
        self.letGo()
        self.assertEqual(run.process.wait(PATIENCE), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
