#!/usr/bin/env python3
"""Time Tabweave and other programs on the same work; print medians and ratios.

    run.py [--sizes 100k,1M] [--tasks T1,T2] [--peers duckdb-1t,miller] [--repeat 5] [--check]
           [--subject 'COMMAND {task} {in} {out}'] [--json FILE]

Each measurement is one whole process that reads its input files, does the task and writes {out}.
The subject is by default the release build with the task's document in docs/; it is left out of
tasks that have no document. A subject's command may hold {task}, {in} (folder with orders.csv and
customers.csv), {out} (file to write), {docs}, and the word {files}, which becomes the options that
put these files into a document.

Data and outputs go to $BENCH_WORK (default: $TMPDIR or /tmp, folder tabweave-bench); npm peers are
looked for in $BENCH_PEERS. peers/install.sh installs the peers.
"""
import argparse
import csv
import hashlib
import json
import os
import re
import shlex
import statistics
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
PROGRAM = os.path.join(os.path.dirname(HERE), "build", "release", "tabweave")
SUBJECT = "{program} -cli {docs}/{task}.transform {files}"
TMP = tempfile.gettempdir()
WORK = os.environ.get("BENCH_WORK", os.path.join(TMP, "tabweave-bench"))
NPM = os.environ.get("BENCH_PEERS", os.path.join(TMP, "bench-peers"))
PYTHON = os.environ.get("BENCH_PYTHON", "/usr/bin/python3")  # the one that sees Debian's pandas
SIZES = {"10k": 10_000, "100k": 100_000, "1M": 1_000_000, "5M": 5_000_000}
TASKS = {
    "T1": "CSV -> CSV, all text", "T2": "filter quantity > 10 and status = shipped",
    "T3": "sort country, unit_price desc", "T4": "inner join with customers", "T9": "filter, join, sort",
}
JOINS = ("T4", "T9")
SORTS = ("T3", "T9")
# name: (command, largest size it is run on)
PEERS = {
    "duckdb": ("node {peers}/duckdb.js 0 {task} {in} {out}", "5M"),
    "duckdb-1t": ("node {peers}/duckdb.js 1 {task} {in} {out}", "5M"),
    "pandas": ("{python} {peers}/pandas_tasks.py {task} {in} {out}", "1M"),
    "miller": ("sh {peers}/miller.sh {task} {in} {out}", "1M"),
    "sqlite": ("sh {peers}/sqlite.sh {task} {in} {out}", "1M"),
    "python-csv": ("{python} {peers}/python_csv.py {task} {in} {out}", "1M"),
}
ENOUGH = 60.0  # seconds; no more repeats once the runs of one measurement took this long


def make_data(size):
    folder = os.path.join(WORK, size)
    if not os.path.exists(os.path.join(folder, "orders.csv")):
        subprocess.run([sys.executable, os.path.join(HERE, "generate.py"), str(SIZES[size]), folder], check=True)
    return folder


def inputs(task, folder):
    names = ["orders.csv", "customers.csv"] if task in JOINS else ["orders.csv"]
    return [os.path.join(folder, name) for name in names]


def command(template, task, folder, out):
    places = {"task": task, "in": folder, "out": out, "docs": os.path.join(HERE, "docs"), "program": PROGRAM,
              "peers": os.path.join(HERE, "peers"), "python": PYTHON}
    words = []
    for word in shlex.split(template):
        if word == "{files}":
            for path in inputs(task, folder):
                words += ["-file", os.path.splitext(os.path.basename(path))[0] + "=" + path]
            words += ["-file", "result=" + out]
        else:
            words.append(re.sub(r"\{(\w+)\}", lambda m: places[m[1]], word))
    return words


def run_once(argv):
    """Wall seconds, processor seconds, peak resident MiB and exit status of one process and its children.

    GNU time stands between, because a process starts with the peak of the one that forked it."""
    env = dict(os.environ, NODE_PATH=os.path.join(NPM, "node_modules"), LC_ALL="C.UTF-8")
    notes = os.path.join(WORK, "time.txt")
    start = time.perf_counter()
    child = subprocess.run(["/usr/bin/time", "-q", "-o", notes, "-f", "%U %S %M", *argv], stdin=subprocess.DEVNULL,
                           stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, env=env)
    wall = time.perf_counter() - start
    with open(notes) as f:
        user, system, peak = f.read().split()
    return wall, float(user) + float(system), int(peak) / 1024, child.returncode, child.stderr.decode(errors="replace")


def measure(argv, files, out, repeat):
    for path in files:  # warm cache
        with open(path, "rb") as f:
            while f.read(1 << 22):
                pass
    runs = []
    while len(runs) < repeat:
        if os.path.exists(out):
            os.remove(out)
        wall, cpu, rss, status, message = run_once(argv)
        if status or not os.path.exists(out) or os.path.getsize(out) == 0:
            return {"error": " ".join(message.split())[:150] or f"status {status}"}
        runs.append((wall, cpu, rss))
        if sum(r[0] for r in runs) > ENOUGH:
            break
    wall, cpu, rss = (statistics.median(column) for column in zip(*runs))
    return {"wall": round(wall, 3), "cpu": round(cpu, 3), "rss": round(rss), "runs": len(runs),
            "spread": round(max(r[0] for r in runs) / min(r[0] for r in runs), 2), "bytes": os.path.getsize(out)}


