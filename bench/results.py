"""Are the results right? Reads CSV, JSON and XLSX, and compares with what plain Python makes of the same files.

Every cell counts, as text. The order of rows counts where it was asked for, that is for the sort keys; the order of
columns does not. In a workbook, a number or a date may stand for the text that says it.
"""
import csv
import datetime
import json
import os
import re
import zipfile
from collections import Counter
from xml.etree import ElementTree

from tasks import FILTERED, JOINED, SORTED, TASKS

FIRST_DAY = datetime.date(1899, 12, 30).toordinal()  # what workbooks count days from
DATE_COLUMNS = {"order_date": re.compile(r"(?P<year>\d{4})-(?P<month>\d\d)-(?P<day>\d\d)$"),
                "due_date": re.compile(r"(?P<day>\d+)/(?P<month>\d+)/(?P<year>\d{4})$")}
NUMBER = re.compile(r"-?\d+(\.\d+)?([eE][-+]?\d+)?$")
SUM_BITS = (1 << 64) - 1
csv.field_size_limit(1 << 30)


def read_csv(path):
    """Rows as lists of texts, the column names first."""
    with open(path, encoding="utf-8-sig", newline="") as file:
        for row in csv.reader(file):
            if row:
                yield row


def json_objects(path):
    """The objects of an array, one after another. Numbers keep the digits that they have in the file."""
    decoder = json.JSONDecoder(parse_int=str, parse_float=str)
    with open(path, encoding="utf-8-sig") as file:
        text, at, between = file.read(1 << 20), 0, "["
        while True:
            start = text.find("{", at)
            try:
                item, end = decoder.raw_decode(text, start if start >= 0 else len(text))
            except ValueError:  # cut off here, or the end
                more = file.read(1 << 20)
                if more:
                    text, at = text[at:] + more, 0
                    continue
                if text[at:].strip() != "]":
                    raise
                return
            if text[at:start].strip() != between:
                raise ValueError(f"'{text[at:start].strip()[:20]}' between objects")
            yield item
            at, between = end, ","


def read_json(path):
    names = []
    for item in json_objects(path):
        if not names:
            names = list(item)
            yield names
        if list(item) != names:
            raise ValueError(f"an object has the members {', '.join(item)}")
        yield ["" if value is None else value for value in item.values()]


def texts_of(element, name):
    """All text inside, but not that on how to pronounce it."""
    if element.tag == name + "rPh":
        return ""
    own = element.text or "" if element.tag == name + "t" else ""
    return own + "".join(texts_of(child, name) for child in element)


def column_of(reference):
    column = 0
    for letter in reference:
        if letter.isdigit():
            break
        column = column * 26 + ord(letter) - 64
    return column - 1


def read_xlsx(path):
    """The rows of the first sheet; empty cells are filled in up to the width of the names."""
    with zipfile.ZipFile(path) as package:
        parts = package.namelist()
        pool = []
        if "xl/sharedStrings.xml" in parts:
            with package.open("xl/sharedStrings.xml") as part:
                for _, element in ElementTree.iterparse(part):
                    if element.tag.endswith("}si"):
                        pool.append(texts_of(element, element.tag[:-2]))
                        element.clear()
        sheet = min(part for part in parts if re.match(r"xl/worksheets/sheet\d*\.xml$", part))
        with package.open(sheet) as part:
            width = 0
            for _, element in ElementTree.iterparse(part):
                if element.tag.endswith("}row"):
                    cells = row_cells(element, pool)
                    width = width or len(cells)
                    if cells:
                        yield cells + [""] * (width - len(cells))
                    element.clear()


def row_cells(row, pool):
    cells = []
    for cell in row:
        name = cell.tag[:-1]
        value = cell.find(name + "v")
        text = texts_of(cell, name) if value is None else value.text or ""
        if cell.get("t") == "s":
            text = pool[int(text)]
        column = column_of(cell.get("r", "")) if cell.get("r") else len(cells)
        cells += [""] * (column - len(cells)) + [text]
    return cells


