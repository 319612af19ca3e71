"""Starts a program for which some system calls fail, also in all processes that it starts.

Usage: withhold.py CALL=ERROR... -- PROGRAM ARGUMENT...

CALL is the name of a system call, "newer" for all calls newer than Linux 3.10, or O_TMPFILE for the
opening of an unnamed file. ERROR is their error, such as ENOSYS.
"""

import ctypes
import errno
import os
import sys

ALLOW, FAIL = 0x7FFF0000, 0x00050000  # actions of the library's filter
MASKED_EQUAL = 7
LAST_NUMBER = 1000  # far above the last system call
library = ctypes.CDLL("libseccomp.so.2")  # always there: Debian's apt needs it
library.seccomp_init.restype = ctypes.c_void_p


class Comparison(ctypes.Structure):
    _fields_ = [
        ("argument", ctypes.c_uint),
        ("how", ctypes.c_int),
        ("mask", ctypes.c_uint64),
        ("value", ctypes.c_uint64),
    ]


def number_of(call):
    """The number of a call; negative if this machine does not have it."""
    return library.seccomp_syscall_resolve_name(call.encode())


def is_newer(call):
    # New calls get the next number; this is the last call of Linux 3.10.
    return number_of(call) > number_of("finit_module")


def rules(call):
    """Pairs of a call's number and the comparisons of its arguments for which it is withheld."""
    if call == "newer":
        return [(number, []) for number in range(number_of("finit_module") + 1, LAST_NUMBER)]
    if call == "O_TMPFILE":
        flags = os.O_TMPFILE
        return [(number_of("openat"), [Comparison(2, MASKED_EQUAL, flags, flags)])]
    return [(number_of(call), [])]


def withhold(withheld):
    loaded = ctypes.c_void_p(library.seccomp_init(ALLOW))
    for call, error in withheld:
        for number, compared in rules(call):
            action = FAIL | getattr(errno, error)
            array = (Comparison * len(compared))(*compared)
            if library.seccomp_rule_add_array(loaded, action, number, len(compared), array) != 0:
                sys.exit(f"{call} cannot be withheld")
    if library.seccomp_load(loaded) != 0:
        sys.exit("the system does not take the filter")


if __name__ == "__main__":
    end = sys.argv.index("--")
    withhold([word.split("=") for word in sys.argv[1:end]])
    os.execv(sys.argv[end + 1], sys.argv[end + 1 :])
