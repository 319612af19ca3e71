"""The events of one run of the soak, all drawn from the seed, and the outcomes they allow."""

import copy
import random
import signal

# Views of a default run, as the names of their control files have them. A cell run has only one
# extraction, whatever is drawn.
VIEWS = ["layer", "paddef", "fullgeo", "diestack", "net", "component", "outline", "compositepad"]
VIEWS += ["logicalpin", "connnets", "conn0", "conn1", "conn2", "connremainder"]
SURE_VIEWS = {view for view in VIEWS if not view[-1].isdigit()}

# Shell commands of an extractor before or after its work. Words with @ are drawn.
HARMLESS = [
    "sleep @time",
    "head -c @bytes /dev/zero | tr '\\0' x",
    "head -c @bytes /dev/zero >&2",
    "(sleep @time) &",
    "(trap '' TERM; sleep @time) &",
    "daemon sleep 600 >/dev/null 2>&1",
    "daemon sleep 600",
    "daemon sh -c 'trap \"\" TERM; sleep 600'",
    "setsid sh -c 'exec 3</proc/self/fd/1; exec cat <&3 >/dev/null' &",
    "cd /",
]
# The same, but what is left in the working directory is delivered if files are added.
LITTERING = [
    '(cd "$run" && mkdir -p deep/er/and/er && touch deep/er/file && chmod 0 deep/er deep)',
    'i=0; while [ $i -lt 200 ]; do touch "$run/many $i"; i=$((i + 1)); done',
    'ln -s "$design" "$run/a link"; mkfifo "$run/a pipe"; ln "$design" "$run/hard"',
]
FATAL = ["exit @code", "ended; kill -@signal $$", "kill -9 $PPID", "kill -TERM $PPID"]
FATAL += ["ended; kill -9 0"]
# Only after the work: these replace the extractor's file, which then may not be delivered.
SPOILING = [
    'rm "$first"',
    'cp /dev/null "$first"',
    'rm "$first"; mkfifo "$first"',
    'rm "$first"; mkdir "$first"; touch "$first/x"',
    'rm "$first"; ln -s "$site/mine/secret" "$first"',
    'rm "$first"; ln "$design" "$first"',
    'chmod 0 "$first"',
    'head -c 300 "$first" >"$first.cut"; mv "$first.cut" "$first"',
]
# What happens to the working directory.
DISPLACING = [
    'rm -rf "$run"',
    'mv "$run" "$site/moved"',
    'mv "$run" "$site/moved"; mkdir "$run"; touch "$run/theirs.txt"',
    'mv "$run" "$site/moved"; ln -s "$site/mine" "$run"',
    'rm -rf "$run"; ln -s ../mine "$run"',
    'rm -rf "$run"; touch "$run"',
    'chmod 0 "$run"',
    'rm -f "$run/conn.txt"; mkdir "$run/conn.txt"; touch "$run/conn.txt/x"',
]
# The survey makes these before the program does. The program makes them anew.
PLANTING = [
    'ln -s "$design" "$run/conn.txt"',
    'ln "$design" "$run/conn.txt"',
    'ln -s "$site/mine/secret" "$run/extracta_control_connremainder.txt"',
    'mkfifo "$run/conn.txt"',
]
HANGING = [
    "sleep 600",
    "trap '' TERM INT HUP; while :; do sleep 1; done",
    "kill -STOP $$",
    "kill -STOP $PPID; sleep 600",
    "(setsid sh -c 'trap \"\" TERM; while :; do sleep 1; done' &); sleep 600",
    "bomb() { while :; do bomb & sleep 0.2; done; }; bomb 2>/dev/null; sleep 600",
    "while :; do setsid sleep 600 & done 2>/dev/null; sleep 600",
]
DISTURBANCES = {
    "harmless": HARMLESS,
    "littering": LITTERING,
    "fatal": FATAL,
    "spoiling": SPOILING,
    "displacing": DISPLACING,
    "planting": PLANTING,
    "hanging": HANGING,
}
WEIGHTS = [10, 2, 2, 3, 2, 2, 3]

ENDING = ["SIGINT", "SIGTERM", "SIGHUP", "SIGUSR1", "SIGUSR2", "SIGXCPU", "SIGKILL", "SIGQUIT"]
ENDING_WEIGHTS = [5, 5, 3, 2, 1, 1, 4, 1]
UNCLEAN = {"SIGKILL", "SIGQUIT"}  # an end without any clean-up
IDLE = ["SIGTSTP", "SIGPIPE", "SIGXFSZ", "SIGCONT", "SIGWINCH", "SIGCHLD"]

