# SPDX-License-Identifier: Apache-2.0
"""The phone against servers that treat it as none should, and what it never shows to anybody."""

import resource
import ssl
import subprocess

import pytest

from hostile.servers import HTTP, TFTP, HttpServer, redirect, tls_context
from phone import Phone
from servers import PATIENCE, Authority, Scripted, TftpServer, free_port

ACCESSORY = (
    "id=desk,type=headset,vendorId=61525,model=Varos K30,serialNumber=A1,softwareVersion=2-1-0"
)
GOOD_ANSWER = "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}"


def run(program, *options):
    """A phone that fetches once: its exit code and its events."""
    arguments = ["--accessory", ACCESSORY, "--give-up-after", "1", "--json"]
    with Phone(program, [*arguments, *options]) as phone:
        code = phone.finish()
    assert phone.errors == []
    return code, phone.events()


def only(events, kind):
    """The one event of the kind."""
    (event,) = [event for event in events if event["event"] == kind]
    return event


TOO_LARGE_HEADER = "the answer's headers and trailers are larger than the limit of 262144 bytes"
TOO_LONG_LINE = (
    "a line of the answer's {} is longer than libcurl takes (about 100,000 bytes in a header, 4,000"
    " in a trailer), or memory ran out"
)
ERRORS_OF_HTTP = {
    "header without end": TOO_LARGE_HEADER,
    "header line without end": TOO_LONG_LINE.format("header"),
    "status line without end": TOO_LONG_LINE.format("header"),
    "interim answers without end": TOO_LARGE_HEADER,
    "trailers without end": TOO_LARGE_HEADER,
    "trailer line without end": TOO_LONG_LINE.format("trailer"),
    "chunk extension without end": "nothing of the answer's body arrived for 1 s (--stall)",
    "body without end": "the answer is larger than the limit of 4194304 bytes (--limit)",
    "body that breaks off": "transfer closed with 7 bytes remaining to read",
}


@pytest.mark.parametrize("name", HTTP)
def test_fetch_from_a_hostile_http_server(name, program):
    with HttpServer(HTTP[name]) as server:
        code, events = run(program, "--config-url", f"{server.url}/x.json", "--stall", "1")
    fetch = only(events, "fetch")
    assert fetch["error"] == ERRORS_OF_HTTP[name]
    assert "status" not in fetch
    assert code == 1


TAKEN = ["trailers without end", "trailer line without end", "body without end"]
TAKEN += ["body that breaks off"]


# After a report, libcurl needs five more seconds to see that nothing moves.
@pytest.mark.parametrize("name", [name for name in HTTP if name != "chunk extension without end"])
def test_report_to_a_hostile_http_server(name, program, documents):
    """The status decides whether a report is accepted; the rest of the answer does not."""
    with HttpServer(HTTP[name]) as server, Scripted(documents, [[GOOD_ANSWER]]) as good:
        options = ["--config-url", f"{good.url}/x.json", "--stall", "1"]
        _, events = run(program, *options, "--inventory-url", f"{server.url}/inventory")
    report = only(events, "report")
    assert report["error"] == ERRORS_OF_HTTP[name]
    assert report["accepted"] == (name in TAKEN)
    assert report.get("status") == (200 if name in TAKEN else None)
    assert only(events, "result")["reportsAccepted"] == (1 if name in TAKEN else 0)


ERROR_OF_TFTP = "the TFTP server answered with error "
ERRORS_OF_TFTP = {
    "error 0": "the TFTP server refused the request",
    "error 1": "the TFTP server has no such file",
    "error 2": "the TFTP server denies access to the file",
    "error 3": ERROR_OF_TFTP + "3 (disk full)",
    "error 4": "the TFTP server refused the request",
    "error 5": ERROR_OF_TFTP + "5 (unknown transfer)",
    "error 6": ERROR_OF_TFTP + "6 (file exists)",
    "error 7": ERROR_OF_TFTP + "7 (no such user)",
    "error 8": ERROR_OF_TFTP + "8 or above, which is none of a fetch",
    "error 99": ERROR_OF_TFTP + "8 or above, which is none of a fetch",
    "packets of two bytes": "no answer, or only packets too short to be one, for ",
    "packets of no bytes": "no answer, or only packets too short to be one, for ",
}


