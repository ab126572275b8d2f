"""Compares what tabweave reads from workbooks with what openpyxl and xlrd read.

The workbooks are written by openpyxl, by xlwt and by gnumeric's ssconvert, from random tables, and
those that come with Debian's r-cran-readxl are read, too.
"""
import datetime
import glob
import os
import random
import re
import shutil
import subprocess
import warnings

from referee import Referee, trimmed

try:
    import openpyxl
    import xlrd
    import xlwt
    from openpyxl.utils.datetime import CALENDAR_MAC_1904, to_excel
except ImportError as error:
    print(f"SKIP   : all, a module of Debian's Python is missing: {error}")
    print("Totals: 0 passed, 0 failed, 1 skipped")
    raise SystemExit(0)

warnings.simplefilter("ignore")

DAY_MS = 86400000
FORMATS = ["yyyy\\-mm\\-dd", "dd/mm/yyyy hh:mm", "hh:mm", "hh:mm:ss", "[h]:mm:ss", "mmm\\ yy",
           '"on" d. mmmm', "[$-409]m/d/yy h:mm AM/PM;@", "mm:ss.000"]
ERRORS = ["#N/A", "#DIV/0!", "#REF!", "#NAME?", "#NUM!", "#VALUE!", "#NULL!"]


# Number formats and dates, read here in another way than the program does.

def letters(code):
    """What is left of a format code's first section without literals."""
    code = re.sub(r'"[^"]*"|\\.|_.|\*.', "", code)
    return code.split(";")[0].lower()


def kind(code):
    bare = letters(code)
    elapsed = re.search(r"\[(h+|m+|s+)\]", bare) is not None
    bare = re.sub(r"\[(?!h+\]|m+\]|s+\])[^]]*\]", "", bare)
    if bare in ("", "@", "standard") or bare.startswith("general"):
        return "number"
    bare = re.sub(r"e[+-]", "", bare)
    bare = bare.replace("am/pm", "!").replace("a/p", "!")
    bare = re.sub(r"(h[^a-z]*)m+", r"\1", bare)  # minutes
    bare = re.sub(r"\]([^a-z]*)m+", r"]\1", bare) if elapsed else bare
    bare = re.sub(r"m+([^a-z]*s)", r"\1", bare)
    bare = re.sub(r"\[[hms]+\]", "!", bare)
    if re.search(r"[ydm]", bare):
        return "date"
    if elapsed:
        return "elapsed"
    return "time" if re.search(r"[hs!]", bare) else "number"


def time_text(ms, seconds):
    text = f"{ms // 3600000:02}:{ms // 60000 % 60:02}"
    if seconds or ms % 60000:
        text += f":{ms // 1000 % 60:02}"
    if ms % 1000:
        text += f".{ms % 1000:03}"
    return text


def number_text(number, code, is1904):
    what = kind(code)
    if what == "number" or number < 0:
        return str(int(number)) if number == int(number) and abs(number) < 2**53 else f"{number:.15g}"
    ms = round(number * DAY_MS)
    seconds = "s" in re.sub(r"\[\$[^]]*\]", "", letters(code))
    if what == "elapsed":
        return time_text(ms, seconds)
    if what == "time":
        return time_text(ms % DAY_MS, seconds)
    day = ms // DAY_MS
    if day == 0 and not is1904:
        return time_text(ms, True)
    if day == 60 and not is1904:
        date = "1900-02-29"
    else:
        epoch = datetime.date(1904, 1, 1) if is1904 else datetime.date(1899, 12, 30)
        date = str(epoch + datetime.timedelta(day + (1 if day < 60 and not is1904 else 0)))
    return date + (" " + time_text(ms % DAY_MS, True) if ms % DAY_MS else "")


# What the referees read.

