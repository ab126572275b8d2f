#!/usr/bin/env python3
"""Try the benchmark itself, at 1,000 rows and without other programs.

    selftest.py --program TABWEAVE --work FOLDER

No time is judged. Ends with a line of totals, in the form of the other tests.
"""
import argparse
import csv
import hashlib
import json
import os
import shutil
import sys
from types import SimpleNamespace

import generate
import measure
import peers
import report
import results
import run
from documents import document
from tasks import TASKS, task_document

ROWS = 1000
# Of orders.csv and customers.csv: figures of different days and machines compare only while the data is the same.
DATA = {"orders.csv":
        "20ddfb3ece5276971378fe5fe96cdbad3cb3e4560b4bac7a82e1521a529ef45a",
        "customers.csv":
        "9c3e2ce9870dadd54c9f9ae1eeae4d5feaa4c0606a5367a8fd9153860f97e5f2"}


class Totals:
    def __init__(self):
        self.passed = 0
        self.failed = 0

    def check(self, name, right, found=""):
        self.passed += bool(right)
        self.failed += not right
        if not right:
            print(f"FAIL!  : {name}\n   {found}")

    def equal(self, name, found, wanted):
        self.check(name, found == wanted, f"found {found!r}, not {wanted!r}")


def content(path):
    with open(path, "rb") as file:
        return file.read()


def check_data(totals, folder):
    for name, wanted in DATA.items():
        totals.equal(f"the bytes of {name}", hashlib.sha256(content(os.path.join(folder, name))).hexdigest(), wanted)
    rows = list(generate.orders(ROWS))
    totals.equal("fewer rows are the beginning of more", list(generate.orders(10)), rows[:10])
    notes = "".join(row[11] for row in rows) + "".join(row[6] for row in rows)
    totals.check("values need quotes", all(character in notes for character in '",\n'))
    totals.check("an order may lack a customer", any(int(row[1][1:]) > generate.CUSTOMERS for row in rows))
    for name in ("json", "xlsx"):
        again = list(results.READERS[name](os.path.join(folder, "orders." + name)))
        totals.check(f"orders.{name} holds the rows of orders.csv",
                     again == [list(generate.ORDER_COLUMNS), *map(list, rows)], f"begins {again[:2]}")


def check_tasks(totals, bench):
    """Measures every task; answers what the report is made of."""
    measured = {}
    for task in TASKS:
        outcomes, stages = measured[ROWS, task] = bench.task(task, ROWS, [])
        outcome = outcomes[report.SUBJECT]
        totals.equal(f"{task}: the result", outcome.problem, "")
        if outcome.problem:
            continue
        totals.check(f"{task}: its figures", outcome.run.wall > 0 and outcome.run.cpu > 0 and outcome.run.peak > 1
                     and outcome.runs == bench.repeat, outcome)
        wanted = ["read"] + ["transform"] * bool(TASKS[task].steps) + ["write"]
        totals.equal(f"{task}: its stages", [stage.name for stage in stages], wanted)
        customers = generate.CUSTOMERS * len(generate.CUSTOMER_COLUMNS) * (len(TASKS[task].files) - 1)
        totals.equal(f"{task}: cells read", stages[0].cells, ROWS * len(generate.ORDER_COLUMNS) + customers)
    return measured


# Prints a run's log, waits so that its memory can be looked at, holds 64 MiB in between, and ends at once after the end.
ACTOR = """
import time
def say(line):
    print(line, flush=True)
    time.sleep(0.5)
say("Started run at: now")
more = bytearray(64 << 20)
say("  Processed Input 'Orders' Id=1 (13 cols x 2,000 rows) in 1,234.5 second(s) [Delimited text], Up to date")
say("    noted: Processed Output 'Not one' Id=9 (1 col x 1 row) in 5 second(s) [], Up to date")
say("  Processed Input 'Customers' Id=2 (5 cols x 1,000 rows) in 0.5 second(s) [Delimited text], Up to date")
say("  Processed Transform 'Join (1 cols x 3 rows)' Id=3 (18 cols x 1 row) in <0.001 second(s) [a [b]], Up to date")
del more
time.sleep(0.5)
print("  Processed Output 'Result' Id=100 (18 cols x 1 row) in 0.002 second(s) [Delimited text], Up to date", flush=True)
"""


def check_stages(totals, bench):
    """What is made of a log, and of the memory of the program that writes it."""
    joined = document(["orders.csv", "customers.csv"], [("Join", 2, [])], "csv")
    found = measure.stages([sys.executable, "-c", ACTOR], joined, "")
    totals.equal("the stages of a log", [(stage.name, stage.seconds, stage.cells) for stage in found],
                 [("read", 1235.0, 31_000), ("transform", 0.0, 31_000), ("write", 0.002, 18)])
    mebibytes = [(stage.kept >> 20, stage.peak is None or stage.peak >> 20) for stage in found]
    known = os.access("/proc/self/clear_refs", os.W_OK)
    totals.check("the memory of stages", 62 <= mebibytes[0][0] <= 80 and -80 <= mebibytes[2][0] <= -60
                 and (not known or 62 <= mebibytes[0][1] <= 80 and mebibytes[1][1] < 5), mebibytes)
    try:
        measure.stages(["sh", "-c", "echo broken; exit 1"], joined, "")
        totals.check("stages of a run that fails", False)
    except measure.Failed as failed:
        totals.equal("stages of a run that fails", str(failed), "broken")


