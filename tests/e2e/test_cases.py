# SPDX-License-Identifier: Apache-2.0
"""Runs every file in cases/: a document and a server's behaviour, and what the phone makes of them.

A case has these members:

- "shows": what the case is there for
- "bench": an example bench file; without it "options" name the accessories
- "document": the path that is fetched from `headsetmgmt serve`; or
- "answers" and "report answers": what the scripted server does (servers.py has the steps)
- "options": further options of the phone; SERVER is the server's URL
- "output": everything that the phone prints, line by line; SERVER is the server's URL, # a time
- "meanwhile": further lines, in this order, which another thread prints at any time
- "requests": what the server saw
- "reports": the reports that the server took; their time is compared with the clock
- "exit": the phone's exit code
"""

import contextlib
import json
import pathlib
import time

import pytest

from phone import Phone, comparable, is_interleaving
from servers import Scripted, Serve

CASES = sorted((pathlib.Path(__file__).resolve().parent / "cases").glob("*.json"))


def server_of(case, program, documents, folder):
    if "answers" in case:
        return Scripted(documents, case["answers"], case.get("report answers"))
    return Serve(program, documents, folder)


def arguments_of(case, benches, url):
    """The phone's arguments: the case's own options, and what they leave out."""
    arguments = [option.replace("SERVER", url) for option in case.get("options", [])]
    if "--config-url" not in arguments:
        arguments += ["--config-url", url + "/" + case.get("document", "config.json")]
    if "bench" in case:
        arguments += ["--bench", benches / case["bench"]]
        if "--inventory-url" not in arguments:
            arguments += ["--inventory-url", url + "/inventory"]
    return arguments


def without_time(report, begin):
    """The report, its time set to 0 when it is one between `begin` and now."""
    report = dict(report)
    if isinstance(report.get("time"), int) and begin <= report["time"] <= time.time():
        report["time"] = 0
    return report


@pytest.mark.parametrize("file", CASES, ids=lambda file: file.stem)
def test_case(file, program, documents, benches, tmp_path):
    case = json.loads(file.read_text(encoding="utf-8"))
    begin = int(time.time())
    with contextlib.ExitStack() as stack:
        server = stack.enter_context(server_of(case, program, documents, tmp_path))
        heard = server.heard if "answers" in case else lambda line: None
        phone = stack.enter_context(
            Phone(program, arguments_of(case, benches, server.url), heard)
        )
        code = phone.finish()
        if "answers" not in case:
            assert server.stop() == 0
    lines = [comparable(line, server.url) for line in phone.lines]

    assert phone.errors == []
    if "meanwhile" in case:
        assert is_interleaving(lines, [case["output"], case["meanwhile"]]), "\n".join(lines)
    else:
        assert lines == case["output"]
    assert server.requests == case["requests"]
    assert [without_time(report, begin) for report in server.reports] == case.get("reports", [])
    assert code == case["exit"]


def waits_for_words(case):
    """Whether the scripted server waits until the phone has said something in words."""
    answers = case.get("answers", []) + case.get("report answers", [])
    return any("wait for" in step for answer in answers for step in answer)


@pytest.mark.parametrize("file", CASES, ids=lambda file: file.stem)
def test_events_of_a_case_are_as_the_page_says(file, program, documents, benches, tmp_path):
    case = json.loads(file.read_text(encoding="utf-8"))
    if waits_for_words(case):
        pytest.skip("its server waits for words, and there are none with --json")
    with contextlib.ExitStack() as stack:
        server = stack.enter_context(server_of(case, program, documents, tmp_path))
        arguments = [*arguments_of(case, benches, server.url), "--json"]
        phone = stack.enter_context(Phone(program, arguments))
        code = phone.finish()

    assert phone.events()[-1]["event"] == "result"
    assert code == case["exit"]
