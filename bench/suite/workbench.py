"""Where things are while the suite runs: programs, scratch directory, sizes."""

import shutil
from pathlib import Path

from suite.measure import Launcher
from suite.sizes import Sizes


class Workbench:
    def __init__(self, programs: Path, scratch: Path, sizes: Sizes):
        self.programs = programs
        self.scratch = scratch
        self.sizes = sizes
        self.launcher = Launcher(self.program("bench-spawn"), scratch)

    def program(self, name: str) -> Path:
        return self.programs / name

    @staticmethod
    def installed(name: str) -> str:
        path = shutil.which(name)
        if path is None:
            raise FileNotFoundError(f"the program {name} is not installed")
        return path

    def run(self, *command, **options):
        return self.launcher.run(command, **options)

    def fresh_directory(self, name: str) -> Path:
        directory = self.scratch / name
        self.remove(directory)
        directory.mkdir()
        return directory

    @staticmethod
    def remove(path: Path) -> None:
        if path.is_dir():
            shutil.rmtree(path)
        else:
            path.unlink(missing_ok=True)
