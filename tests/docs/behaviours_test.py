"""Compares the tests that docs/behaviours.md names with the tests that there are.

Usage: behaviours_test.py PAGE --programs PROGRAM... --other-tests NAME...

PAGE holds one behaviour an item: a sentence, " — ", and the tests that hold it, each between
backticks and with commas between them. A name that ends in ".*" or "/*" stands for every test that
begins so. PROGRAM is a GoogleTest program, which is asked for its tests; NAME is a test of another
kind. Exit code 0 when every test is named somewhere and every name matches a test.
"""

import argparse
import re
import subprocess
import sys

SEPARATOR = " — "
NAMES = re.compile(r"`[^`]+`(, `[^`]+`)*")


def listed_tests(program):
    """The full names of the tests of a GoogleTest program."""
    result = subprocess.run(
        [program, "--gtest_list_tests"], check=True, stdout=subprocess.PIPE, encoding="utf-8"
    )
    suite = ""
    names = []
    for line in result.stdout.splitlines():
        name = line.split("#")[0].rstrip()
        if name.startswith("  "):
            names.append(suite + name.strip())
        elif name.endswith("."):
            suite = name
    return names


def items(page):
    """(line number, text) of each item of the page's lists, the lines of an item joined."""
    found = []
    for number, line in enumerate(page.splitlines(), start=1):
        if line.startswith("- "):
            found.append((number, line[2:].strip()))
        elif line.startswith("  ") and found:
            first, text = found[-1]
            found[-1] = (first, f"{text} {line.strip()}")
    return found


def is_pattern(name):
    return name.endswith((".*", "/*"))


def matches(name, test):
    return test.startswith(name[:-1]) if is_pattern(name) else test == name


def differences(page, tests):
    """What is wrong with the page, one message each."""
    told = []
    unnamed = set(tests)
    for line, text in items(page):
        sentence, separator, tail = text.rpartition(SEPARATOR)
        if not separator or not sentence or not NAMES.fullmatch(tail):
            told.append(f'line {line}: not "Sentence.{SEPARATOR}`test`, `test`": {text}')
            continue
        for name in re.findall(r"`([^`]+)`", tail):
            matched = {test for test in tests if matches(name, test)}
            if not matched:
                told.append(f"line {line}: no such test: {name}")
            unnamed -= matched
    return told + [f"named nowhere: {test}" for test in sorted(unnamed)]


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("page")
    parser.add_argument("--programs", nargs="+", required=True)
    parser.add_argument("--other-tests", nargs="+", required=True)
    arguments = parser.parse_args()

    told = []
    tests = set(arguments.other_tests)
    for program in arguments.programs:
        names = listed_tests(program)
        if not names:
            told.append(f"no tests in {program}")
        tests.update(names)
    with open(arguments.page, encoding="utf-8") as file:
        page = file.read()
    told += differences(page, tests)

    print("\n".join(told) if told else f"{len(items(page))} behaviours, {len(tests)} tests")
    return 1 if told else 0


if __name__ == "__main__":
    sys.exit(main())
