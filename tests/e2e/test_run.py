# SPDX-License-Identifier: Apache-2.0
"""Runs that are more than one file can say: servers that come up late, signals, JSON lines, and the
library's own log."""

import json
import pathlib
import signal
import socket
import time

import pytest

from phone import Phone, comparable, is_interleaving
from servers import PATIENCE, Scripted, Serve, wait_until

TRANSCRIPT = pathlib.Path(__file__).resolve().parent / "transcripts/good-document.json"


def arguments_for(benches, url, document):
    arguments = ["--bench", benches / "headset-with-dock.json"]
    arguments += ["--config-url", f"{url}/{document}", "--inventory-url", f"{url}/inventory"]
    return arguments


def test_server_down_then_up(program, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        assert server.stop() == 0
    # Without a version of its own the library would wait a minute for one.
    accessory = "id=desk,type=headset,vendorId=61525,model=Varos K30,softwareVersion=2-1-0"
    arguments = ["--accessory", accessory, "--config-url", f"{server.url}/good.json"]
    with Phone(program, arguments) as phone:
        phone.wait_for_line("next attempt (2) in ")
        with Serve(program, documents, tmp_path, port=server.port) as server:
            code = phone.finish()
            assert server.stop() == 0
    lines = [comparable(line, server.url) for line in phone.lines]
    fetches = [line for line in lines if line.startswith("fetch, ")]
    assert fetches[0].startswith("fetch, attempt 1: SERVER/good.json: Failed to connect ")
    assert fetches[-1].endswith(": SERVER/good.json: status 200, 1767 bytes, # ms")
    assert "document taken by 1, failed for 0" in lines
    assert server.requests == ["GET /good.json 200"]
    assert code == 0


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=["term", "int"])
@pytest.mark.parametrize(
    "answer",
    [["stall"], ["HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n{", "stall"]],
    ids=["before-the-header", "in-the-document"],
)
def test_stopped_in_the_middle_of_a_fetch(number, answer, program, benches, documents, slowness):
    with Scripted(documents, [answer]) as server:
        with Phone(program, arguments_for(benches, server.url, "config.json")) as phone:
            server.wait_for_request()
            begin = time.monotonic()
            phone.signal(number)
            code = phone.finish()
            duration = time.monotonic() - begin
    assert [comparable(line, server.url) for line in phone.lines] == [
        "attached desk-headset: Varos K30, firmware 2-0-4",
        "fetch, attempt 1: SERVER/config.json: interrupted",
        "0 of 1 configured, 1 without a document; 0 of 1 reports accepted, 1 without an answer",
        "failed: interrupted during attempt 1",
    ]
    assert phone.errors == []
    assert code == 1
    assert duration < 1 * slowness


def test_stopped_while_it_waits_for_the_next_attempt(
    program, benches, documents, tmp_path, slowness
):
    with Serve(program, documents, tmp_path) as server:
        with Phone(program, arguments_for(benches, server.url, "missing.json")) as phone:
            phone.wait_for_line("next attempt (3) in ")
            begin = time.monotonic()
            phone.signal(signal.SIGTERM)
            code = phone.finish()
            duration = time.monotonic() - begin
    assert phone.lines[-2:] == [
        "0 of 1 configured, 1 without a document; 1 of 1 reports accepted",
        "failed: interrupted while waiting for attempt 3; the last: status 404",
    ]
    assert code == 1
    assert duration < 1 * slowness


@pytest.mark.parametrize(
    ("members", "attached", "missing"),
    [
        ("model=Varos K30", "Varos K30, firmware unknown", "softwareVersion"),
        ("softwareVersion=2-1-0", "model unknown, firmware 2-1-0", "model"),
        ("serialNumber=A1", "model unknown, firmware unknown", "softwareVersion, model"),
    ],
)
def test_fetch_that_the_library_holds_back_is_announced(
    members, attached, missing, program, documents
):
    with Scripted(documents, [["stall"]]) as server:
        arguments = ["--accessory", f"id=desk,type=headset,vendorId=61525,{members}"]
        with Phone(program, [*arguments, "--config-url", f"{server.url}/config.json"]) as phone:
            phone.wait_for_line("no inventory URL: ")
            phone.signal(signal.SIGTERM)
            code = phone.finish()
    assert phone.lines == [
        f"attached desk: {attached}",
        "the document is fetched in 60 s: until then the library waits for values that the"
        f" bench lacks for desk: {missing}",
        "no inventory URL: no reports are sent",
        "0 of 1 configured, 1 without a document; no reports wanted",
        "failed: interrupted before the library asked for a document",
    ]
    assert server.requests == []
    assert code == 1


