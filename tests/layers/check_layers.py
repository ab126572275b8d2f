#!/usr/bin/env python3
"""Refuse what the compiler lets through: includes and links against the direction of the layers.

    check_layers.py [--qt-headers FOLDER]

A library exports only its own folder, so most wrong includes do not compile. This check covers the
forms that do: "..", module-prefixed Qt headers, widgets in the engine, wrong libraries in a
CMakeLists.txt; and it finds markers of unfinished work. FOLDER is where Qt's headers lie (with the
subfolders QtGui and QtWidgets). Every rule is first tried on a snippet that breaks it.
"""
import argparse
import os
import re
import sys

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

# What each folder may include; every folder may include itself.
BELOW = {"core": []}
BELOW["transforms"] = BELOW["io"] = ["core"]
BELOW["engine"] = ["core", "transforms", "io"]
BELOW["batch"] = BELOW["engine"] + ["engine"]
BELOW["ui"] = BELOW["batch"] + ["batch"]
BELOW["app"] = BELOW["ui"] + ["ui"]
BELOW["tests"] = BELOW["app"] + ["app"]
WITHOUT_WINDOW = ["core", "transforms", "io", "engine", "batch"]
# The undo stack is the one reason for which the engine links Widgets.
ALLOWED_WIDGETS = {"engine": {"QUndoCommand", "QUndoStack"}}
WINDOW_MODULES = ["Gui", "Widgets", "Svg", "Charts", "PrintSupport", "OpenGL", "Quick", "QuickWidgets"]
ALLOWED_MODULES = {"engine": {"Widgets"}}

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
MODULE = re.compile(r"^Qt(Core|Gui|Widgets|Xml|Qml|Test|Network|Svg|Charts|Concurrent|Sql|PrintSupport)$")
MARKER = re.compile(r"\b(TO" r"DO|FIX" r"ME|X" r"XX)\b")
COMMENT = re.compile(r"#[^\n]*")


class Project:
    """The headers of the project's folders, and those that Qt's window modules have."""

    def __init__(self, headers, window_headers):
        self.headers = headers
        self.window_headers = window_headers


def include_fault(project, folder, bracket, path):
    parts = path.split("/")
    if ".." in parts:
        return "an include holds '..'"
    if MODULE.match(parts[0]):
        return f"'{path}' names a Qt module; include the class, as <QString>"
    if bracket == '"' and len(parts) > 1:
        return f"'{path}' is included by path, not by its bare name"
    above = project.headers.get(path, set())
    if bracket == '"' and above and folder not in above and not above & set(BELOW[folder]):
        return f"'{path}' belongs to {' and '.join(sorted(above))}, which {folder} does not see"
    if (folder in WITHOUT_WINDOW and path in project.window_headers
            and path not in ALLOWED_WIDGETS.get(folder, ())):
        return f"<{path}> is a class of the window; {folder} works without one"
    return None


def source_faults(project, folder, text):
    """(line number, what is wrong) of one C++ file."""
    for number, line in enumerate(text.splitlines(), 1):
        include = INCLUDE.match(line)
        fault = include and include_fault(project, folder, *include.groups())
        if fault:
            yield number, fault


def marker_faults(text):
    for number, line in enumerate(text.splitlines(), 1):
        if MARKER.search(line):
            yield number, "marker of unfinished work"


def build_faults(folder, text):
    """(line number, what is wrong) of one CMakeLists.txt."""
    for number, line in enumerate(text.splitlines(), 1):
        line = COMMENT.sub("", line)
        for module in re.findall(r"\bQt5?::(\w+)", line):
            if (folder in WITHOUT_WINDOW and module in WINDOW_MODULES
                    and module not in ALLOWED_MODULES.get(folder, ())):
                yield number, f"{folder} links Qt5::{module}, but works without a window"
        for library in re.findall(r"\bTabweave::(\w+)|\btw_(\w+)", line):
            other = library[0] or library[1]
            if other in BELOW and other != folder and other not in BELOW[folder]:
                yield number, f"{folder} links {other}, which it does not see"


