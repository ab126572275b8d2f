"""Feeds every reader with damaged files, for a set time each."""
import glob
import json
import os
import random
import re
import shutil
import subprocess
import time

from range import JSON, VCARD, XLS, XLSX, XML, copying, names_in, write_bytes

HERE = os.path.dirname(os.path.abspath(__file__))
SOURCES = os.path.join(HERE, os.pardir, os.pardir)
SECONDS_LONG, SECONDS_SHORT = 120, 10

EXTENSIONS = {"delimited": "csv", "json": "json", "xml": "xml", "vcard": "vcf", "html": "html",
              "document": "transform"}
READERS = ["delimited", "json", "xml", "vcard", "fixed", "plain", "xlsx", "xls", "document"]
# The writers that read the file that they append to.
APPENDERS = ["json-append", "xml-append", "html-append", "xlsx-append", "xls-append"]


def run(range_):
    make_samples(range_)
    seconds = SECONDS_LONG if range_.long else SECONDS_SHORT
    seed = int(time.time()) if range_.long else 1
    for reader in READERS:
        feed(range_, reader, seconds, seed)
    for reader in APPENDERS:
        feed(range_, reader, seconds / 4, seed)


def feed(range_, reader, seconds, seed):
    samples = os.path.join(range_.path("samples"), reader.split("-")[0])
    folder = range_.folder(f"fuzz-{reader}")
    environment = dict(os.environ)
    # A small file that asks for that much memory is a fault, too.
    environment["ASAN_OPTIONS"] = "max_allocation_size_mb=2000:hard_rss_limit_mb=3000"
    environment["UBSAN_OPTIONS"] = "print_stacktrace=1"
    result = subprocess.run(
        [range_.arguments.fuzz, reader, str(int(seconds)), str(seed), samples, folder],
        stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=seconds + 120, check=False,
        env=environment)
    log = result.stdout.decode("utf-8", "replace")
    kept = [os.path.join(folder, name) for name in names_in(folder)]
    if not range_.check(f"damaged files: {reader}", result.returncode == 0 and not kept,
                        f"status {result.returncode}, input kept: {kept}\n{log[-6000:]}"):
        return
    range_.say(log.strip())
    range_.check(f"damaged files: {reader}: nothing else is said", log.count("\n") == 1, log)
    usable = re.search(r", (\d+) of them usable", log)
    range_.check(f"damaged files: {reader}: some can be used", int(usable[1]) > 0, log)


def make_samples(range_):
    """Files that other tests use, the same tables in other formats, and files with rare parts."""
    top = range_.folder("samples")
    for reader in READERS + ["html"]:
        os.makedirs(os.path.join(top, reader))
    for reader, extension in EXTENSIONS.items():
        found = glob.glob(f"{SOURCES}/tests/golden/**/*.{extension}", recursive=True)
        found += glob.glob(f"{SOURCES}/examples/**/*.{extension}", recursive=True)
        for number, path in enumerate(sorted(found)):
            if os.path.getsize(path) < 100000:
                shutil.copyfile(path, f"{top}/{reader}/{number}.{extension}")
    make_texts(top)
    for number, path in enumerate(sorted(glob.glob(f"{top}/delimited/*"))):
        for reader, file_type in (("json", JSON), ("xml", XML), ("vcard", VCARD), ("xlsx", XLSX),
                                  ("xls", XLS)):
            target = f"{top}/{reader}/made{number}.{EXTENSIONS.get(reader, reader)}"
            document = copying(range_.path("sample.transform"), path, target, {},
                               {"file_type": file_type})
            range_.execute(["-cli", document])
    for name in names_in(f"{top}/delimited")[:2]:
        shutil.copy(f"{top}/delimited/{name}", f"{top}/plain")
    make_workbooks(range_, top)
    for reader in READERS:
        range_.check(f"samples of {reader}", len(names_in(f"{top}/{reader}")) > 1)


