# SPDX-License-Identifier: Apache-2.0
"""Memory that runs out, at one point of a run after another: a message and exit code 1."""

import contextlib
import resource
import signal
import subprocess

import pytest

from events import parsed
from servers import PATIENCE, Serve
from test_large_documents import arguments_for, write_document
from test_unread_output import LARGE_TEXT, post, report_with, serve_command

STEP = 2 * 1024 * 1024
STEPS = 28  # from a start that fails to a run that mostly does not
PLENTY = 1024 * 1024 * 1024


def started_within(limit, command):
    def set_limit():
        resource.setrlimit(resource.RLIMIT_AS, (limit, limit))
        resource.setrlimit(resource.RLIMIT_CORE, (0, 0))

    return subprocess.Popen(
        command,
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        encoding="utf-8",
        preexec_fn=set_limit,
    )


def run_within(limit, command):
    """Its exit code, output and errors."""
    with started_within(limit, command) as process:
        try:
            output, errors = process.communicate(timeout=PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            raise
    return process.returncode, output, errors


@pytest.fixture(name="limits", scope="module")
def limits_of_address_space(program):
    """From the smallest in which the program starts."""
    command = [program, "--version"]
    if run_within(PLENTY, command)[0] != 0:
        pytest.skip("a sanitizer takes more address space than any limit here")
    low, high = 0, PLENTY
    while high - low > STEP:
        middle = (low + high) // 2
        low, high = (low, middle) if run_within(middle, command)[0] == 0 else (middle, high)
    return range(high, high + STEPS * STEP, STEP)


def test_phone_without_memory(program, tmp_path, limits):
    write_document(tmp_path, '{"name": "Sidetone"}')
    with Serve(program, tmp_path, tmp_path) as server:
        command = [program, "phone", "--give-up-after", "1", *arguments_for(server, 2)]
        runs = [run_within(limit, command) for limit in limits]
        code, _, _ = run_within(PLENTY, command)
    for failed in [run for run in runs if run[0] != 0]:
        failed_code, output, errors = failed
        last_line = ["", *output.splitlines()][-1]
        assert failed_code == 1, failed
        assert errors.startswith("headsetmgmt: ") or last_line.startswith("failed: "), failed
        assert "no JSON" not in output, failed
    assert [run for run in runs if run[0] != 0]
    assert code == 0


def test_server_without_memory(program, documents, limits):
    ends = []
    for limit in limits:
        with started_within(limit, serve_command(program, documents)) as process:
            line = process.stdout.readline()
            event = parsed("serve", line) if line else {}
            if event.get("event") == "listening":
                with contextlib.suppress(OSError):
                    post(event["port"], report_with(LARGE_TEXT))
            process.send_signal(signal.SIGTERM)
            output = line + process.stdout.read()
            errors = process.stderr.read()
        ends.append((process.returncode, output[-1000:], errors))
    for code, output, errors in ends:
        assert code in (0, 1), (code, output, errors)
        assert code == 0 or errors.startswith("headsetmgmt: ") or '"event":"error"' in output
    assert [code for code, _, _ in ends if code != 0]
    assert ends[-1][0] == 0
