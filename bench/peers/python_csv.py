# python_csv.py TASK INDIR OUT   (standard library, rows as lists of str: the plain reference)
import csv
import sys

task, indir, out = sys.argv[1:]


def read(name):
    with open(f"{indir}/{name}.csv", encoding="utf-8", newline="") as f:
        rows = csv.reader(f)
        return next(rows), list(rows)


head, rows = read("orders")
if task in ("T2", "T9"):
    q, s = head.index("quantity"), head.index("status")
    rows = [r for r in rows if int(r[q]) > 10 and r[s] == "shipped"]
if task in ("T4", "T9"):
    more, right = read("customers")
    k, match = head.index("customer_id"), {r[0]: r[1:] for r in right}
    head, rows = head + more[1:], [r + match[r[k]] for r in rows if r[k] in match]
if task in ("T3", "T9"):
    c, p = head.index("country"), head.index("unit_price")
    rows.sort(key=lambda r: (r[c], -float(r[p])))
with open(out, "w", encoding="utf-8", newline="") as f:
    w = csv.writer(f, lineterminator="\n")
    w.writerow(head)
    w.writerows(rows)
