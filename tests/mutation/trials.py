"""Runs the unit tests against one mutant after the other, in a copy of the checkout."""

import os
import re
import resource
import shutil
import signal
import subprocess
import time
from dataclasses import dataclass
from pathlib import Path

FOLDERS = ["core", "runtime", "metrics", "config", "plugin"]
OPTIONS = [
    "-DCMAKE_BUILD_TYPE=Debug",
    "-DCMAKE_CXX_FLAGS_DEBUG=-O0",
    "-DCMAKE_CXX_FLAGS=-w",
    "-DHEADSETMGMT_PROGRAM=OFF",
    "-DHEADSETMGMT_EXAMPLES=OFF",
    # Or the build would run the tests' programs, and a mutant's might not end.
    "-DCMAKE_GTEST_DISCOVER_TESTS_DISCOVERY_MODE=PRE_TEST",
]
# How the tests are built: what is never given back fails the first, what is not locked the second.
LEAKS = ["-DCMAKE_EXE_LINKER_FLAGS=-fsanitize=leak"]
RACES = ["-DHEADSETMGMT_SANITIZERS=thread"]
# Takes long because its documents are big, and asks for nothing that a small one does not.
LEFT_OUT = ["DocumentSize.*", "Sizes/*", "LongNames.*"]
# Milliseconds from which on a test has to wait for the quick ones.
SLOW = 100
# What is told of a program that had to be ended.
NO_END = "(no end)"
# A mutant may ask for memory without end, or fill the disk.
MEMORY_LIMIT = 4 << 30
FILE_LIMIT = 1 << 30


class BrokenTests(Exception):
    """The tests fail although nothing was changed."""


@dataclass
class Program:
    """A program of unit tests, and how long it takes on the unchanged library."""

    folder: str
    name: str
    seconds: float = 0.0
    alone: tuple = ()  # tests that pass in a process of their own only
    slow: tuple = ()  # tests that run after the others

    def path(self):
        return f"tests/{self.folder}/{self.name}"

    def filters(self):
        """What a run of all its tests is split into."""
        quick = "*-" + ":".join([*LEFT_OUT, *self.alone, *self.slow])
        return [quick, *self.alone, *([":".join(self.slow)] if self.slow else [])]


@dataclass
class Outcome:
    """What became of one mutant: `verdict` is caught, survived or stillborn."""

    verdict: str
    by: str = ""
    seconds: float = 0.0


