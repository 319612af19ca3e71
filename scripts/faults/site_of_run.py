"""The folders of a run of the soak, and their changes."""

import hashlib
import os
import re
import shutil
import stat
import subprocess
import zipfile
from pathlib import Path

OLDER = b"what an older run has left"
BIG_BYTES = 3_000_000  # size of an added file: more than one piece of an archive


class Site:
    """Two folders in the directory, which the user of the run owns: site with the design and the
    outputs, and tools with extractors and logs."""

    def __init__(self, directory, design, user):
        self.path = directory / "site"
        self.tools = directory / "tools"
        self.tools.mkdir(parents=True)
        self.path.mkdir()
        shutil.copyfile(design, self.path / "design.mcm")
        for name in ["out", "empty", "mine", "clash", "added", "closed"]:
            (self.path / name).mkdir()
        for name in ["old.vlx", "other.MCM", "mine/secret", "mine/letter.txt", "mine/linked.vlx"]:
            (self.path / name).write_bytes(OLDER)
        for name in ["clash/layer.txt", "added/notes.txt", "out/layer.txt", "out/notes.md"]:
            (self.path / name).write_bytes(OLDER)
        (self.path / "added/big.bin").write_bytes(bytes(range(250)) * (BIG_BYTES // 250))
        (self.path / "link.vlx").symlink_to("mine/linked.vlx")
        for fifo in [self.path / "fifo", self.tools / "pipe"]:
            os.mkfifo(fifo)
        (self.path / "old.vlx").chmod(0o640)
        (self.path / "closed").chmod(0o555)
        if user is not None:
            for entry in [directory, *directory.rglob("*")]:
                os.chown(entry, user, user, follow_symlinks=False)
        self.before = self.entries()

    def entries(self):
        """All entries by path: kind, permissions, number and contents."""
        found = {}
        for folder, folders, files in os.walk(self.path):
            for name in folders + files:
                path = os.path.join(folder, name)
                status = os.lstat(path)
                contents = ""
                if stat.S_ISREG(status.st_mode):
                    contents = hashlib.sha1(Path(path).read_bytes()).hexdigest()
                elif stat.S_ISLNK(status.st_mode):
                    contents = os.readlink(path)
                found[os.path.relpath(path, self.path)] = (status.st_mode, status.st_ino, contents)
        return found

    def changes(self):
        """The paths of all changes since the start of the run."""
        after = self.entries()
        return {path for path in self.before.keys() | after if self.before.get(path) != after.get(path)}

    def contents(self, path):
        """The bytes without the design's path, which the views contain."""
        return Path(path).read_bytes().replace(str(self.path).encode(), b"")

    def folder_files(self, folder):
        """Contents by name of another run's results; None for anything but a regular file."""
        found = {}
        for entry in (self.path / folder).iterdir():
            is_file = entry.is_file() and not entry.is_symlink()
            found[entry.name] = self.contents(entry) if is_file else None
        return found

    def packed_files(self, archive):
        """The same for an archive; raises ValueError if something is wrong with it."""
        path = self.path / archive
        tested = subprocess.run(["unzip", "-tqq", path], capture_output=True, text=True)
        if tested.returncode != 0 and not tested.stdout.endswith("zipfile is empty\n"):
            raise ValueError(f"unzip says of {archive}: {tested.stdout}{tested.stderr}".strip())
        place = re.escape(str(self.path).lstrip("/"))
        found = {}
        try:
            with zipfile.ZipFile(path) as opened:
                for name in opened.namelist():
                    entry = re.fullmatch(rf"{place}/(out/|empty/)?extract-?\d+/(.+)", name, re.DOTALL)
                    if not entry or entry[2] in found:
                        raise ValueError(f"{archive} has an entry {name!r}")
                    found[entry[2]] = opened.read(name).replace(str(self.path).encode(), b"")
        except zipfile.BadZipFile as error:
            raise ValueError(f"{archive}: {error}") from error
        return found
