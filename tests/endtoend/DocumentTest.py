#!/usr/bin/env python3
"""Compares docs/VIEWS.md and docs/EXTRACTOR.md with the programs, and runs the recipes in them.

Usage: DocumentTest.py BIN DOCS     (the built programs, the folder of the documents)
"""

import collections
import csv
import importlib.util
import os
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import textwrap
import unittest
from pathlib import Path

BIN = Path(sys.argv.pop(1)).resolve()
DOCS = Path(sys.argv.pop(1)).resolve()
VIEWS = (DOCS / "VIEWS.md").read_text()
EXTRACTOR = DOCS / "EXTRACTOR.md"
README = DOCS.parent / "README.md"
EXAMPLE = re.compile(r"^A!NET_NAME!NET_BUS.*\n(J!.*\n)(S!\w+!).*\n", re.MULTILINE)


def blocks(text, language=""):
    return re.findall(rf"^```{language}\n(.*?)^```$", text, re.MULTILINE | re.DOTALL)


def recipe(heading, language="sh"):
    """The block below a heading."""
    return blocks(VIEWS.partition(f"# {heading}\n")[2], language)[0]


def rows(header):
    """The rows of the table with this header, each a list of cells."""
    table = VIEWS.partition(f"\n| {header} ")[2].partition("\n\n")[0].split("\n")[2:]
    return [[cell.strip(" `") for cell in row.strip("|").split("|")] for row in table]


TEN = [row[0].removesuffix(".txt") for row in rows("File") if row[3] == "x"]


