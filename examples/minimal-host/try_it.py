#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Shows the library at work: a real server, the minimal host, and what passed between them.

Usage: try_it.py MINIMAL-HOST

Starts a server on a free port of this machine, runs the host program against it, reports what
happened, and checks it. Exit code: 0 when everything happened, 1 when anything is missing.
"""

import json
import os
import pathlib
import re
import subprocess
import sys
import threading
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer

DOCUMENT = pathlib.Path(__file__).resolve().parent.parent / "documents/defaultheadsetconfig.json"
DOCUMENT_PATH = "/defaultheadsetconfig.json"
INVENTORY_PATH = "/inventory"
LARGEST_REPORT = 1024 * 1024  # bytes
HOST_TIME_OUT = 90  # seconds; the host itself gives up each of its four waits after 15

# What the host must do for each accessory, in this order.
EXPECTED = {
    "desk-headset": [
        "set desk-headset: Sidetone (34) = medium",
        "set desk-headset: Equalizer (35) = warm",
        "set desk-headset: Audio Bandwidth (36) = 2",
        "set desk-headset: Bluetooth (39) = off",
        "upgrade desk-headset to 2-1-0 with varos-k30-2-1-0.img",
    ],
    "wireless-headset": [
        "set wireless-headset: Sidetone (34) = medium",
        "set wireless-headset: Equalizer (35) = warm",
        "set wireless-headset: Audio Bandwidth (36) = 2",
        "set wireless-headset: Bluetooth (39) = off",
    ],
}


class Server(ThreadingHTTPServer):
    """Serves the document, takes reports, and keeps a record of every request."""

    def __init__(self):
        super().__init__(("127.0.0.1", 0), Handler)
        self.document = DOCUMENT.read_bytes()
        self.lock = threading.Lock()
        self.record = []

    def url(self, path):
        return f"http://127.0.0.1:{self.server_address[1]}{path}"


class Handler(BaseHTTPRequestHandler):
    """Answers one request."""

    timeout = 10  # seconds

    def do_GET(self):
        if self.path == DOCUMENT_PATH:
            self.answer(200, self.server.document)
        else:
            self.answer(404)

    def do_POST(self):
        length = self.headers.get("Content-Length", "")
        if self.path != INVENTORY_PATH:
            self.answer(404)
        elif not length.isdecimal() or int(length) > LARGEST_REPORT:
            self.answer(413)
        else:
            self.answer(200, report=self.rfile.read(int(length)))

    def answer(self, status, body=b"", report=b""):
        entry = {
            "method": self.command,
            "path": self.path,
            "status": status,
            "type": self.headers.get("Content-Type"),
            "sent": len(body),
            "report": report,
        }
        # Recorded before the host can know of the answer, so that nothing is missing at its end.
        with self.server.lock:
            self.server.record.append(entry)
        self.send_response(status)
        self.send_header("Content-Type", "application/json")
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def log_message(self, format, *args):
        """The story reports requests itself."""


def run_host(program, server):
    """The host's exit code (None when it had to be stopped), standard output and log."""
    command = [program, server.url(DOCUMENT_PATH), server.url(INVENTORY_PATH)]
    environment = dict(os.environ, NO_PROXY="127.0.0.1", no_proxy="127.0.0.1")
    with subprocess.Popen(
        command,
        env=environment,
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        encoding="utf-8",
        errors="replace",
    ) as host:
        try:
            output, log = host.communicate(timeout=HOST_TIME_OUT)
            return host.returncode, output, log
        except subprocess.TimeoutExpired:
            host.kill()
            output, log = host.communicate()
            return None, output, log


def deeds_by_accessory(output):
    """What the host says it did, as a list of lines for each accessory that it attached."""
    deeds = {}
    current = None
    for line in output.splitlines():
        attached = re.fullmatch(r"attach (\S+)", line)
        if attached:
            current = deeds.setdefault(attached[1], [])
        elif current is not None and line.startswith("  "):
            current.append(line.strip())
    return deeds


