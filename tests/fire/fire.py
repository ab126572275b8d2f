"""Runs tabweave under fire: kills, full disks, little memory, broken files, sizes beyond measure.

    fire.py --program TABWEAVE --save-document P --fuzz P --work FOLDER
            [--long] [--sanitized] [--only kills|hardships|sizes|fuzzing]

Ends with a line of totals in the form of the other tests. With --sanitized the programs are built
with the sanitizers: then readers are fed damaged files, and what needs an ordinary program (limits
of memory, times of kills, very large tables) is left to the other build.
"""
import argparse
import os
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), os.pardir, "referees"))

import fuzzing
import hardships
import kills
import sizes
from range import Range

PARTS = {"kills": kills.run, "hardships": hardships.run, "sizes": sizes.run, "fuzzing": fuzzing.run}
SANITIZED = ["hardships", "fuzzing"]
ORDINARY = ["kills", "hardships", "sizes"]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--save-document", required=True)
    parser.add_argument("--fuzz", required=True)
    parser.add_argument("--long", action="store_true")
    parser.add_argument("--sanitized", action="store_true")
    parser.add_argument("--only", choices=sorted(PARTS))
    range_ = Range(parser)
    parts = SANITIZED if range_.arguments.sanitized else ORDINARY
    for name in [range_.arguments.only] if range_.arguments.only else parts:
        PARTS[name](range_)
    range_.finish()


if __name__ == "__main__":
    main()
