"""Parses what tabweave writes as JSON, XML, HTML, YAML, Markdown and vCard with Python's own parsers
(and PyYAML), and compares every value with the table that went in.
"""
import html.parser
import json
import os
import random
import re
import xml.etree.ElementTree as ElementTree

import yaml

from referee import Referee

JSON, XML, VCARD, YAML, HTML, MARKDOWN = 4, 5, 6, 7, 8, 9

TEXTS = [
    "", "x", "two words", " leading", "trailing ", "  ", "\ttab", "a\tb", "a\nb", "a\r\nb", "a\rb", "\n",
    "]]>", "<!-- -->", "-->", "</script>", "<b>&amp;</b>", "&", "&#65;", 'q"uo\\te', "'", "|", "a|b", "\\|",
    "back\\slash", "a\\", "`code`", "*a*", "%", "@x", "!tag", "&anchor", "*alias", "{a: b}", "[a, b]", "- item",
    "-", "?", "? key", ":", "a: b", "a:b", "a:", "a #b", "a#b", "#", "---", "...", "--- x", "~", "null", "Null", "no", "No",
    "yes", "Y", "on", "OFF", "true", "True", "false", "1", "-1", "+1", "0", "-0", "007", "0o7", "0x1F", "0b1",
    "1.5", "1.50", ".5", "5.", "1e3", "1E+3", "-1.5e-3", "12:30", "1:2:3.5", "1_000", "_1", ".inf", "-.INF", ".nan", "NaN",
    "inf", "2026-01-31", "2026-01-31 14:05:09", "2026-01-31T14:05:09Z", "2026-1", "20260131", "=", "<<", "=1+2",
    "2026-02-30", "2026-1-5", "1,000", "08:30", "0X1f", "0.00001", "0.0001", "1.0", "-0.0", "1e", ".", "?x", ":x", "-x",
    "[]", "{}", "- - a", "TRUE", "y", "nULL",
    "12345678901234567890", "0.1234567890123456789", "1e400", "10a", "1.2.3", "\u00e9\u20ac", "\U0001f600", "\u6f22\u5b57",
    "\x7f", "\u0085", "\u2028", "\u2029", "\ufeff", "e\u0301", "x" * 5000,
]
CONTROLS = ["\x00", "\x01", "a\x0bb", "\x1b[0m", "\x1f", "\ufffe", "\uffff", "\x9f"]
SURROGATES = ["\ud800", "a\udc00b"]


def table(seed, extra, columns=5, rows=60):
    """Names and rows; every text occurs at least once."""
    rng = random.Random(seed)
    texts = TEXTS + extra
    values = texts + [rng.choice(texts) for _ in range(max(0, rows * columns - len(texts)))]
    rng.shuffle(values)
    names = [f"c{i}" for i in range(columns)]
    return names, [values[i:i + columns] for i in range(0, len(values) - columns + 1, columns)]


def write(referee, names, rows, file_type, suffix, **options):
    """Has the table written; answers the bytes, or the log when there is no file."""
    source = referee.path("in.json")
    with open(source, "w", encoding="ascii") as file:
        json.dump([dict(zip(names, row)) for row in rows], file)
    target = referee.path("out." + suffix)
    if os.path.exists(target):
        os.remove(target)
    attributes = {"path": target, "file_type": file_type, "line_endings": 2, "encoding": "UTF-8"}
    attributes.update(options)
    log = referee.run({"path": source, "file_type": JSON, "ignore_empty": 0}, attributes)
    if not os.path.exists(target):
        return log.encode()
    with open(target, "rb") as file:
        return file.read()


def told_apart(text):
    """In UTF-16 code units, as far as Python can have them: JSON keeps unpaired surrogates."""
    return text.encode("utf-16-le", "surrogatepass")


