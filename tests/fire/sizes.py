"""Documents, tables and lines far larger than people make them: done in good time, or refused."""
import os

from range import (DELIMITED, FIXED_WIDTH, HTML, ITEMS_FAILED, JSON, MARKDOWN, PLAIN, UP_TO_DATE,
                   VCARD, XLS, XLSX, XML, YAML, Document, copying, names_in, read_bytes,
                   write_bytes)

COLUMNS = 50000
CHAIN = 1000
ITEMS = 2000
EMPTY_LINES = 1000000
LINE_MB_LONG, LINE_MB_SHORT = 200, 20
TEXTS = {"CSV": DELIMITED, "JSON": JSON, "XML": XML, "vCard": VCARD, "YAML": YAML, "HTML": HTML,
         "Markdown": MARKDOWN}
READERS = {"delimited text": DELIMITED, "fixed width": FIXED_WIDTH, "JSON": JSON, "XML": XML,
           "vCard": VCARD, "plain text": PLAIN}


def run(range_):
    many_items(range_)
    long_chain(range_)
    many_columns(range_)
    long_line(range_)
    empty_lines(range_)


def table(range_):
    return write_bytes(range_.path("small.csv"), b"Name,Number\nAnn,1\nBob,2\n")


def many_items(range_):
    """Ten inputs, branches of different kinds, and an output at the end of each."""
    folder = range_.folder("items")
    new = Document()
    source = table(range_)
    inputs = [new.input(source) for _ in range(10)]
    outputs = 0
    while new.next_id + 3 <= ITEMS:
        above = new.transform("Case", inputs[outputs % 10])
        above = new.transform("Unique" if outputs % 2 else "Case", above)
        new.output(f"{folder}/{outputs}.csv", above)
        outputs += 1
    while new.next_id <= ITEMS:
        new.transform("Case", inputs[0])
    result = range_.execute(["-cli", new.save(range_.path("items.transform"))])
    range_.check(f"document of {ITEMS} items: a line each",
                 result.log.count("  Processed ") == ITEMS, result.log[-2000:])
    range_.expect(f"document of {ITEMS} items", result, (UP_TO_DATE, ITEMS_FAILED),
                  f"{ITEMS:,} item(s) processed")
    written = sum(os.path.getsize(f"{folder}/{name}") > 0 for name in names_in(folder))
    range_.check("every branch writes its file", written == outputs, f"{written} of {outputs}")


def long_chain(range_):
    new = Document()
    above = new.input(table(range_))
    for _ in range(CHAIN):
        above = new.transform("Case", above)
    target = range_.path("chain.csv")
    new.output(target, above)
    result = range_.execute(["-cli", new.save(range_.path("chain.transform"))])
    range_.expect(f"chain of {CHAIN} transforms", result, UP_TO_DATE)
    range_.check("the chain hands the table on",
                 read_bytes(target) == b"Name,Number\nAnn,1\nBob,2\n", read_bytes(target))


def many_columns(range_):
    names = [f"c{number}" for number in range(COLUMNS)]
    rows = [names] + [[f"{row}.{column % 97}" for column in range(COLUMNS)] for row in range(3)]
    source = write_bytes(range_.path("wide.csv"),
                         "".join(",".join(row) + "\n" for row in rows).encode())
    document = range_.path("wide.transform")
    for name, file_type in TEXTS.items():
        target = range_.path(f"wide-{file_type}")
        copying(document, source, target, {}, {"file_type": file_type})
        what = f"{COLUMNS} columns as {name}"
        if range_.expect(what, range_.execute(["-cli", document]), UP_TO_DATE):
            content = read_bytes(target)
            range_.check(f"{what}: complete", content.count(b"2.50") == content.count(b"0.50") > 0)
        if file_type == DELIMITED:
            range_.check(f"{what}: as it was", read_bytes(target) == read_bytes(source))
    for name, file_type in (("XLSX", XLSX), ("XLS", XLS)):
        target = range_.path(f"wide.{name.lower()}")
        copying(document, source, target, {}, {"file_type": file_type})
        what = f"{COLUMNS} columns as {name} are refused"
        range_.expect(what, range_.execute(["-cli", document]), ITEMS_FAILED,
                      "50,000 column(s) are too many for a sheet")
        range_.check(f"{what}: nothing is written", not os.path.exists(target))
    for name, file_type in (("JSON", JSON), ("XML", XML), ("vCard", VCARD)):
        target = range_.path("back.csv")
        copying(document, range_.path(f"wide-{file_type}"), target, {"file_type": file_type})
        range_.expect(f"{COLUMNS} columns back from {name}", range_.execute(["-cli", document]),
                      UP_TO_DATE)


def wrapped_line(file_type, size):
    """One line that is one value of the format."""
    filler = b"x" * size
    return {JSON: b'[{"a":"' + filler + b'"}]', XML: b"<r><a>" + filler + b"</a><a/></r>",
            VCARD: b"BEGIN:VCARD\nVERSION:3.0\nFN:" + filler + b"\nEND:VCARD\n"}.get(
                file_type, filler)


def write_repeated(path, unit, size):
    with open(path, "wb") as file:
        for _ in range(size >> 16):
            file.write(unit * (65536 // len(unit)))


def long_line(range_):
    megabytes = LINE_MB_LONG if range_.long else LINE_MB_SHORT
    size = megabytes << 20
    source, target = range_.path("line.txt"), range_.path("line.csv")
    document = range_.path("line.transform")
    for name, file_type in READERS.items():
        write_bytes(source, wrapped_line(file_type, size))
        copying(document, source, target, {"file_type": file_type, "header": 0},
                {"write_header": 0})
        what = f"line of {megabytes} MB as {name}"
        result = range_.execute(["-cli", document])
        if range_.expect(what, result, (UP_TO_DATE, ITEMS_FAILED)):
            content = read_bytes(target) if result.status == UP_TO_DATE else None
            whole = content is not None and content.count(b"x") == size
            range_.check(f"{what}: whole or refused", whole or "too big" in result.log, result.log)
        for path in (source, target):
            if os.path.exists(path):
                os.remove(path)
    # Many values in one line, and text without line ends in other shapes.
    for name, unit in (("commas", b","), ("quotes", b'"'), ("blanks", b" "), ("brackets", b"["),
                       ("tags", b"<a>"), ("zero bytes", b"\0")):
        write_repeated(source, unit, size)
        for reader, file_type in READERS.items():
            copying(document, source, target, {"file_type": file_type})
            range_.expect(f"{megabytes} MB of {name} as {reader}",
                          range_.execute(["-cli", document]), (UP_TO_DATE, ITEMS_FAILED))
    os.remove(source)


def empty_lines(range_):
    document, target = range_.path("empty.transform"), range_.path("empty.csv")
    for ends, line_end in (("LF", b"\n"), ("CRLF", b"\r\n"), ("CR", b"\r")):
        source = write_bytes(range_.path("empty.txt"), line_end * EMPTY_LINES)
        for name, file_type in READERS.items():
            for ignore in (0, 1):
                copying(document, source, target,
                        {"file_type": file_type, "ignore_empty": ignore, "header": 0})
                range_.expect(f"{EMPTY_LINES} empty lines ({ends}) as {name}, ignored: {ignore}",
                              range_.execute(["-cli", document]), (UP_TO_DATE, ITEMS_FAILED))