def by_openpyxl(path):
    try:
        book = openpyxl.load_workbook(path, data_only=True)
    except KeyError:  # a picture is missing, which does not matter here
        book = openpyxl.load_workbook(path, data_only=True, read_only=True)
        for sheet in book.worksheets:
            sheet.reset_dimensions()  # what is declared may be wrong
    is1904 = book.epoch == CALENDAR_MAC_1904
    for sheet in book.worksheets:
        rows = [[openpyxl_text(cell, is1904) for cell in row] for row in sheet.iter_rows()]
        yield sheet.title, trimmed(rows)


def openpyxl_text(cell, is1904):
    value = cell.value
    if value is None:
        return ""
    if isinstance(value, bool):
        return "TRUE" if value else "FALSE"
    if isinstance(value, (datetime.datetime, datetime.date, datetime.time, datetime.timedelta)):
        epoch = CALENDAR_MAC_1904 if is1904 else openpyxl.utils.datetime.WINDOWS_EPOCH
        serial = (value.total_seconds() / 86400 if isinstance(value, datetime.timedelta)
                  else to_excel(value, epoch))
        return number_text(serial, cell.number_format, is1904)
    if isinstance(value, (int, float)):
        return number_text(value, "General", is1904)
    return value


def by_xlrd(path):
    book = xlrd.open_workbook(path, formatting_info=True)
    for sheet in book.sheets():
        rows = [[xlrd_text(book, cell) for cell in sheet.row(row)] for row in range(sheet.nrows)]
        yield sheet.name, trimmed(rows)


def xlrd_text(book, cell):
    if cell.ctype in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
        return ""
    if cell.ctype == xlrd.XL_CELL_BOOLEAN:
        return "TRUE" if cell.value else "FALSE"
    if cell.ctype == xlrd.XL_CELL_ERROR:
        return xlrd.error_text_from_code[cell.value]
    if cell.ctype == xlrd.XL_CELL_TEXT:
        return cell.value
    code = book.format_map[book.xf_list[cell.xf_index].format_key].format_str
    return number_text(cell.value, code, book.datemode == 1)


# Random workbooks.

def random_value(rng, longest):
    """A value and the format of its cell; of the types that both writers know."""
    choice = rng.randrange(9)
    if choice == 0:
        return None, "General"
    if choice == 1:
        return rng.choice([rng.randrange(-10**6, 10**6), rng.randrange(10**12, 10**15)]), "General"
    if choice == 2:
        return rng.choice([rng.uniform(-1000, 1000), rng.random() / 10**rng.randrange(8),
                           round(rng.uniform(0, 100), 2), 10.0**rng.randrange(15, 30)]), "0.00"
    if choice == 3:
        return rng.random() < 0.5, "General"
    if choice == 4:
        return rng.randrange(1, 60000) + rng.choice([0, 0, rng.randrange(86400) / 86400,
                                                      rng.randrange(DAY_MS) / DAY_MS]), rng.choice(FORMATS)
    if choice == 5:
        return rng.randrange(86400) / 86400, rng.choice(FORMATS)
    if choice == 6:
        alphabet = 'abc "\',;<&>|\n=\u00e9\u20ac\u8a9e\U0001f600'
        return "".join(rng.choice(alphabet) for _ in range(rng.randrange(1, 12))).strip() or "x", "@"
    if choice == 7:
        return rng.choice(["same", "values", "again", " blanks around "]), "General"
    return ("long " * rng.choice([1, 100, 1000, 10000]))[:longest], "General"


def random_table(seed, longest=32767, rows=200, columns=8):
    rng = random.Random(seed)
    return [[random_value(rng, longest) for _ in range(columns)] for _ in range(rows)]


def write_openpyxl(path, tables, is1904=False):
    book = openpyxl.Workbook()
    book.remove(book.active)
    if is1904:
        book.epoch = CALENDAR_MAC_1904
    for name, table in tables.items():
        sheet = book.create_sheet(name)
        for row_number, row in enumerate(table, 1):
            for column, (value, code) in enumerate(row, 1):
                if value is None:
                    continue
                cell = sheet.cell(row_number, column)
                cell.number_format = code
                cell.value = value
                if isinstance(value, str):
                    cell.data_type = "s"  # even if it begins with "="
        errors = sheet.max_row + 3
        for column, text in enumerate(ERRORS, 2):
            sheet.cell(errors, column).value = text
        sheet.merge_cells(start_row=errors + 1, end_row=errors + 2, start_column=2, end_column=4)
        sheet.cell(errors + 1, 2).value = "merged"
    book.save(path)


