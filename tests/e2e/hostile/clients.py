# SPDX-License-Identifier: Apache-2.0
"""Clients that a server must outlive. MALFORMED, PROPER and HOLDERS are tables of named entries: a
new attack is a line in one of them, or a function of a few lines."""

import contextlib
import socket

PATIENCE = 60  # seconds until something that must happen counts as missing

REPORT = b'{"time":1,"key":"headsetInventory","value":{"host":{},"headset":{"serialNumber":"S"}}}'
LENGTH = b"Content-Length: %d\r\n" % len(REPORT)
GET = b"GET /good.json HTTP/1.1\r\n"
POST = b"POST /inventory HTTP/1.1\r\nHost: x\r\n"
LARGEST = 1024 * 1024

# name: the status of the answer, the request
MALFORMED = {
    "no-host": (400, GET + b"\r\n"),
    "two-hosts": (400, GET + b"Host: x\r\nHost: y\r\n\r\n"),
    "two-lengths": (400, POST + LENGTH + b"Content-Length: 1\r\n\r\n" + REPORT),
    "length-beside-coding": (400, POST + LENGTH + b"Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n"),
    "length-that-is-no-number": (400, POST + b"Content-Length: abc\r\n\r\n"),
    "length-below-zero": (400, POST + b"Content-Length: -1\r\n\r\n"),
    "length-out-of-range": (413, POST + b"Content-Length: 99999999999999999999\r\n\r\n"),
    "unknown-coding": (501, POST + b"Transfer-Encoding: gzip, chunked\r\n\r\n"),
    "blank-before-a-colon": (400, POST + b"Content-Length : 2\r\n\r\n{}"),
    "folded-line": (400, GET + b"Host: x\r\nA: b\r\n c\r\n\r\n"),
    "folded-length": (400, POST + b"Content-Length:\r\n 2\r\n\r\n{}"),
    "nul-in-the-path": (400, b"GET /good.json\0.txt HTTP/1.1\r\nHost: x\r\n\r\n"),
    "escaped-nul-in-the-path": (400, b"GET /good.json%00.txt HTTP/1.1\r\nHost: x\r\n\r\n"),
    "nul-in-the-header": (400, GET + b"Host: x\r\nA: b\0c\r\n\r\n"),
    "no-version": (400, b"GET /good.json\r\n\r\n"),
    "header-without-end": (431, GET + b"A: " + b"a" * 32768),
    "first-line-without-end": (414, b"GET /" + b"a" * 32768),
    "web-page": (403, POST + b"Origin: null\r\n" + LENGTH + b"\r\n" + REPORT),
    "form": (415, POST + b"Content-Type: text/plain\r\n" + LENGTH + b"\r\n" + REPORT),
    "many-arrays": (400, POST + b"Content-Length: %d\r\n\r\n" % LARGEST + b"[],[" * (LARGEST // 4)),
}
# name: likewise, of requests that are unusual alone
PROPER = {
    "absolute-form": (200, b"GET http://host:80/good.json HTTP/1.1\r\nHost: host:80\r\n\r\n"),
    "first-version": (200, b"GET /good.json HTTP/1.0\r\n\r\n"),
    "empty-lines-first": (200, b"\r\n\r\n" + GET + b"Host: x\r\n\r\n"),
    "line-feeds-alone": (200, b"GET /good.json HTTP/1.1\nHost: x\n\n"),
    "report-without-a-type": (204, POST + LENGTH + b"\r\n" + REPORT),
    "second-request-behind": (200, (GET + b"Host: x\r\n\r\n") * 2),
}
# name: what a client begins with that holds its connection; it sends, or reads, nothing more
HOLDERS = {
    "nothing": b"",
    "half-a-first-line": b"GET /goo",
    "half-a-header": GET + b"A: ",
    "half-a-body": POST + LENGTH + b"\r\n{",
    "unread-answer": b"GET /big.bin HTTP/1.1\r\nHost: x\r\n\r\n",
}


def connect(port, address="127.0.0.1", text=b"", buffer=0):
    """A client at `address`; the system keeps `buffer` bytes for it, 0: as many as it likes."""
    client = socket.socket()
    client.settimeout(PATIENCE)
    try:
        if buffer:
            client.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, buffer)
        client.bind((address, 0))
        client.connect(("127.0.0.1", port))
        client.sendall(text)
    except BaseException:
        client.close()
        raise
    return client


def read_to_end(client):
    """All that the server sends until it closes."""
    with contextlib.suppress(ConnectionResetError):
        return b"".join(iter(lambda: client.recv(65536), b""))
    return b""


def ask(port, text, address="127.0.0.1"):
    """The whole answer to a request."""
    with connect(port, address, text) as client:
        return read_to_end(client)


def statuses(answer):
    """Of every answer in it: a server that answers twice shows."""
    lines = [line.split() for line in answer.split(b"\r\n") if line.startswith(b"HTTP/1.1 ")]
    return [int(line[1]) for line in lines]


@contextlib.contextmanager
def holders(port, name, count=64):
    """So many clients, half of them at each of two addresses, that hold their connections."""
    with contextlib.ExitStack() as stack:
        for i in range(count):
            address = "127.0.0.1" if i % 2 else "127.0.0.2"
            stack.enter_context(connect(port, address, HOLDERS[name], 4096))
        yield


def flood(port, count):
    """So many connections beyond those that one address may have; all are refused."""
    with contextlib.ExitStack() as stack:
        for _ in range(32):
            stack.enter_context(connect(port))
        for _ in range(count):
            assert ask(port, b"") == b""


def wait_for_continue(port, expectation):
    """A report that is sent when the server asks for it; both of its answers."""
    header = POST + LENGTH + b"Expect: " + expectation + b"\r\n\r\n"
    with connect(port, text=header) as client:
        first = client.recv(65536)
        client.sendall(REPORT)
        return first, read_to_end(client)
