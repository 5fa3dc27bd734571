# SPDX-License-Identifier: Apache-2.0
"""The tables of events in docs/program.md against the sources; events.py compares them with the
lines of every run."""

import re

import pytest

from conftest import PROJECT
from events import SUBCOMMANDS, differences, documented


def sources_of(subcommand):
    """The sources that make a subcommand's events; what is beside the folders serves both."""
    folder = PROJECT / "program"
    files = [*folder.glob("*.cpp"), *(folder / subcommand).glob("*.cpp")]
    return "".join(file.read_text(encoding="utf-8") for file in sorted(files))


def kinds_found(sources):
    return set(re.findall(r'\{"event",\s*"(\w+)"\}', sources))


@pytest.mark.parametrize("subcommand", SUBCOMMANDS)
def test_every_event_of_the_sources_is_in_the_table(subcommand):
    assert kinds_found(sources_of(subcommand)) - set(documented(subcommand)) == set()


@pytest.mark.parametrize("subcommand", SUBCOMMANDS)
def test_every_event_of_the_table_is_in_the_sources(subcommand):
    assert set(documented(subcommand)) - kinds_found(sources_of(subcommand)) == set()


@pytest.mark.parametrize("subcommand", SUBCOMMANDS)
def test_every_member_of_the_table_is_in_the_sources(subcommand):
    names_found = set(re.findall(r'"(\w+)"', sources_of(subcommand)))
    for event, members in documented(subcommand).items():
        for path in members:
            name = path.replace(".*", "").split(".")[-1]
            assert name in names_found, f"{event}: {path}"


MEMBERS = {"id": False, "error": True, "settings": True, "settings.name": False, "report.*": False}


@pytest.mark.parametrize(
    "event, found",
    [
        ({"id": "a", "report": {"any": {"thing": 1}}}, []),
        ({"id": "a", "report": {}, "settings": [{"name": "b"}]}, []),
        ({"id": "a", "report": {}, "size": 3}, ["member not in the table: size"]),
        ({"report": {}}, ["member missing: id"]),
        ({"id": "a"}, ["member missing: report.*"]),
        (
            {"id": "a", "report": {}, "settings": [{"name": "b"}, {"value": 1}]},
            ["member not in the table: settings.value", "member missing: settings.name"],
        ),
    ],
)
def test_differences_are_found(event, found):
    assert differences(event, MEMBERS) == found