# Options: words, and whether the added file's copy fails.
NETS = [[], [], [], ["-n", "GND"], ["-N", "GND,VDDQ,,NO_SUCH"], ["/n", " GND"], ["-n", "O'NE"]]
ADDED = [
    ([], False),
    (["-add", "added/notes.txt"], False),
    (["/ADD", "added/big.bin,no/such,added/notes.txt"], False),
    (["-add", "added/notes.txt,added/notes.txt"], True),
    (["-add", "mine"], True),
    (["-add", "clash/layer.txt"], True),
]
ADDED_WEIGHTS = [9, 3, 3, 1, 1, 1]
# Paths of archives and folders, and the result: delivered, refused, or it depends.
ARCHIVES = [("new.vlx", "good"), ("old.vlx", "good"), ("link.vlx", "good"), ("no/new.vlx", "bad")]
ARCHIVES += [("design.mcm", "bad"), ("other.MCM", "bad"), ("fifo", "bad"), ("out", "bad")]
ARCHIVES += [("closed/new.vlx", "unsure")]
FOLDERS = [("out", "good"), ("empty", "good"), ("old.vlx", "bad"), ("no", "bad")]
FOLDERS += [("closed", "unsure")]
LOGS = ["", "@level:@tools/log", "0:-", "@level:@tools/no/log", "@level:@tools/pipe"]
LOGS += ["@level:@design", "@level:@output", "@level:@output/net.txt"]
LOG_WEIGHTS = [6, 6, 2, 1, 1, 1, 1, 1]


