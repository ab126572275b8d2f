#!/usr/bin/env python3
"""Make the benchmark's data: orders, and the customers that they belong to.

    generate.py ROWS FOLDER [--json] [--xlsx]

Writes orders.csv and customers.csv, with --json and --xlsx also the orders in these formats. The same number of rows
always gives the same bytes (of a workbook: the same content), and fewer rows are the beginning of more rows.
"""
import argparse
import csv
import datetime
import json
import os
import random
import zipfile
from xml.sax.saxutils import escape

CUSTOMERS = 50_000
ORDER_COLUMNS = ("order_id", "customer_id", "order_date", "due_date", "country", "city", "product", "quantity",
                 "unit_price", "discount", "status", "note", "email")
CUSTOMER_COLUMNS = ("customer_id", "name", "segment", "signup_date", "home_country")
NUMBER_COLUMNS = {"order_id", "quantity", "unit_price", "discount"}
MOST_SHEET_ROWS = (1 << 20) - 1  # and a row of names

COUNTRIES = ("Angola Austria Bolivia Brazil Bulgaria Canada Chile Cuba Cyprus Denmark Ecuador Egypt Fiji Finland France "
             "Gabon Germany Ghana Greece Iceland India Iraq Italy Jamaica Japan Jordan Kenya Latvia Malta Mexico Nepal "
             "Norway Oman Peru Poland Qatar Spain Sweden Tunisia Uruguay").split()
TOWN_STARTS = "Alt Bran Cal Dor Esk Fal Glen Har Iver Kirk Lang Mel Nor Öst Pem Quar Rot São Tham Ul Vik Wes Zür".split()
TOWN_ENDS = "bridge by dal field ford haven minster mouth ness stad".split()
GIVEN = "Aino Bram Cleo Dirk Eva Femke Gus Hana Ilse Jörg Kaja Lars Mila Nils Olga Pär Rita Sven Thea Zoë".split()
FAMILY = "Berg Cole Díaz Eklund Frost Gupta Holm Ivanov Jäger Kaya Lund Moreau Núñez Olsen Park Reid Sato Vogel".split()
MATERIALS = "birch brass canvas copper cotton glass leather linen marble oak paper steel".split()
THINGS = "basket bench bowl clock frame hook jug lamp mirror rack rug screen stool tray vase".split()
REMARKS = ("ring the bell twice, leave it with the porter, call before delivery, keep this side up, do not stack, "
           "pay on collection, pack as a present, no plastic please, ask for the manager, send the bill later").split(", ")
SEGMENTS = ("Private", "Trade", "School", "Hotel, restaurant", "Public")
# The more often a status stands here, the more often it occurs.
STATUSES = ("shipped",) * 10 + ("pending",) * 4 + ("processing",) * 3 + ("cancelled",) * 2 + ("returned",)
DISCOUNTS = ("",) * 6 + ("5", "10", "15", "20")


def catalogue():
    """200 products, some of which need quotes in CSV."""
    names = []
    for number in range(200):
        name = f"{MATERIALS[number % 12]} {THINGS[number % 15]} {number}"
        if number % 8 == 3:
            name += ", pair"
        if number % 14 == 5:
            name = f'{name} 20" high'
        names.append(name)
    return names


def remark(chance, number):
    """A note of an order: often none, sometimes with a comma, quotes or a line break."""
    if chance < 0.15:
        return ""
    first = REMARKS[int(chance * 1e4) % 10]
    second = REMARKS[int(chance * 1e6) % 10]
    reference = number * 6151 % 8_999_993
    if chance < 0.18:
        return f"{first}\n{second} #{reference}"
    if chance < 0.21:
        return f'customer says "{first}" #{reference}'
    return f"{first}{',' if chance < 0.45 else ' and'} {second} #{reference}"


def orders(rows):
    """The orders, each a tuple of texts."""
    chance = random.Random(20190101).random  # the one method whose numbers never change between Pythons
    products = catalogue()
    towns = [f"{TOWN_STARTS[n % 23]}{TOWN_ENDS[n % 10]} {n}" for n in range(500)]
    days = [datetime.date(2019, 1, 1) + datetime.timedelta(n) for n in range(2200)]
    placed = [day.isoformat() for day in days]
    due = [f"{day.day}/{day.month}/{day.year}" for day in days]
    for number in range(1, rows + 1):
        town = int(chance() * 500)  # lies in one country
        day = int(chance() * 2150)
        person = int(chance() * 360)
        # A few customers order much, and one order in 26 has a customer that is in no list.
        customer = 1 + int(chance() ** 1.5 * CUSTOMERS * 1.04)
        yield (str(number), f"C{customer:06d}", placed[day], due[day + 1 + int(chance() * 40)], COUNTRIES[town % 40],
               towns[town], products[int(chance() * 200)], str(1 + int(chance() * 30)),
               f"{0.5 + chance() ** 2 * 990:.2f}", DISCOUNTS[int(chance() * 10)], STATUSES[int(chance() * 20)],
               remark(chance(), number),
               f"{GIVEN[person % 20]}.{FAMILY[person // 20]}{int(chance() * 1e6)}@mail{number % 7}.example".lower())


def customers():
    chance = random.Random(20100101).random
    start = datetime.date(2010, 1, 1)
    for number in range(1, CUSTOMERS + 1):
        joined = start + datetime.timedelta(int(chance() * 4000))
        yield (f"C{number:06d}", f"{GIVEN[int(chance() * 20)]} {FAMILY[int(chance() * 18)]}",
               SEGMENTS[int(chance() * 5)], joined.isoformat(), COUNTRIES[int(chance() * 40)])


