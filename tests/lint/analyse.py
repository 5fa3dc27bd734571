# SPDX-License-Identifier: Apache-2.0
"""Runs clang-tidy on C++ files, one a processor at a time, and prints what it finds.

Passes over a file that passed before, if the analyser would read the same again: itself, its
settings, the compile command, and the text of the file and of every header. Remembers those in
~/.cache/headsetmgmt-lint (or $XDG_CACHE_HOME) for 30 days after their last use.

Usage: analyse.py FOLDER FILE...    FOLDER holds compile_commands.json; fails on a finding
"""

import concurrent.futures
import hashlib
import json
import os
import pathlib
import shlex
import subprocess
import sys
import time

PROJECT = pathlib.Path(__file__).resolve().parents[2]
CACHE = pathlib.Path(os.environ.get("XDG_CACHE_HOME") or pathlib.Path.home() / ".cache")
CACHE = CACHE / "headsetmgmt-lint"
DAYS_KEPT = 30


def output_of(command, folder=None):
    return subprocess.run(command, cwd=folder, capture_output=True, text=True, check=True).stdout


def files_read(entry):
    """Every file that a compile command reads, as make writes them: `target: file file \\`."""
    arguments = shlex.split(entry["command"])
    place = arguments.index("-o")
    flags = [argument for argument in arguments[1:place] + arguments[place + 2:]
             if argument not in ("-c", entry["file"])]
    rule = output_of(["clang++", *flags, "-w", "-M", entry["file"]], entry["directory"])
    names = shlex.split(rule.split(":", 1)[1].replace("\\\n", " "))
    return sorted({os.path.normpath(os.path.join(entry["directory"], name)) for name in names})


def fingerprint(entry, settings):
    """Of all that the analyser would read. The same in whatever folder the checkout lies."""
    digest = hashlib.sha256(settings)
    digest.update(entry["command"].replace(str(PROJECT), ".").encode())
    for name in files_read(entry):
        digest.update(name.replace(str(PROJECT), ".").encode() + b"\0")
        digest.update(hashlib.sha256(pathlib.Path(name).read_bytes()).digest())
    return digest.hexdigest()


def analyse(file, entry, folder, settings):
    """None if the file was analysed before, else the exit code and what was found."""
    try:
        passed = CACHE / fingerprint(entry, settings)
    except (subprocess.CalledProcessError, OSError):
        passed = None  # The analyser reports what is wrong.
    if passed and passed.exists():
        passed.touch()
        return None
    result = subprocess.run(["clang-tidy", "--quiet", "-p", folder, file],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                            check=False)
    if passed and result.returncode == 0:
        passed.touch()
    return result.returncode, result.stdout


def main(folder, files):
    CACHE.mkdir(parents=True, exist_ok=True)
    for old in CACHE.iterdir():
        if old.stat().st_mtime < time.time() - DAYS_KEPT * 24 * 3600:
            old.unlink(missing_ok=True)
    commands = json.loads(pathlib.Path(folder, "compile_commands.json").read_text())
    entries = {entry["file"]: entry for entry in commands}
    settings = (PROJECT / ".clang-tidy").read_bytes() + output_of(["clang-tidy", "--version"]).encode()

    unknown = [file for file in files if str(PROJECT / file) not in entries]
    if unknown:
        sys.exit(f"analyse: not part of the build: {' '.join(unknown)}")
    failed = analysed = 0
    with concurrent.futures.ThreadPoolExecutor(len(os.sched_getaffinity(0))) as pool:
        for result in pool.map(lambda file: analyse(file, entries[str(PROJECT / file)], folder,
                                                    settings), files):
            if result:
                code, findings = result
                print(findings, end="", flush=True)
                analysed += 1
                failed += code != 0
    print(f"analysed {analysed} of {len(files)} files, {len(files) - analysed} had passed before")
    return 1 if failed else 0


if __name__ == "__main__":
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    sys.exit(main(sys.argv[1], sys.argv[2:]))
