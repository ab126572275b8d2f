"""What the referees share: run the program on an input file, compare, add up.

A referee is a program that is given the path of tabweave and a folder to work in. It compares what
tabweave reads or writes with what an independent program makes of the same files, and ends with a
line of totals in the form of the other tests.
"""
import argparse
import csv
import os
import subprocess
import sys
from xml.sax.saxutils import quoteattr

DOCUMENT = """<!DOCTYPE Tabweave>
<root>
    <meta>
        <version value="72"/>
        <locale value="en_GB"/>
    </meta>
    <inputs>
        <input medium="0" id="1" name="In" alias="in" {input} pos="0^100"/>
    </inputs>
    <transforms>
    </transforms>
    <outputs>
        <output id="2" name="Out" alias="out" {output} enable_output="{mode}" pos="400^200"/>
    </outputs>
    <notes>
    </notes>
    <connections>
        <connection start_id="1" end_id="2"/>
    </connections>
</root>
"""


class Referee:
    def __init__(self, parser=None):
        """A parser may bring options of its own; they are answered as `arguments`."""
        parser = parser or argparse.ArgumentParser()
        parser.add_argument("--program", required=True)
        parser.add_argument("--work", required=True)
        self.arguments = arguments = parser.parse_args()
        self.program = arguments.program
        self.work = arguments.work
        os.makedirs(self.work, exist_ok=True)
        self.passed = 0
        self.failed = 0
        self.skipped = 0

    def path(self, name):
        return os.path.join(self.work, name)

    def run(self, input_attributes, output_attributes, write_mode=1):
        """Runs a document of one input and one output; answers the log."""
        spelled = [
            " ".join(f"{key}={quoteattr(str(value))}" for key, value in attributes.items())
            for attributes in (input_attributes, output_attributes)
        ]
        document = self.path("document.transform")
        with open(document, "w", encoding="utf-8") as file:
            file.write(DOCUMENT.format(input=spelled[0], output=spelled[1], mode=write_mode))
        result = subprocess.run(
            [self.program, "-cli", document, "-verbose"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, timeout=300, check=False)
        return result.stdout.decode("utf-8", "replace")

    def read(self, input_attributes):
        """The rows that the program reads from an input, by way of a CSV file; text on failure."""
        output = self.path("out.csv")
        if os.path.exists(output):
            os.remove(output)
        log = self.run(input_attributes,
                       {"path": output, "file_type": 0, "delimiter": 1, "line_endings": 2})
        if not os.path.exists(output):
            return log
        with open(output, encoding="utf-8", newline="") as file:
            return list(csv.reader(file))

    def compare(self, name, expected, actual):
        if expected == actual:
            self.passed += 1
            return
        self.failed += 1
        print(f"FAIL!  : {name}")
        if isinstance(actual, str):
            print(f"   The program wrote nothing: {actual}")
            return
        print(f"   {len(expected)} rows expected, {len(actual)} read")
        for number, (wanted, got) in enumerate(zip(expected, actual), 1):
            if wanted != got:
                print(f"   row {number}\n   Actual   : {got}\n   Expected : {wanted}")
                break

    def skip(self, name, reason):
        self.skipped += 1
        print(f"SKIP   : {name}: {reason}")

    def finish(self):
        print(f"Totals: {self.passed} passed, {self.failed} failed, {self.skipped} skipped")
        sys.exit(1 if self.failed else 0)


def trimmed(rows):
    """Rows without empty values at the right and without empty rows at the end."""
    result = []
    for row in rows:
        row = list(row)
        while row and row[-1] == "":
            row.pop()
        result.append(row)
    while result and not result[-1]:
        result.pop()
    return result
