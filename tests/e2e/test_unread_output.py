# SPDX-License-Identifier: Apache-2.0
"""Output that nobody reads, as with a stopped pager: no request waits for it, signals end the
program, and what is lost is counted."""

import contextlib
import http.client
import json
import os
import signal
import subprocess
import time

import pytest

from events import parsed
from servers import PATIENCE, Scripted, Serve, wait_until
from test_large_documents import arguments_for, write_document

SOON = 5  # seconds from the first signal to the end
LARGE_TEXT = "\x7f" * 1000000  # six times as long in an event


class Pipe:
    """The standard output of a process, read when the test wants it."""

    def __init__(self):
        self.reading_end, self.writing_end = os.pipe()
        self.filled = 0

    def fill(self):
        os.set_blocking(self.writing_end, False)
        with contextlib.suppress(BlockingIOError):
            while True:
                self.filled += os.write(self.writing_end, b"." * 4096)
        os.set_blocking(self.writing_end, True)

    def read_line(self):
        line = b""
        while not line.endswith(b"\n"):
            line += os.read(self.reading_end, 1)
        return line.decode("ascii").rstrip("\n")

    def read_lines(self):
        """All that is left, until the process has ended."""
        with open(self.reading_end, "rb", closefd=False) as pipe:
            return pipe.read()[self.filled :].decode("ascii").splitlines()

    @contextlib.contextmanager
    def running(self, command, errors=subprocess.PIPE):
        """A process, the only one that writes to the pipe."""
        process = subprocess.Popen(
            command,
            stdin=subprocess.DEVNULL,
            stdout=self.writing_end,
            stderr=errors,
            encoding="utf-8",
        )
        os.close(self.writing_end)
        self.writing_end = -1
        try:
            yield process
        finally:
            process.kill()
            process.wait()
            if process.stderr:
                process.stderr.close()

    def __enter__(self):
        return self

    def __exit__(self, *failure):
        os.close(self.reading_end)
        if self.writing_end != -1:
            os.close(self.writing_end)


def phone_command(program, benches, url):
    command = [program, "phone", "--json", "--bench", benches / "headset-with-dock.json"]
    return [*command, "--config-url", f"{url}/config.json", "--inventory-url", f"{url}/inventory"]


def serve_command(program, documents):
    return [program, "serve", "--json", "--port", "0", "--documents", documents]


def end_with(process, number):
    """How long it takes to end after a signal."""
    begin = time.monotonic()
    process.send_signal(number)
    process.wait(PATIENCE)
    return time.monotonic() - begin


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=["term", "int"])
def test_phone_whose_output_nobody_reads(number, program, benches, documents):
    answers = [[{"document": "good.json"}]]
    with Scripted(documents, answers, [["stall"]]) as server, Pipe() as pipe:
        pipe.fill()
        with pipe.running(phone_command(program, benches, server.url)) as process:
            wait_until(lambda: "POST /inventory" in server.requests, "a report")
            duration = end_with(process, number)
            errors = process.stderr.read()
    assert server.requests == ["GET /config.json", "POST /inventory"]
    assert errors.startswith("headsetmgmt: lost: ")
    assert errors.endswith(" lines of output, for nobody read them\n")
    assert process.returncode == 1
    assert duration < SOON


def test_phone_waits_for_a_reader_who_begins_at_the_end(program, benches, documents):
    with Scripted(documents, [[{"document": "good.json"}]]) as server, Pipe() as pipe:
        pipe.fill()
        with pipe.running(phone_command(program, benches, server.url)) as process:
            wait_until(lambda: "POST /inventory" in server.requests, "a report")
            lines = pipe.read_lines()
            code = process.wait(PATIENCE)
            errors = process.stderr.read()
    events = [parsed("phone", line)["event"] for line in lines]
    assert (events[0], events[-1]) == ("attached", "result")
    assert "lost" not in events
    assert errors == ""
    assert code == 0


def test_phone_without_a_signal_waits_once_for_its_reader(program, benches, documents):
    with Scripted(documents, [[{"document": "good.json"}]]) as server, Pipe() as pipe:
        pipe.fill()
        command = phone_command(program, benches, server.url)
        with pipe.running(command) as process:
            wait_until(lambda: "POST /inventory" in server.requests, "a report")
            begin = time.monotonic()
            process.wait(PATIENCE)
            duration = time.monotonic() - begin
            errors = process.stderr.read()
    assert errors.startswith("headsetmgmt: lost: ")
    assert process.returncode == 1
    assert duration < 2 * SOON - 1  # 5 s