class Workshop:
    """A private copy of the checkout with a build of its own; one mutant at a time."""

    def __init__(self, checkout, folder, options):
        self.checkout = checkout
        self.folder = folder
        self.options = options
        self.source = folder / "source"
        self.build = folder / "build"
        self.programs = []
        self.changed = None  # the file that holds a mutant
        self.original = ""  # its text without

    def prepare(self, jobs):
        """Copies, configures and builds."""
        self.folder.mkdir(parents=True, exist_ok=True)
        self.copy()
        environment = dict(os.environ)
        if shutil.which("ccache"):
            environment.setdefault("CMAKE_CXX_COMPILER_LAUNCHER", "ccache")
        configure = ["cmake", "-G", "Ninja", "-S", str(self.source), "-B", str(self.build)]
        with open(self.folder / "configure.txt", "w") as log:
            configure += [*OPTIONS, *self.options]
            subprocess.run(configure, check=True, stdout=log, stderr=log, env=environment)
        self.make_movable()
        self.programs = self.find_programs()
        if not self.make(*(program.path() for program in self.programs), jobs=jobs):
            raise BrokenTests(f"the build fails, see {self.folder}/build.txt")

    def make_movable(self):
        """Names everything from the build folder on, so that a copy of both folders needs no build.

        What the tests know of the build is right when they run in the build folder.
        """
        rules = self.build / "build.ninja"
        text = rules.read_text()
        text = text.replace(str(self.source), "../source").replace(str(self.build), ".")
        rules.write_text(text)

    def prepare_like(self, other):
        """Takes a copy of another workshop as it is."""
        shutil.rmtree(self.folder, ignore_errors=True)
        shutil.copytree(other.folder, self.folder, symlinks=True)
        self.programs = other.programs

    def copy(self):
        """Brings the copy up to date; what has not changed keeps its time, and is not rebuilt."""
        wanted = files_below(self.checkout)
        for name in files_below(self.source) - wanted:
            (self.source / name).unlink()
        for name in sorted(wanted):
            self.copy_file(name)

    def copy_file(self, name):
        source, copy = self.checkout / name, self.source / name
        if copy.exists() and copy.read_bytes() == source.read_bytes():
            return
        copy.parent.mkdir(parents=True, exist_ok=True)
        copy.write_bytes(source.read_bytes())
        copy.chmod(source.stat().st_mode)

    def find_programs(self):
        """Every program of the library's folders of tests."""
        rule = re.compile(r"^build tests/(\w+)/(\w+_test): CXX_EXECUTABLE_LINKER", re.MULTILINE)
        found = rule.findall((self.build / "build.ninja").read_text())
        return [Program(folder, name) for folder, name in found if folder in FOLDERS]

    def make(self, *targets, jobs=1):
        with open(self.folder / "build.txt", "w") as log:
            command = ["ninja", "-C", str(self.build), f"-j{jobs}", *targets]
            return subprocess.run(command, stdout=log, stderr=log).returncode == 0

    def measure(self):
        """Runs every program on the unchanged library."""
        for program in self.programs:
            self.sort_tests(program)
            start = time.monotonic()
            failure = self.run(program, limit=600)
            if failure:
                raise BrokenTests(f"{program.name} without a mutant: {failure}")
            program.seconds = time.monotonic() - start

    def sort_tests(self, program):
        """Finds the tests that take long, and those that are about the beginning of a process."""
        self.execute(program, program.filters()[0], 600, fail_fast=False)
        program.alone = tuple(failed_tests(self.output()))
        passed = re.findall(r"^\[       OK \] ([\w./]+) \((\d+) ms\)", self.output(), re.MULTILINE)
        program.slow = tuple(test for test, duration in passed if int(duration) > SLOW)

    # One mutant

    def try_mutant(self, mutant, text):
        """What the tests say of a mutant; `text` is the file's without it."""
        start = time.monotonic()
        if self.changed not in (None, mutant.file):
            (self.source / self.changed).write_text(self.original)
        self.changed, self.original = mutant.file, text
        (self.source / mutant.file).write_text(mutant.applied(text))
        outcome = self.judge(mutant.file.split("/")[0])
        outcome.seconds = time.monotonic() - start
        return outcome

    def judge(self, folder):
        for program in self.in_order(folder):
            if not self.make(program.path()):
                return Outcome("stillborn")
            failure = self.confirmed_failure(program)
            if failure:
                return Outcome("caught", f"{program.name} {failure}")
        return Outcome("survived")

    def in_order(self, folder):
        """The folder's own programs first, and the quick ones; none below the plug-in has that."""
        programs = [
            program
            for program in self.programs
            if program.folder == folder or folder != "plugin"
        ]
        return sorted(programs, key=lambda program: (program.folder != folder, program.seconds))

    def confirmed_failure(self, program):
        """Why the program fails, twice in succession, or does not end; empty when it passes.

        A test that failed once because the machine was busy has not caught anything.
        """
        limit = 15 + 4 * program.seconds
        failure = self.run(program, limit)
        if not failure or failure.endswith(NO_END):
            return failure
        return self.run(program, limit)

    def run(self, program, limit):
        """Runs a program to its first failure, and answers what failed; empty when nothing did."""
        for tests in program.filters():
            status = self.execute(program, tests, limit, fail_fast=True)
            if status != 0:
                return told_by(self.output(), status)
        return ""

    def output(self):
        return (self.folder / "output.txt").read_bytes().decode("utf-8", "replace")

    def execute(self, program, tests, limit, fail_fast):
        """The exit status of a program that runs some of its tests; None when it did not end."""
        command = [self.build / program.path(), f"--gtest_filter={tests}", "--gtest_color=no"]
        if fail_fast:
            command.append("--gtest_fail_fast")
        with open(self.folder / "output.txt", "wb") as file:
            process = subprocess.Popen(
                command,
                stdin=subprocess.DEVNULL,
                stdout=file,
                stderr=file,
                cwd=self.build,
                env=dict(os.environ, TSAN_OPTIONS="halt_on_error=1"),
                start_new_session=True,
                preexec_fn=set_limits if self.options != RACES else None,
            )
            try:
                return process.wait(limit)
            except subprocess.TimeoutExpired:
                return None
            finally:
                end_group(process)


def files_below(folder):
    """The files of a checkout, without what git keeps, and without what was built."""
    return {
        path.relative_to(folder)
        for part in folder.glob("*")
        if part.name != "build" and not part.name.startswith(".")
        for path in [part, *part.rglob("*")]
        if path.is_file() and "__pycache__" not in path.parts
    }


def set_limits():
    """Not with ThreadSanitizer, which has no use for a limit of memory."""
    resource.setrlimit(resource.RLIMIT_DATA, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def end_group(process):
    """Ends what is left of a program and of the processes that it started."""
    try:
        os.killpg(process.pid, signal.SIGKILL)
    except ProcessLookupError:
        pass
    process.wait()


def failed_tests(output):
    """In their order; the list at the end of the output names each a second time."""
    return dict.fromkeys(re.findall(r"^\[  FAILED  \] (\w[\w/]*\.[\w./]+)", output, re.MULTILINE))


def told_by(output, status):
    """The test that failed, by the program's output, and how."""
    failed = failed_tests(output)
    if failed and status is not None and status > 0:
        return next(iter(failed))
    sanitizer = re.search(r"(Thread|Leak)Sanitizer: ?([A-Za-z][\w -]*)", output)
    if "LeakSanitizer: detected memory leaks" in output and not failed:
        return "at its end (a leak)"
    begun = re.findall(r"^\[ RUN      \] ([\w./]+)", output, re.MULTILINE)
    test = begun[-1] if begun else "before the first test"
    if status is None:
        return f"{test} {NO_END}"
    if sanitizer:
        return f"{test} ({sanitizer.group(2).strip()})"
    if status < 0:
        return f"{test} ({signal.Signals(-status).name})"
    return f"{test} (exit code {status})"
