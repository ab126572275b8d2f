"""The page of results, in Markdown: machine, commands, tables and stages."""
import datetime
import os
import platform
import re
import shlex
import subprocess
import sys

from measure import HERE, environment, with_result
from peers import PEERS, SYSTEM_PYTHON
from tasks import TASKS, task_document

SUBJECT = "Tabweave"
TOP = os.path.dirname(HERE)
FIGURES = [("Wall time, seconds", "wall", "{:.2f}"), ("Processor time, seconds", "cpu", "{:.2f}"),
           ("Peak memory, MiB", "peak", "{:,.0f}")]
MIB = 1 << 20


def progress(rows, task, outcomes):
    """A line for whoever waits."""
    said = [f"{name} {outcome.problem or f'{outcome.run.wall:.2f} s'}" for name, outcome in outcomes.items()]
    print(f"{task}, {rows:,} rows: {'; '.join(said)}", file=sys.stderr, flush=True)


def table(head, rows):
    lines = [head, ["---"] * len(head), *rows]
    return "\n".join("| " + " | ".join(cell.replace("|", "\\|") for cell in line) + " |" for line in lines)


def found(pattern, path):
    """What the pattern's group matches in a file of the system."""
    try:
        with open(path, encoding="utf-8", errors="replace") as file:
            match = re.search(pattern, file.read(), re.M)
    except OSError:
        match = None
    return match[1].strip() if match else "unknown"


def said_by(*command):
    said = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, env=environment(), check=False)
    return said.stdout.decode(errors="replace").strip()


def machine(work):
    kibibytes = found(r"^MemTotal:\s*(\d+) kB", "/proc/meminfo")
    now, _, before = os.getloadavg()
    return table(["Machine", ""], [
        ["processor", found(r"^model name\s*:(.*)", "/proc/cpuinfo")],
        ["threads", str(len(os.sched_getaffinity(0)))],
        ["memory", f"{int(kibibytes) / MIB:.0f} GiB" if kibibytes.isdigit() else kibibytes],
        ["system", found(r'^PRETTY_NAME="?([^"\n]*)', "/etc/os-release") + ", Linux " + platform.release()],
        ["data and results on", said_by("stat", "-f", "-c", "%T", work) or "unknown"],
        ["load at the end", f"{now:.1f}, over 15 minutes {before:.1f}"],
        ["date", datetime.date.today().isoformat()],
    ])


def without_folders(line, bench):
    """The same on any machine: relative to the sources or to the folder of the data."""
    for path, name in ((os.path.join(bench.work, ""), ""), (os.path.join(TOP, ""), ""), (SYSTEM_PYTHON, "python3"),
                       (bench.program, "tabweave")):
        line = line.replace(path, name)
    return line


def programs(bench, given):
    """Tabweave as it describes its build, and the others with their versions."""
    left_out = [name for name in PEERS if name not in given.versions]
    lines = [[SUBJECT, f"{said_by(bench.program, '-build')}, {without_folders(bench.program, bench)}"]]
    lines += [[name, given.versions[name]] for name in given.peers]
    text = table(["Program", "Version"], lines)
    return text + (f"\n\nNot installed, so not measured: {', '.join(left_out)}." if left_out else "")


def invocation(given):
    words = ["bench/run.py", "--sizes", ",".join(str(rows) for rows in given.sizes), "--tasks", ",".join(given.tasks),
             "--peers", ",".join(given.peers), "--repeat", str(given.repeat)]
    return "    " + shlex.join(words)


def quoted(word):
    """For a shell; double quotes around single ones where that is enough."""
    return f'"{word}"' if "'" in word and not re.search(r'["$`\\!]', word) else shlex.quote(word)


def shown(words, bench):
    if words[:2] == ["sh", "-c"]:
        return without_folders(words[2], bench)
    return without_folders(" ".join(map(quoted, words)), bench)