def check_json(referee):
    names, rows = table(1, CONTROLS + SURROGATES)
    for encoding in ("UTF-8", "ISO-8859-1", "UTF-16LE"):
        for bom in (0, 1):
            data = write(referee, names, rows, JSON, "json", encoding=encoding, bom=bom, json_types=1,
                         json_manual_col_types="%1F".join(["String"] * len(names)).replace("%1F", "\x1f"))
            text = data.decode(encoding).lstrip("\ufeff")
            actual = [[value if value is not None else "" for value in row.values()] for row in json.loads(text)]
            referee.compare(f"JSON in {encoding}, mark {bom}", [[told_apart(v) for v in row] for row in rows],
                            [[told_apart(v) for v in row] for row in actual])


def check_json_types(referee):
    rng = random.Random(2)
    rows = [[str(rng.randint(-10**9, 10**9)), f"{rng.random():.6f}", rng.choice(["true", "false", ""]),
             f"{rng.randint(0, 99):03}", rng.choice(["", "1.50", "3"])] for _ in range(300)]
    data = write(referee, ["int", "real", "bool", "code", "mixed"], rows, JSON, "json")
    parsed = json.loads(data, parse_float=str, parse_int=str)
    actual = [["" if value is None else str(value).lower() for value in row.values()] for row in parsed]
    referee.compare("JSON types, texts of numbers", rows, actual)
    kinds = {name: {type(row[name]).__name__ for row in json.loads(data)} - {"NoneType"}
             for name in ("int", "real", "bool", "code")}
    referee.compare("JSON types, kinds", {"int": {"int"}, "real": {"float"}, "bool": {"bool"}, "code": {"str"}}, kinds)


def as_xml(value):
    """What XML 1.0 can hold of a text."""
    return re.sub("[^\t\n\r\u0020-\ud7ff\ue000-\ufffd\U00010000-\U0010ffff]", "\ufffd", value)


def check_xml(referee):
    names, rows = table(3, CONTROLS + SURROGATES)
    for encoding in ("UTF-8", "ISO-8859-1", "UTF-16"):
        for remove_empty in (0, 1):
            data = write(referee, names, rows, XML, "xml", encoding=encoding, bom=int(encoding == "UTF-16"),
                         xml_root="root", xml_row="record", remove_empty=remove_empty, file_comment=" a--b- ")
            root = ElementTree.fromstring(data)
            actual = [[row.findtext(name, "") for name in names] for row in root]
            referee.compare(f"XML in {encoding}, remove_empty {remove_empty}",
                            [[as_xml(value) for value in row] for row in rows], actual)


class Cells(html.parser.HTMLParser):
    def __init__(self):
        super().__init__(convert_charrefs=True)
        self.rows = []
        self.open = False

    def handle_starttag(self, tag, attributes):
        if tag == "tr":
            self.rows.append([])
        elif tag in ("td", "th"):
            self.rows[-1].append("")
            self.open = True

    def handle_endtag(self, tag):
        if tag in ("td", "th"):
            self.open = False

    def handle_data(self, data):
        if self.open:
            self.rows[-1][-1] += data


def check_html(referee):
    for encoding in ("UTF-8", "ISO-8859-1"):
        # Python refuses references to characters that are none.
        names, rows = table(4, CONTROLS if encoding == "UTF-8" else [])
        data = write(referee, names, rows, HTML, "html", encoding=encoding, write_header=1, html_encode=1,
                     file_comment="a --> b")
        cells = Cells()
        cells.feed(data.decode(encoding))
        cells.close()
        referee.compare(f"HTML in {encoding}", [names] + rows, cells.rows)


