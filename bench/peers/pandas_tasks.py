# pandas_tasks.py TASK INDIR OUT; every cell is read as text
import sys
import pandas as pd

task, indir, out = sys.argv[1:]


def read(name):
    return pd.read_csv(f"{indir}/{name}.csv", dtype=str, keep_default_na=False)


def matching(df):
    return df[(pd.to_numeric(df.quantity) > 10) & (df.status == "shipped")]


def joined(df):
    return df.merge(read("customers"), on="customer_id")


def ordered(df):
    return df.assign(_key=pd.to_numeric(df.unit_price)).sort_values(
        ["country", "_key"], ascending=[True, False], kind="stable").drop(columns="_key")


tasks = {
    "T1": lambda: read("orders"),
    "T2": lambda: matching(read("orders")),
    "T3": lambda: ordered(read("orders")),
    "T4": lambda: joined(read("orders")),
    "T9": lambda: ordered(joined(matching(read("orders")))),
}
tasks[task]().to_csv(out, index=False)