def write_xlwt(path, tables, is1904=False):
    book = xlwt.Workbook(encoding="utf-8")
    book.dates_1904 = is1904
    styles = {}
    for name, table in tables.items():
        sheet = book.add_sheet(name, cell_overwrite_ok=True)
        for row_number, row in enumerate(table):
            for column, (value, code) in enumerate(row):
                if code not in styles:
                    styles[code] = xlwt.easyxf(num_format_str=code)
                if value is not None:
                    sheet.write(row_number, column, value, styles[code])
        sheet.write_rich_text(len(table) + 1, 0, ["rich ", ("text", xlwt.easyfont("bold on"))])
        sheet.write_merge(len(table) + 2, len(table) + 3, 1, 3, "merged")
    book.save(path)


def convert(source, target, exporter):
    """By gnumeric; False when it is not there."""
    if not shutil.which("ssconvert"):
        return False
    subprocess.run(["ssconvert", "-T", exporter, source, target], check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    return True


def sample_workbooks(referee):
    folder = referee.path("readxl")
    if not glob.glob(folder + "/**/datasets.xls", recursive=True):
        os.makedirs(folder, exist_ok=True)
        try:
            subprocess.run(["apt-get", "download", "r-cran-readxl"], cwd=folder, check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=120)
            package = glob.glob(folder + "/*.deb")[0]
            subprocess.run(["dpkg-deb", "-x", package, folder], check=True)
        except (OSError, IndexError, subprocess.SubprocessError) as error:
            referee.skip("sample workbooks", f"r-cran-readxl cannot be fetched ({error})")
    return sorted(glob.glob(folder + "/**/*.xls*", recursive=True))


def check(referee, path):
    reader = by_xlrd if path.endswith(".xls") else by_openpyxl
    file_type = 2 if path.endswith(".xls") else 1
    for sheet, expected in reader(path):
        actual = referee.read({"path": path, "file_type": file_type, "worksheet": sheet,
                               "header": 0, "ignore_empty": 0})
        actual = actual if isinstance(actual, str) else trimmed(actual)
        if not expected and isinstance(actual, str):
            actual = [] if "rror" not in actual else actual
        referee.compare(f"{os.path.basename(path)} '{sheet}'", expected, actual)


def main():
    referee = Referee()
    tables = {"First": random_table(1), "Second & last": random_table(2), "Empty": []}
    files = {"openpyxl.xlsx": (write_openpyxl, False), "openpyxl1904.xlsx": (write_openpyxl, True),
             "xlwt.xls": (write_xlwt, False), "xlwt1904.xls": (write_xlwt, True)}
    for name, (write, is1904) in files.items():
        path = referee.path(name)
        write(path, tables, is1904)
        check(referee, path)
    # xlrd reads no texts of the older format that are split over records.
    write_openpyxl(referee.path("short.xlsx"), {"First": random_table(3, longest=255)})
    for source, exporter, extension in (("openpyxl.xlsx", "excel_biff8", "xls"),
                                        ("openpyxl1904.xlsx", "excel_biff8", "xls"),
                                        ("short.xlsx", "excel_biff7", "7.xls"),
                                        ("openpyxl.xlsx", "xlsx", "xlsx"),
                                        ("xlwt.xls", "excel_biff8", "xls"),
                                        ("xlwt.xls", "xlsx2", "2.xlsx")):
        target = referee.path(f"gnumeric.{source}.{extension}")
        if convert(referee.path(source), target, "Gnumeric_Excel:" + exporter):
            check(referee, target)
        else:
            referee.skip(os.path.basename(target), "ssconvert is not installed")
    for path in sample_workbooks(referee):
        check(referee, path)
    referee.finish()


if __name__ == "__main__":
    main()