class Plan:
    def __init__(self, seed):
        self.random = random.Random(seed)
        choose = self.random.choices
        self.is_cell = self.chance(0.5)
        self.packs = self.chance(0.6)
        self.nets = self.random.choice(NETS)
        self.added, self.added_fails = choose(ADDED, ADDED_WEIGHTS)[0]
        self.design = choose(["design.mcm", "no.mcm", "mine"], [30, 1, 1])[0]
        places = ARCHIVES if self.packs else FOLDERS
        weights = [6 if quality == "good" else 1 for _, quality in places]
        self.output, self.output_quality = choose(places, weights)[0]
        self.is_absolute = self.chance(0.5)
        self.limit = self.random.choice(["", "1", "3", "16", "many"])
        self.umask = choose([0o022, 0o077, 0], [8, 1, 1])[0]
        self.is_silent = self.chance(0.05)  # both streams are closed
        self.is_hang_up_ignored = self.chance(0.1)
        self.is_log_stuck = self.chance(0.04)
        self.log = "@level:@tools/pipe" if self.is_log_stuck else choose(LOGS, LOG_WEIGHTS)[0]
        self.log = self.log.replace("@level", self.random.choice("012"))
        self.log = self.log.replace("@design", self.design).replace("@output", self.output)
        self.kinds = set()  # of disturbances
        self.dirty = []  # beginnings of the names of views with any content
        self.fails = False  # for certain
        self.commands = {"before": [], "behind": []}
        for kind in choose([*DISTURBANCES], WEIGHTS, k=self.random.choice([0, 1, 1, 2, 3])):
            self.disturb(kind)
        self.signals = []  # seconds after the start, name, and whom it reaches
        self.draw_signals()

    def undisturbed(self):
        """The same run without disturbances."""
        plan = copy.copy(self)
        plan.packs, plan.output, plan.log = False, "empty", ""
        plan.is_silent = plan.is_hang_up_ignored = plan.is_log_stuck = False
        plan.kinds, plan.dirty, plan.signals = set(), [], []
        plan.commands = {"before": [], "behind": []}
        return plan

    def chance(self, probability):
        return self.random.random() < probability

    def disturb(self, kind):
        if kind == "planting" and self.is_cell:
            return  # there is neither a survey nor a merge
        if kind in {"spoiling", "displacing"} and kind in self.kinds:
            return  # the second would spoil or displace what a link leads to
        view = self.random.choice(VIEWS)
        if kind == "planting":
            view = "connnets"
        elif self.is_cell or self.chance(0.2):
            view = "*"
        drawn = {
            "@time": round(self.random.uniform(0, 0.6), 3),
            "@bytes": int(10 ** self.random.uniform(1, 6.6)),
            "@code": self.random.choice([1, 2, 3, 127, 255]),
            "@signal": self.random.choice(["SEGV", "KILL", "TERM", "INT", "USR1"]),
        }
        text = self.random.choice(DISTURBANCES[kind])
        for word, value in drawn.items():
            text = text.replace(word, str(value))
        is_behind = kind == "spoiling" or (kind != "planting" and self.chance(0.5))
        pattern = "*" if view == "*" else f"extracta_control_{view}*"
        self.commands["behind" if is_behind else "before"].append((pattern, text))
        self.kinds.add(kind)
        self.fails |= kind == "fatal" and view in {"*", *SURE_VIEWS}
        if kind == "spoiling":
            everything = "layer" if self.is_cell else ""
            self.dirty.append(everything if view == "*" else "conn" if "conn" in view else view)
        elif kind == "displacing":
            self.dirty.append("")

    def draw_signals(self):
        if self.may_hang() or self.chance(0.5):
            name = self.random.choices(ENDING, ENDING_WEIGHTS)[0]
            kills_keepers = any("$PPID" in text for _, text in self.all_commands())
            # A killed keeper ends nobody; then only the program can end its processes.
            if name in UNCLEAN and kills_keepers or name == "SIGHUP" and self.is_hang_up_ignored:
                name = "SIGTERM"
            at = self.random.uniform(0, 0.1 if self.chance(0.3) else 2.5)
            self.signals.append((at, name, "program"))
            if self.chance(0.3):
                at += self.random.uniform(0, 0.05 if self.chance(0.5) else 1.5)
                self.signals.append((at, self.random.choice(["SIGINT", "SIGTERM", name]), "program"))
        at = self.random.uniform(0, 2)
        if self.chance(0.1):
            self.signals.append((at, self.random.choice(IDLE), "program"))
        elif self.chance(0.1) and not self.ending_signals() & UNCLEAN:
            whom = self.random.choice(["process-keeper:", "extracta-standin"])
            self.signals.append((at, self.random.choice(["SIGKILL", "SIGTERM"]), whom))
            self.kinds.add("fatal")
        self.signals.sort()

    def all_commands(self):
        return self.commands["before"] + self.commands["behind"]

    def ending_signals(self):
        ignored = {"SIGHUP"} if self.is_hang_up_ignored else set()
        return {name for _, name, whom in self.signals if whom == "program"} - ignored - {*IDLE}

    def log_path(self):
        return self.log.partition(":")[2]

    def may_hang(self):
        return "hanging" in self.kinds or self.is_log_stuck

    def replaces_folder(self):
        """Whether something else may be in the place of the working directory."""
        marks = ['mkdir "$run";', 'touch "$run"', '"$site/mine" "$run"', '../mine "$run"']
        return any(mark in text for _, text in self.all_commands() for mark in marks)

    def may_deliver(self):
        # Without the working directory there is nothing to deliver, so even a bad output is fine.
        is_empty = not self.packs and "displacing" in self.kinds
        is_possible = self.design == "design.mcm" and (self.output_quality != "bad" or is_empty)
        # The file with the name of the added one may be gone.
        clashes = self.added_fails and not self.kinds & {"spoiling", "displacing"}
        return is_possible and not self.fails and not clashes

    def must_deliver(self):
        """Whether the run must deliver, if no signal comes."""
        disturbing = {"fatal", "spoiling", "displacing", "hanging"}
        if self.added:
            disturbing.add("littering")
        is_certain = self.may_deliver() and self.output_quality == "good"
        return is_certain and not self.kinds & disturbing and not self.is_log_stuck

    def may_abort(self):
        clashing = {"spoiling", "displacing", "littering"}
        return self.added_fails or bool(self.added and self.kinds & clashing)

    def may_deliver_more(self):
        return bool(self.kinds & {"littering", "displacing", "spoiling"})

    def is_dirty(self, name):
        name = name.removeprefix("extracta_control_")
        return any(name.startswith(beginning) for beginning in self.dirty)

    def extractor(self, standin, tools):
        """The script that is started as extracta."""
        lines = ["#!/bin/sh", f"tools={tools}"]
        lines += ["design=$4 first=$6 run=${6%/*} site=${4%/*} stem=${5##*/}"]
        # It notes its own end, and marks the processes that it leaves.
        lines += ['ended() { echo "$stem" >>"$tools/ended"; }', "trap ended EXIT"]
        lines += ["export LEFT_BY=$stem"]
        # A shell that starts in a removed folder prints that, perhaps without a reader.
        lines += ['daemon() { (cd / && exec setsid "$@") &', 'echo "$! $stem" >>"$tools/daemons"; }']
        for pattern, text in self.commands["before"]:
            lines += [f"case $stem in {pattern}) {text} ;; esac"]
        lines += [f'{standin} "$@"', "code=$?"]
        for pattern, text in self.commands["behind"]:
            lines += [f"case $stem in {pattern}) {text} ;; esac"]
        return "\n".join([*lines, "exit $code", ""])

    def command_line(self):
        options = (["-z"] if self.packs else []) + (["-Cell"] if self.is_cell else [])
        return [*options, *self.nets, *self.added]
