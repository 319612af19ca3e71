"""The promises that hold for each run of the soak, whatever happens to it."""

import contextlib
import re
import signal
from pathlib import Path

from plan import UNCLEAN

WRITTEN = r"VLX file written: 0x[0-9a-f]+\n"
# Exit code, or "-" for an end by signal, standard output and standard error.
OUTCOMES = {
    "delivered": rf"0:{WRITTEN}:",
    "not created": r"1::view creation failed \(1\)\.\n",
    "not packed": rf"1:{WRITTEN}:view creation failed \(2\)\.\n",
    "no design": r"1::mcm file does not exist: 0x[0-9a-f]+\n",
    "interrupted": rf"-:(:|:mcm file does not exist: 0x[0-9a-f]+\n|:view creation failed \(1\)\.\n|{WRITTEN}:view creation failed \(2\)\.\n)",
}
LOG_LINES = re.compile(r"^\d+\.\d{6} [^\n]*\n", re.MULTILINE)
WORKING_DIRECTORY = re.compile(r"(out/|empty/)?extract-?\d+(/|$)")
UNFINISHED = re.compile(r"((out|mine|closed)/)?\.unfinished-[0-9a-f]{16}$")


def outcomes_of(plan, code, output, errors):
    """The names of the outcomes that fit the end of a run."""
    if plan.log.startswith("0:-"):
        errors = LOG_LINES.sub("", errors)
    if code == -signal.SIGABRT:
        return {"aborted"} if output + errors == "" else set()
    if plan.is_silent:
        codes = {name: text.partition(":")[0] for name, text in OUTCOMES.items()}
        return {name for name, text in codes.items() if text == ("-" if code < 0 else str(code))}
    if code < 0 and signal.Signals(-code).name in UNCLEAN and errors == "":
        output = re.sub(WRITTEN, "", output)  # a signal may come right after the outcome line
    text = f"{'-' if code < 0 else code}:{output}:{errors}"
    return {name for name, pattern in OUTCOMES.items() if re.fullmatch(pattern, text)}


def allowed_outcomes(plan, code, sent):
    """sent has the names of the signals that have reached the program."""
    ending = plan.ending_signals() & sent
    disturbing = {"fatal", "spoiling", "displacing", "hanging"}
    allowed = set()
    if code < 0 and signal.Signals(-code).name in ending:
        allowed.add("interrupted")
    if plan.must_deliver():
        return allowed | {"delivered"}
    if plan.design == "no.mcm":
        return allowed | {"no design"}
    if plan.may_deliver():
        allowed.add("delivered")
    if plan.kinds & disturbing or plan.design == "mine" or plan.output == "closed":
        allowed.add("not created")
    if plan.may_abort():
        allowed.add("aborted")
    if plan.output_quality != "good" or plan.may_deliver_more():
        allowed.add("not packed")
    return allowed


def delivered_files(plan, site):
    if plan.packs:
        return site.packed_files(plan.output)
    # Nothing to deliver may be delivered to a file in the place of the folder.
    return site.folder_files(plan.output) if (site.path / plan.output).is_dir() else {}


def check_delivery(plan, site, wanted, is_whole):
    """The delivered files are right, and complete after a success, except spoilt ones."""
    try:
        found = delivered_files(plan, site)
    except (OSError, ValueError) as error:
        yield str(error)
        return
    for name in sorted(wanted.keys() | found):
        path = f"{plan.output}/{name}"
        is_older = not plan.packs and path in site.before and path not in site.changes()
        if plan.is_dirty(name) or is_older and (not is_whole or name not in wanted):
            continue
        if name not in found:
            if is_whole:
                yield f"{plan.output} lacks {name}"
        elif name not in wanted:
            if not plan.may_deliver_more():
                yield f"{plan.output} has {name}"
        elif found[name] != wanted[name]:
            yield f"{name} in {plan.output} differs from that of an undisturbed run"


def is_output(plan, path, wanted):
    if plan.packs:
        return path == {"link.vlx": "mine/linked.vlx"}.get(plan.output, plan.output)
    folder, _, rest = path.partition("/")
    name = rest.partition("/")[0]
    return folder == plan.output and (name in wanted or bool(name) and plan.may_deliver_more())


def check_changes(plan, site, outcome, was_killed, wanted):
    """Nothing but the output has changed, and nothing is left."""
    changes = site.changes()
    may_be_delivered = outcome == "delivered" or was_killed
    if outcome == "not packed" and not plan.packs and plan.output_quality != "bad":
        may_be_delivered = True  # a failed move stops half-way
    stays = was_killed or outcome == "aborted"
    for path in sorted(changes):
        if may_be_delivered and is_output(plan, path, wanted):
            continue
        if plan.packs and path == plan.log_path():
            continue  # a log in a folder without views
        if WORKING_DIRECTORY.match(path) and (stays or plan.replaces_folder()):
            continue
        if stays and path.partition("/")[0] == "moved":
            continue
        if was_killed and plan.packs and UNFINISHED.match(path):
            continue
        # Extractors follow a link in the place of the working directory, but the program does not.
        is_new_view = path.startswith("mine/") and path not in site.before
        if is_new_view and plan.replaces_folder() and "control" not in path:
            continue
        yield f"{path} is {'gone' if path not in site.entries() else 'changed or left'}"


def is_running(process):
    try:
        stat = Path(f"/proc/{process}/stat").read_text()
    except OSError:
        return False
    return stat.rpartition(")")[2].split()[0] not in "ZX"


def may_be_left(process, command, ended):
    """Whether the process comes from an extractor that ended by itself."""
    environment = ""
    while not environment and is_running(process):  # empty while it becomes another program
        with contextlib.suppress(OSError):
            environment = Path(f"/proc/{process}/environ").read_text(errors="replace")
    # The first is a process of the extractor's own shell.
    of = re.search(r"/tools/extractor .*/(extracta_control\w*\.txt) ", command)
    of = of or re.search(r"(?:^|\0)LEFT_BY=([^\0]*)", environment)
    return of[1] in ended if of else not is_running(process)


def check(plan, site, run, wanted):
    """A line for each broken promise."""
    if run.code is None:
        yield f"still runs {run.seconds:.0f} s after its start"
        return
    possible = outcomes_of(plan, run.code, run.output, run.errors)
    allowed = allowed_outcomes(plan, run.code, run.sent)
    run.outcome = next(iter(sorted(possible & allowed)), "unexpected")
    if run.outcome == "unexpected":
        said = f"says {run.output[-300:]!r} and {run.errors[-300:]!r}"
        yield f"ends with {run.code}, {said}; allowed: {sorted(allowed)}"
    was_killed = run.code < 0 and signal.Signals(-run.code).name in UNCLEAN
    has_output = any(is_output(plan, path, wanted) for path in site.changes())
    if run.outcome == "delivered" or has_output:
        # A move may stop half-way.
        is_whole = plan.packs or run.outcome == "delivered"
        yield from check_delivery(plan, site, wanted, is_whole)
    if run.outcome == "delivered":
        for process in run.gone_daemons:
            yield f"has ended the process {process}, which an extractor had left behind"
    yield from check_changes(plan, site, run.outcome, was_killed, wanted)
    if run.left:
        yield f"leaves {len(run.left)} processes, such as {run.left[0]}"