def check_yaml(referee):
    names, rows = table(5, CONTROLS + SURROGATES)
    names[0] = "a: b"
    names[1] = "no"
    for encoding in ("UTF-8", "ISO-8859-1", "UTF-16LE"):
        for remove_empty in (0, 1):
            data = write(referee, names, rows, YAML, "yaml", encoding=encoding, bom=int(encoding == "UTF-16LE"),
                         remove_empty=remove_empty, file_comment=" one\n two")
            parsed = yaml.safe_load(data.decode(encoding).lstrip("\ufeff"))
            actual = [[str(row.get(name, "")) for name in names] for row in parsed]
            referee.compare(f"YAML in {encoding}, remove_empty {remove_empty}",
                            [[told_apart(v) for v in row] for row in rows],
                            [[told_apart(v) for v in row] for row in actual])
            # Numbers stay what they are, all else is text.
            kinds = {str(value): type(value).__name__ for row in parsed for value in row.values()}
            referee.compare(f"YAML kinds in {encoding}, remove_empty {remove_empty}",
                            ["int", "int", "float", "str", "str", "str", "str"],
                            [kinds[text] for text in ("0", "-1", "1.5", "true", "007", "2026-01-31", "12:30")])


def check_yaml_names(referee):
    """Any text can be a name."""
    names = list(dict.fromkeys(text for text in TEXTS + CONTROLS + ["x" * 1000, "\x01" * 400] if text))
    row = [str(number) for number in range(len(names))]
    for encoding in ("UTF-8", "ISO-8859-1"):
        data = write(referee, names, [row, row], YAML, "yaml", encoding=encoding)
        parsed = yaml.safe_load(data.decode(encoding))
        referee.compare(f"YAML names in {encoding}", [names, names], [list(each) for each in parsed])


def check_markdown(referee):
    names, rows = table(6, [])
    data = write(referee, names, rows, MARKDOWN, "md", write_header=1, file_comment="c").decode()
    lines = data.split("\n")
    referee.compare("Markdown frame", ["<!--c-->", "", len(rows) + 4], [lines[0], lines[-1], len(lines)])
    actual = []
    for line in lines[1:2] + lines[3:-1]:
        cells = re.split(r"(?<!\\)(?:\\\\)*\|", line)
        # The pattern eats the pairs of backslashes in front of a bar.
        bars = re.findall(r"(?<!\\)((?:\\\\)*)\|", line)
        cells = [cell + eaten for cell, eaten in zip(cells, bars + [""])][1:-1]
        actual.append([re.sub(r"\\([!-/:-@\[-`{-~])", r"\1", cell.strip(" ")).replace("<br>", "\n") for cell in cells])
    expected = [[re.sub("\r\n?", "\n", value).strip(" ") for value in row] for row in [names] + rows]
    referee.compare("Markdown cells", expected, actual)
    widths = {len(line) for line in lines[1:-1] if "x" * 100 not in line and line.isascii() and line.isprintable()}
    referee.compare("Markdown columns have one width", [1], [len(widths)])


def check_vcard(referee):
    names, rows = table(7, [])
    data = write(referee, names, rows, VCARD, "vcf").decode()
    cards = data.split("BEGIN:VCARD\nVERSION:3.0\n")[1:]
    actual = []
    for card in cards:
        lines = card.split("\n")
        fields = dict(re.match(r"([^:]*):(.*)", line, re.DOTALL).groups() for line in lines[:-2])
        actual.append([fields.get(name, "").replace("\\:", ":") for name in names] + lines[-2:])
    expected = [[re.sub("[\r\n]", " ", value) for value in row] + ["END:VCARD", ""] for row in rows]
    referee.compare("vCard", expected, actual)


def check_read_back(referee):
    """What is written as JSON and XML comes back through tabweave's own readers."""
    names, rows = table(8, [])
    for file_type, suffix in ((JSON, "json"), (XML, "xml")):
        write(referee, names, rows, file_type, suffix, xml_root="root", xml_row="record")
        actual = referee.read({"path": referee.path("out." + suffix), "file_type": file_type, "ignore_empty": 0})
        referee.compare(f"{suffix} read back", [names] + rows, actual)


def main():
    referee = Referee()
    for check in (check_json, check_json_types, check_xml, check_html, check_yaml, check_yaml_names, check_markdown, check_vcard,
                  check_read_back):
        check(referee)
    referee.finish()


if __name__ == "__main__":
    main()
