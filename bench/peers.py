"""The programs to compare with: what is installed, and how each does the tasks."""
import os
import re
import shlex
import shutil
import subprocess
from collections import namedtuple

from generate import ORDER_COLUMNS
from measure import HERE, RESULT, environment, peers_folder

SYSTEM_PYTHON = "/usr/bin/python3"  # the one that sees Debian's modules
TABLES = ["copy", "filter", "sort", "join", "chain"]
TEXTS = TABLES + ["to-json", "from-json"]
SHEETS = ["to-xlsx", "from-xlsx"]

# command: task and folder to words; tasks: those that it can do; most_rows: more than these take too long or too much
# memory; version: the words that print it.
Peer = namedtuple("Peer", "command tasks most_rows version")


def miller(task, folder):
    orders, customers = f"{folder}/orders.csv", f"{folder}/customers.csv"
    matching = ["filter", '$quantity > 10 && $status == "shipped"']
    joined = ["join", "-j", "customer_id", "-f", customers]
    ordered = ["sort", "-f", "country", "-nr", "unit_price"]
    verbs = {"filter": matching, "sort": ordered, "join": joined,
             "chain": [*matching, "then", *joined, "then", *ordered]}.get(task, ["cat"])
    formats = {"to-json": ["--icsv", "--ojson"], "from-json": ["--ijson", "--ocsv"]}.get(task, ["--csv"])
    return ["mlr", *formats, *verbs, f"{folder}/orders.json" if task == "from-json" else orders]


def sqlite(task, folder):
    load = [f".import --csv '{folder}/{name}.csv' {name}" for name in ("orders", "customers")]
    joined = "SELECT * FROM orders JOIN customers USING (customer_id)"
    matching = "WHERE CAST(quantity AS INTEGER) > 10 AND status = 'shipped'"
    ordered = "ORDER BY country, CAST(unit_price AS REAL) DESC"
    members = ", ".join(f"value->>'{name}' AS {name}" for name in ORDER_COLUMNS)
    query = {
        "filter": f"SELECT * FROM orders {matching}",
        "sort": f"SELECT * FROM orders {ordered}",
        "join": joined,
        "chain": f"{joined} {matching} {ordered}",
        "from-json": f"SELECT {members} FROM json_each(CAST(readfile('{folder}/orders.json') AS TEXT))",
    }.get(task, "SELECT * FROM orders")
    before = [] if task == "from-json" else load if task in ("join", "chain") else load[:1]
    mode = ["-json"] if task == "to-json" else ["-csv", "-header"]
    return ["sqlite3", "-batch", *mode, ":memory:", *before, query]


def csvkit(task, folder):
    """Without the guessing of types. Its sort cannot have two directions, so it has no sort and no chain."""
    orders, customers = shlex.quote(f"{folder}/orders.csv"), shlex.quote(f"{folder}/customers.csv")
    line = {
        "copy": f"csvformat {orders}",
        "filter": f"csvgrep -c status -r '^shipped$' {orders} | csvgrep -c quantity -r '^(1[1-9]|[2-9][0-9])$'",
        "join": f"csvjoin -I -c customer_id {orders} {customers}",
        "to-json": f"csvjson -I {orders}",
        "from-json": f"in2csv -I -f json {shlex.quote(folder + '/orders.json')}",
        "from-xlsx": f"in2csv -I {shlex.quote(folder + '/orders.xlsx')}",
    }[task]
    return ["sh", "-c", line]


def gnumeric(task, folder):
    return ["ssconvert", f"{folder}/orders.{'csv' if task == 'to-xlsx' else 'xlsx'}", RESULT]


def script(program, name, *options):
    def command(task, folder):
        return [program, os.path.join(HERE, "peers", name), *options, task, folder, RESULT]
    return command


def module(name):
    """Prints the version of a module for node."""
    return ["node", "-p", f"require('{peers_folder()}/node_modules/{name}/package.json').version"]


PEERS = {
    "DuckDB": Peer(script("node", "duckdb_tasks.js", "0"), TEXTS, 5_000_000, module("@duckdb/node-api")),
    "DuckDB-1": Peer(script("node", "duckdb_tasks.js", "1"), TEXTS, 5_000_000, module("@duckdb/node-api")),
    "Polars": Peer(script("node", "polars_tasks.js"), TEXTS, 5_000_000, module("nodejs-polars")),
    "pandas": Peer(script(SYSTEM_PYTHON, "pandas_tasks.py"), TEXTS + SHEETS, 1_000_000,
                   [SYSTEM_PYTHON, "-c", "import pandas; print(pandas.__version__)"]),
    "Miller": Peer(miller, TEXTS, 1_000_000, ["mlr", "--version"]),
    "sqlite3": Peer(sqlite, TEXTS, 1_000_000, ["sqlite3", "--version"]),
    "csvkit": Peer(csvkit, ["copy", "filter", "join", "to-json", "from-json", "from-xlsx"], 100_000,
                   ["csvformat", "--version"]),
    "SheetJS": Peer(script("node", "sheetjs_tasks.js"), SHEETS, 100_000, module("xlsx")),
    "gnumeric": Peer(gnumeric, SHEETS, 100_000, ["ssconvert", "--version"]),
}


def version(peer):
    """Of an installed program; empty when it is not installed."""
    if not shutil.which(peer.version[0]):
        return ""
    said = subprocess.run(peer.version, env=environment(), stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, check=False)
    number = re.search(r"\d+\.\d[\w.-]*", said.stdout.decode(errors="replace"))
    return number[0].rstrip(".") if number and said.returncode == 0 else ""


def installed():
    """The programs that are there, with their versions."""
    versions = {name: version(peer) for name, peer in PEERS.items()}
    return {name: number for name, number in versions.items() if number}
