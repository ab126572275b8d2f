#!/usr/bin/env python3
"""Measure what each transform costs on top of reading and writing, and how that grows with the rows.

    transforms.py [--sizes 100k,1M] [--only Sort,Unique]

Prints a Markdown table of processor seconds and of the peak memory, both less those of a document that only copies.
Data and outputs go where run.py puts them.
"""
import argparse
import os
import sys

import run
from documents import SEPARATOR, coded, document

# Columns: 1 order_id, 2 customer_id, 3 order_date, 4 due_date, 5 country, 6 city, 7 product, 8 quantity, 9 unit_price,
# 10 discount, 11 status, 12 note, 13 email.
# name: (type, inputs, parameters as (key, type, value)); an option that is left out has its default.
TRANSFORMS = {
    "Calculate": ("Calculate", 1, [("Column_1", 0, 8), ("Operation", 6, "Multiply"), ("Value_2_Type", 6, "Column"),
                                   ("Column_2", 0, 9)]),
    "Calculate, dates": ("Calculate", 1, [("Column_1", 0, 4), ("Operation", 6, "Year")]),
    "Case": ("Case", 1, [("Columns", 1, coded(5, 6, 7, 12)), ("Case", 6, "UPPER CASE")]),
    "Dedupe": ("Dedupe", 1, [("Columns", 11, coded(2, 5, 7))]),
    "Filter": ("Filter", 1, [("Columns", 3, coded(1, 1, "status", 1, "shipped"))]),
    "If": ("If", 1, [("If", 10, "*StartIf*" + SEPARATOR + coded(coded("big", "quantity", 5, "10"), "small") + SEPARATOR
                      + "*EndIf*"), ("New_Name", 7, "size")]),
    "Javascript": ("Javascript", 1, [("Script", 12, "return $(quantity) * $(unit_price);")]),
    "Join": ("Join", 2, [("By", 6, 0), ("Column_1", 0, 2), ("Column_2", 0, 1)]),
    "Pad": ("Pad", 1, [("Columns", 1, coded(1, 8)), ("Length", 8, 12)]),
    "Remove Cols": ("Remove", 1, [("Columns", 11, coded(1, 2, 3))]),
    "Rename Cols": ("Rename_Cols", 1, [("Prefix", 7, "x_")]),
    "Reorder Cols": ("Reorder", 1, [("Columns", 4, coded(13, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12))]),
    "Replace": ("Replace_Multi", 1, [("Columns", 1, coded(6, 7, 12)), ("Terms", 16, coded("e", "E", "text"))]),
    "Replace, expressions": ("Replace_Multi", 1, [("Columns", 1, coded(6, 7, 12)),
                                                  ("Terms", 16, coded("([aeiou])l", r"\1_", "regex"))]),
    "Scale": ("Scale", 1, [("Columns", 1, coded(8, 9))]),
    "Sort": ("Sort", 1, [("Columns", 2, coded(5, -9))]),
    "Split Rows": ("Split_Rows", 1, [("Value_Columns", 1, "12"), ("Delimiter", 7, " ")]),
    "Stack": ("Stack", 1, []),
    "Substitute": ("Substitute", 1, [("Text", 18, "$(product) for $(email)")]),
    "Unique": ("Unique", 1, [("Columns", 15, coded(2, "Unique", 5, "Unique", 8, "Sum", 9, "Average"))]),
    "Verify": ("Verify", 1, [("Rules", 19, coded("quantity", 1, "", "unit_price", 1, ""))]),
}


def measured(bench, kind, rows):
    files = ["orders.csv", "customers.csv"][:kind[1] if kind else 1]
    folder = bench.data(rows, files)
    command = bench.command(document(files, [kind] if kind else [], "csv"), files, folder)
    paths = [os.path.join(folder, name) for name in files]
    return bench.compare({"it": command}, bench.path("result.csv"), paths, lambda path: "")["it"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sizes", type=run.sizes, default="100k,1M")
    parser.add_argument("--only", default="")
    parser.add_argument("--repeat", type=int, default=3)
    parser.add_argument("--program", default=run.PROGRAM)
    options = parser.parse_args()
    bench = run.Bench(options.program, run.default_work(), options.repeat)
    sizes = options.sizes
    base = [measured(bench, None, rows) for rows in sizes]
    if any(outcome.problem for outcome in base):
        sys.exit(base[0].problem or base[-1].problem)
    wanted = [name for name in options.only.split(",") if name] or list(TRANSFORMS)
    print("| transform | " + " | ".join(f"{rows:,} rows: s | MiB" for rows in sizes) + " | whole run, ratio |")
    print("|---" * (2 * len(sizes) + 2) + "|")
    for name in ["(copy)", *wanted]:
        outcomes = base if name == "(copy)" else [measured(bench, TRANSFORMS[name], rows) for rows in sizes]
        problem = next((outcome.problem for outcome in outcomes if outcome.problem), "")
        if problem:
            print(f"| {name} | {problem} |")
            continue
        less = [(0, 0) if name == "(copy)" else (outcome.run.cpu, outcome.run.peak) for outcome in base]
        cells = [f"{outcome.run.cpu - cpu:.2f} | {outcome.run.peak - peak:.0f}"
                 for outcome, (cpu, peak) in zip(outcomes, less)]
        ratio = outcomes[-1].run.cpu / outcomes[0].run.cpu
        print(f"| {name} | {' | '.join(cells)} | {ratio:.1f} |")


if __name__ == "__main__":
    main()
