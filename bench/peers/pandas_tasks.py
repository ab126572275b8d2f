"""pandas_tasks.py TASK FOLDER RESULT; every cell is read as text."""
import sys

import pandas

task, folder, result = sys.argv[1:]
AS_TEXT = {"dtype": str, "keep_default_na": False}


def read(name):
    return pandas.read_csv(f"{folder}/{name}.csv", **AS_TEXT)


def matching(table):
    return table[(table["status"] == "shipped") & (table["quantity"].astype(int) > 10)]


def joined(table):
    return pandas.merge(table, read("customers"), on="customer_id")


def by_key(column):
    return column.astype(float) if column.name == "unit_price" else column


def ordered(table):
    return table.sort_values(["country", "unit_price"], ascending=[True, False], key=by_key)


MAKE = {
    "filter": lambda: matching(read("orders")),
    "sort": lambda: ordered(read("orders")),
    "join": lambda: joined(read("orders")),
    "chain": lambda: ordered(joined(matching(read("orders")))),
    "from-json": lambda: pandas.read_json(f"{folder}/orders.json", dtype=False, convert_dates=False),
    "from-xlsx": lambda: pandas.read_excel(f"{folder}/orders.xlsx", **AS_TEXT),
}
table = MAKE.get(task, lambda: read("orders"))()
if task == "to-json":
    table.to_json(result, orient="records", force_ascii=False)
elif task == "to-xlsx":
    table.to_excel(result, index=False, engine="xlsxwriter")
else:
    table.to_csv(result, index=False)