def load(path):
    csv.field_size_limit(1 << 30)
    with open(path, encoding="utf-8-sig", newline="") as f:
        rows = csv.reader(f)
        head = next(rows)
        # A join may keep the key columns of both sides under one name.
        first = [i for i, name in enumerate(head) if name not in head[:i]]
        return [head[i] for i in first], [[r[i] for i in first] for r in rows if r]


def canonical(cell):
    """One form for values that tools write differently: 12.50 and 12.5, NULL and ''; newlines."""
    text = "" if cell is None else str(cell)
    if re.fullmatch(r"-?\d+\.\d+", text):
        text = text.rstrip("0").rstrip(".")
    return text.replace("\r\n", "\n")


def digest(path, task):
    """Row count, and per column a hash of its sorted values; for sorted results also of the key order."""
    head, rows = load(path)
    columns = {}
    for i, name in enumerate(head):
        cells = [canonical(r[i]) if i < len(r) else "" for r in rows]
        columns[name] = hashlib.sha256("\0".join(sorted(cells)).encode()).hexdigest()[:12]
    whole = sorted("\0".join(canonical(c) for _, c in sorted(zip(head, r))) for r in rows)
    result = {"rows": len(rows), "columns": columns, "whole": hashlib.sha256("\1".join(whole).encode()).hexdigest()[:12]}
    if task in SORTS:
        c, p = head.index("country"), head.index("unit_price")
        keys = [(r[c], float(r[p])) for r in rows]
        result["order"] = hashlib.sha256(repr(keys).encode()).hexdigest()[:12]
    return result


def compare(got, want):
    if got["rows"] != want["rows"]:
        return f"{got['rows']} rows, not {want['rows']}"
    if got.get("order") != want.get("order"):
        return "other order of keys"
    if got["whole"] == want["whole"]:
        return "same"
    differ = [n for n in want["columns"] if got["columns"].get(n) != want["columns"][n]]
    return "differs in " + ", ".join(differ) if differ else "differs in how cells are combined to rows"


def report(size, task, results):
    print(f"\n{task} {TASKS[task]}, {size} rows")
    width = max(map(len, results))
    base = results.get("subject", {}).get("wall")
    print(f"  {'':{width}}   wall s    cpu s  peak MiB  runs  spread" + ("   subject/peer" if base else ""))
    order = sorted(results.items(), key=lambda item: item[1].get("wall", 1e9))
    for name, r in order:
        if "error" in r:
            print(f"  {name:{width}}  failed: {r['error']}")
            continue
        line = f"  {name:{width}} {r['wall']:8.2f} {r['cpu']:8.2f} {r['rss']:9d} {r['runs']:5d} {r['spread']:7.2f}"
        if base:
            line += f" {base / r['wall']:14.2f}"
        print(line + (f"   {r['check']}" if r.get("check") else ""), flush=True)


def has_document(task):
    return os.path.exists(os.path.join(HERE, "docs", task + ".transform"))


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--sizes", default="100k,1M")
    ap.add_argument("--tasks", default=",".join(task for task in TASKS if has_document(task)))
    ap.add_argument("--peers", default=",".join(PEERS), help="may be empty")
    ap.add_argument("--repeat", type=int, default=5)
    ap.add_argument("--check", action="store_true", help="compare results with python-csv's (slow above 100k rows)")
    ap.add_argument("--subject", default=SUBJECT, help="command; empty: none")
    ap.add_argument("--json", help="also write the results to this file")
    a = ap.parse_args()
    if a.subject == SUBJECT and not os.path.exists(PROGRAM):
        ap.error(f"{PROGRAM} is not built; run scripts/run first, or give --subject")
    names = [n for n in a.peers.split(",") if n]
    if a.check and "python-csv" not in names:
        names.append("python-csv")
    os.makedirs(WORK, exist_ok=True)
    everything = {}
    failed = False
    for size in a.sizes.split(","):
        folder = make_data(size)
        for task in a.tasks.split(","):
            todo = {n: PEERS[n][0] for n in names if SIZES[size] <= SIZES[PEERS[n][1]]}
            if a.subject and (a.subject != SUBJECT or has_document(task)):
                todo["subject"] = a.subject
            results, want = {}, None
            # The reference goes first when results are compared.
            for name in sorted(todo, key=lambda n: n != "python-csv"):
                out = os.path.join(WORK, "out.csv")
                results[name] = measure(command(todo[name], task, folder, out), inputs(task, folder), out, a.repeat)
                if a.check and "error" not in results[name]:
                    try:
                        got = digest(out, task)
                        want = want or got
                        results[name]["check"] = compare(got, want)
                    except (ValueError, IndexError, KeyError) as e:
                        results[name]["check"] = f"unreadable: {e}"[:80]
                    failed |= name == "subject" and results[name]["check"] != "same"
                failed |= name == "subject" and "error" in results[name]
                if os.path.exists(out):
                    os.remove(out)
            report(size, task, results)
            everything.setdefault(size, {})[task] = results
            if a.json:
                with open(a.json, "w", encoding="utf-8") as f:
                    json.dump(everything, f, indent=1)
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