@pytest.mark.parametrize("name", TFTP)
def test_fetch_from_a_hostile_tftp_server(name, program):
    with TftpServer(TFTP[name]) as server:
        code, events = run(program, "--config-url", f"{server.url}/x.json")
    error = only(events, "fetch")["error"]
    if ERRORS_OF_TFTP[name].endswith("for "):
        assert error.startswith(ERRORS_OF_TFTP[name])
    else:
        assert error == ERRORS_OF_TFTP[name]
    assert code == 1


def test_memory_that_runs_out_for_an_answer(program, slowness):
    if slowness > 1:
        pytest.skip("a sanitizer needs the addresses that are limited here")
    limit = 512 * 1024 * 1024
    with HttpServer(HTTP["body without end"]) as server:
        result = subprocess.run(
            [program, "phone", "--accessory", ACCESSORY, "--give-up-after", "1", "--limit"]
            + [str(1024 * 1024 * 1024), "--config-url", f"{server.url}/x.json"],
            preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)),
            stdin=subprocess.DEVNULL,
            capture_output=True,
            encoding="utf-8",
            timeout=PATIENCE,
        )
    assert result.stderr == "headsetmgmt: memory ran out\n"
    assert result.returncode == 1


@pytest.fixture(scope="module")
def authority(tmp_path_factory):
    return Authority(tmp_path_factory.mktemp("authority"), "trusted")


DOWNGRADE = (
    "a redirect from https to http is refused: http encrypts nothing; let the server redirect to"
    " https"
)


def test_redirect_from_https_to_http_is_refused(program, documents, authority):
    context = tls_context(*authority.issue("server", "IP:127.0.0.1"))
    with Scripted(documents, [[GOOD_ANSWER]]) as plain:
        with HttpServer(redirect(f"{plain.url}/clear"), context) as server:
            options = ["--config-url", f"{server.url}/x.json", "--ca-file", authority.certificate]
            _, events = run(program, *options, "--inventory-url", f"{server.url}/inventory")
    fetch = only(events, "fetch")
    report = only(events, "report")
    assert fetch["error"] == DOWNGRADE
    assert fetch["finalUrl"] == f"{plain.url}/clear"
    assert report["error"] == DOWNGRADE
    assert not report["accepted"]
    assert server.requests == ["GET /x.json HTTP/1.1", "POST /inventory HTTP/1.1"]
    assert plain.requests == []


def test_redirect_from_http_over_https_to_http_is_refused(program, documents, authority):
    context = tls_context(*authority.issue("server", "IP:127.0.0.1"))
    with Scripted(documents, [[GOOD_ANSWER]]) as plain:
        with HttpServer(redirect(f"{plain.url}/clear"), context) as server:
            with HttpServer(redirect(f"{server.url}/next")) as first:
                options = ["--ca-file", authority.certificate]
                _, events = run(program, "--config-url", f"{first.url}/x.json", *options)
    assert only(events, "fetch")["error"] == DOWNGRADE
    assert server.requests == ["GET /next HTTP/1.1"]
    assert plain.requests == []


def test_redirect_from_http_to_http_is_followed(program, documents):
    with Scripted(documents, [[GOOD_ANSWER]]) as plain:
        with HttpServer(redirect(f"{plain.url}/clear")) as first:
            _, events = run(program, "--config-url", f"{first.url}/x.json")
    assert only(events, "fetch")["status"] == 200


