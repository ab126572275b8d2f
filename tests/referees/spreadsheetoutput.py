"""Reads the workbooks that tabweave writes with openpyxl, xlrd and gnumeric's ssconvert, and compares values
and their types with the table that went in. Has workbooks of other programs extended and looks whether the
rest of them stays as it was.
"""
import csv
import datetime
import json
import os
import random
import shutil
import struct
import subprocess
import zipfile

import spreadsheets
from referee import Referee, trimmed
from spreadsheets import openpyxl, xlrd, xlwt

from openpyxl.chart import BarChart, Reference
from openpyxl.formatting.rule import CellIsRule
from openpyxl.styles import Font, PatternFill
from openpyxl.utils.escape import unescape
from openpyxl.workbook.defined_name import DefinedName

XLSX, XLS, JSON = 1, 2, 4
SUFFIX = {XLSX: "xlsx", XLS: "xls"}
OVERWRITE, APPEND = 1, 2
FORMULA, LINK = "Formula", "Hyperlink"

# A text and what it is to be in a cell.
VALUES = [
    ("1", 1), ("0", 0), ("-1", -1), ("1.50", 1.5), ("0.1", 0.1), ("123456789012345", 123456789012345),
    ("-0.000001", -0.000001), ("0.123456789012345", 0.123456789012345), ("536870911", 536870911),
    ("536870912", 536870912), ("-536870912", -536870912), ("-536870913", -536870913), ("5368709.11", 5368709.11),
    ("5368709.12", 5368709.12), ("1234567.891", 1234567.891), ("0.29", 0.29), ("1.005", 1.005), ("99.99", 99.99),
    ("1234567890123456", "1234567890123456"), ("007", "007"), ("1e5", "1e5"), ("-0", "-0"), ("+1", "+1"), ("1 ", "1 "),
    ("true", True), ("False", False), ("TRUE", True), ("tRUE", "tRUE"), ("yes", "yes"),
    ("2024-02-29", datetime.datetime(2024, 2, 29)), ("1900-03-01", datetime.datetime(1900, 3, 1)),
    ("2024-02-29 10:11:12", datetime.datetime(2024, 2, 29, 10, 11, 12)), ("9999-12-31", datetime.datetime(9999, 12, 31)),
    ("2023-02-29", "2023-02-29"), ("0001-01-01", "0001-01-01"), ("10:30", "10:30"),
    ("=1+2", "=1+2"), ("@A1", "@A1"), ("#N/A", "#N/A"), ("'quoted", "'quoted"), (" blanks ", " blanks "),
    ("two\nlines", "two\nlines"), ("a\tb", "a\tb"), ("<&>\"'", "<&>\"'"), ("_x0041_", "_x0041_"), ("\u00e9\u00ff", "\u00e9\u00ff"),
    ("\u20ac\u8a9e", "\u20ac\u8a9e"), ("\U0001f600" * 9000, "\U0001f600" * 9000), ("x" * 32767, "x" * 32767),
    ("\u20ac" * 32767, "\u20ac" * 32767), ("", None),
]