def show_run(deeds, record):
    """Prints the story: what was fetched, set, decided and reported, accessory by accessory."""
    fetches = [entry for entry in record if entry["method"] == "GET"]
    reports = [entry for entry in record if entry["method"] == "POST"]
    for index, (accessory, lines) in enumerate(deeds.items()):
        print(f"\n== {accessory} is attached ==")
        if index < len(fetches):
            fetch = fetches[index]
            print(
                f"The server was asked for {fetch['path']}, and answered {fetch['status']}"
                f" with {fetch['sent']} bytes."
            )
        settings = [line for line in lines if line.startswith("set ")]
        print(f"The library applied {len(settings)} settings:")
        for line in settings:
            print(f"  {line.split(': ', 1)[1]}")
        upgrades = [line for line in lines if line.startswith("upgrade ")]
        for line in upgrades:
            print(f"Firmware: {line}")
        if not upgrades:
            print("Firmware: stays as it is")
        if index < len(reports):
            print("The server received this report:")
            print(indented(reports[index]["report"]))


def indented(report):
    try:
        text = json.dumps(json.loads(report), indent=2)
    except ValueError:
        text = report.decode("utf-8", errors="replace")
    return "\n".join("  " + line for line in text.splitlines())


def member(tree, *keys):
    """The member of nested objects; None when there is none."""
    for key in keys:
        tree = tree.get(key) if isinstance(tree, dict) else None
    return tree


def missing_in_record(record):
    """What the server's own record lacks, in words."""
    fetches = [e for e in record if e["method"] == "GET"]
    reports = [e for e in record if e["method"] == "POST"]
    missing = []
    if [(e["path"], e["status"]) for e in fetches] != [(DOCUMENT_PATH, 200)] * 2:
        missing.append("the document was to be fetched twice")
    if [(e["path"], e["status"]) for e in reports] != [(INVENTORY_PATH, 200)] * 2:
        missing.append("two reports were to be posted")
    for accessory, entry in zip(EXPECTED, reports):
        missing += missing_in_report(accessory, entry)
    return missing


def missing_in_report(accessory, entry):
    missing = []
    if entry["type"] != "application/json":
        missing.append(f"the type of the report of {accessory} is {entry['type']}")
    try:
        report = json.loads(entry["report"])
    except ValueError:
        return missing + [f"the report of {accessory} is not JSON"]
    docked = accessory == "desk-headset"
    facts = {
        "its key": member(report, "key") == "headsetInventory",
        "its time": isinstance(member(report, "time"), int),
        "the phone": member(report, "value", "host", "serialNumber") == "PH0012345",
        "the user": member(report, "value", "host", "userId") == "user-17",
        "the dock": member(report, "value", "dock")
        == ({"serialNumber": "DK7781", "model": "Varos Dock 3"} if docked else None),
        "the model": member(report, "value", "headset", "model")
        == ("Varos K20" if docked else "Varos K30"),
        "the serial number": member(report, "value", "headset", "serialNumber")
        == ("ABCDEFG4123" if docked else "HIJKLMN7456"),
        "the connection": member(report, "value", "headset", "connectionStatus") == "connected",
    }
    wrong = [fact for fact, right in facts.items() if not right]
    return missing + [f"the report of {accessory} is wrong about {fact}" for fact in wrong]


def missing_in_run(code, deeds):
    """What the host's exit code and output lack, in words."""
    missing = []
    if code is None:
        missing.append(f"the host did not end within {HOST_TIME_OUT} seconds")
    elif code != 0:
        missing.append(f"the host ended with code {code}")
    for accessory, expected in EXPECTED.items():
        done = [d for d in deeds.get(accessory, []) if d.startswith(("set ", "upgrade "))]
        missing += [f"not done: {deed}" for deed in expected if deed not in done]
        missing += [f"not wanted: {deed}" for deed in done if deed not in expected]
        if sorted(done) == sorted(expected) and done != expected:
            missing.append(f"the order for {accessory} is wrong")
        if len(done) != len(set(done)):
            missing.append(f"something was done twice for {accessory}")
    return missing


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 1
    server = Server()
    thread = threading.Thread(target=server.serve_forever)
    thread.start()
    try:
        print(f"A configuration server listens at {server.url('/')}")
        code, output, log = run_host(sys.argv[1], server)
    except OSError as error:
        print(f"FAILED: {sys.argv[1]} cannot be run: {error.strerror}")
        return 1
    finally:
        server.shutdown()
        thread.join()
        server.server_close()

    deeds = deeds_by_accessory(output)
    show_run(deeds, server.record)
    missing = missing_in_run(code, deeds) + missing_in_record(server.record)
    if missing:
        print("\nWhat the host printed:\n" + output + "\nWhat the library logged:\n" + log)
        print("FAILED: " + "; ".join(missing))
        return 1
    print("\nOK: both headsets were configured and reported, and the server has it on record.")
    return 0


if __name__ == "__main__":
    sys.exit(main())
