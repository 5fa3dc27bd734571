# SPDX-License-Identifier: Apache-2.0
"""Output that cannot be written: said on standard error, and exit code 1."""

import os
import subprocess

import pytest

from servers import PATIENCE, Scripted

CLOSED = "headsetmgmt: standard output cannot be written: Bad file descriptor\n"
FULL = "headsetmgmt: standard output cannot be written: No space left on device\n"


def run_without(program, descriptors, arguments):
    """A run whose caller has closed these descriptors."""

    def close():
        for descriptor in descriptors:
            os.close(descriptor)

    return subprocess.run(
        [program, *arguments],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.DEVNULL,
        stderr=subprocess.PIPE,
        encoding="utf-8",
        timeout=PATIENCE,
        preexec_fn=close,
    )


def arguments_for(benches, url):
    arguments = ["phone", "--bench", benches / "headset-with-dock.json", "--json"]
    return [*arguments, "--config-url", f"{url}/config.json", "--inventory-url", f"{url}/inventory"]


@pytest.mark.parametrize("descriptors", [[1], [0, 1]], ids=["output", "input-and-output"])
def test_phone_with_standard_output_closed(descriptors, program, benches, documents):
    with Scripted(documents, [[{"document": "good.json"}]]) as server:
        result = run_without(program, descriptors, arguments_for(benches, server.url))
    # Nothing of the output has got into the connections.
    assert server.requests == ["GET /config.json", "POST /inventory"]
    assert result.stderr == CLOSED
    assert result.returncode == 1


def test_phone_with_every_standard_descriptor_closed(program, benches, documents):
    with Scripted(documents, [[{"document": "good.json"}]]) as server:
        result = run_without(program, [0, 1, 2], arguments_for(benches, server.url))
    assert server.requests == ["GET /config.json", "POST /inventory"]
    assert result.stderr == ""
    assert result.returncode == 1


def test_phone_with_standard_error_closed_is_as_good_as_any(program, benches, documents):
    with Scripted(documents, [[{"document": "good.json"}]]) as server:
        result = run_without(program, [2], arguments_for(benches, server.url))
    assert server.requests == ["GET /config.json", "POST /inventory"]
    assert result.returncode == 0


@pytest.mark.parametrize(
    "arguments", [["--help"], ["phone", "--help"], ["serve", "--help"], ["--version"]]
)
def test_help_that_cannot_be_written(arguments, program):
    with open("/dev/full", "w") as full:
        result = subprocess.run(
            [program, *arguments],
            stdout=full,
            stderr=subprocess.PIPE,
            encoding="utf-8",
            timeout=PATIENCE,
        )
    assert result.stderr == FULL
    assert result.returncode == 1


def test_help_with_standard_output_closed(program):
    result = run_without(program, [1], ["--help"])
    assert result.stderr == CLOSED
    assert result.returncode == 1