class Documents(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = Path(folder.name)
        os.chdir(cls.folder)
        os.environ |= {"VELTAR_EXTRACTA_PATHOVERRIDE": str(BIN / "extracta-standin"),
                       "VELTAR_EXTRACTA_LIMIT": "1", "EXTRACTA_STANDIN_TRACE": str(cls.folder / "trace")}
        subprocess.run([BIN / "make-design", "--nets", "30", "--records", "1500", "--odd-names",
                        "demo.mcm"], check=True)
        for arguments in (["demo.mcm", "all"], ["-cell", "demo.mcm", "cell"],
                          ["-z", "demo.mcm", "demo.vlx"]):
            Path(arguments[-1]).mkdir() if "-z" not in arguments else None
            subprocess.run([BIN / "VelExtracta", *arguments], check=True, capture_output=True)
        with open("all/net.txt", "r+b") as nets:
            more = nets.readline().count(b"!") - 3  # columns besides the two with odd values
            nets.seek(0, os.SEEK_END)
            nets.write(b'S!"Q", a "quoted" one!"!' + b"NA!" * more + b"\r\n")

    def setUp(self):
        os.chdir(self.folder / "all")

    def read(self, view):
        """The names of the columns, and the records."""
        path = next(self.folder.glob(f"*/{view}.txt"))
        lines = path.read_bytes().decode(errors="surrogateescape").split("\r\n")
        table = [line.split("!")[1:-1] for line in (lines[0], *lines[2:-1])]
        return table[0], table[1:]

    def columnsText(self, view):
        """The columns as in the document: only the first and the last of numbered ones."""
        names = " ".join(self.read(view)[0])
        names = re.sub(r"\b(\w+_)1 (?:\1\d+ )+\1(\d+)", r"\g<1>1~...~\g<1>\2", names)
        lines = textwrap.wrap(names, 100 - 13, break_on_hyphens=False)
        return "\n".join([lines[0], *(" " * 13 + line for line in lines[1:])]).replace("~", " ")

    def pinsOfNets(self):
        names, records = self.read("conn")
        return collections.Counter(record[names.index("NET_NAME")] for record in records
                                   if record[names.index("CLASS")] == "PIN")

    def expectPinsOfNets(self, file):
        lines = Path(file).read_bytes().decode(errors="surrogateescape").splitlines()
        counts = dict(reversed(line.split("\t", 1)) for line in lines)
        self.assertEqual(counts, {net: str(count) for net, count in self.pinsOfNets().items()})

    def runInShell(self, text):
        subprocess.run(["/bin/sh", "-e", "-c", text], check=True, stdout=subprocess.DEVNULL)

    def test_name_the_columns_and_files_of_each_view(self):
        shown = next(block for block in blocks(VIEWS) if block.startswith("layer"))
        listed = re.findall(r"^(\w+) +(\S.*(?:\n {13}.*)*)", shown, re.MULTILINE)
        if "VELEXTRACTA_UPDATE_DOCUMENTS" in os.environ:  # scripts/update-documents
            listed = [(view, columns if columns == "..." else self.columnsText(view))
                      for view, columns in listed]
            block = "".join(f"{view:13}{columns}\n" for view, columns in listed)
            (DOCS / "VIEWS.md").write_text(VIEWS.replace(shown, block))
        table = rows("File")
        self.assertEqual([f"{view}.txt" for view, _ in listed], [row[0] for row in table])
        for (view, columns), row in zip(listed, table):
            for place, folder in ((row[3], "all"), (row[4], "cell")):
                self.assertEqual(place == "x", (self.folder / folder / row[0]).exists(), row)
            columns = re.sub(r"(\w+_)1 \.\.\. \w+_(\d+)", lambda found: " ".join(
                f"{found[1]}{n + 1}" for n in range(int(found[2]))), columns).split()
            if columns != ["..."]:
                self.assertEqual(columns, self.read(view)[0], view)

    def test_name_the_views_in_the_order_of_their_extractions(self):
        started = re.findall("^start (.*?)[.]txt ", (self.folder / "trace").read_text(), re.MULTILINE)
        self.assertEqual(started[:len(TEN)], [view for view in TEN if view != "conn"] + ["connnets"])

    def test_count_what_is_delivered(self):
        files = os.listdir()
        controls = [name for name in files if name.startswith("extracta_control_")]
        pieces = {name for name in files if re.match("conn.+[.]txt", name)} - {"connnets.txt"}
        text = " ".join(VIEWS.split())
        for part in (f"for the {len(TEN)} views of a default run up to {len(files)} files,",
                     f"control files of its {len(controls)} extractions,",
                     f"the {len(pieces)} pieces that"):
            self.assertIn(part, text)
        for document, part in (("PLATFORMS", f"0; {len(files)} |"), ("WINDOWS", f"{len(files)} files;")):
            self.assertIn(part, (DOCS / f"{document}.md").read_text())

    def test_tell_which_views_share_keys(self):
        for views, other, keys in rows("Records of"):
            keys = [key.split(" = ") for key in keys.split(", ")]
            names, records = self.read(other)
            there = {tuple(record[names.index(key[-1])] for key in keys) for record in records}
            for view in views.split(", "):
                names, records = self.read(view)
                here = {tuple(record[names.index(key[0])] for key in keys) for record in records}
                here = {key for key in here if all(key)}
                self.assertTrue(here)
                self.assertLessEqual(here, there, view)

    def test_unpack_the_ten_views(self):
        os.chdir(self.folder)
        self.runInShell(recipe("What else is delivered") + "mkdir ten; mv *.txt ten")
        self.assertEqual(set(os.listdir("ten")), {f"{view}.txt" for view in TEN})
        self.assertEqual(Path("ten/conn.txt").read_bytes(), Path("all/conn.txt").read_bytes())

    @unittest.skipUnless(importlib.util.find_spec("pandas"), "python3-pandas is not installed")
    def test_load_into_pandas(self):
        names = {}
        exec(recipe("Python with pandas", "python"), names)
        for view in TEN:
            loaded = names["read_view"](f"{view}.txt")
            self.assertEqual((list(loaded.columns), loaded.values.tolist()), self.read(view))
        self.assertEqual(names["pins_of_nets"].to_dict(), self.pinsOfNets())
        self.assertEqual(names["thickness"].max(), 800)

    @unittest.skipUnless(shutil.which("sqlite3"), "sqlite3 is not installed")
    def test_load_into_sqlite(self):
        self.runInShell(recipe("SQLite"))
        database = sqlite3.connect("views.db")
        self.addCleanup(database.close)
        database.text_factory = lambda text: text.decode(errors="surrogateescape")
        for view in TEN:
            found = database.execute(f"SELECT * FROM {view}")
            self.assertEqual(([column[0] for column in found.description], list(map(list, found))),
                             self.read(view))
        self.expectPinsOfNets("pins-of-nets.tsv")

    def test_count_with_awk(self):
        self.runInShell(recipe("awk"))
        self.expectPinsOfNets("pins-of-nets.tsv")

    def test_load_into_a_spreadsheet(self):
        self.runInShell(recipe("A spreadsheet"))
        with open("net.csv", encoding="utf-8-sig", errors="surrogateescape", newline="") as table:
            names, *records = csv.reader(table)
        self.assertEqual((names, records), self.read("net"))

    def test_show_lines_of_real_files(self):
        nets = Path("net.txt").read_bytes().decode(errors="replace").split("\r\n")
        known = "\n".join([*nets, *(path.read_text() for path in (DOCS / "control-files").glob("*.txt"))])
        if "VELEXTRACTA_UPDATE_DOCUMENTS" in os.environ:
            for file in (EXTRACTOR, README):
                file.write_text(EXAMPLE.sub(lambda shown: "\n".join((nets[0], shown[1] + next(
                    line for line in nets if line.startswith(shown[2])), "")), file.read_text()))
        for shown in (*blocks(EXTRACTOR.read_text()), EXAMPLE.search(README.read_text())[0]):
            if shown.startswith("41 "):
                for line in shown.splitlines():
                    inHex, text = re.split("  +", line)
                    self.assertEqual(bytes.fromhex(inHex), text.encode() + b"\r\n")
                continue
            for part in re.split("^J!.*\n", shown, flags=re.MULTILINE):  # the J line has a path
                self.assertTrue(part in known, part)


if __name__ == "__main__":
    unittest.main(verbosity=2)