# Formulas of a column, cells of the columns before them, and results; A is 3, B is 4.5, C is "Some Text", D is 2024-02-29.
FORMULAS = [
    ("=A2+B2*2", 12), ("=-A2^2", 9), ("=(A2+B2)*2", 15), ("=A2/4-1", -0.25), ("=50%", 0.5), ("=A2&\"x\"&B2", "3x4.5"),
    ("=\"say \"\"a\"\"\"", "say \"a\""), ("=A2>B2", False), ("=A2<=3", True), ("=A2<>3", False), ("=TRUE", True),
    ("SUM(A2,B2,1)", 8.5), ("=sum($A$2:$B$2)", 7.5), ("=AVERAGE(A2:B2)", 3.75), ("=MIN(A2:B2)", 3), ("=MAX(A2:B2,7)", 7),
    ("=COUNT(A2:D2)", 3), ("=COUNTA(A2:C2)", 3), ("=IF(A2>2,\"big\",\"small\")", "big"), ("=IF(A2>5,1)", False), ("=ROUND(B2/7,2)", 0.64),
    ("=ABS(-A2)", 3), ("=LEN(C2)", 9), ("=LEFT(C2,4)", "Some"), ("=RIGHT(C2,4)", "Text"), ("=MID(C2,2,3)", "ome"), ("=UPPER(C2)", "SOME TEXT"),
    ("=LOWER(C2)", "some text"), ("=TRIM(\"  a  b \")", "a b"), ("=CONCATENATE(A2,\"-\",C2)", "3-Some Text"), ("=AND(A2=3,B2>4)", True),
    ("=OR(A2=9,B2>9)", False), ("=NOT(A2=9)", True), ("=VLOOKUP(3,A2:C2,3,FALSE)", "Some Text"), ("=YEAR(D2)", 2024), ("=MONTH(D2)", 2),
    ("=DAY(D2)", 29), ("=YEAR(DATE(2020,12,32))", 2021), ("=MOD(A2,2)", 1), ("=INT(B2)", 4), ("=SUMPRODUCT(A2:B2,A2:B2)", 29.25),
    ("=SUMPRODUCT((A2:B2>3)*1)", 1), ("=SUBSTITUTE(C2,\"e\",\"3\")", "Som3 T3xt"), ("=FIND(\"T\",C2)", 6), ("=ISNUMBER(A2)", True),
    ("=INDEX(A2:C2,1,3)", "Some Text"), ("=MATCH(4.5,A2:B2,0)", 2), ("=COUNTIF(A2:B2,\">3\")", 1), ("=SUMIF(A2:B2,\">3\")", 4.5),
    ("=EXACT(C2,\"x\")", False), ("=POWER(A2,2)", 9), ("=SQRT(A2*3)", 3), ("=TEXT(B2,\"0.00\")", "4.50"), ("=1.5e3+70000", 71500),
    ("=CHAR(65)", "A"), ("=CODE(C2)", 83), ("=ROUNDUP(B2,0)", 5), ("=ROUNDDOWN(B2,0)", 4), ("=TRUNC(-B2)", -4), ("=SIGN(-A2)", -1),
    ("=REPT(\"ab\",3)", "ababab"), ("=PROPER(\"one two\")", "One Two"), ("=REPLACE(C2,1,4,\"No\")", "No Text"), ("=SEARCH(\"t\",C2)", 6),
    ("=VALUE(\"12\")", 12), ("=MEDIAN(A2:B2)", 3.75), ("=PRODUCT(A2:B2)", 13.5), ("=LARGE(A2:B2,1)", 4.5), ("=SMALL(A2:B2,1)", 3),
    ("=RANK(3,A2:B2)", 2), ("=COUNTBLANK(A2:C2)", 0), ("=CEILING(B2,1)", 5), ("=FLOOR(B2,1)", 4), ("=ISBLANK(A2)", False), ("=ISTEXT(C2)", True),
    ("=ISERROR(1/0)", True), ("=ISERR(1/0)", True), ("=ISNA(NA())", True), ("=ISLOGICAL(TRUE())", True), ("=ROWS(A2:B2)", 1), ("=COLUMNS(A2:B2)", 2),
    ("=ROW(A2)", 2), ("=COLUMN(B2)", 2), ("=HLOOKUP(3,A2:B2,1,FALSE)", 3), ("=LOOKUP(3,A2:B2)", 3), ("=ROUND(LOG10(1000),9)", 3), ("=LOG(8,2)", 3),
    ("=ROUND(LN(EXP(2)),6)", 2), ("=ROUND(PI(),2)", 3.14), ("=HOUR(TIME(10,20,30))", 10), ("=MINUTE(TIME(10,20,30))", 20),
    ("=SECOND(TIME(10,20,30))", 30), ("=WEEKDAY(D2)", 5), ("=YEAR(DATEVALUE(\"2020-05-06\"))", 2020), ("=FALSE()", False), ("=FIXED(B2,1)", "4.5"),
    ("=ROUND(STDEV(A2:B2),4)", 1.0607), ("=VAR(A2:B2)", 1.125), ("=CLEAN(C2)", "Some Text"), ("=TODAY()>40000", True), ("=NOW()>40000", True),
    ("=RAND()<=1", True), ("=IF(AND(A2=3,OR(B2>9,C2<>\"\")),SUM(A2:B2)*2,0)", 15),
]


