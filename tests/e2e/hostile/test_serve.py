# SPDX-License-Identifier: Apache-2.0
"""`headsetmgmt serve` against clients that mean it harm, and such as are only unusual."""

import json
import pathlib
import re
import resource
import time

import pytest

from hostile.clients import (
    HOLDERS,
    MALFORMED,
    PROPER,
    ask,
    connect,
    flood,
    holders,
    read_to_end,
    statuses,
    wait_for_continue,
)
from servers import Serve

GOOD = b"GET /good.json HTTP/1.1\r\nHost: x\r\n\r\n"


@pytest.fixture(scope="module")
def folder(tmp_path_factory, documents):
    """The documents, and one that no socket holds whole."""
    folder = tmp_path_factory.mktemp("documents")
    (folder / "good.json").write_bytes((documents / "good.json").read_bytes())
    with open(folder / "big.bin", "wb") as big:
        big.truncate(64 * 1024 * 1024)
    return folder


@pytest.fixture(scope="module")
def server(program, folder, tmp_path_factory):
    """One server for all requests: it must outlive each of them."""
    with Serve(program, folder, tmp_path_factory.mktemp("serve")) as server:
        yield server
        assert server.stop() == 0


@pytest.mark.parametrize("name", MALFORMED)
def test_malformed_request_is_refused_once_and_the_server_goes_on(name, server):
    status, request = MALFORMED[name]
    answer = ask(server.port, request)
    assert statuses(answer) == [status]
    assert json.loads(answer.split(b"\r\n\r\n", 1)[1])["error"] != ""
    assert statuses(ask(server.port, GOOD)) == [200]


@pytest.mark.parametrize("name", PROPER)
def test_unusual_request_is_served(name, server):
    status, request = PROPER[name]
    assert statuses(ask(server.port, request)) == [status]


@pytest.mark.parametrize(
    "expectation", [b"100-continue", b"100-continue, other", b"other,100-Continue"]
)
def test_client_that_waits_with_its_body_is_asked_for_it(expectation, server):
    first, second = wait_for_continue(server.port, expectation)
    assert first == b"HTTP/1.1 100 Continue\r\n\r\n"
    assert statuses(second) == [204]


def test_refusal_by_the_header_is_an_event(program, folder, tmp_path):
    with Serve(program, folder, tmp_path) as server:
        answer = ask(server.port, b"HEAD /a?b HTTP/1.1\r\nHost: x\r\nHost: x\r\n\r\n")
        assert statuses(answer) == [400]
        assert answer.endswith(b"\r\n\r\n")
        assert server.stop() == 0
    (event,) = server.events("request")
    assert event["client"].startswith("127.0.0.1:")
    del event["client"]
    assert event == {
        "format": 1,
        "event": "request",
        "method": "HEAD",
        "path": "/a?b",
        "status": 400,
        "bytes": 0,
        "message": "the header has more than one Host",
    }
    assert server.events("stopped")[0]["requests"] == 1


@pytest.mark.parametrize("name", HOLDERS)
def test_clients_that_hold_all_connections_make_room(name, program, folder, tmp_path):
    with Serve(program, folder, tmp_path) as server:
        with holders(server.port, name):
            assert statuses(ask(server.port, GOOD, address="127.0.0.3")) == [200]
        assert server.stop() == 0
    ended = [
        event
        for event in server.events("connection") + server.events("request")
        if event.get("error", "").endswith(
            "it was the slowest of 64 connections, and another client waited"
        )
    ]
    assert len(ended) >= 1


def limit_memory(process, more):
    """From here on the process gets so many bytes of address space at most."""
    status = pathlib.Path(f"/proc/{process.pid}/status").read_text()
    size = int(re.search(r"VmSize:\s+(\d+) kB", status).group(1)) * 1024 + more
    _, hard = resource.prlimit(process.pid, resource.RLIMIT_AS)
    resource.prlimit(process.pid, resource.RLIMIT_AS, (size, hard))


def test_report_of_many_arrays_takes_little_memory(program, folder, tmp_path):
    with Serve(program, folder, tmp_path) as server:
        ask(server.port, GOOD)
        limit_memory(server.process, 48 * 1024 * 1024)
        assert statuses(ask(server.port, MALFORMED["many-arrays"][1])) == [400]
        assert statuses(ask(server.port, GOOD)) == [200]
        assert server.stop() == 0


def test_flood_of_connections_is_a_line_a_second(program, folder, tmp_path):
    begin = time.monotonic()
    with Serve(program, folder, tmp_path) as server:
        flood(server.port, 200)
        assert server.stop() == 0
    seconds = time.monotonic() - begin
    refused = [event for event in server.events("connection") if "count" in event]
    assert sum(event["count"] for event in refused) == 200
    # One at once, and one at the end.
    assert len(refused) <= 2 + seconds


def test_server_without_descriptors_goes_on_when_it_has_some(program, folder, tmp_path):
    with Serve(program, folder, tmp_path) as server:
        soft, hard = resource.prlimit(server.process.pid, resource.RLIMIT_NOFILE)
        # No more than it has open.
        resource.prlimit(server.process.pid, resource.RLIMIT_NOFILE, (3, hard))
        with connect(server.port, text=GOOD) as client:
            # The system has taken the connection; the server cannot.
            resource.prlimit(server.process.pid, resource.RLIMIT_NOFILE, (soft, hard))
            assert statuses(read_to_end(client)) == [200]
        assert server.stop() == 0
