#!/usr/bin/env python3
"""Measure what each transform costs on top of reading and writing, and how that grows with the rows.

    transforms.py [--sizes 100k,1M] [--only Sort,Unique]

Prints a Markdown table of processor seconds and of the peak memory, both less those of a document that only copies.
Data and outputs go where run.py puts them.
"""
import argparse
import os
from urllib.parse import quote

import run

SEPARATOR = "\x1f"


def coded(*items):
    """A list as documents store it inside a parameter."""
    return SEPARATOR.join(quote(str(item), safe="") for item in items)


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


def document(kind):
    """A document that reads orders.csv (and customers.csv), applies one transform or none, and writes result.csv."""
    source = '<input medium="0" id="{0}" name="{1}" header="1" path="{1}.csv" file_type="0" alias="{1}" delimiter="1" ' \
             'quote="1" encoding="UTF-8" pos="0^{0}"/>'
    inputs = [source.format(1, "orders")]
    transform, connections = "", '<connection start_id="1" end_id="4"/>'
    if kind:
        type_name, count, parameters = kind
        if count == 2:
            inputs.append(source.format(2, "customers"))
        lines = "".join('<parameter name="{}" type="{}" value="{}"/>'.format(key, number, quote(str(value), safe=""))
                        for key, number, value in parameters)
        transform = '<transform id="3" name="{}" pos="9^9"><parameters>{}</parameters></transform>'.format(type_name, lines)
        connections = "".join('<connection start_id="{}" end_id="3"/>'.format(i + 1) for i in range(count))
        connections += '<connection start_id="3" end_id="4"/>'
    return ('<!DOCTYPE Tabweave>\n<root><meta><version value="72"/><locale value="en_GB"/></meta><inputs>' +
            "".join(inputs) + "</inputs><transforms>" + transform +
            '</transforms><outputs><output id="4" name="result" path="result.csv" file_type="0" alias="result" '
            'delimiter="1" line_endings="2" encoding="UTF-8" enable_output="1" write_header="1" pos="20^9"/></outputs>'
            "<connections>" + connections + "</connections></root>\n")


def measure(kind, size, repeat):
    folder = run.make_data(size)
    path = os.path.join(run.WORK, "transform.transform")
    with open(path, "w", encoding="utf-8", newline="") as f:
        f.write(document(kind))
    out = os.path.join(run.WORK, "result.csv")
    files = [os.path.join(folder, name + ".csv") for name in ("orders", "customers")[:kind[1] if kind else 1]]
    argv = [run.PROGRAM, "-cli", path, "-file", "result=" + out]
    for name in files:
        argv += ["-file", os.path.splitext(os.path.basename(name))[0] + "=" + name]
    return run.measure(argv, files, out, repeat)


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--sizes", default="100k,1M")
    parser.add_argument("--only", default="")
    parser.add_argument("--repeat", type=int, default=3)
    options = parser.parse_args()
    sizes = options.sizes.split(",")
    os.makedirs(run.WORK, exist_ok=True)
    base = {size: measure(None, size, options.repeat) for size in sizes}
    wanted = [name for name in options.only.split(",") if name] or list(TRANSFORMS)
    print("| transform | " + " | ".join("{0} s | {0} MiB".format(size) for size in sizes) + " | whole run, ratio |")
    print("|---" * (2 * len(sizes) + 2) + "|")
    print("| (copy) | " + " | ".join("{cpu:.2f} | {rss}".format(**base[size]) for size in sizes) + " | {:.1f} |".format(
        base[sizes[-1]]["cpu"] / base[sizes[0]]["cpu"]))
    for name in wanted:
        results = [measure(TRANSFORMS[name], size, options.repeat) for size in sizes]
        failed = next((result["error"] for result in results if "error" in result), None)
        if failed:
            print("| {} | {} |".format(name, failed))
            continue
        cells = ["{:.2f} | {}".format(result["cpu"] - base[size]["cpu"], result["rss"] - base[size]["rss"])
                 for result, size in zip(results, sizes)]
        print("| {} | {} | {:.1f} |".format(name, " | ".join(cells), results[-1]["cpu"] / results[0]["cpu"]))


if __name__ == "__main__":
    main()
