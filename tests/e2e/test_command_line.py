# SPDX-License-Identifier: Apache-2.0
"""Command lines and bench files that are refused: exit code 2, and a message that says what is
wrong."""

import socket
import subprocess

import pytest

from events import parsed
from servers import PATIENCE

# The text of a bench file, and what is said of it. BENCH is the file's path.
WRONG_BENCHES = {
    "syntax-error": (
        '{\n    "phone": {\n    },,\n}\n',
        "BENCH:3:7: expected JSON: syntax error while parsing object key - unexpected ','; expected"
        " string literal\n",
    ),
    "empty-file": ("", "BENCH:1: expected JSON, found an empty file\n"),
    "cut-off": ('{\n"phone": {\n"userId": "u', "BENCH:3:13: expected JSON: "),
    "number-too-large": ('{\n"accessories": 1e999\n}\n', "BENCH:2:16: expected JSON: number overflow parsing '1e999'\n"),
    "no-object": ("[]\n", "BENCH:1: the document: expected an object, found an array of 0"),
    "unknown-member": (
        '{\n    "phone": {},\n    "adresses": {}\n}\n',
        "BENCH:3: member /adresses: not known here; expected one of: accessories, phone, servers,"
        " urls",
    ),
    "unknown-member-of-the-phone": (
        '{\n    "phone": {\n        "serialNumber": "PH1",\n        "colour": "red"\n    }\n}\n',
        "BENCH:4: member /phone/colour: not known here; expected one of: osVersion, serialNumber,"
        " softwareVersion, userId",
    ),
    "text-expected": (
        '{\n    "phone": {\n        "serialNumber": 17\n    }\n}\n',
        "BENCH:3: member /phone/serialNumber: expected a text, found 17",
    ),
    "object-expected": (
        '{\n    "urls": "http://127.0.0.1/"\n}\n',
        'BENCH:2: member /urls: expected an object, found "http://127.0.0.1/"',
    ),
    "array-expected": (
        '{\n    "accessories": {}\n}\n',
        "BENCH:2: member /accessories: expected an array of objects, found an object",
    ),
    "too-many-servers": (
        '{\n    "servers": {\n        "tftp": ["a", "b", "c", "d"]\n    }\n}\n',
        "BENCH:3: member /servers/tftp: expected an array of at most 3 texts, found an array of 4",
    ),
    "empty-server": (
        '{\n    "servers": {\n        "korm": [\n            "a",\n            ""\n        ]\n'
        "    }\n}\n",
        'BENCH:5: member /servers/korm/1: expected the name or address of a server, found ""',
    ),
    "accessory-without-id": (
        '{\n    "accessories": [\n        {"type": "headset"}\n    ]\n}\n',
        'BENCH:3: member /accessories/0: expected a member "id" with a text that is not empty',
    ),
    "accessory-of-unknown-type": (
        '{\n    "accessories": [\n        {\n            "id": "a",\n            "type": "lamp"\n'
        "        }\n    ]\n}\n",
        'BENCH:5: member /accessories/0/type: expected a member "type" with "headset" or "camera",'
        ' found "lamp"\n',
    ),
    "vendor-id-out-of-range": (
        '{\n    "accessories": [\n        {"id": "a", "type": "headset",\n'
        '         "vendorId": 65536}\n    ]\n}\n',
        "BENCH:4: member /accessories/0/vendorId: expected a USB vendor id, 0 to 65535, found"
        " 65536",
    ),
    "duplicate-id": (
        '{\n    "accessories": [\n        {"id": "a", "type": "headset"},\n'
        '        {"id": "b", "type": "camera"},\n        {"id": "a", "type": "camera"}\n    ]\n}\n',
        'BENCH:5: member /accessories/2/id: expected an id of its own, found "a" again',
    ),
    "member-twice": (
        '{\n    "phone": {\n        "userId": "a",\n        "userId": "b"\n    }\n}\n',
        "BENCH:4: member /phone/userId: expected once, found on line 3 already\n",
    ),
    "no-accessory": (
        '{\n    "accessories": []\n}\n',
        'BENCH: no accessory: expected one in "accessories", or give --accessory\n',
    ),
}