def write_csv(path, names, rows):
    with open(path, "w", encoding="utf-8", newline="") as file:
        writer = csv.writer(file, lineterminator="\n")
        writer.writerow(names)
        writer.writerows(rows)


def write_json(path, names, rows):
    """An array of objects; every value is a string."""
    with open(path, "w", encoding="utf-8") as file:
        before = "[\n"
        for row in rows:
            file.write(before + json.dumps(dict(zip(names, row)), ensure_ascii=False))
            before = ",\n"
        file.write("\n]\n")


def sheet_cells(number, row, numeric, pool):
    for letter, value, is_number in zip("ABCDEFGHIJKLMNOPQRSTUVWXYZ", row, numeric):
        if value and is_number:
            yield f'<c r="{letter}{number}"><v>{value}</v></c>'
        elif value:
            yield f'<c r="{letter}{number}" t="s"><v>{pool.setdefault(value, len(pool))}</v></c>'


XML = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n'
MAIN = "http://schemas.openxmlformats.org/spreadsheetml/2006/main"
OFFICE = "http://schemas.openxmlformats.org/officeDocument/2006/relationships"
PACKAGE = "http://schemas.openxmlformats.org/package/2006"
KIND = "application/vnd.openxmlformats-officedocument.spreadsheetml."
PARTS = {"xl/workbook.xml": "sheet.main+xml", "xl/worksheets/sheet1.xml": "worksheet+xml",
         "xl/styles.xml": "styles+xml", "xl/sharedStrings.xml": "sharedStrings+xml"}


def relations(targets):
    return f'<Relationships xmlns="{PACKAGE}/relationships">' + "".join(
        f'<Relationship Id="rId{number}" Type="{OFFICE}/{kind}" Target="{target}"/>'
        for number, (kind, target) in enumerate(targets, 1)) + "</Relationships>"


def write_xlsx(path, names, rows):
    """A workbook as office programs write it: numbers as numbers, texts in the table of shared strings."""
    pool = {}
    numeric = [name in NUMBER_COLUMNS for name in names]
    lines = ["".join(sheet_cells(1, names, [False] * len(names), pool))]
    lines += ["".join(sheet_cells(number, row, numeric, pool)) for number, row in enumerate(rows, 2)]
    texts = {
        "[Content_Types].xml": f'<Types xmlns="{PACKAGE}/content-types"><Default Extension="rels" '
        'ContentType="application/vnd.openxmlformats-package.relationships+xml"/>' + "".join(
            f'<Override PartName="/{part}" ContentType="{KIND}{kind}"/>' for part, kind in PARTS.items()) + "</Types>",
        "_rels/.rels": relations([("officeDocument", "xl/workbook.xml")]),
        "xl/_rels/workbook.xml.rels": relations([("worksheet", "worksheets/sheet1.xml"), ("styles", "styles.xml"),
                                                 ("sharedStrings", "sharedStrings.xml")]),
        "xl/workbook.xml": f'<workbook xmlns="{MAIN}" xmlns:r="{OFFICE}"><sheets>'
        '<sheet name="orders" sheetId="1" r:id="rId1"/></sheets></workbook>',
        "xl/styles.xml": f'<styleSheet xmlns="{MAIN}"><fonts count="1"><font/></fonts>'
        '<fills count="1"><fill><patternFill/></fill></fills><borders count="1"><border/></borders>'
        '<cellStyleXfs count="1"><xf/></cellStyleXfs><cellXfs count="1"><xf/></cellXfs></styleSheet>',
        "xl/worksheets/sheet1.xml": f'<worksheet xmlns="{MAIN}"><sheetData>' + "".join(
            f'<row r="{number}">{line}</row>' for number, line in enumerate(lines, 1)) + "</sheetData></worksheet>",
        "xl/sharedStrings.xml": f'<sst xmlns="{MAIN}" uniqueCount="{len(pool)}">' + "".join(
            f'<si><t xml:space="preserve">{escape(text)}</t></si>' for text in pool) + "</sst>",
    }
    with zipfile.ZipFile(path, "w", zipfile.ZIP_DEFLATED) as package:
        for name, text in texts.items():
            part = zipfile.ZipInfo(name, (2020, 1, 1, 0, 0, 0))  # the time of writing would change the bytes
            part.compress_type = zipfile.ZIP_DEFLATED
            package.writestr(part, XML + text)


WRITERS = {"csv": write_csv, "json": write_json, "xlsx": write_xlsx}


def ensure(folder, names, rows):
    """Makes those of the files customers.csv, orders.csv, orders.json and orders.xlsx that are not there yet."""
    os.makedirs(folder, exist_ok=True)
    for name in names:
        path = os.path.join(folder, name)
        if os.path.exists(path):
            continue
        table, extension = name.split(".")
        columns, values = ((CUSTOMER_COLUMNS, customers()) if table == "customers" else (ORDER_COLUMNS, orders(rows)))
        WRITERS[extension](path + ".part", columns, values)
        os.replace(path + ".part", path)  # a run that was broken off leaves no half file under this name


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("rows", type=int)
    parser.add_argument("folder")
    parser.add_argument("--json", action="store_true")
    parser.add_argument("--xlsx", action="store_true", help=f"at most {MOST_SHEET_ROWS:,} rows")
    arguments = parser.parse_args()
    if arguments.rows < 1 or arguments.xlsx and arguments.rows > MOST_SHEET_ROWS:
        parser.error("too few or too many rows")
    names = ["customers.csv", "orders.csv"]
    names += ["orders.json"] * arguments.json + ["orders.xlsx"] * arguments.xlsx
    for name in names:
        path = os.path.join(arguments.folder, name)
        if os.path.exists(path):
            os.remove(path)
    ensure(arguments.folder, names, arguments.rows)


if __name__ == "__main__":
    main()
