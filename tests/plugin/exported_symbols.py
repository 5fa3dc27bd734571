# SPDX-License-Identifier: Apache-2.0
"""Compares what the shared library exports, and what it wants of its host, with literal lists.

Usage: exported_symbols.py NM LIBRARY

Reads exported_symbols.txt and imported_symbols.txt beside this file. What one of the libraries that
the library is linked with provides is not wanted of the host. Exit code 0 when both lists are met
exactly.
"""

import pathlib
import re
import subprocess
import sys

# Provided by the program in builds that are instrumented with clang.
INSTRUMENTATION = re.compile(r"__(asan|ubsan|tsan|lsan|sanitizer|llvm)_")


def output_lines(*command):
    result = subprocess.run(command, check=True, stdout=subprocess.PIPE, encoding="utf-8")
    return result.stdout.splitlines()


def symbols(nm, library, *options):
    """(kind, name) of each dynamic symbol in the order of the table, without address and version."""
    lines = output_lines(nm, "--dynamic", "--no-sort", *options, library)
    found = [re.fullmatch(r"[0-9a-f]* +(\S) (.*?)(@.*)?", line) for line in lines]
    return [(symbol[1], symbol[2]) for symbol in found]


def provided_by_others(nm, library):
    """The names that the libraries define with which this one is linked."""
    paths = re.findall(r"(/\S+) \(0x", "\n".join(output_lines("ldd", library)))
    return {name for path in paths for _, name in symbols(nm, path, "--defined-only")}


def wanted_of_the_host(nm, library):
    """The names, demangled, that nobody but the host can provide."""
    others = provided_by_others(nm, library)
    mangled = symbols(nm, library, "--undefined-only")
    demangled = symbols(nm, library, "--undefined-only", "--demangle")
    return [
        text
        for (kind, name), (_, text) in zip(mangled, demangled)
        if kind == "U" and name not in others and not INSTRUMENTATION.match(name)
    ]


def differences(what, found, file_name):
    wanted = (pathlib.Path(__file__).parent / file_name).read_text(encoding="utf-8").splitlines()
    findings = [f"{what}, but not listed: {name}" for name in found if name not in wanted]
    findings += [f"listed, but not {what}: {name}" for name in wanted if name not in found]
    return findings


def main():
    nm, library = sys.argv[1:]
    exported = symbols(nm, library, "--defined-only", "--demangle")
    imported = wanted_of_the_host(nm, library)
    findings = [f"exported, but no function: {kind} {name}" for kind, name in exported if kind != "T"]
    findings += differences("exported", [name for _, name in exported], "exported_symbols.txt")
    findings += differences("imported", imported, "imported_symbols.txt")

    print("\n".join(findings) if findings else f"{len(exported)} exported, {len(imported)} imported")
    return 1 if findings else 0


if __name__ == "__main__":
    sys.exit(main())