def test_fetch_that_is_under_way_already_is_not_announced(program, documents):
    first = "id=desk,type=headset,vendorId=61525,model=Varos K30,softwareVersion=2-1-0"
    second = "id=other,type=headset,vendorId=61525"
    with Scripted(documents, [["stall"]]) as server:
        arguments = ["--accessory", first, "--accessory", second]
        with Phone(program, [*arguments, "--config-url", f"{server.url}/config.json"]) as phone:
            server.wait_for_request()
            phone.wait_for_line("no inventory URL: ")
            phone.signal(signal.SIGTERM)
            phone.finish()
    assert phone.lines[:3] == [
        "attached desk: Varos K30, firmware 2-1-0",
        "attached other: model unknown, firmware unknown",
        "no inventory URL: no reports are sent",
    ]


def test_stopped_while_a_report_is_on_its_way(program, benches, documents):
    with Scripted(documents, [[{"document": "good.json"}]], [["stall"]]) as server:
        with Phone(program, arguments_for(benches, server.url, "config.json")) as phone:
            wait_until(lambda: "POST /inventory" in server.requests, "a report")
            phone.signal(signal.SIGTERM)
            code = phone.finish()
    assert "report to SERVER/inventory: not accepted: interrupted" in [
        comparable(line, server.url) for line in phone.lines
    ]
    assert phone.lines[-2:] == [
        "1 of 1 configured; 0 of 1 reports accepted, 1 without an answer",
        "failed: interrupted while a report was on its way",
    ]
    assert code == 1


