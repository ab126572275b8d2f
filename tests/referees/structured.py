"""Compares what tabweave reads from JSON and XML files with what Python's json and xml read.

The files are random. Python parses them into trees, and the mapping of trees to rows and columns is
written here once more, in another way than the program does it: each value gives a small table, and
tables are put side by side or one under another.
"""
import json
import random
import xml.etree.ElementTree as ElementTree
from xml.sax.saxutils import escape, quoteattr

from referee import Referee

NAMES = ["a", "b", "c", "id", "n\u00e4me", "list", "x y"]
TEXTS = ["", "x", "two words", "\u20ac \U0001f600", 'q"uo\\te', "a,b\nc", "<&>", "0", "  "]


# A table is a list of rows; a row is a dictionary from path to text. `columns` keeps the order.

def beside(tables):
    """The rows of arrays side by side, those of other values repeated on each."""
    height = max([len(rows) for rows, _ in tables], default=1)
    result = [{} for _ in range(height)]
    for rows, is_array in tables:
        for i in range(height):
            if is_array and i < len(rows):
                result[i].update(rows[i])
    for rows, is_array in tables:
        if not is_array:
            fixed = rows[0] if len(rows) == 1 else {}
            for row in result:
                row.update(fixed)
    return result


class Mapper:
    def __init__(self, as_rows):
        self.as_rows = as_rows
        self.columns = []  # in order of first appearance
        self.filled = set()
        self.parts = set()  # paths that have parts

    def column(self, path, filled):
        if path not in self.columns:
            self.columns.append(path)
        if filled:
            self.filled.add(path)

    def tables(self, value, path):
        """The parts of a value as tables, each with whether it is an array."""
        if isinstance(value, dict) and (value or not path):
            parts = []
            for name, member in value.items():
                self.parts.add(path)
                parts += self.tables(member, path + (name,))
            return parts
        if isinstance(value, list) and value:
            if not self.as_rows:
                parts = []
                for number, element in enumerate(value, 1):
                    self.parts.add(path)
                    parts += self.tables(element, path + (str(number),))
                return parts
            rows = []
            for element in value:
                rows += beside(self.tables(element, path))
            return [(rows, True)]
        if value is None or isinstance(value, (dict, list)):
            if path or value is None:
                self.column(path, False)
            return []
        text = value if isinstance(value, str) else json.dumps(value)
        self.column(path, True)
        return [([{path: text}], False)]

    def result(self, rows):
        kept = [path for path in self.columns if path in self.filled or path not in self.parts]
        table = [[".".join(path) if path else "Value" for path in kept]]
        for row in rows:
            table.append([row.get(path, "") for path in kept])
        # The CSV file of an empty row has an empty line, which reads as no values.
        return [row if any(row) or len(row) > 1 else [] for row in table]


def random_value(rng, depth):
    kind = rng.random()
    if depth > 0 and kind < 0.25:
        names = rng.sample(NAMES, rng.randint(0, 4))
        return {name: random_value(rng, depth - 1) for name in names}
    if depth > 0 and kind < 0.45:
        return [random_value(rng, depth - 1) for _ in range(rng.randint(0, 3))]
    return rng.choice([None, True, False, rng.randint(-10**20, 10**20), 1.5, rng.choice(TEXTS),
                       rng.choice(TEXTS)])


def check_json(referee, seed, as_rows, as_lines):
    rng = random.Random(seed)
    records = [random_value(rng, 1) if rng.random() < 0.1 else
               {name: random_value(rng, 3) for name in rng.sample(NAMES, rng.randint(0, 6))}
               for _ in range(rng.randint(2, 30))]
    if as_lines:
        records = [record if isinstance(record, (dict, list)) else {} for record in records]
    path = referee.path("in.json")
    ascii_only = rng.random() < 0.5
    with open(path, "w", encoding="utf-8") as file:
        if as_lines:
            for record in records:
                file.write(json.dumps(record, ensure_ascii=ascii_only) + "\n")
        else:
            json.dump(records, file, ensure_ascii=ascii_only, indent=rng.choice([None, 2]))
    mapper = Mapper(as_rows)
    rows = []
    for record in records:
        rows += beside(mapper.tables(record, ()))
    actual = referee.read({"path": path, "file_type": 4, "ignore_empty": 0,
                           "json_arrays_as_rows": int(as_rows)})
    kind = "lines" if as_lines else "array"
    referee.compare(f"JSON {kind} {seed}, arrays as {'rows' if as_rows else 'columns'}",
                    mapper.result(rows), actual)


