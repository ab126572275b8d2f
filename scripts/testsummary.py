#!/usr/bin/env python3
"""Add up what test programs said.

    testsummary.py LOG...

Each log holds the output of "ctest --verbose" (or a bare "Totals:" line). Prints every "Totals:"
line, the whole output of what failed, and last "N passed, N failed[, N skipped]". A test that
crashed, timed out, or ended without a word on its totals counts as one failure. Exits with 0 only
if something passed and nothing failed.
"""
import os
import re
import sys

OUTPUT = re.compile(r"^(\d+): ?(.*)$")
RESULT = re.compile(r"^\s*\d+/\d+ Test\s+#(\d+): (\S+) \.+\s*(.*?)\s+[\d.]+ sec$")
TOTALS = re.compile(r"^Totals: (\d+) passed, (\d+) failed, (\d+) skipped")
CLASS = re.compile(r"^\*+ Start testing of (\w+) \*+$")


class Test:
    def __init__(self):
        self.name = ""
        self.result = "did not end"
        self.output = []

    def totals(self):
        """(class, passed, failed, skipped, line) of every totals line, in order."""
        found = []
        name = ""
        for line in self.output:
            start = CLASS.match(line)
            if start:
                name = start[1]
            numbers = TOTALS.match(line)
            if numbers:
                found.append((name, *map(int, numbers.groups()), line))
        return found

    def lost(self):
        """True when the test did not pass and its totals do not say so, or when it has none."""
        ended = self.totals()
        if self.result == "Passed":
            return not ended
        return not (self.result == "***Failed" and any(t[2] for t in ended))


def read(path):
    """The tests of one log, by their number."""
    tests = {}
    with open(path, encoding="utf-8", errors="replace") as log:
        for line in log.read().splitlines():
            if TOTALS.match(line):
                bare = tests.setdefault(0, Test())
                bare.output.append(line)
                bare.result = "Passed" if TOTALS.match(line)[2] == "0" else "***Failed"
            elif RESULT.match(line):
                number, name, result = RESULT.match(line).groups()
                test = tests.setdefault(int(number), Test())
                test.name, test.result = name, result
            elif OUTPUT.match(line):
                number, text = OUTPUT.match(line).groups()
                tests.setdefault(int(number), Test()).output.append(text)
    if len(tests) > 1:
        tests.pop(0, None)  # what failed, shown once more at the end of its run
    return tests


def main():
    passed = failed = skipped = 0
    for path in sys.argv[1:]:
        log = os.path.basename(path)
        tests = read(path)
        if not tests:
            print(f"\n{log}: no test ran")
            with open(path, encoding="utf-8", errors="replace") as text:
                print(text.read())
            failed += 1
        for _, test in sorted(tests.items()):
            label = " ".join(word for word in (log, test.name) if word)
            if test.result != "Passed":
                print(f"\n{label}: {test.result}")
                print("\n".join(test.output))
            for name, good, bad, left, line in test.totals():
                print(f"{label} {name}: {line}" if name else f"{label}: {line}")
                passed, failed, skipped = passed + good, failed + bad, skipped + left
            if test.lost():
                print(f"{label}: {test.result}, counted as 1 failed: its totals are missing or do not tell")
                failed += 1
    print(f"{passed} passed, {failed} failed" + (f", {skipped} skipped" if skipped else ""))
    return 0 if passed and not failed else 1


if __name__ == "__main__":
    sys.exit(main())