def test_phone_and_standard_error_that_nobody_reads(program, benches, documents):
    answers = [[{"document": "good.json"}]]
    with Scripted(documents, answers, [["stall"]]) as server, Pipe() as pipe, Pipe() as errors:
        pipe.fill()
        errors.fill()
        command = phone_command(program, benches, server.url)
        with pipe.running(command, errors.writing_end) as process:
            wait_until(lambda: "POST /inventory" in server.requests, "a report")
            duration = end_with(process, signal.SIGTERM)
    assert process.returncode == 1
    assert duration < SOON


def test_last_line_is_written_however_much_is_lost(program, tmp_path):
    write_document(tmp_path, '{"name": "Sidetone"}')
    with Serve(program, tmp_path, tmp_path) as server, Pipe() as pipe:
        command = [program, "phone", "--json", "--verbose", *arguments_for(server, 1)]
        command += ["--inventory-url", f"{server.url}/inventory"]
        with pipe.running(command) as process:
            wait_until(lambda: server.events("report"), "a report")
            events = [parsed("phone", line) for line in pipe.read_lines()]
            code = process.wait(PATIENCE)
    assert sum(event["lines"] for event in events if event["event"] == "lost") > 0
    assert events[-1]["event"] == "result"
    assert code == 1


def test_second_signal_ends_at_once(program, benches, documents):
    answers = [[{"document": "good.json"}]]
    with Scripted(documents, answers, [["stall"]]) as server, Pipe() as pipe:
        pipe.fill()
        with pipe.running(phone_command(program, benches, server.url)) as process:
            wait_until(lambda: "POST /inventory" in server.requests, "a report")
            # Two that arrive together are one.
            while process.poll() is None:
                process.send_signal(signal.SIGTERM)
                time.sleep(0.02)
            errors = process.stderr.read()
    assert process.returncode == -signal.SIGTERM
    assert errors == ""


def report_with(text):
    headset = {"serialNumber": "1", "model": "M", "firmwareVersion": "1", "vendor": text}
    value = {"host": {"userId": "u"}, "headset": headset}
    return json.dumps({"time": 1, "key": "headsetInventory", "value": value}, ensure_ascii=False)


def post(port, body):
    connection = http.client.HTTPConnection("127.0.0.1", port, timeout=PATIENCE)
    with contextlib.closing(connection):
        connection.request("POST", "/inventory", body)
        return connection.getresponse().status


def test_server_answers_while_nobody_reads_its_output(program, documents):
    count = 5
    with Pipe() as pipe, pipe.running(serve_command(program, documents)) as process:
        port = parsed("serve", pipe.read_line())["port"]
        statuses = [post(port, report_with(LARGE_TEXT)) for _ in range(count)]
        # The events that are left are read, so what was lost is known.
        process.send_signal(signal.SIGTERM)
        events = [parsed("serve", line) for line in pipe.read_lines()]
        code = process.wait(PATIENCE)
        errors = process.stderr.read()
    kinds = [event["event"] for event in events]
    lost = sum(event["lines"] for event in events if event["event"] == "lost")
    assert statuses == [204] * count
    assert lost > 0
    assert kinds.count("report") + kinds.count("request") + lost == 2 * count
    assert events[-1] == {"format": 1, "event": "stopped", "requests": count, "reports": count}
    plural = "line" if lost == 1 else "lines"
    assert errors == f"headsetmgmt: lost: {lost} {plural} of output, for nobody read them\n"
    assert code == 1


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT], ids=["term", "int"])
def test_server_whose_output_nobody_reads_ends(number, program, documents):
    with Pipe() as pipe, pipe.running(serve_command(program, documents)) as process:
        port = parsed("serve", pipe.read_line())["port"]
        assert post(port, report_with(LARGE_TEXT)) == 204
        duration = end_with(process, number)
        errors = process.stderr.read()
    assert errors == "headsetmgmt: lost: 3 lines of output, for nobody read them\n"
    assert process.returncode == 1
    assert duration < SOON