OLD_TLS_POLICY = """
openssl_conf = openssl_init
[openssl_init]
ssl_conf = ssl
[ssl]
system_default = defaults
[defaults]
MinProtocol = TLSv1
CipherString = DEFAULT:@SECLEVEL=0
"""


@pytest.mark.parametrize(
    ("newest", "is_taken"),
    [(ssl.TLSVersion.TLSv1_1, False), (ssl.TLSVersion.TLSv1_2, True)],
    ids=["1.1", "1.2"],
)
@pytest.mark.filterwarnings("ignore::DeprecationWarning")
def test_tls_before_1_2_is_refused_whatever_the_systems_policy(
    newest, is_taken, program, authority, tmp_path, monkeypatch
):
    context = tls_context(*authority.issue("server", "IP:127.0.0.1"))
    context.set_ciphers("DEFAULT:@SECLEVEL=0")
    context.minimum_version = ssl.TLSVersion.TLSv1
    context.maximum_version = newest
    policy = tmp_path / "openssl.cnf"
    policy.write_text(OLD_TLS_POLICY)
    monkeypatch.setenv("OPENSSL_CONF", str(policy))
    with HttpServer(lambda connection: connection.sendall(GOOD_ANSWER.encode()), context) as server:
        options = ["--config-url", f"{server.url}/x.json", "--ca-file", authority.certificate]
        _, events = run(program, *options)
    fetch = only(events, "fetch")
    assert ("status" in fetch) == is_taken, fetch
    assert len(server.requests) == (1 if is_taken else 0)


def test_password_in_a_url_is_never_shown(program, documents):
    with Scripted(documents, [["HTTP/1.1 404 No\r\nContent-Length: 0\r\n\r\n"]]) as server:
        url = server.url.replace("http://", "http://me:sesame@") + "/x"
        with HttpServer(redirect(url)) as first:
            first_url = first.url.replace("http://", "http://me:sesame@") + "/x"
            options = ["--config-url", first_url, "--inventory-url", first_url, "--service-url"]
            for form in (["--json"], []):
                arguments = ["--accessory", ACCESSORY, "--give-up-after", "1", "--verbose", *form]
                with Phone(program, [*arguments, *options, first_url]) as phone:
                    phone.finish()
                assert any("me:***@127.0.0.1" in line for line in phone.lines)
                assert [line for line in phone.lines + phone.errors if "sesame" in line] == []
    assert server.requests != []


@pytest.mark.parametrize(
    "arguments",
    [
        ["http://me:sesame@h/"],
        ["phone", "http://me:sesame@h/"],
        ["phone", "--stall", "http://me:sesame@h/"],
        ["phone", "--accessory", ACCESSORY, "--config-url", "http://me:sesame@h:0/"],
        ["phone", "--accessory", ACCESSORY, "--config-url", "http://me:ses/sesame@h/"],
        ["phone", "--accessory", "type=headset,id=http://me:sesame@h,id=http://me:sesame@h"],
    ],
)
@pytest.mark.parametrize("form", [[], ["--json"]], ids=["words", "json"])
def test_password_in_a_url_is_not_shown_by_a_refusal(arguments, form, program):
    result = subprocess.run(
        [program, *arguments, *form],
        stdin=subprocess.DEVNULL,
        capture_output=True,
        encoding="utf-8",
        timeout=PATIENCE,
    )
    assert result.returncode == 2
    assert "sesame" not in result.stdout + result.stderr


def test_host_that_nobody_can_look_up_is_refused_before_anything_is_attached(program):
    arguments = [program, "phone", "--accessory", ACCESSORY]
    result = subprocess.run(
        [*arguments, "--config-url", f"http://{'a' * 64}.example.org:{free_port()}/x"],
        stdin=subprocess.DEVNULL,
        capture_output=True,
        encoding="utf-8",
        timeout=PATIENCE,
    )
    refusal = "expected at most 63 characters between the dots of a host name, found 64"
    assert refusal in result.stderr
    assert result.stdout == ""
    assert result.returncode == 2