def test_json_lines_of_a_good_run(program, benches, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        arguments = arguments_for(benches, server.url, "good.json")
        with Phone(program, [*arguments, "--json", "--verbose"]) as phone:
            code = phone.finish()
    events = phone.events()
    for event in events:
        if "milliseconds" in event:
            assert isinstance(event.pop("milliseconds"), int)
    url = server.url
    desk = "desk-headset"
    assert [e for e in events if e["event"] != "log"] == [
        {"format": 1, "event": "attached", "id": desk, "model": "Varos K30",
         "softwareVersion": "2-0-4", "dongleModel": "", "dongleVersion": ""},
        {"format": 1, "event": "fetch", "attempt": 1, "url": f"{url}/good.json", "status": 200,
         "bytes": 1767},
        {"format": 1, "event": "setting", "id": desk, "name": "Sidetone", "usageId": 34,
         "value": "medium"},
        {"format": 1, "event": "setting", "id": desk, "name": "Equalizer", "usageId": 35,
         "value": "warm"},
        {"format": 1, "event": "setting", "id": desk, "name": "Audio Bandwidth", "usageId": 36,
         "value": "2"},
        {"format": 1, "event": "setting", "id": desk, "name": "Bluetooth", "usageId": 39,
         "value": "off"},
        {"format": 1, "event": "upgrade", "id": desk, "version": "2-1-0",
         "firmwareName": "varos-k30-2-1-0.img"},
        {"format": 1, "event": "firmware", "model": "Varos K20", "id": desk,
         "decision": "upgrade requested to 2-1-0", "reported": "2-0-4", "wanted": "2-1-0",
         "requested": True},
        {"format": 1, "event": "document", "taken": 1, "failed": 0,
         "entries": [{"model": "Varos K20", "id": desk, "entry": 0, "name": "Varos K20",
                      "line": 10, "column": 13}],
         "served": 1, "settingsKeptBack": 1,
         "keptBack": [{"list": "commonSettings", "name": "Speaker Volume", "access": "User",
                       "line": 5, "column": 13,
                       "accessories": [{"model": "Varos K20", "id": desk}], "keptBy": 1}]},
        {"format": 1, "event": "report", "url": f"{url}/inventory", "bytes": 545,
         "accepted": True, "status": 204},
        {"format": 1, "event": "device", "id": desk, "settings": [
            {"usageId": 34, "name": "Sidetone", "value": "medium"},
            {"usageId": 35, "name": "Equalizer", "value": "warm"},
            {"usageId": 36, "name": "Audio Bandwidth", "value": "2"},
            {"usageId": 39, "name": "Bluetooth", "value": "off"}]},
        {"format": 1, "event": "result", "ok": True, "attached": 1, "configured": 1,
         "notConfigured": 0, "reportsWanted": 1, "reportsAccepted": 1, "reportsFailed": 0},
    ]
    logs = [event for event in events if event["event"] == "log"]
    assert {"format": 1, "event": "log", "text": "stop headset mgmt\n"} in logs
    assert events[-1]["event"] == "result"
    assert phone.errors == []
    assert code == 0


def test_json_lines_of_a_failed_run(program, benches, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        arguments = arguments_for(benches, server.url, "missing.json")
        with Phone(program, [*arguments, "--json", "--give-up-after", "1"]) as phone:
            code = phone.finish()
    assert phone.events()[-1] == {
        "format": 1,
        "event": "result",
        "ok": False,
        "attached": 1,
        "configured": 0,
        "notConfigured": 0,
        "reportsWanted": 1,
        "reportsAccepted": 1,
        "reportsFailed": 0,
        "reason": "no document after 1 attempt: status 404",
        "reasons": ["no document after 1 attempt: status 404"],
    }
    assert phone.errors == []
    assert code == 1


def test_json_lines_of_a_dongle_and_a_camera(program, benches, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        arguments = ["--bench", benches / "dongle-and-camera.json", "--json"]
        arguments += ["--config-url", f"{server.url}/good.json"]
        arguments += ["--inventory-url", f"{server.url}/inventory"]
        with Phone(program, arguments) as phone:
            code = phone.finish()
    firmware = [event for event in phone.events() if event["event"] == "firmware"]
    assert {"format": 1, "event": "firmware", "model": "Varos K30", "id": "wireless-headset",
            "dongleModel": "Varos Link", "decision": "no upgrade required", "reported": "1-3-0",
            "wanted": "1-3-0"} in firmware
    assert code == 0


def test_json_lines_of_an_interrupted_run(program, benches, documents):
    with Scripted(documents, [["stall"]]) as server:
        arguments = arguments_for(benches, server.url, "config.json")
        with Phone(program, [*arguments, "--json"]) as phone:
            server.wait_for_request()
            phone.signal(signal.SIGTERM)
            code = phone.finish()
    result = phone.events()[-1]
    assert (result["event"], result["reason"]) == ("result", "interrupted during attempt 1")
    assert code == 1


def test_whole_transcript_of_a_good_run(program, benches, documents, tmp_path):
    """Every line of the library and of the phone, each thread's in its order."""
    transcript = json.loads(TRANSCRIPT.read_text(encoding="utf-8"))
    with Serve(program, documents, tmp_path) as server:
        arguments = arguments_for(benches, server.url, "good.json")
        with Phone(program, [*arguments, "--verbose"]) as phone:
            code = phone.finish()
    lines = [comparable(line, server.url) for line in phone.lines]
    threads = [transcript["main"], transcript["worker"], transcript["network"]]
    assert sorted(lines) == sorted(line for thread in threads for line in thread)
    assert is_interleaving(lines, threads), "\n".join(lines)
    assert code == 0


def test_verbose_lines_have_their_control_characters_escaped(program, benches, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        arguments = arguments_for(benches, server.url, "control-characters.json")
        with Phone(program, [*arguments, "--verbose"]) as phone:
            assert phone.finish() == 0
    assert (
        "HeadsetConfigImpl: save_config_to_map: 34, key: Side\\x1b[2Jtone\\x0d, value: a\\tb,"
        " access: Admin" in phone.lines
    )
    assert all(character.isprintable() for line in phone.lines for character in line)


def test_report_of_a_phone_without_a_document(program, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        accessory = "id=desk,type=headset,model=K30,serialNumber=A1,softwareVersion=2-1-0"
        arguments = ["--accessory", accessory, "--inventory-url", f"{server.url}/inventory"]
        with Phone(program, arguments) as phone:
            code = phone.finish()
        assert server.stop() == 0
    assert server.requests == ["POST /inventory 204"]
    assert phone.lines[-2:] == [
        "0 of 1 configured, 1 without a document; 1 of 1 reports accepted",
        "failed: no document after 1 attempt: a file name without a server, and there is no TFTP "
        "server to look it up on: give servers.tftp or --tftp-server",
    ]
    assert code == 1


def test_server_of_an_empty_folder_says_so(program, tmp_path):
    folder = tmp_path / "documents"
    folder.mkdir()
    with Serve(program, folder, tmp_path) as server:
        assert server.stop() == 0
        notes = [event["text"] for event in server.events("note")]
    assert notes == ["the documents folder is empty: there is nothing to fetch yet"]


@pytest.mark.parametrize(
    "said, event, error",
    [
        (b"x\r\n\r\n", "connection", "no request: the first line is malformed"),
        (b"GET /goo", "connection", "no request: broken off by the client"),
        (b"GET /good.json HTTP/1.1\r\nHo", "request", "broken off "),
    ],
    ids=["no-request", "half-a-first-line", "half-a-request"],
)
def test_json_lines_of_a_server_that_hears_nonsense(
    said, event, error, program, documents, tmp_path
):
    with Serve(program, documents, tmp_path) as server:
        with socket.create_connection(("127.0.0.1", server.port)) as client:
            client.sendall(said)
        wait_until(lambda: server.events(event), event)
        assert server.events(event)[0]["error"].startswith(error)
        assert server.stop() == 0


def test_server_of_documents_has_nothing_to_note(program, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        assert server.stop() == 0
        assert server.events("note") == []


def test_server_stops_while_a_phone_is_connected(program, benches, documents, tmp_path):
    with Serve(program, documents, tmp_path) as server:
        arguments = arguments_for(benches, server.url, "missing.json")
        with Phone(program, arguments) as phone:
            phone.wait_for_line("next attempt (2) in ")
            assert server.stop() == 0
            phone.wait_for_line("next attempt (3) in ")
            phone.signal(signal.SIGTERM)
            assert phone.finish(PATIENCE) == 1
    assert server.events("stopped")[0]["reports"] == len(server.reports)