def wrong_results(path):
    """Ways in which a sorted result can be wrong, with the changed rows (names first)."""
    with open(path, encoding="utf-8", newline="") as file:
        names, *rows = csv.reader(file)
    city, note = names.index("city"), names.index("note")

    def changed(change):
        copy = [list(row) for row in rows]
        change(copy)
        return [names, *copy]

    def swap_cells(copy):
        other = next(row for row in copy if row[city] != copy[0][city])
        copy[0][city], other[city] = other[city], copy[0][city]

    return {
        "nothing is changed": ([names, *rows], ""),
        "rows are missing": ([names, *rows[:-1]], f"{ROWS - 1} rows"),
        "a row is there twice, another is not": ([names, *rows[:-1], rows[0]], "other values"),
        "a cell is changed": (changed(lambda copy: copy[5].__setitem__(note, "x")), "other values in note"),
        "cells are in other rows": (changed(swap_cells), "other rows"),
        "the rows are in reverse order": ([names, *reversed(rows)], "other order"),
        "a column has another name": ([["id", *names[1:]], *rows], "other columns"),
        "a row is shorter": (changed(lambda copy: copy[7].pop()), "not to be read"),
    }


def check_comparison(totals, bench, folder):
    """Wrong results must be seen, or every figure would be worthless."""
    right = bench.path("right.csv")
    command = bench.command(task_document("sort"), TASKS["sort"].files, folder)
    measure.run(command, right, bench.work)
    want = results.expected_summary("sort", folder)
    path = bench.path("wrong.csv")
    for name, (rows, wanted) in wrong_results(right).items():
        generate.write_csv(path, rows[0], rows[1:])
        found = results.problem(path, "sort", folder, want)
        totals.check(f"when {name}", found.startswith(wanted) if wanted else not found, found)

    commands = {"copies": ["cat", os.path.join(folder, "orders.csv")], "fails": ["sh", "-c", "echo no >&2; exit 3"],
                "silent": ["true"], "missing": ["no-such-program"], "sorts": ["cat", right]}
    outcomes = bench.compare(commands, path, [right], lambda result: results.problem(result, "sort", folder, want))
    problems = {name: outcome.problem for name, outcome in outcomes.items()}
    missing = problems.pop("missing")
    totals.equal("what gets no figures", problems,
                 {"copies": "other order", "fails": "no", "silent": "it wrote nothing", "sorts": ""})
    totals.check("a missing program gets no figures", missing and not outcomes["missing"].run, missing)
    totals.check("only what is right has figures",
                 all(bool(outcome.run) != bool(outcome.problem) for outcome in outcomes.values()), outcomes)


def check_json(totals, bench):
    """Objects longer than what is read at once, and texts that are no array of objects."""
    path = bench.path("some.json")
    cases = [([{"a": "x" * 700_000, "b": str(number)} for number in range(5)], 6), ([{"a": None}, {"b": "1"}], None)]
    for items, wanted in cases:
        with open(path, "w", encoding="utf-8") as file:
            json.dump(items, file)
        try:
            found = len(list(results.read_json(path)))
        except ValueError:
            found = None
        totals.equal(f"rows of {len(items)} objects", found, wanted)
    for text in ('[{"a": "1"}', '[{"a": "1"} {"a": "2"}]', '{"a": "1"}', '[{"a": "1"}] and more'):
        with open(path, "w", encoding="utf-8") as file:
            file.write(text)
        try:
            found = list(results.read_json(path))
        except ValueError:
            found = "refused"
        totals.equal(f"the JSON text {text}", found, "refused")


def check_report(totals, bench, measured):
    given = SimpleNamespace(sizes=[ROWS], tasks=list(TASKS), peers=[], versions={}, repeat=bench.repeat)
    text = report.page(bench, given, measured)
    for title, _, _ in report.FIGURES:
        part = text.split(f"### {title}, 1,000 rows")[1].split("###")[0]
        lines = [line for line in part.splitlines() if line.startswith("| ") and line[2] not in "-T"]
        totals.equal(f"tasks under {title}", [line.split(" | ")[0][2:] for line in lines], list(TASKS))
    totals.check("the page names no folder of this machine", bench.work not in text and report.TOP not in text)
    slower = run.Outcome(measure.Run(3.0, 1.0, 10.0), 1, "")
    base = run.Outcome(measure.Run(1.5, 2.0, 10.0), 1, "")
    totals.equal("a ratio", report.cell(slower, base, "wall", "{:.2f}"), "3.00 (2.00)")


def check_peers(totals, folder):
    """The programs themselves need not be there."""
    for name, peer in peers.PEERS.items():
        unknown = [task for task in peer.tasks if task not in TASKS]
        named = not unknown and all(folder in " ".join(peer.command(task, folder)) for task in peer.tasks)
        totals.check(f"{name} has commands for its tasks", named, unknown)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", required=True)
    parser.add_argument("--work", required=True)
    given = parser.parse_args()
    shutil.rmtree(given.work, ignore_errors=True)
    bench = run.Bench(given.program, given.work, repeat=2)
    folder = bench.data(ROWS, ["orders.csv", "customers.csv", "orders.json", "orders.xlsx"])
    totals = Totals()
    check_data(totals, folder)
    measured = check_tasks(totals, bench)
    check_stages(totals, bench)
    check_comparison(totals, bench, folder)
    check_json(totals, bench)
    check_report(totals, bench, measured)
    check_peers(totals, folder)
    print(f"Totals: {totals.passed} passed, {totals.failed} failed, 0 skipped")
    return 1 if totals.failed else 0


if __name__ == "__main__":
    sys.exit(main())