def self_test():
    """The rules that fail to find what breaks them, or find something in what is right."""
    project = Project({"node.h": {"engine"}, "dataset.h": {"core"}, "filetypes.h": {"io"}}, {"QLabel", "QUndoStack"})
    sources = [
        ("core", '#include "../engine/node.h"', True),
        ("core", '#include "engine/node.h"', True),
        ("core", '#include "node.h"', True),
        ("transforms", '  #  include "filetypes.h"', True),
        ("io", '#include "node.h"', True),
        ("io", "#include <QtWidgets/QLabel>", True),
        ("ui", "#include <QtCore>", True),
        ("engine", "#include <QLabel>", True),
        ("io", "#include <QUndoStack>", True),
        ("engine", '#include "dataset.h"\n#include "filetypes.h"\n#include <QUndoStack>\n#include <QtGlobal>', False),
        ("ui", "#include <QLabel>\n#include <QtMath>", False),
        ("tests", '#include "node.h"\n#include "tst_node.moc"', False),
    ]
    builds = [
        ("core", "tw_library(core DEPENDS Qt5::Gui)", True),
        ("io", "    DEPENDS Qt5::Widgets", True),
        ("engine", "    DEPENDS Qt5::Svg", True),
        ("io", "    DEPENDS Tabweave::transforms", True),
        ("core", "target_link_libraries(tw_core PUBLIC tw_engine)", True),
        ("engine", "    DEPENDS Tabweave::io Qt5::Widgets Qt5::Xml # never Qt5::Charts", False),
        ("app", "    DEPENDS Tabweave::engine Qt5::Gui tw_flags", False),
    ]
    markers = [("// TO" "DO: later", True), ("// FIX" "ME", True), ("int todoList;", False)]
    wrong = [f"source rule on: {text}" for folder, text, bad in sources
             if bool(list(source_faults(project, folder, text))) != bad]
    wrong += [f"build rule on: {text}" for folder, text, bad in builds if bool(list(build_faults(folder, text))) != bad]
    wrong += [f"marker rule on: {text}" for text, bad in markers if bool(list(marker_faults(text))) != bad]
    return wrong


def files(folder):
    for path, subfolders, names in os.walk(os.path.join(TOP, folder)):
        subfolders.sort()
        for name in sorted(names):
            yield os.path.join(path, name)


def read(path):
    with open(path, encoding="utf-8") as text:
        return text.read()


def folder_faults(project, folder):
    """(path, line number, what is wrong) of all files of a folder."""
    for path in files(folder):
        source = path.endswith((".cpp", ".h"))
        build = os.path.basename(path) == "CMakeLists.txt"
        if not (source or build or path.endswith((".cmake", ".py"))):
            continue
        text = read(path)
        faults = list(marker_faults(text))
        if source:
            faults += source_faults(project, folder, text)
        if build:
            faults += build_faults(folder, text)
        for number, fault in faults:
            yield path, number, fault


def window_headers(qt_headers):
    found = set()
    for module in ("QtGui", "QtWidgets"):
        found.update(name for name in os.listdir(os.path.join(qt_headers, module)) if name.startswith("Q"))
    return found


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--qt-headers", help="folder that holds QtGui and QtWidgets")
    qt_headers = arguments.parse_args().qt_headers

    failed = []
    wrong = self_test()
    for rule in wrong:
        print(f"FAIL!  : the {rule}")
    if wrong:
        failed.append("self-test")

    headers = {}
    for folder in BELOW:
        for path in files(folder):
            if path.endswith(".h"):
                headers.setdefault(os.path.basename(path), set()).add(folder)
    project = Project(headers, window_headers(qt_headers) if qt_headers else set())
    folders = [folder for folder in [*BELOW, "cmake", "scripts", "bench", "examples"]
               if os.path.isdir(os.path.join(TOP, folder))]
    for folder in folders:
        faults = list(folder_faults(project, folder))
        for path, number, fault in faults:
            print(f"FAIL!  : {os.path.relpath(path, TOP)}:{number}: {fault}")
        if faults:
            failed.append(folder)
    passed = 1 + len(folders) - len(failed)
    if not qt_headers:
        print("SKIP   : window classes in layers without a window (no --qt-headers given)")
    print(f"Totals: {passed} passed, {len(failed)} failed, {int(not qt_headers)} skipped")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
