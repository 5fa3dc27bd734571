"""Counts the instructions that four fixed jobs take inside our own objects, with callgrind.

Usage: instructions.py JOBS LIBRARY            prints the counts beside the accepted ones
       instructions.py JOBS LIBRARY --check    and fails when one has grown by more than 5 %
       instructions.py JOBS LIBRARY --accept   and makes them the accepted ones

JOBS is the program that runs the jobs, LIBRARY the shared library. The accepted counts stand in
instructions.json beside this file; they hold for the compiler that is named there.
"""

import json
import pathlib
import re
import subprocess
import sys
import tempfile

ACCEPTED = pathlib.Path(__file__).with_name("instructions.json")
ALLOWED_GROWTH = 0.05
JOBS = ("document", "log-line", "report", "attach")


def own_instructions(profile, own):
    """The instructions of the objects whose file names are `own`, and of all the others, each with
    what it calls left out."""
    names = {}  # callgrind names an object once and then tells its number
    counts = {"own": 0, "others": 0}
    current = ""
    inclusive = False  # the line after "calls=" tells what was called, too
    for line in profile.splitlines():
        entry = re.match(r"(c?ob)=\((\d+)\)(?: (.*))?$", line)
        if entry:
            kind, number, name = entry.groups()
            if name:
                names[number] = pathlib.Path(name).name
            if kind == "ob":
                current = names[number]
        elif line.startswith("calls="):
            inclusive = True
        elif re.match(r"[+\-*\d]", line):
            if not inclusive:
                counts["own" if current in own else "others"] += int(line.split()[1])
            inclusive = False
    return counts


def count(program, library, job):
    own = {pathlib.Path(program).name, pathlib.Path(library).resolve().name}
    with tempfile.TemporaryDirectory() as folder:
        profile = pathlib.Path(folder, "profile")
        subprocess.run(["valgrind", "--tool=callgrind", "--instr-atstart=no",
                        f"--callgrind-out-file={profile}", program, job],
                       check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE)
        return own_instructions(profile.read_text(encoding="utf-8"), own)


def compiler(program):
    """Name and version of the compiler that the program's build folder is configured with."""
    cache = pathlib.Path(program).resolve().parents[1] / "CMakeCache.txt"
    found = re.search(r"^CMAKE_CXX_COMPILER:\w+=(.*)$", cache.read_text(encoding="utf-8"), re.M)
    return subprocess.run([found[1], "--version"], check=True, capture_output=True,
                          text=True).stdout.splitlines()[0]


def main(arguments):
    if len(arguments) not in (2, 3) or arguments[2:] not in ([], ["--check"], ["--accept"]):
        sys.exit(__doc__)
    program, library = arguments[:2]
    accepted = json.loads(ACCEPTED.read_text(encoding="utf-8")) if ACCEPTED.exists() else {}
    counts = {}
    grown = []
    print(f"| {'job':8} | {'own':>10} | {'accepted':>10} | {'change':>8} | {'others':>11} |")
    print(f"|-{'-' * 8}-|-{'-' * 10}-|-{'-' * 10}-|-{'-' * 8}-|-{'-' * 11}-|")
    for job in JOBS:
        counted = count(program, library, job)
        counts[job] = counted["own"]
        before = accepted.get("instructions", {}).get(job)
        change = counted["own"] / before - 1 if before else 0
        if before is None or change > ALLOWED_GROWTH:
            grown.append(job)
        print(f"| {job:8} | {counted['own']:>10,} | {before or 0:>10,} | {change:>8.2%} | "
              f"{counted['others']:>11,} |")
    if "--accept" in arguments:
        ACCEPTED.write_text(json.dumps({"compiler": compiler(program), "instructions": counts},
                                       indent=4) + "\n", encoding="utf-8")
    elif "--check" in arguments and grown:
        sys.exit(f"instructions: FAILED ({', '.join(grown)}); accepted with "
                 f"{accepted.get('compiler', 'no compiler')}, counted with {compiler(program)}")
    elif "--check" in arguments:
        print("instructions: OK")


if __name__ == "__main__":
    main(sys.argv[1:])
