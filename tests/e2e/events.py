# SPDX-License-Identifier: Apache-2.0
"""The JSON lines of the program, compared with the tables of docs/program.md.

A table of events has the columns "event" and "members". A member stands between backticks: `status`
is on every line of that event, `status?` on some. What is in an object or in the objects of an
array stands behind its name: `settings.value`. `report.*` is an object of any members.
"""

import functools
import json
import pathlib
import re

PAGE = pathlib.Path(__file__).resolve().parents[2] / "docs/program.md"
SUBCOMMANDS = ("phone", "serve")
ON_EVERY_LINE = {"format", "event"}


def members_in(cell):
    """{name: whether it is optional} of a table's cell."""
    return {
        name.rstrip("?"): name.endswith("?") for name in re.findall(r"`([A-Za-z.]+\*?\??)`", cell)
    }


@functools.lru_cache(maxsize=None)
def documented(subcommand):
    """{event: its members} of a subcommand, from the page's section about its events."""
    text = PAGE.read_text(encoding="utf-8")
    section = re.search(rf"^### Events of `{subcommand}`$(.*?)(?=^#|\Z)", text, re.M | re.S)
    assert section, f"{PAGE.name} has no section about the events of {subcommand}"
    events = {}
    for line in section.group(1).splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split("|")]
        kind = re.fullmatch(r"`(\w+)`", cells[0])
        if kind:
            assert kind.group(1) not in events, f"{kind.group(1)} stands there twice"
            events[kind.group(1)] = members_in(cells[1])
    return events


def differences(value, members, place=""):
    """What an object has that the table lacks, and what it lacks; `members` are all of an event."""
    if place + "*" in members:
        return []
    found = []
    for name, member in value.items():
        path = place + name
        if place == "" and name in ON_EVERY_LINE:
            continue
        if path not in members and path + ".*" not in members:
            found.append(f"member not in the table: {path}")
        for part in member if isinstance(member, list) else [member]:
            if isinstance(part, dict):
                found += differences(part, members, path + ".")
    for path, is_optional in members.items():
        name = path[len(place) :]
        is_of_this_object = path.startswith(place) and "." not in name.replace(".*", "")
        if is_of_this_object and not is_optional and name.replace(".*", "") not in value:
            found.append(f"member missing: {path}")
    return found


def parsed(subcommand, line):
    """The event of a line, which is as the page says."""
    event = json.loads(line)
    assert isinstance(event, dict), line
    assert event["format"] == 1, line
    assert event["event"] in documented(subcommand), f"event not in the table: {line}"
    found = differences(event, documented(subcommand)[event["event"]])
    assert found == [], f"{found}: {line}"
    return event
