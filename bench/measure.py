"""Measure programs: whole runs of any, and the stages of Tabweave's."""
import os
import re
import select
import subprocess
import sys
import tempfile
from collections import namedtuple

HERE = os.path.dirname(os.path.abspath(__file__))
RESULT = "{result}"  # stands in commands for the file to write; without it, that is standard output
STAGES = {"Input": "read", "Transform": "transform", "Output": "write"}
FEEDS = re.compile(r'<connection start_id="(\d+)" end_id="(\d+)"')
ENDED = re.compile(r"^  Processed (Input|Transform|Output) '.*' Id=(\d+) \(([\d,]+) cols? x ([\d,]+) rows?\) "
                   r"in (<?)([\d.,]+) second\(s\) \[.*\], Up to date")

# Seconds and MiB.
Run = namedtuple("Run", "wall cpu peak")
# Seconds; cells that were read, taken by transforms, or written; bytes resident more than before the stage, at its end
# and at its peak, None when the program had ended before its memory could be looked at.
Stage = namedtuple("Stage", "name seconds cells kept peak")


class Failed(Exception):
    """A program did not do its work; the text says why."""


def peers_folder():
    return os.environ.get("BENCH_PEERS", os.path.join(tempfile.gettempdir(), "bench-peers"))


def environment():
    modules = os.path.join(peers_folder(), "node_modules")
    return dict(os.environ, LC_ALL="C.UTF-8", TZ="UTC", QT_QPA_PLATFORM="offscreen", NODE_PATH=modules,
                PYTHONDONTWRITEBYTECODE="1")


def short(text):
    return " ".join(text.split())[-160:]


def with_result(command, result):
    return [word.replace(RESULT, result) for word in command]


def run(command, result, work):
    """One whole process that must leave something in the file `result`."""
    if os.path.exists(result):
        os.remove(result)
    notes = os.path.join(work, "notes")
    words = with_result(command, result)
    caught = result if words == command else os.path.join(work, "output")
    ended = subprocess.run([sys.executable, "-I", "-S", os.path.join(HERE, "launcher.py"), notes, caught, *words],
                           env=environment(), stderr=subprocess.PIPE, check=False)
    message = short(ended.stderr.decode(errors="replace"))
    if ended.returncode:
        raise Failed(message or "it could not be started")
    with open(notes) as file:
        wall, cpu, peak, status = file.read().split()
    if status != "0":
        raise Failed(message or f"exit status {status}")
    if not os.path.exists(result) or not os.path.getsize(result):
        raise Failed(message or "it wrote nothing")
    return Run(float(wall), float(cpu), int(peak) / 1024)


def warm(paths):
    """Reads the files once, so that no program pays for the disk."""
    for path in paths:
        with open(path, "rb") as file:
            while file.read(1 << 22):
                pass


class Memory:
    """Resident bytes of a process, and their peak since the last look; None for what is not known."""

    def __init__(self, process):
        self.folder = f"/proc/{process}/"
        self.known = None, None
        self.anew = False

    def sample(self):
        """Keeps what a later look would find, in case the process has ended by then."""
        try:
            with open(self.folder + "status") as file:
                found = dict(re.findall(r"^(VmRSS|VmHWM):\s*(\d+) kB", file.read(), re.M))
            self.known = int(found["VmRSS"]) * 1024, int(found["VmHWM"]) * 1024
        except (OSError, KeyError):
            pass

    def look(self):
        """(now, peak)"""
        self.sample()
        (now, peak), self.known = self.known, (None, None)
        since_last = self.anew
        self.anew = self.begin_anew()
        return now, peak if since_last else None

    def begin_anew(self):
        try:
            with open(self.folder + "clear_refs", "w") as file:
                file.write("5")
            return True
        except OSError:  # some systems do not let the peak be forgotten
            return False


def lines_of(pipe, meanwhile):
    """The lines of a pipe as they arrive; calls `meanwhile` a hundred times a second while there are none."""
    rest = b""
    while True:
        if not select.select([pipe], [], [], 0.01)[0]:
            meanwhile()
            continue
        more = os.read(pipe.fileno(), 1 << 16)
        if not more:
            return
        *lines, rest = (rest + more).split(b"\n")
        for line in lines:
            yield line.decode(errors="replace")


def number(text):
    return int(text.replace(",", ""))


def stages(command, document, result):
    """Reading, transforming and writing, of one run that tells in its log when an item ended, and in what time.

    The memory is looked at when the line arrives, so it may be that of a moment later, or, when the program has ended,
    earlier."""
    found = {name: [] for name in STAGES.values()}
    feeds = FEEDS.findall(document)
    made = {}
    log = []
    process = subprocess.Popen([*with_result(command, result), "-verbose"], stdin=subprocess.DEVNULL,
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=environment())
    memory = Memory(process.pid)
    before = None
    with process:
        for text in lines_of(process.stdout, memory.sample):
            log.append(text)
            ended = ENDED.match(text)
            if not ended and not text.startswith("Started run at"):
                continue
            now, peak = memory.look()
            if ended:
                kind, item, columns, rows, below, seconds = ended.groups()
                made[item] = cells = number(columns) * number(rows)
                if kind == "Transform":
                    cells = sum(made[start] for start, end in feeds if end == item)
                found[STAGES[kind]].append((0.0 if below else float(seconds.replace(",", "")), cells,
                                            difference(now, before), difference(peak, before)))
            before = now
    if process.returncode:
        raise Failed(short("\n".join(log)))
    return [summed(name, items) for name, items in found.items() if items]


def difference(after, before):
    return None if after is None or before is None else after - before


def summed(name, items):
    """The items of a stage as one: the peak is the highest over what was there before the stage's first item."""
    seconds, cells, kept, peak = 0.0, 0, 0, 0
    for item_seconds, item_cells, item_kept, item_peak in items:
        seconds += item_seconds
        cells += item_cells
        peak = None if None in (peak, kept, item_peak) else max(peak, kept + item_peak)
        kept = None if None in (kept, item_kept) else kept + item_kept
    return Stage(name, seconds, cells, kept, peak)
