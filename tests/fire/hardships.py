"""What goes wrong around a program: no room, no memory, no streams, files that are not what they
should be. Always a clear text and the documented exit status, never a crash, a hang or a half file.
"""
import os
import pwd
import random
import resource
import shutil
import stat
import subprocess
import tempfile
import threading

from range import (APPEND, DELIMITED, FIXED_WIDTH, HTML, ITEMS_FAILED, JSON, MARKDOWN,
                   OUT_OF_MEMORY, OVERWRITE, PLAIN, REFUSED, UP_TO_DATE, VCARD, XLS, XLSX, XML,
                   YAML, Document, copying, names_in, read_bytes, write_bytes)

FORMATS = {"CSV": DELIMITED, "JSON": JSON, "XML": XML, "vCard": VCARD, "YAML": YAML, "HTML": HTML,
           "Markdown": MARKDOWN, "XLSX": XLSX, "XLS": XLS}
READERS = {**FORMATS, "fixed width": FIXED_WIDTH, "plain text": PLAIN}
MEMORY = 512 << 20
DISK = 1 << 20


def run(range_):
    Hardships(range_).run()


class Hardships:
    def __init__(self, range_):
        self.range = range_
        self.small = write_bytes(range_.path("people.csv"), b"Name,Number\nAnn,1\nBob,2\n")
        self.document = range_.path("hardship.transform")
        self.out = range_.path("out.csv")

    def run(self):
        self.full_disk()
        self.full_devices()
        self.largest_file()
        if not self.range.sanitized:  # the sanitizers need terabytes of addresses
            self.little_memory()
        self.closed_streams()
        self.wrong_inputs()
        self.wrong_outputs()
        self.wrong_documents()
        self.vanishing_files()
        self.forbidden_files()

    def large(self, rows=60000):
        path = self.range.path(f"large-{rows}.csv")
        if not os.path.exists(path):
            rng = random.Random(rows)
            write_bytes(path, ("Name,Number\n" + "".join(
                f"name {n} {rng.randrange(10**9)},{rng.random()}\n" for n in range(rows))
                ).encode())
        return path

    def copy(self, source, target, source_options=None, target_options=None, arguments=(),
             **options):
        """Runs a document that reads one file and writes another."""
        copying(self.document, source, target, source_options, target_options)
        return self.range.execute(["-cli", self.document, *arguments], **options)

    # --- No room

    def full_disk(self):
        disk = self.range.folder("disk")
        mounted = subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={DISK}", "tmpfs", disk],
                                 stderr=subprocess.DEVNULL, check=False).returncode == 0 \
            if os.geteuid() == 0 and shutil.which("mount") else False
        if not mounted:
            self.range.skip("full disk", "no file system can be mounted here; files of limited "
                                         "size stand for it")
            return
        try:
            for name, file_type in FORMATS.items():
                for mode in (OVERWRITE, APPEND):
                    self.fill(disk, name, file_type, mode)
            self.full_folder_for_temporary_files(disk)
            self.full_disk_for_log(disk)
            self.full_disk_for_document(disk)
        finally:
            subprocess.run(["umount", "-l", disk], check=False)

    def fill(self, disk, name, file_type, mode):
        target = os.path.join(disk, "target." + {XLSX: "xlsx", XLS: "xls"}.get(file_type, "txt"))
        options = {"file_type": file_type, "enable_output": OVERWRITE}
        what = f"full disk, {name}, {'append' if mode == APPEND else 'overwrite'}"
        self.range.expect(f"{what}: first", self.copy(self.small, target, {}, options), UP_TO_DATE)
        old = read_bytes(target)
        options["enable_output"] = mode
        result = self.copy(self.large(), target, {}, options)
        told = self.range.expect(what, result, ITEMS_FAILED, target)
        if told:
            self.range.expect(f"{what}: the reason", result, ITEMS_FAILED,
                              "No space left on device")
        self.range.check(f"{what}: the old file stays",
                         read_bytes(target) == old and len(names_in(disk)) == 1,
                         str(names_in(disk)))
        os.remove(target)

    def full_folder_for_temporary_files(self, disk):
        write_bytes(os.path.join(disk, "filler"), b"x" * (DISK - 65536))
        environment = dict(os.environ, TMPDIR=disk)
        for name in ("XLSX", "XLS"):
            target = self.range.path(f"spilled.{name.lower()}")
            result = self.copy(self.large(200000) if name == "XLSX" else self.large(), target, {},
                               {"file_type": FORMATS[name]}, env=environment)
            what = f"no room for temporary files, {name}"
            if result.status == UP_TO_DATE:  # needed none
                self.range.check(what, read_bytes(target) is not None)
            else:
                self.range.expect(what, result, ITEMS_FAILED,
                                  f"A temporary file in '{disk}' cannot be used")
                self.range.check(f"{what}: nothing is written", not os.path.exists(target))
            self.range.check(f"{what}: nothing is left", names_in(disk) == ["filler"],
                             str(names_in(disk)))
        os.remove(os.path.join(disk, "filler"))

    def full_disk_for_log(self, disk):
        filler = os.path.join(disk, "filler")
        with open(filler, "wb", buffering=0) as file:
            try:
                while file.write(b"x" * 4096):
                    pass
            except OSError:
                pass
        log = os.path.join(disk, "run.log")
        result = self.copy(self.small, self.out, arguments=["-log", log])
        self.range.expect("full disk for the log", result, UP_TO_DATE, "Warning: ", log)
        os.remove(filler)
        os.remove(log)

    def full_disk_for_document(self, disk):
        """The document is saved until the disk is full of something else."""
        new = Document()
        above = new.input("a.csv")
        for _ in range(2500):
            above = new.transform("Case", above)
        documents = [copying(self.range.path("first.transform"), "a", "b"),
                     new.save(self.range.path("second.transform"))]
        filler = write_bytes(os.path.join(disk, "filler"), b"x" * (DISK - 32768))
        target = os.path.join(disk, "saved.transform")
        result = subprocess.run([self.range.arguments.save_document, *documents, target],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=60,
                                check=False)
        log = result.stdout.decode()
        self.range.check("full disk for a document: told", result.returncode == 1 and
                         "Can't save to file." in log and "No space left on device" in log, log)
        saved = read_bytes(target) or b""
        self.range.check("full disk for a document: the old one stays",
                         saved.endswith(b"</root>\n") and saved.count(b"<transform ") == 0 and
                         names_in(disk) == ["filler", "saved.transform"], str(names_in(disk)))
        os.remove(filler)

    def full_devices(self):
        for name, file_type in FORMATS.items():
            result = self.copy(self.small, "/dev/full", {}, {"file_type": file_type})
            self.range.expect(f"{name} to /dev/full", result, ITEMS_FAILED, "/dev/full")
        self.range.check("/dev/full stays", stat.S_ISCHR(os.stat("/dev/full").st_mode))
        result = self.copy(self.small, self.out, arguments=["-log", "/dev/full"])
        self.range.expect("log to /dev/full", result, UP_TO_DATE,
                          "Warning: Can't write to log file '/dev/full'.")
        os.remove(self.out)
        with open("/dev/full", "wb") as full:
            result = self.copy(self.small, self.out, stdout=full)
        self.range.expect("standard output to /dev/full", result, UP_TO_DATE)
        self.check_copied("standard output to /dev/full")

    def largest_file(self):
        """Files may not grow beyond a size."""
        limits = [(resource.RLIMIT_FSIZE, (DISK, DISK))]
        if self.range.sanitized:
            return
        for name, file_type in FORMATS.items():
            target = self.range.path("limited." + name.lower())
            write_bytes(target, b"old")
            result = self.copy(self.large(), target, {}, {"file_type": file_type}, limits=limits)
            self.range.expect(f"largest file, {name}", result, ITEMS_FAILED, "File too large")
            self.range.check(f"largest file, {name}: the old file stays",
                             read_bytes(target) == b"old")

    # --- No memory

    def little_memory(self):
        limits = [(resource.RLIMIT_AS, (MEMORY, MEMORY))]
        source = self.large(3000000 if self.range.long else 1500000)
        for name, file_type in FORMATS.items():
            target = self.range.path("memory.out")
            result = self.copy(self.small, target, {}, {"file_type": file_type}, limits=limits)
            self.range.expect(f"small table in 512 MB, {name}", result, UP_TO_DATE)
            if file_type in (XLSX, XLS):
                continue
            small = read_bytes(target)
            result = self.copy(source, target, {"header": 1}, {"file_type": file_type},
                               limits=limits)
            self.range.expect(f"large table in 512 MB, written as {name}", result,
                              (UP_TO_DATE, ITEMS_FAILED, OUT_OF_MEMORY))
            self.range.check(f"large table in 512 MB, {name}: told or done",
                             result.status == UP_TO_DATE or is_told(result.log), result.log)
            self.range.check(f"large table in 512 MB, {name}: no half file",
                             result.status == UP_TO_DATE or read_bytes(target) == small)
        for name, file_type in READERS.items():
            if file_type in (YAML, HTML, MARKDOWN):
                continue
            made = source if file_type in (DELIMITED, FIXED_WIDTH, PLAIN) else self.made(file_type)
            result = self.copy(made, self.out, {"file_type": file_type}, limits=limits)
            self.range.expect(f"large file in 512 MB, read as {name}", result,
                              (UP_TO_DATE, ITEMS_FAILED, OUT_OF_MEMORY))
            self.range.check(f"large file in 512 MB, {name}: told or done",
                             result.status == UP_TO_DATE or is_told(result.log), result.log)
        self.lack_of_memory_at_any_moment()
        result = self.copy("/dev/zero", self.out, limits=limits)
        self.range.expect("a file without end in 512 MB", result, (ITEMS_FAILED, OUT_OF_MEMORY))
        self.range.check("a file without end in 512 MB: told", is_told(result.log), result.log)
        os.remove(source)

    def lack_of_memory_at_any_moment(self):
        """The less memory, the earlier it runs out: while reading, transforming or writing."""
        source = self.large(600000)
        for name, above in (("Stack", 2), ("Join", 2), ("Dedupe", 1)):
            new = Document()
            inputs = [new.input(source) for _ in range(above)]
            number = new.transform(name, inputs[0])
            for other in inputs[1:]:
                new.connections.append(f'<connection start_id="{other}" end_id="{number}"/>')
            new.output(self.out, number)
            document = new.save(self.document)
            for megabytes in range(160, 512, 8 if self.range.long else 120):
                limit = megabytes << 20
                result = self.range.execute(["-cli", document],
                                            limits=[(resource.RLIMIT_AS, (limit, limit))])
                what = f"{name} in {megabytes} MB"
                self.range.expect(what, result, (UP_TO_DATE, ITEMS_FAILED, OUT_OF_MEMORY))
                self.range.check(f"{what}: told or done", result.status == UP_TO_DATE or
                                 is_told(result.log), result.log)

    def made(self, file_type):
        target = self.range.path(f"made-{file_type}")
        rows = 60000 if file_type == XLS else 300000
        self.copy(self.large(rows), target, {}, {"file_type": file_type})
        return target

    # --- No streams

    def check_copied(self, what):
        self.range.check(f"{what}: the output is whole",
                         read_bytes(self.out) == read_bytes(self.small), str(read_bytes(self.out)))

    def closed_streams(self):
        copying(self.document, self.small, self.out)
        for closed in (">&-", "2>&-", "<&-", ">&- 2>&- <&-"):
            if os.path.exists(self.out):
                os.remove(self.out)
            status = subprocess.run(
                ["sh", "-c", f'exec "$0" -cli "$1" -verbose {closed}', self.range.program,
                 self.document], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=60,
                check=False).returncode
            self.range.check(f"closed streams {closed}", status == UP_TO_DATE, status)
            self.check_copied(f"closed streams {closed}")
        reader, writer = os.pipe()
        os.close(reader)
        os.remove(self.out)
        result = self.copy(self.small, self.out, stdout=writer, stderr=writer)
        os.close(writer)
        self.range.expect("nobody reads standard output", result, UP_TO_DATE)
        self.check_copied("nobody reads standard output")

    # --- Files that are not what they should be

    def strange_paths(self):
        """Things in place of a file, and what is said of them."""
        folder = self.range.folder("strange")
        os.mkdir(f"{folder}/folder")
        os.symlink("nothing", f"{folder}/dangling")
        os.symlink("circle", f"{folder}/circle")
        return {"folder": f"{folder}/folder", "dangling link": f"{folder}/dangling",
                "circle of links": f"{folder}/circle", "missing file": f"{folder}/none/x",
                "file as folder": f"{self.small}/x", "long name": f"{folder}/{'x' * 300}",
                "no name": ""}

    def wrong_inputs(self):
        for what, path in self.strange_paths().items():
            for name, file_type in READERS.items():
                result = self.copy(path, self.out, {"file_type": file_type})
                told = ["Can't open file", "Unable to open", "No file is set",
                        "Can't read file", "not found"]
                self.range.expect(f"{what} read as {name}", result, ITEMS_FAILED, path)
                self.range.check(f"{what} read as {name}: a clear text",
                                 any(text in result.log for text in told), result.log)
        for name, file_type in READERS.items():
            for what, path in (("device without content", "/dev/null"),
                               ("empty file", write_bytes(self.range.path("empty"), b""))):
                result = self.copy(path, self.out, {"file_type": file_type})
                self.range.expect(f"{what} read as {name}", result, (UP_TO_DATE, ITEMS_FAILED))

    def wrong_outputs(self):
        for name, file_type in FORMATS.items():
            for what, path in self.strange_paths().items():
                for mode in (OVERWRITE, APPEND):
                    result = self.copy(self.small, path, {},
                                       {"file_type": file_type, "enable_output": mode})
                    how = f"{name} to {what}, {'append' if mode == APPEND else 'overwrite'}"
                    if what == "dangling link":
                        self.range.expect(how, result, UP_TO_DATE)
                        target = os.path.join(os.path.dirname(path), "nothing")
                        self.range.check(f"{how}: the link leads to the new file",
                                         os.path.islink(path) and os.path.getsize(target) > 0)
                        os.remove(target)
                    elif what != "no name":
                        self.range.expect(how, result, ITEMS_FAILED, path)
                        self.range.check(f"{how}: nothing else is made",
                                         names_in(os.path.dirname(self.strange_paths()["folder"]))
                                         == ["circle", "dangling", "folder"])
                    else:
                        self.range.expect(how, result, (ITEMS_FAILED, REFUSED))

    def wrong_documents(self):
        folder = self.range.folder("documents")
        os.mkdir(f"{folder}/folder.transform")
        os.symlink("nothing", f"{folder}/dangling.transform")
        os.symlink("circle.transform", f"{folder}/circle.transform")
        write_bytes(f"{folder}/empty.transform", b"")
        write_bytes(f"{folder}/zero.transform", b"\0" * 100000)
        write_bytes(f"{folder}/other.transform", read_bytes(self.small))
        write_bytes(f"{folder}/deep.transform", b"<!DOCTYPE Tabweave>" + b"<a>" * 1000000)
        for name in names_in(folder):
            result = self.range.execute(["-cli", f"{folder}/{name}"])
            self.range.expect(f"document: {name}", result, REFUSED, "Aborted processing")
        for path in self.strange_paths().values():
            result = self.copy(self.small, self.out, arguments=["-log", path])
            if path.endswith("dangling"):
                self.range.expect(f"log: {path}", result, UP_TO_DATE)
            else:
                self.range.expect(f"log: {path}", result, UP_TO_DATE, "Could not open log file")

    def vanishing_files(self):
        """Inputs that are removed or cut while they are read, folders that go away."""
        source = self.range.path("vanishing")
        tables = {"CSV": self.large(200000)}
        for name in ("JSON", "XML", "XLSX", "XLS"):
            tables[name] = self.range.path(f"vanishing-{name}")
            self.copy(self.large(), tables[name], {}, {"file_type": FORMATS[name]})
        for name, whole in tables.items():
            for how in ("removed", "cut"):
                for moment in (0.01, 0.03, 0.06, 0.1):
                    shutil.copyfile(whole, source)
                    timer = threading.Timer(moment, take_away, (source, how))
                    timer.start()
                    result = self.copy(source, self.out, {"file_type": FORMATS[name]})
                    timer.join()
                    self.range.expect(f"{name} is {how} after {moment} s", result,
                                      (UP_TO_DATE, ITEMS_FAILED))
        for moment in (0.01, 0.05, 0.1):
            folder = self.range.folder("vanishing-folder")
            timer = threading.Timer(moment, shutil.rmtree, (folder,))
            timer.start()
            result = self.copy(self.large(200000), f"{folder}/out.csv")
            timer.join()
            self.range.expect(f"the output's folder is removed after {moment} s", result,
                              (UP_TO_DATE, ITEMS_FAILED), folder)

    def forbidden_files(self):
        """The system administrator may read everything, so somebody else has to try."""
        options = {}
        place = self.range.folder("forbidden")
        if os.geteuid() == 0:
            try:
                user = pwd.getpwnam("nobody")
                options = {"user": user.pw_uid, "group": user.pw_gid, "extra_groups": []}
                place = tempfile.mkdtemp()
                os.chmod(place, 0o755)
                started = subprocess.run([self.range.program, "-version"], check=False,
                                         stdout=subprocess.DEVNULL, **options).returncode
            except (OSError, KeyError, subprocess.SubprocessError):
                started = None
            if started != 0:
                self.range.skip("files without permission",
                                "the administrator may read all, and nobody else can run it")
                return
        try:
            self.forbid(place, options)
        finally:
            if options:
                shutil.rmtree(place)

    def forbid(self, place, options):
        secret = write_bytes(f"{place}/secret.csv", b"a,b\n1,2\n")
        readable = write_bytes(f"{place}/readable.csv", b"a,b\n1,2\n")
        document = f"{place}/document.transform"
        free = f"{place}/free"
        os.mkdir(free)
        os.chmod(free, 0o777)
        os.mkdir(f"{place}/closed", 0o700 if options else 0o500)
        os.chmod(secret, 0o600 if options else 0)
        os.chmod(readable, 0o644 if options else 0o444)
        for name, file_type in FORMATS.items():
            copying(document, secret, f"{free}/out", {"file_type": file_type})
            result = self.range.execute(["-cli", document], **options)
            self.range.expect(f"reading {name} without permission", result, ITEMS_FAILED, secret,
                              "Permission denied")
            for target in (readable, f"{place}/closed/out"):
                copying(document, readable, target, {}, {"file_type": file_type})
                result = self.range.execute(["-cli", document], **options)
                self.range.expect(f"writing {name} without permission to {target}", result,
                                  ITEMS_FAILED, target, "Permission denied")
        self.range.check("what may not be written stays",
                         read_bytes(readable) == b"a,b\n1,2\n" and names_in(free) == [])
        os.rename(secret, f"{place}/secret.transform")
        result = self.range.execute(["-cli", f"{place}/secret.transform"], **options)
        self.range.expect("a document without permission", result, REFUSED, "Can't open file")


def is_told(log):
    return any(text in log for text in ("ran out of memory", "is too big for Tabweave",
                                        "exceeded the memory", "Not enough memory",
                                        "There is not enough memory"))


def take_away(path, how):
    if how == "removed":
        os.remove(path)
    else:
        os.truncate(path, os.path.getsize(path) // 3)
