"""Kills the program while it writes, and looks at what is left.

The target must be whole, the old one or the new one, and nothing may lie beside it or in the folder
for temporary files. Between naming and renaming a file lies a moment in which a kill leaves the
complete new content under another name; it is as short as two system calls. One such name in a
whole run is allowed when the next write removes it, more are a fault.
"""
import io
import os
import random
import re
import shutil
import subprocess
import time
import zipfile

from range import (APPEND, DELIMITED, JSON, OVERWRITE, XLS, XLSX, XML, Document, names_in,
                   read_bytes, write_bytes)

TARGETS = [(name, file_type, mode)
           for name, file_type in (("CSV", DELIMITED), ("JSON", JSON), ("XML", XML),
                                   ("XLSX", XLSX), ("XLS", XLS))
           for mode in (OVERWRITE, APPEND)]
KILLS_LONG, KILLS_SHORT = 200, 20
ROWS = 30000  # twice as many must fit into a sheet
DOCUMENT_ITEMS = (1500, 900)


def run(range_):
    Kills(range_).run()


class Kills:
    def __init__(self, range_):
        self.range = range_
        self.random = random.Random(7 if not range_.long else None)
        self.left_beside = 0
        self.temporary = range_.folder("kills-tmp")
        self.folder = range_.folder("kills-out")
        self.environment = dict(os.environ, TMPDIR=self.temporary)
        self.names_kept = can_be_nameless(self.folder)

    def run(self):
        if not self.names_kept:
            self.range.skip("nothing beside killed files", "this file system has no nameless files")
        count = KILLS_LONG if self.range.long else KILLS_SHORT
        kinds = len(TARGETS) + 1
        shares = [count // kinds + (number < count % kinds) for number in range(kinds)]
        for (name, file_type, mode), share in zip(TARGETS, shares):
            self.kill_output(name, file_type, mode, share)
        self.kill_saving(shares[-1])
        self.range.check("kills leave hardly a name", self.left_beside <= 1,
                         f"{self.left_beside} kills left something beside the target")

    def source(self, seed):
        rows = random.Random(seed)
        lines = ["Name,Number,Date,Text,Code"]
        lines += [f"Person {rows.randrange(10**6)},{rows.random() * 1000:.2f},"
                  f"2024-{rows.randrange(1, 13):02}-{rows.randrange(1, 29):02},"
                  f"some text {rows.randrange(50)},{seed}{number}" for number in range(ROWS)]
        return write_bytes(self.range.path(f"kills-{seed}.csv"), "\n".join(lines).encode())

    def document(self, source, target, file_type, mode):
        new = Document()
        above = new.input(source)
        new.output(target, above, file_type=file_type, enable_output=mode,
                   write_header_first_append_only=1)
        return new.save(self.range.path(f"kills-{file_type}-{mode}.transform"))

    def kill_output(self, name, file_type, mode, count):
        """Old content from one table, new content from the other."""
        target = os.path.join(self.folder, "target" + {XLSX: ".xlsx", XLS: ".xls"}.get(
            file_type, ".txt"))
        what = f"{name}, {'append' if mode == APPEND else 'overwrite'}"
        write_first = self.document(self.source(1), target, file_type, OVERWRITE)
        if not self.range.expect(f"{what}: first", self.finish(write_first), 0):
            return
        old = read_bytes(target)
        identity = workbook_texts if file_type == XLSX else lambda content: content
        document = self.document(self.source(2), target, file_type, mode)
        start = time.monotonic()
        if not self.range.expect(f"{what}: second", self.finish(document), 0):
            return
        seconds = time.monotonic() - start
        new = identity(read_bytes(target))
        self.range.check(f"{what}: the second run changes the file", old != new)
        found = {"old": 0, "new": 0}
        for number in range(count):
            # Where there is no file, a kill must leave none, or the whole new one.
            exists = mode == APPEND or number % 3 != 2
            if exists:
                write_bytes(target, old)
            else:
                os.remove(target)
            self.kill_run(document, seconds)
            content = read_bytes(target)
            state = "new" if content not in (None, old) and identity(content) == new else "old"
            found[state] += 1
            size = "no file" if content is None else f"{len(content)} bytes"
            self.range.check(f"{what}: whole after kill {number}",
                             state == "new" or content == (old if exists else None), size)
            self.look_beside(f"{what}: kill {number}", target, document)
            write_bytes(target, old)
        self.range.say(f"{what}: killed {count} times, {found['old']} old and {found['new']} new")
        os.remove(target)

    def finish(self, document):
        return self.range.execute(["-cli", document], env=self.environment)

    def kill_run(self, document, seconds):
        """Most kills fall into the second half, when files are written."""
        moment = self.random.uniform(0.5 if self.random.random() < 0.8 else 0, 1.05) * seconds
        process = subprocess.Popen([self.range.program, "-cli", document], env=self.environment,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        try:
            process.wait(moment)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()

    def look_beside(self, what, target, document):
        beside = [name for name in names_in(self.folder) if name != os.path.basename(target)]
        kept = names_in(self.temporary)
        self.range.check(f"{what}: no temporary files", not kept or not self.names_kept, str(kept))
        if beside and self.names_kept:
            self.left_beside += 1
            if document:
                self.finish(document)
                self.range.check(f"{what}: the next write tidies up",
                                 len(names_in(self.folder)) == 1, str(names_in(self.folder)))
        for name in names_in(self.folder):
            if name != os.path.basename(target):
                os.remove(os.path.join(self.folder, name))
        for name in kept:
            os.remove(os.path.join(self.temporary, name))

    def kill_saving(self, count):
        documents = [self.large_document(items) for items in DOCUMENT_ITEMS]
        target = os.path.join(self.folder, "saved.transform")
        for number in range(count):
            exists = number % 3 != 2
            if exists:
                shutil.copyfile(documents[0], target)
            process = subprocess.Popen(
                [self.range.arguments.save_document, *documents, target],
                env=self.environment, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
            started = process.stdout.readline()
            self.range.check("saving starts", started == b"saving\n", started)
            time.sleep(self.random.uniform(0, 0.5))
            process.kill()
            process.communicate()
            content = read_bytes(target)
            whole = content is None and not exists or is_whole(content)
            self.range.check(f"document: whole after kill {number}", whole,
                             "no file" if content is None else f"{len(content)} bytes")
            self.look_beside(f"document: kill {number}", target, None)
            if content is not None:
                os.remove(target)
        self.range.say(f"document: killed {count} times")

    def large_document(self, items):
        new = Document()
        above = new.input("a.csv")
        for _ in range(items - 1):
            above = new.transform("Case", above)
        return new.save(self.range.path(f"kills-{items}.transform"))


def is_whole(content):
    items = len(re.findall(rb"<(?:input|transform) ", content or b""))
    return items in DOCUMENT_ITEMS and content.rstrip().endswith(b"</root>")


def workbook_texts(content):
    """What a workbook holds: it also tells when it was written. Nothing when it is not whole."""
    try:
        with zipfile.ZipFile(io.BytesIO(content)) as package:
            return {name: package.read(name) for name in package.namelist()
                    if name.startswith("xl/")}
    except zipfile.BadZipFile:
        return None


def can_be_nameless(folder):
    try:
        os.close(os.open(folder, os.O_TMPFILE | os.O_RDWR))
        return True
    except OSError:
        return False
