# SPDX-License-Identifier: Apache-2.0
"""Runs of `headsetmgmt phone`, and how what they print is compared."""

import contextlib
import re
import signal
import subprocess
import threading

from events import parsed
from servers import PATIENCE


class Phone:
    """A phone that is running; its standard output is read line by line."""

    def __init__(self, program, arguments, on_line=lambda line: None):
        self.lines = []
        self.changed = threading.Condition()
        self.on_line = on_line
        self.process = subprocess.Popen(
            [program, "phone", *arguments],
            stdin=subprocess.DEVNULL,
            stdout=subprocess.PIPE,
            stderr=subprocess.PIPE,
            encoding="utf-8",
        )
        self.errors = []
        self.readers = [
            threading.Thread(target=self.read_output),
            threading.Thread(target=self.read_errors),
        ]
        for reader in self.readers:
            reader.start()

    def read_output(self):
        for line in self.process.stdout:
            with self.changed:
                self.lines.append(line.rstrip("\n"))
                self.changed.notify_all()
            self.on_line(line.rstrip("\n"))

    def read_errors(self):
        self.errors += self.process.stderr.read().splitlines()

    def wait_for_line(self, beginning):
        """Waits until the phone has said a line that begins so."""

        def is_said():
            return any(line.startswith(beginning) for line in self.lines)

        with self.changed:
            if not self.changed.wait_for(is_said, PATIENCE):
                raise TimeoutError(f"not said: {beginning}; but: {self.lines}")

    def events(self):
        """The events so far, with --json: every line is an event that the page describes."""
        return [parsed("phone", line) for line in self.lines]

    def finish(self, patience=PATIENCE):
        """Waits for the end; the exit code."""
        code = self.process.wait(patience)
        for reader in self.readers:
            reader.join()
        return code

    def signal(self, number):
        self.process.send_signal(number)

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
        with contextlib.suppress(subprocess.TimeoutExpired):
            self.finish()
        self.process.stdout.close()
        self.process.stderr.close()


def comparable(line, url):
    """The line without what differs from run to run: the server's port and measured times."""
    line = line.replace(url, "SERVER")
    line = re.sub(r"\b\d+ ms", "# ms", line)
    line = re.sub(r"\bafter \d+ milliseconds\b", "after # milliseconds", line)
    return re.sub(r"in \d+\.\d s$", "in # s", line)


def is_interleaving(lines, threads):
    """Whether `lines` is made of the threads' lines, all of them, each thread's in its order."""
    reached = {tuple(0 for _ in threads)}
    for line in lines:
        following = set()
        for state in reached:
            for i, thread in enumerate(threads):
                if state[i] < len(thread) and thread[state[i]] == line:
                    following.add(state[:i] + (state[i] + 1,) + state[i + 1 :])
        if not following:
            return False
        reached = following
    return tuple(len(thread) for thread in threads) in reached