def random_element(rng, name, depth):
    """An element's text; the same names repeat in some parents and not in others."""
    attributes = "".join(f" {key}={quoteattr(rng.choice(TEXTS[:6]).replace(chr(10), ' '))}"
                         for key in rng.sample(["k", "l", "m"], rng.choice([0, 0, 1, 2])))
    if depth == 0 or rng.random() < 0.3:
        content = escape(rng.choice(TEXTS))
        if rng.random() < 0.2:
            content += "<![CDATA[<c>]]><!-- comment -->"
    else:
        names = [rng.choice("abcd") for _ in range(rng.randint(0, 4))]
        content = "".join("\n  " + random_element(rng, each, depth - 1) for each in names)
        content += "tail " if rng.random() < 0.1 else "\n"
    return f"<{name}{attributes}>{content}</{name}>"


def repeating(element, path, found):
    for child in element:
        if sum(other.tag == child.tag for other in element) > 1:
            found.add(path + (child.tag,))
        repeating(child, path + (child.tag,), found)


def as_value(element, path, arrays):
    """The element as an object; its text has the empty name."""
    value = {"@" + name: text for name, text in element.attrib.items()}
    for child in element:
        below = path + (child.tag,)
        if below in arrays:
            value.setdefault(child.tag, []).append(as_value(child, below, arrays))
        else:
            value[child.tag] = as_value(child, below, arrays)
    text = (element.text or "") + "".join(child.tail or "" for child in element)
    text = text.strip() if len(element) else text
    if text:
        value[""] = text
    return value


class ElementMapper(Mapper):
    def tables(self, value, path):
        if isinstance(value, dict):
            text = value.get("")
            parts = super().tables({k: v for k, v in value.items() if k}, path)
            return parts + (super().tables(text, path) if text else [])
        return super().tables(value, path)


def by_name(table):
    """With the columns sorted: the trees don't tell how elements of different names mixed."""
    if isinstance(table, str) or not table:
        return table
    width = len(table[0])
    order = sorted(range(width), key=lambda column: table[0][column])
    padded = [row + [""] * (width - len(row)) for row in table]
    return [[row[column] for column in order] for row in padded]


def check_xml(referee, seed, as_rows):
    rng = random.Random(seed)
    records = "".join(random_element(rng, "rec", 3) + "\n" for _ in range(rng.randint(2, 20)))
    text = f"<?xml version='1.0'?>\n<root><!-- records -->\n{records}</root>"
    path = referee.path("in.xml")
    with open(path, "w", encoding="utf-8") as file:
        file.write(text)
    root = ElementTree.fromstring(text)
    arrays = set()
    repeating(root, (), arrays)
    mapper = ElementMapper(as_rows)
    rows = []
    for record in root:
        rows += beside(mapper.tables(as_value(record, ("rec",), arrays), ()))
    expected = mapper.result(rows)
    expected[0] = ["rec" if name == "Value" else name for name in expected[0]]
    actual = referee.read({"path": path, "file_type": 5, "ignore_empty": 0,
                           "json_arrays_as_rows": int(as_rows)})
    referee.compare(f"XML {seed}, arrays as {'rows' if as_rows else 'columns'}",
                    by_name(expected), by_name(actual))


def main():
    referee = Referee()
    for seed in range(15):
        for as_rows in (True, False):
            check_json(referee, seed, as_rows, as_lines=seed % 3 == 0)
            check_xml(referee, seed, as_rows)
    referee.finish()


if __name__ == "__main__":
    main()
