# SPDX-License-Identifier: Apache-2.0
"""The phone against nginx, over HTTP and over HTTPS with certificates of a private authority."""

import pytest

from phone import Phone, comparable
from servers import Authority, Nginx

GOOD_RUN = [
    "attached desk-headset: Varos K30, firmware 2-0-4",
    "fetch, attempt 1: SERVER/good.json: status 200, 1767 bytes, # ms",
    "set desk-headset: Sidetone (usage id 34) = medium",
    "set desk-headset: Equalizer (usage id 35) = warm",
    "set desk-headset: Audio Bandwidth (usage id 36) = 2",
    "set desk-headset: Bluetooth (usage id 39) = off",
    "upgrade desk-headset to 2-1-0 with varos-k30-2-1-0.img",
    "firmware of desk-headset (Varos K20): change from 2-0-4 to 2-1-0 requested",
    "document taken by 1, failed for 0",
    '  desk-headset (Varos K20) is served by entry 0 of modelSpecificSettings: "Varos K20" (line 10,'
    " column 13)",
    '  kept, sent at a factory reset only: Speaker Volume: its access is "User", not "Admin" (commonSettings, line 5,'
    " column 13)",
    "report to SERVER/inventory: accepted: status 204, 545 bytes sent, # ms",
    "device desk-headset has",
    "  34 Sidetone = medium",
    "  35 Equalizer = warm",
    "  36 Audio Bandwidth = 2",
    "  39 Bluetooth = off",
    "done: 1 of 1 configured; 1 of 1 reports accepted",
]


@pytest.fixture(scope="session")
def authority(tmp_path_factory):
    """The authority that the phone trusts."""
    return Authority(tmp_path_factory.mktemp("authority"), "trusted")


@pytest.fixture(scope="session")
def other_authority(tmp_path_factory):
    return Authority(tmp_path_factory.mktemp("other"), "other")


def run(program, benches, url, document, *options):
    arguments = ["--bench", benches / "headset-with-dock.json", "--give-up-after", "1"]
    arguments += ["--config-url", f"{url}/{document}"]
    if "--inventory-url" not in options:
        arguments += ["--inventory-url", f"{url}/inventory"]
    with Phone(program, [*arguments, *options]) as phone:
        code = phone.finish()
    assert phone.errors == []
    return code, [comparable(line, url) for line in phone.lines]


def test_document_and_report_over_http(program, benches, documents, tmp_path):
    with Nginx(documents, tmp_path) as nginx:
        code, lines = run(program, benches, nginx.url, "good.json")
    assert lines == GOOD_RUN
    assert nginx.requests == ["GET /good.json 200", "POST /inventory 204"]
    assert code == 0


def test_document_and_report_with_trailers(program, benches, documents, tmp_path):
    with Nginx(documents, tmp_path) as nginx:
        options = ["--inventory-url", f"{nginx.url}/inventory-trailer"]
        code, lines = run(program, benches, nginx.url, "trailer/good.json", *options)
    assert "fetch, attempt 1: SERVER/trailer/good.json: status 200, 1767 bytes, # ms" in lines
    report = "report to SERVER/inventory-trailer: accepted: status 200, 545 bytes sent, # ms"
    assert report in lines
    assert nginx.requests == ["GET /trailer/good.json 200", "POST /inventory-trailer 200"]
    assert code == 0


def test_missing_document_over_http(program, benches, documents, tmp_path):
    with Nginx(documents, tmp_path) as nginx:
        code, lines = run(program, benches, nginx.url, "missing.json")
    assert lines[1].startswith("fetch, attempt 1: SERVER/missing.json: status 404 (Not Found), ")
    assert lines[-1] == "failed: no document after 1 attempt: status 404"
    assert nginx.requests == ["GET /missing.json 404", "POST /inventory 204"]
    assert code == 1


def test_document_and_report_over_https(program, benches, documents, authority, tmp_path):
    certificate, key = authority.issue("server", "IP:127.0.0.1")
    with Nginx(documents, tmp_path, certificate, key) as nginx:
        code, lines = run(
            program, benches, nginx.url, "good.json", "--ca-file", authority.certificate
        )
    assert lines == GOOD_RUN
    assert nginx.requests == ["GET /good.json 200", "POST /inventory 204"]
    assert code == 0


def expect_distrust(code, lines, nginx, error):
    assert f"fetch, attempt 1: SERVER/good.json: {error}" in lines
    assert f"report to SERVER/inventory: not accepted: {error}" in lines
    assert lines[-3:] == [
        "0 of 1 configured, 1 without a document; 0 of 1 reports accepted, 1 failed",
        f"failed: no document after 1 attempt: {error}",
        f"failed: a report was not accepted: {error}",
    ]
    assert not any(line.startswith("set ") for line in lines)
    assert nginx.requests == []
    assert code == 1


def test_certificate_of_another_authority_is_refused(
    program, benches, documents, authority, other_authority, tmp_path
):
    certificate, key = other_authority.issue("server", "IP:127.0.0.1")
    with Nginx(documents, tmp_path, certificate, key) as nginx:
        code, lines = run(
            program, benches, nginx.url, "good.json", "--ca-file", authority.certificate
        )
    error = "SSL certificate problem: unable to get local issuer certificate"
    expect_distrust(code, lines, nginx, error)


def test_certificate_of_another_host_is_refused(program, benches, documents, authority, tmp_path):
    certificate, key = authority.issue("elsewhere", "DNS:elsewhere.example.org")
    with Nginx(documents, tmp_path, certificate, key) as nginx:
        code, lines = run(
            program, benches, nginx.url, "good.json", "--ca-file", authority.certificate
        )
    error = "SSL: no alternative certificate subject name matches target host name '127.0.0.1'"
    expect_distrust(code, lines, nginx, error)


def test_private_authority_is_not_trusted_without_the_option(
    program, benches, documents, authority, tmp_path
):
    certificate, key = authority.issue("server", "IP:127.0.0.1")
    with Nginx(documents, tmp_path, certificate, key) as nginx:
        code, lines = run(program, benches, nginx.url, "good.json")
    error = "SSL certificate problem: unable to get local issuer certificate"
    expect_distrust(code, lines, nginx, error)
