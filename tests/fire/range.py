"""What the parts of the fire test share: a place to shoot at, documents, runs that are watched."""
import os
import resource
import shutil
import subprocess
import tempfile
import time
from xml.sax.saxutils import quoteattr

from referee import Referee

DELIMITED, XLSX, XLS, FIXED_WIDTH, JSON, XML, VCARD, YAML, HTML, MARKDOWN, PLAIN = range(11)
OVERWRITE, APPEND = 1, 2
UP_TO_DATE, ITEMS_FAILED, OUT_OF_MEMORY, REFUSED = 0, 1, 2, 255

LONGEST_RUN = 120  # seconds; what takes longer hangs


class Result:
    def __init__(self, status, log, memory_mb, seconds):
        self.status = status
        self.log = log
        self.memory_mb = memory_mb
        self.seconds = seconds  # of the processor


class Range(Referee):
    """Folder and program, and the score."""

    def __init__(self, parser):
        super().__init__(parser)
        self.long = self.arguments.long
        self.sanitized = self.arguments.sanitized
        shutil.rmtree(self.work, ignore_errors=True)
        os.makedirs(self.work)

    def folder(self, name):
        """A new empty folder."""
        path = self.path(name)
        shutil.rmtree(path, ignore_errors=True)
        os.makedirs(path)
        return path

    def execute(self, arguments, limits=(), timeout=LONGEST_RUN, **options):
        """Runs the program and answers status, log and memory; the status of a hang is "hangs"."""
        if not self.sanitized:
            options["preexec_fn"] = lambda: [resource.setrlimit(*limit) for limit in limits]
        with tempfile.TemporaryFile() as log:
            options.setdefault("stdout", log)
            options.setdefault("stderr", log)
            process = subprocess.Popen([self.program] + arguments, stdin=subprocess.DEVNULL,
                                       **options)
            status, usage = self.wait(process, timeout)
            log.seek(0)
            text = log.read().decode("utf-8", "replace")
            return Result(status, text, usage.ru_maxrss >> 10, usage.ru_utime + usage.ru_stime)

    @staticmethod
    def wait(process, timeout):
        """Popen cannot tell what a process used."""
        end = time.monotonic() + timeout
        while True:
            pid, status, usage = os.wait4(process.pid, os.WNOHANG)
            if pid:
                process.returncode = os.waitstatus_to_exitcode(status)
                return process.returncode, usage
            if time.monotonic() > end:
                process.kill()
                usage = os.wait4(process.pid, 0)[2]
                process.returncode = -9
                return "hangs", usage
            time.sleep(0.005)

    def expect(self, name, result, status, *texts, absent=()):
        """The exit status (or one of several) and what the log says."""
        if os.environ.get("FIRE_TELL"):
            self.say(f"{name}: status {result.status}, {result.memory_mb} MB, "
                     f"{result.seconds:.1f} s")
        statuses = status if isinstance(status, tuple) else (status,)
        missing = [text for text in texts if text not in result.log]
        unwanted = [text for text in absent if text in result.log]
        if result.status in statuses and not missing and not unwanted:
            self.passed += 1
            return True
        self.failed += 1
        print(f"FAIL!  : {name}\n   status {result.status}, expected {status}")
        for text in missing:
            print(f"   the log does not say: {text}")
        for text in unwanted:
            print(f"   the log says: {text}")
        print("   " + result.log[-3000:].replace("\n", "\n   "), flush=True)
        return False

    def check(self, name, holds, details=""):
        if holds:
            self.passed += 1
        else:
            self.failed += 1
            print(f"FAIL!  : {name}\n   {details}", flush=True)
        return holds

    def say(self, text):
        print(text, flush=True)


def attributes(values):
    return " ".join(f"{key}={quoteattr(str(value))}" for key, value in values.items())


def read_bytes(path):
    """None when there is no such file."""
    try:
        with open(path, "rb") as file:
            return file.read()
    except FileNotFoundError:
        return None


def write_bytes(path, content):
    with open(path, "wb") as file:
        file.write(content)
    return path


def names_in(folder):
    return sorted(os.listdir(folder))


class Document:
    """A document in the making."""

    def __init__(self):
        self.items = {"input": [], "transform": [], "output": []}
        self.connections = []
        self.next_id = 1

    def add(self, kind, content, above=None, **values):
        number = self.next_id
        self.next_id += 1
        values.setdefault("name", f"Item {number}")
        spelled = attributes({"id": number, "pos_v12": f"{number}^{number}", **values})
        self.items[kind].append(f"<{kind} {spelled}>{content}</{kind}>")
        if above is not None:
            self.connections.append(f'<connection start_id="{above}" end_id="{number}"/>')
        return number

    def input(self, path, **values):
        values = {"medium": 0, "delimiter": 1, "header": 1, **values}
        return self.add("input", "", path=path, alias=f"in{self.next_id}", **values)

    def transform(self, name, above, parameters=""):
        return self.add("transform", parameters, above, name=name)

    def output(self, path, above, **values):
        values = {"file_type": DELIMITED, "delimiter": 1, "line_endings": 2, "write_header": 1,
                  "enable_output": OVERWRITE, "xml_root": "root", "xml_row": "record", **values}
        return self.add("output", "", above, path=path, alias=f"out{self.next_id}", **values)

    def save(self, path):
        parts = "".join(f"<{kind}s>{''.join(items)}</{kind}s>\n" for kind, items in
                        self.items.items())
        with open(path, "w", encoding="utf-8") as file:
            file.write('<!DOCTYPE Tabweave>\n<root><meta><version value="72"/>'
                       f'<locale value="en_GB"/></meta>\n{parts}<notes/>'
                       f"<connections>{''.join(self.connections)}</connections></root>\n")
        return path


def copying(document, source, target, source_options=None, target_options=None):
    """A document that writes one file as another."""
    new = Document()
    above = new.input(source, **(source_options or {}))
    new.output(target, above, **(target_options or {}))
    return new.save(document)
