"""What the figures were measured on."""

import os
import platform
import subprocess
from pathlib import Path

VERSIONS = {
    "zip": (["zip", "-v"], "Zip"),
    "7z": (["7z"], "7-Zip"),
    "mawk": (["mawk", "-W", "version"], "mawk"),
    "cat": (["cat", "--version"], "cat"),
    "xargs": (["xargs", "--version"], "xargs"),
}


def processor() -> str:
    for line in Path("/proc/cpuinfo").read_text().splitlines():
        if line.startswith("model name"):
            return line.partition(":")[2].strip()
    return platform.processor()


def is_virtual() -> bool:
    return " hypervisor" in Path("/proc/cpuinfo").read_text()


def memory_bytes() -> int:
    return os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES")


def version(command, word) -> str:
    """The first line of what the program says of itself that has the word in it."""
    said = subprocess.run(command, capture_output=True, stdin=subprocess.DEVNULL, check=False)
    lines = (said.stdout + said.stderr).decode(errors="replace").splitlines()
    return next((line.strip() for line in lines if word in line), "?")


def describe() -> dict:
    return {
        "processor": processor(),
        "cores": os.cpu_count(),
        "memory_bytes": memory_bytes(),
        "virtual": is_virtual(),
        "system": f"{platform.system()} {platform.release()}",
        "load_before": os.getloadavg()[0],
        "programs": {name: version(*entry) for name, entry in VERSIONS.items()},
    }


def as_text(machine: dict) -> str:
    return (
        f"{machine['cores']} cores ({machine['processor']}), "
        f"{machine['memory_bytes'] / (1 << 30):.0f} GiB, "
        f"{'virtual machine, ' if machine['virtual'] else ''}{machine['system']}, "
        f"load before {machine['load_before']:.1f}"
    )
