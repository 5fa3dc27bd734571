# SPDX-License-Identifier: Apache-2.0
"""What every end-to-end test starts from: the program under test and a folder for its files."""

import os
import pathlib
import signal

import pytest

PROJECT = pathlib.Path(__file__).resolve().parents[2]


def pytest_configure():
    """Asked to end, the tests end as with Ctrl-C: whatever runs is stopped first."""
    signal.signal(signal.SIGTERM, signal.default_int_handler)


@pytest.fixture(scope="session")
def program():
    """The path of the program `headsetmgmt`, from the environment."""
    path = pathlib.Path(os.environ["HEADSETMGMT_PROGRAM"])
    assert path.is_file(), f"{path} is not built"
    return path


@pytest.fixture(scope="session")
def slowness():
    """By how much the build under test is slower than one without sanitizers."""
    return float(os.environ.get("HEADSETMGMT_SLOWNESS", "1"))


@pytest.fixture(scope="session")
def documents():
    """The folder of the documents that the servers serve."""
    return pathlib.Path(__file__).resolve().parent / "documents"


@pytest.fixture(scope="session")
def benches():
    """The folder of the example bench files."""
    return PROJECT / "examples/benches"