# The command line, and what standard error says of it.
HEADSET = ["--accessory", "id=a,type=headset"]
WRONG_COMMAND_LINES = {
    "no-subcommand": ([], "headsetmgmt: no subcommand; expected phone or serve\n"),
    "unknown-subcommand": (
        ["phoen"],
        'headsetmgmt: no subcommand "phoen"; expected phone or serve\n',
    ),
    "option-without-a-subcommand": (
        ["--bogus"],
        "headsetmgmt: no subcommand; expected phone or serve\n",
    ),
    "unknown-option": (
        ["phone", "--nope"],
        "headsetmgmt phone: The following argument was not expected: --nope\n",
    ),
    "option-for-a-url": (
        ["phone", *HEADSET, "--config-url", "--verbose"],
        'headsetmgmt phone: --config-url: expected a URL, found the option "--verbose"\n',
    ),
    "option-for-a-port": (
        ["serve", "--port", "--documents", "/"],
        'headsetmgmt serve: --port: expected a port, found the option "--documents"\n',
    ),
    "empty-bench": (["phone", "--bench", ""], '--bench: expected a file, found ""\n'),
    "empty-server": (
        ["phone", *HEADSET, "--tftp-server", ""],
        '--tftp-server: expected a host name or an IP address, found ""\n',
    ),
    "no-such-bench": (["phone", "--bench", "/no/such/file"], "/no/such/file: cannot be read: "),
    "bench-is-a-folder": (["phone", "--bench", "/"], "/: cannot be read: Is a directory"),
    "no-bench": (["phone"], "no accessory: give --bench a file"),
    "accessory-without-id": (["phone", "--accessory", "type=headset"], '"id"'),
    "accessory-without-value": (["phone", "--accessory", "id"], "expected NAME=VALUE"),
    "accessory-with-unknown-member": (
        ["phone", "--accessory", "id=a,type=headset,size=3"],
        'headsetmgmt phone: --accessory "id=a,type=headset,size=3": size: not known here; expected'
        " one of: connectionStatus, ",
    ),
    "accessory-twice": (
        ["phone", *HEADSET, "--accessory", "id=a,type=camera"],
        '--accessory "id=a,type=camera": id: expected an id of its own, found "a" again\n',
    ),
    "negative-attempts": (["phone", *HEADSET, "--give-up-after", "-1"], "--give-up-after"),
    "attempts-no-number": (
        ["phone", *HEADSET, "--give-up-after", "1.5"],
        'headsetmgmt phone: --give-up-after: expected a whole number, 0 to 1000000, found "1.5"\n',
    ),
    "limit-with-a-unit": (
        ["phone", *HEADSET, "--limit", "4M"],
        "headsetmgmt phone: --limit: expected a whole number of bytes, 1 to 1073741824, found"
        ' "4M"\n',
    ),
    "no-timeout": (
        ["phone", *HEADSET, "--timeout", "0"],
        "headsetmgmt phone: --timeout: expected a number of seconds, 0.001 to 86400, found"
        ' "0"\n',
    ),
    "no-stall": (
        ["phone", *HEADSET, "--stall", "0"],
        "headsetmgmt phone: --stall: expected a whole number of seconds, 1 to 86400, found"
        ' "0"\n',
    ),
    "no-such-ca-file": (
        ["phone", *HEADSET, "--ca-file", "/no/such/file"],
        'headsetmgmt phone: --ca-file "/no/such/file": cannot be read: No such file or directory\n',
    ),
    "config-url-of-another-protocol": (
        ["phone", *HEADSET, "--config-url", "file:///etc/passwd"],
        'headsetmgmt phone: config URL "file:///etc/passwd": expected a URL of http, https, tftp,'
        ' found "file://"\n',
    ),
    "inventory-url-of-another-protocol": (
        ["phone", *HEADSET, "--inventory-url", "tftp://127.0.0.1/inventory"],
        'headsetmgmt phone: inventory URL "tftp://127.0.0.1/inventory": expected a URL of http,'
        ' https, found "tftp://"\n',
    ),
    "placeholder-without-a-server": (
        ["phone", *HEADSET, "--config-url", "http://{tftp}/x.json"],
        'headsetmgmt phone: config URL "http://{tftp}/x.json": {tftp} has no server to stand for:'
        " give servers.tftp or --tftp-server\n",
    ),
    "server-with-a-port": (
        ["phone", *HEADSET, "--config-url", "http://{tftp}/x.json", "--tftp-server", "h:18080"],
        'headsetmgmt phone: TFTP server "h:18080": no port here; write it into the config URL:'
        " http://{tftp}:18080/x.json\n",
    ),
    "control-character-in-a-url": (
        ["phone", *HEADSET, "--config-url", "http://h/\x1b[2J"],
        'headsetmgmt phone: config URL "http://h/\\x1b[2J": "\\x1b" cannot stand in a URL; write'
        " %1B\n",
    ),
    "four-tftp-servers": (["phone", *HEADSET, "--tftp-server", "a", "b", "c", "d"], "--tftp-server"),
    "serve-without-port": (["serve", "--documents", "/"], "--port"),
    "serve-without-documents": (["serve", "--port", "0"], "--documents"),
    "serve-port-out-of-range": (
        ["serve", "--port", "65536", "--documents", "/"],
        'headsetmgmt serve: --port: expected a port, 0 to 65535, found "65536"\n',
    ),
    "serve-no-such-folder": (["serve", "--port", "0", "--documents", "/no/such"], '"/no/such"'),
    "serve-no-address": (
        ["serve", "--port", "0", "--documents", "/", "--address", "nowhere"],
        '"nowhere" is no IPv4 or IPv6 address',
    ),
}

