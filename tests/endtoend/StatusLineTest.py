#!/usr/bin/env python3
"""Looks at runs of VelExtracta through the eyes of a terminal emulator.

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
HEIGHT = 100  # rows: nothing scrolls out of sight
PATIENCE = 120  # seconds, for the slowest of machines

WRITTEN = r"VLX file written: 0x[0-9a-f]+"
NOT_CREATED = r"view creation failed \(1\)\."
NOT_PACKED = r"view creation failed \(2\)\."


class TerminalRun:
    """A program on a pseudo-terminal, and what this shows."""

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
        """All that is on the screen: its rows without what is blank in them."""
        return "\n".join(row.rstrip() for row in self.screen.display).rstrip("\n")

    def look(self):
        """Takes in what has been written, until nobody can write any more."""
        if select.select([self.master], [], [], 0.01)[0]:
            try:
                written = os.read(self.master, 1 << 16)
            except OSError:
                self.isOpen = False
                return
            self.bytes += written
            for line in re.findall(rb"[^\r]*\r?", written):  # none that was shown goes unseen
                self.stream.feed(line)
                if not re.search("VLX|view|[0-9]{6} ", self.text()):
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
        """The exit code, when all that the program has written is on the screen."""
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
        """Extractions whose files, $6, are so named wait until they are let go."""
        script = self.directory / "extracta"
        waiting = "|".join(f"*/{name}.txt" for name in names)
        script.write_text(
            f"#!/bin/sh\ncase $6 in {waiting}) until [ -e ../go ]; do {meanwhile}; done;; esac\nexec '{BIN}/extracta-standin' \"$@\"\n")
        script.chmod(0o755)
        self.environment["VELTAR_EXTRACTA_PATHOVERRIDE"] = str(script)

    def letGo(self):
        (self.folder / "go").touch()

    def run_(self, *arguments, width=80, program=(BIN / "VelExtracta",), **how):
        # Each in a folder of its own: in one, only one run a second is possible.
        self.folder = Path(tempfile.mkdtemp(dir=self.directory))
        (self.folder / "design.mcm").symlink_to(self.directory / "design.mcm")
        run = TerminalRun([*program, *arguments], self.environment, self.folder, width, **how)
        self.addCleanup(run.stop)
        return run

    def test_shows_on_any_width_what_goes_on_and_leaves_the_outcome_alone(self):
        self.hold("layer", "paddef")
        run = self.run_("-z", "design.mcm", "out.vlx", width=40)
        for width, line in ((40, r"0/10  layer \d:\d\d  \+8 waiting"),
                            (100, r"0/10  layer \d:\d\d  paddef \d:\d\d  \+8 waiting"),
                            (20, r"0/10  layer \d:\d\d")):
            run.resize(width)
            run.shows(line)
        self.letGo()
        self.assertEqual(run.end(), 0)
        self.assertRegex(run.text().replace("\n", ""), f"^{WRITTEN}$")
        self.assertEqual(run.mostRows, 1)

    def test_leaves_only_the_lines_of_the_outcome(self):
        cell = ("-z", "-cell", "design.mcm", "out.vlx")
        failing = ("-z", "-cell", "design.mcm", "no/out")
        cases = (
            (failing, lambda run: self.letGo(), 1, f"{WRITTEN}\n{NOT_PACKED}"),
            (("-z", "-cell", "-add", ".", "design.mcm", "out.vlx"), lambda run: self.letGo(),
             -signal.SIGABRT, ""),
            (cell, lambda run: run.process.terminate(), -signal.SIGTERM, NOT_CREATED),
            (cell, lambda run: run.process.send_signal(signal.SIGQUIT), -signal.SIGQUIT, ""),
            # With a line of full width.
            (failing, lambda run: os.write(run.master, b"\x03"), -signal.SIGINT, NOT_CREATED),
        )
        self.hold("layer")
        for arguments, happens, code, left in cases:
            run = self.run_(*arguments, width=40)
            run.shows(r"0/4  layer \d:\d\d .*")
            happens(run)
            self.assertEqual(run.end(), code, arguments)
            self.assertRegex(run.text(), f"^{left}$")

    def test_makes_room_for_the_log(self):
        self.environment["TKCORE_LOG"] = "1:/dev/stderr"
        self.hold("layer", "paddef")
        run = self.run_("-z", "design.mcm", "out.vlx", width=500)
        run.until(lambda: "waiting" in run.text())
        self.letGo()
        self.assertEqual(run.end(), 0)
        *logged, outcome = run.text().split("\n")
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
            self.assertRegex(run.bytes.decode(), f"^{WRITTEN}\r\n{NOT_PACKED}\r\n$")
        ended = subprocess.run([*program, "-z", "-cell", "design.mcm", "no/out"], text=True,
                               cwd=self.directory, env=self.environment, capture_output=True)
        self.assertRegex(ended.stdout + ended.stderr, f"^{WRITTEN}\n{NOT_PACKED}\n$")

    def test_shows_merging_and_packing(self):
        self.environment["READ_IS_SLOW"] = ".txt"
        self.hold("conn0_*_CONDUCTOR_ETCH")
        run = self.run_("-z", "design.mcm", "out.vlx", width=200)
        run.shows(r"22/23  conn0_\w+_CONDUCTOR_ETCH \d+:\d\d  [\d.]+ KiB")
        self.letGo()
        size = r"[\d.]+ [KM]iB"
        progress = rf"\d+%  {size} of {size}  {size}/s  \d:\d\d left"
        run.shows(rf"23/23  merging {progress}  {size}")
        run.shows(rf"packing {progress}")
        self.assertEqual(run.end(), 0)
        self.assertRegex(run.text(), f"^{WRITTEN}$")

    def test_shows_warnings_but_nothing_that_a_terminal_obeys(self):
        self.hold("connremainder")
        for locale, net, shown in (("C", b"\x1b[2J\x07\xff\xc2\x9b\xe6\xbc\xa2", r"\?\[2J\?\?\?\?"),
                                   ("C.UTF-8", "\u6f22".encode() * 60, "(\u6f22 ?){9,}")):
            self.environment["LC_ALL"] = locale
            run = self.run_("-z", "-n", net, "design.mcm", "out.vlx", width=79)
            run.shows(rf'\d+/\d+  remainder \d:\d\d  1 warning  the selected net "{shown}.*')
            self.assertNotRegex(run.bytes, rb"\x1b\[2J|\x07|\xff|\xc2\x9b")
            self.assertEqual(run.mostRows, 1)
        run = self.run_("-cell", "design.mcm", "no", width=100)
        run.shows(r"0/4  layer \d:\d\d  1 warning  the views will not be moved: there is no folder "
                  r"no  .*|" + WRITTEN + "\n" + NOT_PACKED)

    def test_is_rewritten_ten_times_a_second_at_most(self):
        self.hold("layer", meanwhile="printf '%0512d' 0 >> \"$6\"; sleep 0.01")
        start = time.monotonic()
        run = self.run_("-z", "-cell", "design.mcm", "out.vlx")
        run.until(lambda: run.bytes.count(b"\x1b[K\r") >= 15)
        rewritten = run.bytes.count(b"\x1b[K\r")
        self.assertLessEqual(rewritten, 10 * (time.monotonic() - start) + 1)

    def test_never_holds_up_a_run(self):
        self.hold("layer")
        run = self.run_("-z", "-cell", "design.mcm", "out.vlx", stdout=subprocess.DEVNULL)
        run.until(lambda: b"layer" in run.bytes)
        os.write(run.master, b"\x13")  # the terminal stops
        self.letGo()
        self.assertEqual(run.process.wait(PATIENCE), 0)


if __name__ == "__main__":
    unittest.main(verbosity=2)