# What gnumeric reads in another way from a text than spreadsheet programs calculate it.
XLS_FORMULAS = [("=2^3^2", 64)]


def put(referee, names, rows, path, formats=(), mode=OVERWRITE, **options):
    """Has a table written; answers the log."""
    source = referee.path("in.json")
    with open(source, "w", encoding="ascii") as file:
        json.dump([dict(zip(names, row)) for row in rows], file)
    attributes = {"path": path, "file_type": XLS if path.endswith(".xls") else XLSX, "write_header": 1}
    if formats:
        attributes.update(excel_output=1, excel_manual_col_formats="\x1f".join(formats))
    attributes.update(options)
    return referee.run({"path": source, "file_type": JSON, "ignore_empty": 0}, attributes, mode)


def put_new(referee, names, rows, path, formats=(), **options):
    if os.path.exists(path):
        os.remove(path)
    return put(referee, names, rows, path, formats, **options)


def read_openpyxl(path, sheet=None):
    book = openpyxl.load_workbook(path)
    rows = []
    for row in (book[sheet] if sheet else book.worksheets[0]).iter_rows():
        values = []
        for cell in row:
            text = isinstance(cell.value, str) and cell.data_type != "f"
            values.append(unescape(cell.value) if text else cell.value)
        rows.append(values)
    return rows


def xlrd_value(book, cell):
    if cell.ctype == xlrd.XL_CELL_DATE:
        return xlrd.xldate.xldate_as_datetime(cell.value, book.datemode)
    if cell.ctype in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
        return None
    return bool(cell.value) if cell.ctype == xlrd.XL_CELL_BOOLEAN else cell.value


def read_xlrd(path, sheet=None):
    book = xlrd.open_workbook(path)
    rows = book.sheet_by_name(sheet) if sheet else book.sheet_by_index(0)
    return [[xlrd_value(book, cell) for cell in rows.row(i)] for i in range(rows.nrows)]


def read_values(path, sheet=None):
    return (read_xlrd if path.endswith(".xls") else read_openpyxl)(path, sheet)


def typed(rows):
    """With the kinds told apart: 1 == True == 1.0 in Python."""
    return [[("n" if isinstance(value, (int, float)) and not isinstance(value, bool) else type(value).__name__, value)
             for value in row] for row in rows]