EXIT_CODES = """\
Exit codes:
  0  everything that was asked for happened
  1  something did not; the last line or standard error says what
  2  the command line, or a file, folder, URL or address that it names, is wrong
"""


def run(program, *arguments):
    return subprocess.run(
        [program, *arguments],
        stdin=subprocess.DEVNULL,
        capture_output=True,
        encoding="utf-8",
        timeout=PATIENCE,
    )


@pytest.mark.parametrize("name", WRONG_BENCHES)
def test_wrong_bench_file(name, program, tmp_path):
    text, said = WRONG_BENCHES[name]
    bench = tmp_path / "bench.json"
    bench.write_text(text, encoding="utf-8")
    result = run(program, "phone", "--bench", bench)
    assert result.stderr.startswith("headsetmgmt phone: " + said.replace("BENCH", str(bench)))
    assert result.stderr.count("\n") == 1
    assert result.stdout == ""
    assert result.returncode == 2


def test_wrong_bench_file_with_json(program, tmp_path):
    bench = tmp_path / "bench.json"
    bench.write_text("[]", encoding="utf-8")
    result = run(program, "phone", "--bench", bench, "--json")
    assert parsed("phone", result.stdout) == {
        "format": 1,
        "event": "error",
        "message": f"{bench}:1: the document: expected an object, found an array of 0",
    }
    assert result.stderr == ""
    assert result.returncode == 2


def test_wrong_url_with_json(program):
    result = run(program, "phone", *HEADSET, "--config-url", "http://:80/x", "--json")
    assert parsed("phone", result.stdout) == {
        "format": 1,
        "event": "error",
        "message": 'config URL "http://:80/x": no server stands after "http://"',
    }
    assert result.stderr == ""
    assert result.returncode == 2


def test_option_for_a_value_with_json(program):
    result = run(program, "phone", *HEADSET, "--config-url", "--json")
    assert parsed("phone", result.stdout) == {
        "format": 1,
        "event": "error",
        "message": '--config-url: expected a URL, found the option "--json"',
    }
    assert result.stderr == ""
    assert result.returncode == 2


def test_missing_folder_with_json(program):
    result = run(program, "serve", "--port", "0", "--documents", "/no/such", "--json")
    assert parsed("serve", result.stdout)["event"] == "error"
    assert result.stderr == ""
    assert result.returncode == 2


@pytest.mark.parametrize("name", WRONG_COMMAND_LINES)
def test_wrong_command_line(name, program):
    arguments, said = WRONG_COMMAND_LINES[name]
    result = run(program, *arguments)
    assert said in result.stderr
    assert result.stderr != ""
    assert result.stdout == ""
    assert result.returncode == 2


def test_port_that_is_taken(program, tmp_path):
    with socket.create_server(("127.0.0.1", 0)) as other:
        port = str(other.getsockname()[1])
        result = run(program, "serve", "--port", port, "--documents", tmp_path)
    assert f"cannot listen on address 127.0.0.1, port {port}: " in result.stderr
    assert result.stdout == ""
    assert result.returncode == 1


@pytest.mark.parametrize("arguments", [["--help"], ["phone", "--help"], ["serve", "--help"]])
def test_help(arguments, program):
    result = run(program, *arguments)
    assert "--help" in result.stdout
    assert result.stdout.endswith(EXIT_CODES)
    assert result.stderr == ""
    assert result.returncode == 0


def test_version(program):
    result = run(program, "--version")
    assert result.stdout == "1.0.0\n"
    assert result.returncode == 0


@pytest.mark.parametrize(
    ("arguments", "message"),
    [
        (["--json"], "no subcommand; expected phone or serve"),
        (["phone", "--json=true", "--bogus"], "The following argument was not expected: --bogus"),
    ],
)
def test_wrong_command_line_with_json(arguments, message, program):
    result = run(program, *arguments)
    assert result.stdout == f'{{"format":1,"event":"error","message":"{message}"}}\n'
    assert result.stderr == ""
    assert result.returncode == 2
