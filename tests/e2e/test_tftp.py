# SPDX-License-Identifier: Apache-2.0
"""The phone against atftpd."""

import re

import pytest

from phone import Phone, comparable, is_interleaving
from servers import Atftpd, TftpServer

ACCESSORY = (
    "id=desk,type=headset,vendorId=61525,model=Varos K30,serialNumber=A1,softwareVersion=2-1-0"
)
GOOD_RUN = [
    "attached desk: Varos K30, firmware 2-1-0",
    "fetch, attempt 1: SERVER/good.json: status 200, 1767 bytes, # ms",
    "set desk: Sidetone (usage id 34) = medium",
    "set desk: Equalizer (usage id 35) = warm",
    "set desk: Audio Bandwidth (usage id 36) = 2",
    "set desk: Bluetooth (usage id 39) = off",
    "firmware of desk (Varos K30): no upgrade required",
    "document taken by 1, failed for 0",
    '  desk (Varos K30) is served by entry 0 of modelSpecificSettings: "Varos K30" (line 10, column 13)',
    '  kept, sent at a factory reset only: Speaker Volume: its access is "User", not "Admin" (commonSettings, line 5,'
    " column 13)",
    "device desk has",
    "  34 Sidetone = medium",
    "  35 Equalizer = warm",
    "  36 Audio Bandwidth = 2",
    "  39 Bluetooth = off",
    "done: 1 of 1 configured; no reports wanted",
]
NO_REPORTS = ["no inventory URL: no reports are sent"]


@pytest.fixture
def tftp(documents, tmp_path):
    with Atftpd(documents, tmp_path) as server:
        yield server


def run(program, url, document, *options):
    arguments = ["--accessory", ACCESSORY, "--give-up-after", "1"]
    with Phone(program, [*arguments, "--config-url", f"{url}/{document}", *options]) as phone:
        code = phone.finish()
    assert phone.errors == []
    return code, [comparable(line, url) for line in phone.lines]


def test_document(program, tftp):
    code, lines = run(program, tftp.url, "good.json")
    assert is_interleaving(lines, [GOOD_RUN, NO_REPORTS]), lines
    assert code == 0


def test_missing_document(program, tftp):
    code, lines = run(program, tftp.url, "missing.json")
    expected = [
        "attached desk: Varos K30, firmware 2-1-0",
        "fetch, attempt 1: SERVER/missing.json: the TFTP server has no such file",
        "0 of 1 configured, 1 without a document; no reports wanted",
        "failed: no document after 1 attempt: the TFTP server has no such file",
    ]
    assert is_interleaving(lines, [expected, NO_REPORTS]), lines
    assert code == 1


def test_query_is_dropped_and_the_phone_says_so(program, tftp):
    code, lines = run(program, tftp.url, "good.json?model=K30&page=1")
    note = "TFTP has no queries, so this is dropped: ?model=K30&page=1"
    expected = [GOOD_RUN[0], note, *GOOD_RUN[1:]]
    assert is_interleaving(lines, [expected, NO_REPORTS]), lines
    assert code == 0


def test_document_over_the_limit(program, tftp):
    code, lines = run(program, tftp.url, "good.json", "--limit", "1766")
    error = "the answer is larger than the limit of 1766 bytes (--limit)"
    assert f"fetch, attempt 1: SERVER/good.json: {error}" in lines
    assert lines[-1] == f"failed: no document after 1 attempt: {error}"
    assert code == 1


def test_empty_document(program, tftp):
    code, lines = run(program, tftp.url, "empty.json")
    assert "fetch, attempt 1: SERVER/empty.json: status 200, 0 bytes, # ms" in lines
    assert lines[-1].startswith("failed: 1 of 1 accessories could not use the document: ")
    assert code == 1


def blocks_then_silence(blocks):
    """What answers with the first blocks of a document, if any, and then no more."""
    packets = (b"\0\3" + number.to_bytes(2, "big") + b" " * 512 for number in range(1, blocks + 1))
    return lambda request: next(packets, None)


@pytest.mark.parametrize(
    ("blocks", "words"), [(0, "no answer for # s"), (1, "not complete after # s")]
)
def test_server_that_falls_silent_is_left_before_the_time_limit(program, blocks, words):
    with TftpServer(blocks_then_silence(blocks)) as server:
        code, lines = run(program, server.url, "good.json", "--stall", "1")
    lines = [re.sub(r"\d+(\.\d)? s$", "# s", line) for line in lines]
    expected = [
        "attached desk: Varos K30, firmware 2-1-0",
        f"fetch, attempt 1: SERVER/good.json: {words}",
        "0 of 1 configured, 1 without a document; no reports wanted",
        f"failed: no document after 1 attempt: {words}",
    ]
    assert is_interleaving(lines, [expected, NO_REPORTS]), lines
    assert code == 1


def test_no_server_is_a_failure_after_the_time_limit(program, documents, tmp_path):
    with Atftpd(documents, tmp_path) as server:
        url = server.url
    code, lines = run(program, url, "good.json", "--timeout", "2")
    fetches = [line for line in lines if line.startswith("fetch, ")]
    assert len(fetches) == 1
    assert "status" not in fetches[0]
    assert lines[-1].startswith("failed: no document after 1 attempt: ")
    assert code == 1