def by_ssconvert(path, *options):
    target = path + ".csv"
    subprocess.run(["ssconvert", *options, "-T", "Gnumeric_stf:stf_csv", path, target], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    with open(target, encoding="utf-8", newline="") as file:
        return list(csv.reader(file))


def check_values(referee, kind):
    path = referee.path("values." + SUFFIX[kind])
    rows = [[text, "end", text] for text, _ in VALUES]
    put_new(referee, ["a", "b", "c"], rows, path)
    expected = [["a", "b", "c"]] + [[value, "end", value] for _, value in VALUES]
    referee.compare(f"values, {SUFFIX[kind]}", typed(expected), typed(read_values(path)))


def check_random_values(referee, kind, seed):
    rng = random.Random(seed)
    rows, expected = [], [["n", "t"]]
    for _ in range(2000):
        text = rng.choice([str(rng.randrange(-10**9, 10**9)), f"{rng.uniform(-9999, 9999):.{rng.randrange(1, 6)}f}",
                           str(rng.randrange(10**10, 10**15))])
        text = "0" if text.startswith("-0") and not text.strip("-0.") else text
        word = "".join(rng.choice("ab \u00e9\u20ac\U0001f600") for _ in range(rng.choice([1, 5, 40, 900]))) + "."
        rows.append([text, word])
        expected.append([float(text), word])
    path = referee.path("random." + SUFFIX[kind])
    put_new(referee, ["n", "t"], rows, path)
    referee.compare(f"random values {seed}, {SUFFIX[kind]}", typed(expected), typed(read_values(path)))


def check_formulas(referee, kind):
    """Formulas are calculated by gnumeric; none of them may have become a text."""
    if not shutil.which("ssconvert"):
        referee.skip("formulas", "ssconvert is not installed")
        return
    path = referee.path("formulas." + SUFFIX[kind])
    names = ["a", "b", "c", "d", "f"]
    formulas = FORMULAS + (XLS_FORMULAS if kind == XLS else [])
    rows = [["3", "4.5", "Some Text", "2024-02-29", formula] for formula, _ in formulas]
    log = put_new(referee, names, rows, path, ["Automatic"] * 4 + [FORMULA])
    referee.compare(f"no formula is a text, {SUFFIX[kind]}", False, "do not fit" in log)

    def text(value):
        try:
            return f"{float(value):.12g}" if not isinstance(value, bool) else str(value).upper()
        except ValueError:
            return value
    actual = [text(row[4]) for row in by_ssconvert(path, "--recalc")[1:]]
    referee.compare(f"formulas, {SUFFIX[kind]}", [[formula, text(value)] for formula, value in formulas],
                    [[formula, value] for (formula, _), value in zip(formulas, actual)])


def check_unknown_formulas(referee):
    """What is not known is a text in the older format."""
    path = referee.path("unknown.xls")
    formulas = ["=FOO(1)", "=A1:", "=SUM(1", "=Sheet2!A1", "=IV65537", "=IW1", "=A0", "={1,2}", "=1+", "=name", "=A1 B1", "=\"" + "x" * 256 + "\"",
                "=ABS(1,2)", "=LEFT()", "=" + "(" * 100 + "1" + ")" * 100, "=" + "ABS(" * 8 + "1" + ")" * 8, "=1" + "+1" * 2000, "=A1.B", "=B2:A1"]
    log = put_new(referee, ["f"], [[formula] for formula in formulas], path, [FORMULA])
    referee.compare("unknown formulas are texts", [["f"]] + [[formula] for formula in formulas], read_values(path))
    referee.compare("unknown formulas are counted", True, f"{len(formulas)} value(s) do not fit" in log)


def check_links(referee, kind):
    path = referee.path("links." + SUFFIX[kind])
    targets = ["https://example.org/?a=1&b=2", "mailto:a@example.org", "https://example.org/" + "x" * 2000, "plain"]
    put_new(referee, ["t", "link"], [["x", target] for target in targets], path, ["Automatic", LINK])
    if kind == XLSX:
        sheet = openpyxl.load_workbook(path).worksheets[0]
        actual = [[sheet.cell(row, 2).value, sheet.cell(row, 2).hyperlink.target] for row in range(2, 6)]
    else:
        sheet = xlrd.open_workbook(path, formatting_info=True).sheet_by_index(0)
        actual = [[sheet.cell_value(row, 1), sheet.hyperlink_map[row, 1].url_or_path] for row in range(1, 5)]
    referee.compare(f"links, {SUFFIX[kind]}", [[target, target] for target in targets], actual)


def check_look(referee, kind):
    """The header is bold and stays in sight; columns are as wide as their values."""
    path = referee.path("look." + SUFFIX[kind])
    put_new(referee, ["a", "b"], [["x", "y" * 30]], path, worksheet="My \u20ac sheet")
    if kind == XLSX:
        sheet = openpyxl.load_workbook(path).worksheets[0]
        actual = [sheet.title, sheet.cell(1, 1).font.b, sheet.cell(2, 1).font.b, sheet.freeze_panes, sheet.column_dimensions["B"].width]
        expected = ["My \u20ac sheet", True, False, "A2", 32]
    else:
        book = xlrd.open_workbook(path, formatting_info=True)
        sheet = book.sheet_by_index(0)
        weights = [book.font_list[book.xf_list[sheet.cell_xf_index(row, 0)].font_index].weight for row in (0, 1)]
        actual = [sheet.name, weights, sheet.panes_are_frozen, sheet.horz_split_pos, sheet.colinfo_map[1].width]
        expected = ["My \u20ac sheet", [700, 400], 1, 1, 32 * 256]
    referee.compare(f"look, {SUFFIX[kind]}", expected, actual)


def check_ssconvert(referee, kind):
    if not shutil.which("ssconvert"):
        referee.skip("opened by gnumeric", "ssconvert is not installed")
        return
    path = referee.path("gnumeric." + SUFFIX[kind])
    rows = [[str(i), f"text {i % 7} \u20ac" + "x" * i, "2024-02-29", "TRUE"] for i in range(1, 1000)]
    put_new(referee, ["i", "t", "d", "b"], rows, path)
    actual = [[row[0], row[1], row[2].replace("/", "-"), row[3]] for row in by_ssconvert(path)]
    referee.compare(f"opened by gnumeric, {SUFFIX[kind]}", [["i", "t", "d", "b"]] + rows, actual)


# Workbooks of other programs.

ADDED = [["x", "1.50", "2024-02-29", "new"], ["y", "2.25", "2024-03-01", "new"]]
ADDED_VALUES = [["k", "n", "d", "t"], ["x", 1.5, datetime.datetime(2024, 2, 29), "new"], ["y", 2.25, datetime.datetime(2024, 3, 1), "new"]]


def make_openpyxl(path):
    book = openpyxl.Workbook()
    sheet = book.active
    sheet.title = "Data"
    for row in range(1, 11):
        sheet.append([f"row {row}", row, datetime.date(2024, 1, row), row % 2 == 0])
    sheet["A1"].font = Font(bold=True, color="FF0000")
    sheet["B3"].fill = PatternFill("solid", fgColor="00FF00")
    sheet.conditional_formatting.add("B1:B10", CellIsRule(operator="greaterThan", formula=["5"], font=Font(bold=True)))
    sheet.column_dimensions["A"].width = 40
    sheet["E1"].hyperlink = "https://example.org/old"
    chart = BarChart()
    chart.add_data(Reference(sheet, min_col=2, min_row=1, max_row=10))
    sheet.add_chart(chart, "G2")
    other = book.create_sheet("Other & more")
    other["A1"] = "=SUM(Data!B1:B10)"
    other["B2"] = "kept"
    other["B2"].font = Font(italic=True)
    book.defined_names.append(DefinedName("numbers", attr_text="Data!$B$1:$B$10"))
    book.save(path)


def zip_parts(path):
    with zipfile.ZipFile(path) as archive:
        return {name: archive.read(name) for name in archive.namelist()}


def extended(referee, source, mode, sheet):
    """A copy of a workbook to which our rows were added."""
    path = referee.path(f"extended.{mode}." + os.path.basename(source))
    shutil.copy(source, path)
    log = put(referee, ["k", "n", "d", "t"], ADDED, path, mode=mode, worksheet=sheet, overwrite_sheet=1)
    name = f"{'append to' if mode == APPEND else 'overwrite'} '{sheet}' of {os.path.basename(source)}"
    if "Written to" not in log:
        referee.compare(name, [], log)
    return name, path


def check_extended_xlsx(referee, mode):
    source = referee.path("source.xlsx")
    make_openpyxl(source)
    old_parts = zip_parts(source)
    old_rows = read_values(source, "Data")
    for sheet, part in (("Data", "xl/worksheets/sheet1.xml"), ("New", "xl/worksheets/sheet3.xml")):
        name, path = extended(referee, source, mode, sheet)
        parts = zip_parts(path)
        changed = {key for key in parts if parts[key] != old_parts.get(key)}
        allowed = {"[Content_Types].xml", "xl/workbook.xml", "xl/_rels/workbook.xml.rels", "xl/styles.xml", part}
        referee.compare(name + ": the other parts", [], sorted(changed - allowed) + sorted(set(old_parts) - set(parts)))
        book = openpyxl.load_workbook(path)
        referee.compare(name + ": what is beside the cells", [1, 1, ["numbers"], 40],
                        [len(book["Data"]._charts), len(book["Data"].conditional_formatting), [n.name for n in book.defined_names.definedName],
                         book["Data"].column_dimensions["A"].width])
        kept = old_rows if mode == APPEND and sheet == "Data" else []
        rows = [[value for value in row if value is not None] for row in read_values(path, sheet)]
        kept = [[value for value in row if value is not None] for row in kept]
        referee.compare(name + ": the cells", typed(kept + ADDED_VALUES), typed(rows))
        if mode == APPEND:
            referee.compare(name + ": the look of old cells", ["00FF0000", "https://example.org/old"],
                            [book["Data"]["A1"].font.color.rgb, book["Data"]["E1"].hyperlink.target])


def make_xlwt(path):
    book = xlwt.Workbook(encoding="utf-8")
    styles = [xlwt.easyxf(text, num_format_str=code) for text, code in
              (("font: bold on, color red", "General"), ("pattern: pattern solid, fore_color green", "0.00"),
               ("borders: left thin", "dd/mm/yyyy hh:mm"), ("font: italic on", "@"))]
    for name in ("Data", "Other & more"):
        sheet = book.add_sheet(name)
        for row in range(40):
            sheet.write(row, 0, f"{name} {row}", styles[0])
            sheet.write(row, 1, row * 1.1, styles[1])
            sheet.write(row, 2, 40000 + row / 7, styles[2])
            sheet.write(row, 3, row % 2 == 0)
            sheet.write(row, 4, xlwt.Formula(f"B{row + 1}*2"), styles[1])
            sheet.write(row, 5, "long " * 300 + str(row), styles[3])
        sheet.write(45, 1, None, styles[1])  # only a look
        sheet.write_merge(10, 12, 7, 9, "merged", styles[0])
        sheet.col(0).width = 9000
        sheet.row(3).hidden = True
        sheet.set_panes_frozen(True)
        sheet.set_horz_split_pos(1)
    book.save(path)


def records(data):
    """The records of a stream as (number, data)."""
    at = 0
    while at + 4 <= len(data):
        number, size = struct.unpack_from("<HH", data, at)
        yield number, data[at + 4:at + 4 + size]
        at += 4 + size


def raw_sheets(path):
    """The records of each sheet by its name, without those that tell positions."""
    with open(os.devnull, "w", encoding="ascii") as null:
        document = xlrd.compdoc.CompDoc(open(path, "rb").read(), logfile=null)
    stream = bytes(document.get_named_stream("Workbook"))
    result = {}
    for number, data in records(stream):
        if number == 0x0a:
            break
        if number == 0x85:
            wide = data[7] & 1
            name = data[8:].decode("utf-16-le" if wide else "latin-1")
            depth, own = 0, []
            for each, content in records(stream[struct.unpack_from("<I", data)[0]:]):
                depth += 1 if each == 0x809 else -1 if each == 0x0a else 0
                if each not in (0x20b, 0xd7):
                    own.append((each, content))
                if depth == 0:
                    break
            result[name] = own
    return result


def checksum_of_styles(path):
    """The checksum that the workbook notes and the right one, if it notes any."""
    with open(os.devnull, "w", encoding="ascii") as null:
        document = xlrd.compdoc.CompDoc(open(path, "rb").read(), logfile=null)
    total, count, noted = 0, 0, None
    for number, data in records(bytes(document.get_named_stream("Workbook"))):
        if number == 0x0a:
            break
        if number == 0xe0:
            count += 1
            for byte in data:
                value = (total >> 24 ^ byte) << 24
                for _ in range(8):
                    value = (value << 1 ^ (0xaf if value & 0x80000000 else 0)) & 0xffffffff
                total = (total << 8 & 0xffffffff) ^ (value & 0xffff)
        if number == 0x87c:
            noted = struct.unpack_from("<HI", data, 14)
    return noted, (count, total) if noted else None


def xlrd_sheets(path):
    """Cells with their formats, merged cells and hidden rows of each sheet."""
    book = xlrd.open_workbook(path, formatting_info=True)
    result = {}
    for sheet in book.sheets():
        rows = []
        for i in range(sheet.nrows):
            row = []
            for cell in sheet.row(i):
                style = book.xf_list[cell.xf_index]
                font = book.font_list[style.font_index]
                row.append((cell.ctype, cell.value, book.format_map[style.format_key].format_str, font.name, font.bold, font.italic,
                            font.colour_index, style.background.pattern_colour_index, style.border.left_line_style))
            rows.append(row)
        result[sheet.name] = rows, sheet.merged_cells, {row for row, info in sheet.rowinfo_map.items() if info.hidden}
    return result


def used(rows):
    """Rows without what holds no value at the end of the rows and of the sheet."""
    return trimmed([["" if cell[0] in (0, 6) else cell for cell in row] for row in rows])


def check_extended_xls(referee, source, mode):
    old, old_raw = xlrd_sheets(source), raw_sheets(source)
    names = list(old)
    for sheet in (names[0], names[-1], "New"):
        name, path = extended(referee, source, mode, sheet)
        new, raw = xlrd_sheets(path), raw_sheets(path)
        others = [each for each in names if each != sheet]
        referee.compare(name + ": the sheets", names + ([sheet] if sheet == "New" else []), list(new))
        referee.compare(name + ": other sheets", [old[each] for each in others], [new.get(each) for each in others])
        referee.compare(name + ": records of other sheets", [old_raw[each] for each in others], [raw.get(each) for each in others])
        noted, right = checksum_of_styles(path)
        referee.compare(name + ": the checksum of the styles", right, noted)
        kept = used(old[sheet][0]) if mode == APPEND and sheet != "New" else []
        now = used(new[sheet][0])
        referee.compare(name + ": old cells", kept, now[:len(kept)])
        book = xlrd.open_workbook(path)
        added = [[xlrd_value(book, cell) for cell in book.sheet_by_name(sheet).row(row)[:4]] for row in range(len(kept), len(now))]
        referee.compare(name + ": new cells", typed(ADDED_VALUES), typed(added))
        if mode == APPEND and sheet != "New":
            referee.compare(name + ": merged cells and hidden rows", old[sheet][1:], new[sheet][1:])
            beside = [record for record in old_raw[sheet] if record[0] not in CELL_RECORDS]
            referee.compare(name + ": records beside the cells", beside, [record for record in raw[sheet] if record[0] not in CELL_RECORDS])
        if shutil.which("ssconvert"):
            subprocess.run(["ssconvert", "-S", path, path + ".%n.csv"], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)


# Rows, cells, formulas and the extent.
CELL_RECORDS = {0x06, 0xbd, 0xbe, 0xd6, 0xfd, 0x200, 0x201, 0x203, 0x204, 0x205, 0x207, 0x208, 0x221, 0x236, 0x27e, 0x4bc}


def main():
    referee = Referee()
    for kind in (XLSX, XLS):
        check_values(referee, kind)
        check_random_values(referee, kind, kind)
        check_formulas(referee, kind)
        check_links(referee, kind)
        check_look(referee, kind)
        check_ssconvert(referee, kind)
    check_unknown_formulas(referee)
    made = referee.path("xlwt.xls")
    make_xlwt(made)
    sources = [made]
    converted = referee.path("gnumeric-chart.xls")
    make_openpyxl(referee.path("source.xlsx"))
    if spreadsheets.convert(referee.path("source.xlsx"), converted, "Gnumeric_Excel:excel_biff8"):
        sources.append(converted)
    sources += [path for path in spreadsheets.sample_workbooks(referee) if path.endswith(".xls")]
    for mode in (OVERWRITE, APPEND):
        check_extended_xlsx(referee, mode)
        for source in sources:
            check_extended_xls(referee, source, mode)
    referee.finish()


if __name__ == "__main__":
    main()
