"""What is measured: the tasks, and the documents with which Tabweave does them."""
from collections import namedtuple

from documents import coded, document

# Columns of orders by number: 2 customer_id, 5 country, 8 quantity, 9 unit_price, 11 status. A join puts the customers'
# columns behind them; of the two key columns, 2 and 14, one result holds one.
FILTER = ("Filter", 1, [("Columns", 3, coded(1, 1, "quantity", 4, 10, "status", 1, "shipped")),
                        ("Case_Sensitive", 5, 1)])
SORT = ("Sort", 1, [("Columns", 2, coded(5, -9)), ("Case_Sensitive", 5, 1)])
JOIN = [("Join", 2, [("By", 6, 0), ("Column_1", 0, 2), ("Column_2", 0, 1), ("Case_Sensitive", 5, 1)]),
        ("Remove", 1, [("Columns", 11, coded(*(number for number in range(1, 19) if number != 14)))])]

# files: what is read; steps: see documents.py; extension: of the result; most_rows: larger inputs are not measured.
Task = namedtuple("Task", "title files steps extension most_rows")

MANY = 1 << 60
ORDERS = ["orders.csv"]
BOTH = ["orders.csv", "customers.csv"]
TASKS = {
    "copy": Task("CSV to CSV", ORDERS, [], "csv", MANY),
    "filter": Task("quantity above 10 and status shipped", ORDERS, [FILTER], "csv", MANY),
    "sort": Task("by country, then by unit_price as a number, descending", ORDERS, [SORT], "csv", MANY),
    "join": Task("inner, with 50,000 customers, on customer_id", BOTH, JOIN, "csv", MANY),
    "chain": Task("filter, join and sort", BOTH, [FILTER, *JOIN, SORT], "csv", MANY),
    "to-json": Task("CSV to JSON", ORDERS, [], "json", MANY),
    "from-json": Task("JSON to CSV", ["orders.json"], [], "csv", MANY),
    "to-xlsx": Task("CSV to XLSX", ORDERS, [], "xlsx", 100_000),
    "from-xlsx": Task("XLSX to CSV", ["orders.xlsx"], [], "csv", 100_000),
}
FILTERED = {"filter", "chain"}
JOINED = {"join", "chain"}
SORTED = {"sort", "chain"}


def task_document(name):
    task = TASKS[name]
    return document(task.files, task.steps, task.extension)