def make_texts(top):
    rng = random.Random(3)
    fixed = "".join(f"{'name %d' % n:<12}{rng.randrange(10**5):>8}  "
                    f"{'text ' * rng.randrange(3):<20}\n" for n in range(60))
    write_bytes(f"{top}/fixed/table.txt", fixed.encode())
    write_bytes(f"{top}/fixed/wide.txt",
                "N\u00e4me   Zahl\n\u65e5\u672c     12\n".encode("utf-16"))
    write_bytes(f"{top}/plain/text.txt", "one\n\ntwo \u20ac\r\nthree\x1efour\rfive".encode())
    nested = [{"id": n, "tags": ["a", None, {"b": [1, [2, 3]]}], "x": {"y": {"z": 1e300}}}
              for n in range(5)]
    write_bytes(f"{top}/json/nested.json", json.dumps(nested).encode())
    write_bytes(f"{top}/json/lines.json", b"".join(json.dumps(r).encode() + b"\n" for r in nested))
    write_bytes(f"{top}/xml/nested.xml", (
        '<?xml version="1.0" encoding="UTF-8"?><!DOCTYPE r [<!ENTITY e "text">]>'
        '<r xmlns:p="urn:x"><i a="1"><b>&e;</b><b>2<![CDATA[<c>]]></b><p:c/></i>'
        '<i><!-- c --><b>t<d>u</d>v</b>&#x20AC;</i><?pi x?></r>').encode())
    write_bytes(f"{top}/vcard/rich.vcf", (
        "BEGIN:VCARD\r\nVERSION:2.1\r\nN;CHARSET=UTF-8;ENCODING=QUOTED-PRINTABLE:M=C3=BCller;=\r\n"
        "Ann;;;\r\nTEL;WORK;VOICE:+1 23\r\nPHOTO;ENCODING=BASE64:\r\n aGVsbG8=\r\n\r\nEND:VCARD\r\n"
        "BEGIN:VCARD\nVERSION:4.0\nitem1.EMAIL;TYPE=\"a,b\";PREF=1:x@y.z\nADR:;;a\\,b\\;c\\n;d;;;\n"
        " folded\nEND:VCARD\n").encode())
    write_bytes(f"{top}/delimited/quotes.csv", (
        'a,"b ""q""\n line",c\r\n1;2|3,"unclosed\n\t^x^\n' * 3).encode())


def make_workbooks(range_, top):
    """Workbooks of other programs, with dates, formulas, joined cells and several sheets."""
    try:
        import openpyxl
        import xlwt
    except ImportError as error:
        range_.skip("damaged workbooks of other programs", str(error))
        return
    import datetime
    day = datetime.datetime(2024, 5, 6, 7, 8, 9)
    book = openpyxl.Workbook()
    for sheet in (book.active, book.create_sheet("Two"), book.create_sheet("Three")):
        sheet.append(["Name", "Day", "Sum", "Yes", "\u20ac"])
        for number in range(8):
            sheet.append([f"text {number}", day, f"=SUM(A1:A{number + 1})", number % 2 == 0, 1.5])
        sheet.merge_cells("A3:B4")
        sheet.row_dimensions[5].hidden = True
        sheet.column_dimensions["C"].hidden = True
    book.create_chartsheet("Chart")
    book.save(f"{top}/xlsx/rich.xlsx")
    book = xlwt.Workbook()
    style = xlwt.easyxf(num_format_str="yyyy-mm-dd hh:mm")
    for name in ("One", "Two"):
        sheet = book.add_sheet(name)
        for number in range(8):
            sheet.write(number, 0, f"text {number} \u20ac" * (1 + number * 100))
            sheet.write(number, 1, day, style)
            sheet.write(number, 2, xlwt.Formula(f"SUM(B1:B{number + 1})&\"x\""))
            sheet.write(number, 3, number % 2 == 0)
        sheet.write_merge(9, 10, 0, 2, "joined")
        sheet.row(5).hidden = True
        sheet.col(2).hidden = True
    book.save(f"{top}/xls/rich.xls")
