"""Run a command and note what it took.

    launcher.py NOTES RESULT COMMAND...

RESULT is where standard output goes. NOTES gets wall seconds, processor seconds and peak resident KiB of the command
with all processes that it waited for, and its exit status. This is a program of its own because a process begins with
the peak of the one that started it: it imports next to nothing, and so no peak below about 10 MiB is seen.
"""
import os
import sys
import time

notes, result, *command = sys.argv[1:]
files = [(os.POSIX_SPAWN_OPEN, 0, os.devnull, os.O_RDONLY, 0),
         (os.POSIX_SPAWN_OPEN, 1, result, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o644)]
start = time.perf_counter()
child = os.posix_spawnp(command[0], command, os.environ, file_actions=files)
_, status, used = os.wait4(child, 0)
wall = time.perf_counter() - start
with open(notes, "w") as file:
    file.write(f"{wall} {used.ru_utime + used.ru_stime} {used.ru_maxrss} {os.waitstatus_to_exitcode(status)}")