def commands(bench, given, measured):
    """How each program was started for each task, at the first size that has the task."""
    lines = []
    for task in given.tasks:
        rows = next((rows for rows, name in measured if name == task), None)
        if rows is None:
            continue
        folder = bench.data(rows, [])
        lines.append(f"    # {task}: {TASKS[task].title}")
        for name in measured[rows, task][0]:
            words = (bench.command(task_document(task), TASKS[task].files, folder) if name == SUBJECT
                     else PEERS[name].command(task, folder))
            lines.append("    " + shown(with_result(words, "result." + TASKS[task].extension), bench))
    return "\n".join(lines)


def cell(outcome, base, figure, form):
    """A figure; with Tabweave's as base also how many times as much it is."""
    if outcome is None:
        return "–"
    if outcome.problem:
        return "no figure"
    value = getattr(outcome.run, figure)
    if base is None or base.problem or not getattr(base.run, figure):
        return form.format(value)
    return f"{form.format(value)} ({value / getattr(base.run, figure):.2f})"


def figures(rows, measured, names):
    """Wall time, processor time and memory of all programs at one size; and what went wrong."""
    tasks = [task for size, task in measured if size == rows]
    used = [name for name in names if any(name in measured[rows, task][0] for task in tasks)]
    parts = []
    for title, figure, form in FIGURES:
        lines = []
        for task in tasks:
            outcomes = measured[rows, task][0]
            base = outcomes[SUBJECT]
            lines.append([task, cell(base, None, figure, form)]
                         + [cell(outcomes.get(name), base, figure, form) for name in used])
        parts.append(f"### {title}, {rows:,} rows\n\n" + table(["Task", SUBJECT, *used], lines))
    wrong = [f"- {task}, {name}: {outcome.problem}" for task in tasks
             for name, outcome in measured[rows, task][0].items() if outcome.problem]
    return parts + (["Without figures:\n\n" + "\n".join(wrong)] if wrong else [])


def bytes_per_cell(amount, cells):
    return "–" if amount is None or not cells else f"{amount / cells:.1f}"


def stage_lines(rows, measured):
    for size, task in measured:
        outcomes, stages = measured[size, task]
        if size != rows:
            continue
        for stage in stages:
            yield [task, stage.name, f"{stage.seconds:.3f}", f"{stage.cells:,}",
                   f"{stage.seconds / stage.cells * 1e9:.0f}" if stage.cells else "–",
                   "–" if stage.peak is None else f"{stage.peak / MIB:,.1f}",
                   bytes_per_cell(stage.peak, stage.cells), bytes_per_cell(stage.kept, stage.cells)]


def page(bench, given, measured):
    parts = [
        "# Performance",
        "How long Tabweave takes, and how much memory, beside other programs, on the same files in the same run. "
        "`bench/run.py` wrote this page; [bench/README.md](../bench/README.md) says how it measures.",
        machine(bench.work), programs(bench, given),
        "## Programs side by side",
        f"Medians of {given.repeat} run(s), fewer where they took long. In parentheses: how many times as much as "
        f"{SUBJECT} in the same run, so that above 1 {SUBJECT} needs less. A figure stands only where the result held the "
        "same rows, and sorted ones in the same order, as that of plain Python. –: the program cannot do the task, or "
        "not at this size.",
    ]
    sizes = sorted({rows for rows, _ in measured})
    for rows in sizes:
        parts += figures(rows, measured, given.peers)
    parts += ["## Stages",
              f"One more run of {SUBJECT} for each task. Seconds are those of its own log; cells are those that were "
              "read, that transforms took, or that were written. Peak: resident memory above that before the stage, at "
              "most. Kept: how much of it is there at the stage's end; below 0, memory was given back. –: the program "
              "ended before its memory could be read."]
    for rows in sizes:
        parts.append(f"### {rows:,} rows\n\n" + table(
            ["Task", "Stage", "Seconds", "Cells", "ns per cell", "Peak, MiB", "Peak, bytes per cell",
             "Kept, bytes per cell"], list(stage_lines(rows, measured))))
    parts += ["## Commands", "The whole page again, on another machine:", invocation(given),
              "The commands that it ran; where a command names no result, that is its standard output:",
              commands(bench, given, measured)]
    return "\n\n".join(parts) + "\n"