READERS = {"csv": read_csv, "json": read_json, "xlsx": read_xlsx}


def joined_rows(rows, customers):
    more = iter(customers)
    next(more)
    known = {row[0]: row[1:] for row in more}
    return (row + known[row[1]] for row in rows if row[1] in known)


def expected(task, folder):
    """The names and rows of a right result, but in any order."""
    rows = read_csv(os.path.join(folder, "orders.csv"))
    names = next(rows)
    if task in FILTERED:
        quantity, status = names.index("quantity"), names.index("status")
        rows = (row for row in rows if int(row[quantity]) > 10 and row[status] == "shipped")
    if task in JOINED:
        customers = os.path.join(folder, "customers.csv")
        rows = joined_rows(rows, read_csv(customers))
        names = names + next(read_csv(customers))[1:]
    return names, rows


def plain(name, text):
    """One spelling for all that a workbook may make of a text."""
    date = name in DATE_COLUMNS and DATE_COLUMNS[name].match(text)
    if date:
        day = datetime.date(int(date["year"]), int(date["month"]), int(date["day"]))
        return repr(float(day.toordinal() - FIRST_DAY))
    return repr(float(text)) if NUMBER.match(text) else text


class Summary:
    """Names, number of rows and a sum over all rows, which says whether two tables hold the same rows; and the sort
    keys as one number. Tables of any length are read row by row."""

    def __init__(self, names, rows, in_workbook, by_key, sort=False):
        first = sorted({name: number for number, name in reversed(list(enumerate(names)))}.items())
        self.names = [name for name, _ in first]
        places = [place for _, place in first]
        keys = [names.index("country"), names.index("unit_price")] if by_key else None
        self.count, self.sum, self.order = 0, 0, 0
        kept = []
        for row in rows:
            if len(row) != len(names):
                raise ValueError(f"row {self.count + 1} has {len(row)} cells, not {len(names)}")
            self.count += 1
            cells = [row[place] for place in places]
            if in_workbook:
                cells = map(plain, self.names, cells)
            self.sum = (self.sum + hash(tuple(cells))) & SUM_BITS
            if keys and sort:
                kept.append((row[keys[0]], -float(row[keys[1]])))
            elif keys:
                self.order = hash((self.order, row[keys[0]], -float(row[keys[1]])))
        for country, price in sorted(kept):
            self.order = hash((self.order, country, price))


def summary_of(path, task):
    rows = READERS[TASKS[task].extension](path)
    return Summary(next(rows), rows, "xlsx" in task, task in SORTED)


def expected_summary(task, folder):
    return Summary(*expected(task, folder), "xlsx" in task, task in SORTED, sort=True)


def differing_columns(path, task, folder):
    """The columns whose values are not the expected ones, for the message."""
    rows = READERS[TASKS[task].extension](path)
    counts = []
    for names, table in ((next(rows), rows), expected(task, folder)):
        counts.append({name: Counter() for name in names})
        for row in table:
            for name, cell in zip(names, row):
                counts[-1][name][plain(name, cell) if "xlsx" in task else cell] += 1
    return [name for name in counts[1] if counts[0].get(name) != counts[1][name]]


def problem(path, task, folder, want):
    """What is wrong with a result, or an empty text."""
    try:
        got = summary_of(path, task)
        if got.names != want.names:
            return "other columns: " + ", ".join(got.names)
        if got.count != want.count:
            return f"{got.count:,} rows, not {want.count:,}"
        if got.sum != want.sum:
            columns = differing_columns(path, task, folder) if want.count <= 1_000_000 else []
            return "other values in " + ", ".join(columns) if columns else "other rows"
        return "other order" if got.order != want.order else ""
    except (ValueError, LookupError, StopIteration, zipfile.BadZipFile, ElementTree.ParseError) as error:
        return f"not to be read: {error}"[:160]
