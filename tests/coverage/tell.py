"""Tells how much of the library's sources ran: by file, by folder and in total, and what did not.

Usage: tell.py ROOT LINES BRANCHES

LINES is what `llvm-cov export` writes as lcov, BRANCHES what it writes as JSON, of the sources below
ROOT. A branch of a template ran when it did in one of the functions that were made of it.
"""

import json
import os
import sys
from collections import defaultdict

FOLDERS = ["core", "runtime", "metrics", "config", "plugin", "include"]


def relative(root, name):
    """The name below `root`; empty when it is not of the library."""
    path = os.path.relpath(os.path.normpath(name), root)
    return path if path.split("/")[0] in FOLDERS else ""


def read_lines(root, report):
    """How often each line ran: {file: {line: count}}."""
    found = defaultdict(dict)
    file = ""
    for record in report:
        key, _, value = record.strip().partition(":")
        if key == "SF":
            file = relative(root, value)
        elif key == "DA" and file:
            line, count = value.split(",")[:2]
            found[file][int(line)] = int(count)
    return found


def read_branches(root, report):
    """How often each branch ran: {file: {(line, column, which way): count}}.

    What the compiler decides for good, at an `if constexpr`, is no branch.
    """
    found = defaultdict(lambda: defaultdict(int))
    for covered in json.load(report)["data"][0]["files"]:
        file = relative(root, covered["filename"])
        if not file:
            continue
        with open(os.path.join(root, file)) as source:
            texts = source.read().splitlines()
        for line, column, _, _, times_true, times_false, *_ in covered["branches"]:
            if "if constexpr" not in texts[line - 1]:
                found[file][line, column, "true"] += times_true
                found[file][line, column, "false"] += times_false
    return found


def share(counts):
    """(how many ran, how many there are)"""
    return sum(count > 0 for count in counts), len(counts)


def tell(name, lines, branches):
    texts = []
    for what, (ran, of) in (("lines", share(lines)), ("branches", share(branches))):
        texts.append(f"{ran:5} of {of:5} {what} {100 * ran / of if of else 100:6.2f} %")
    print(f"{name:36} {'  '.join(texts)}")


def main():
    root, lines_name, branches_name = sys.argv[1:]
    with open(lines_name) as lines_file, open(branches_name) as branches_file:
        lines = read_lines(root, lines_file)
        branches = read_branches(root, branches_file)

    def counts_below(prefix):
        files = [file for file in lines if file.startswith(prefix)]
        return (
            [count for file in files for count in lines[file].values()],
            [count for file in files for count in branches[file].values()],
        )

    for file in sorted(lines):
        tell(file, lines[file].values(), branches[file].values())
    print()
    for folder in FOLDERS:
        tell(folder + "/", *counts_below(folder + "/"))
    tell("total", *counts_below(""))

    missed = [(file, line, "line") for file in lines for line, n in lines[file].items() if n == 0]
    for file in branches:
        for (line, column, way), count in branches[file].items():
            if count == 0:
                missed.append((file, line, f"column {column}, never {way}"))
    if missed:
        print("\nNot reached:")
    for file, line, what in sorted(missed):
        print(f"{file}:{line}: {what}")


main()
