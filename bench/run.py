#!/usr/bin/env python3
"""Measure Tabweave, alone or beside other programs, and print Markdown.

    run.py                                        everything that is installed, at 100k, 1M and 5M rows
    run.py --peers '' --sizes 10k --repeat 1      Tabweave alone, quickly
    run.py --report docs/performance.md           write the page instead of printing it

A program's first result for a task is compared with that of plain Python; a wrong one gets no time. Ends with 1 when
Tabweave failed or was wrong.
"""
import argparse
import os
import re
import statistics
import sys
import tempfile
from collections import namedtuple

import generate
import measure
import peers
import report
import results
from tasks import TASKS, task_document

PROGRAM = os.path.join(os.path.dirname(measure.HERE), "build", "release", "tabweave")
ENOUGH = 60.0  # seconds; a program whose runs of one task took this long together is not run again

# One program at one task and size. Medians and the number of runs, or what went wrong.
Outcome = namedtuple("Outcome", "run runs problem")


class Bench:
    """Data, documents and results in one folder, and the measurements made with them."""

    def __init__(self, program, work, repeat):
        self.program = os.path.abspath(program)
        self.work = os.path.abspath(work)
        self.repeat = repeat
        os.makedirs(self.work, exist_ok=True)

    def data(self, rows, files):
        folder = os.path.join(self.work, f"{rows}-rows")
        generate.ensure(folder, files, rows)
        return folder

    def path(self, name):
        return os.path.join(self.work, name)

    def command(self, document, files, folder):
        path = self.path("task.transform")
        with open(path, "w", encoding="utf-8", newline="") as file:
            file.write(document)
        words = [self.program, "-cli", path]
        for name in files:
            words += ["-file", f"{name.split('.')[0]}={folder}/{name}"]
        return [*words, "-file", "result=" + measure.RESULT]

    def compare(self, commands, result, files, problem_of):
        """Runs the named commands in turn, so that a busy moment of the machine hits all of them."""
        measure.warm(files)
        runs = {name: [] for name in commands}
        problems = {}
        for turn in range(self.repeat):
            for name, command in commands.items():
                if name in problems or sum(run.wall for run in runs[name]) > ENOUGH:
                    continue
                try:
                    runs[name].append(measure.run(command, result, self.work))
                    problem = "" if turn else problem_of(result)
                except measure.Failed as failed:
                    problem = str(failed)
                if problem:
                    problems[name] = problem
        if os.path.exists(result):
            os.remove(result)
        return {name: outcome(runs[name], problems.get(name, "")) for name in commands}

    def task(self, task, rows, names):
        """What the programs need for a task, and the stages of Tabweave's run (none when it went wrong)."""
        folder = self.data(rows, list(dict.fromkeys(TASKS[task].files + ["orders.csv"])))
        result = self.path("result." + TASKS[task].extension)
        document = task_document(task)
        commands = {report.SUBJECT: self.command(document, TASKS[task].files, folder)}
        for name in names:
            if task in peers.PEERS[name].tasks and rows <= peers.PEERS[name].most_rows:
                commands[name] = peers.PEERS[name].command(task, folder)
        want = results.expected_summary(task, folder)
        files = [os.path.join(folder, file) for file in TASKS[task].files]
        outcomes = self.compare(commands, result, files, lambda path: results.problem(path, task, folder, want))
        stages = [] if outcomes[report.SUBJECT].problem else measure.stages(commands[report.SUBJECT], document, result)
        if os.path.exists(result):
            os.remove(result)
        return outcomes, stages


def outcome(runs, problem):
    if problem:
        return Outcome(None, 0, problem)
    return Outcome(measure.Run(*map(statistics.median, zip(*runs))), len(runs), "")


def rows_of(text):
    """100k, 1M, 2500: how many rows."""
    found = re.fullmatch(r"(\d+)([kM]?)", text)
    if not found or not int(found[1]):
        raise argparse.ArgumentTypeError(f"'{text}' is no number of rows")
    return int(found[1]) * {"": 1, "k": 1_000, "M": 1_000_000}[found[2]]


def listed(choices):
    def parse(text):
        names = [name for name in text.split(",") if name]
        unknown = [name for name in names if name not in choices]
        if unknown:
            raise argparse.ArgumentTypeError(f"{', '.join(unknown)}: not one of {', '.join(choices)}")
        return names
    return parse


def sizes(text):
    return [rows_of(part) for part in text.split(",")]


def default_work():
    return os.environ.get("BENCH_WORK", os.path.join(tempfile.gettempdir(), "tabweave-bench"))


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--sizes", type=sizes, default="100k,1M,5M", help="numbers of rows")
    parser.add_argument("--tasks", type=listed(TASKS), default=list(TASKS))
    parser.add_argument("--peers", type=listed(peers.PEERS), help="may be empty; without it, all that are installed")
    parser.add_argument("--repeat", type=int, default=5)
    parser.add_argument("--program", default=PROGRAM)
    parser.add_argument("--work", default=default_work(), help="where data and results go")
    parser.add_argument("--report", help="the Markdown file to write")
    given = parser.parse_args()
    if not os.access(given.program, os.X_OK):
        parser.error(f"there is no {given.program}; scripts/run builds it, or give --program")
    given.versions = peers.installed()
    if given.peers is None:
        given.peers = list(given.versions)
    missing = [name for name in given.peers if name not in given.versions]
    if missing or given.repeat < 1:
        parser.error(f"not installed: {', '.join(missing)}" if missing else "--repeat is at least 1")
    return given


def main():
    given = arguments()
    bench = Bench(given.program, given.work, given.repeat)
    measured = {}
    for rows in given.sizes:
        for task in given.tasks:
            if rows > TASKS[task].most_rows:
                continue
            measured[rows, task] = outcomes, _ = bench.task(task, rows, given.peers)
            report.progress(rows, task, outcomes)
    text = report.page(bench, given, measured)
    if given.report:
        with open(given.report, "w", encoding="utf-8") as file:
            file.write(text)
    else:
        print(text)
    return 1 if any(outcomes[report.SUBJECT].problem for outcomes, _ in measured.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
