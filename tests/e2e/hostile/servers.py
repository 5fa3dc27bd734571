# SPDX-License-Identifier: Apache-2.0
"""Servers that treat a phone as none should. What they do stands in `HTTP` and `TFTP`, by name; a
new one is a new entry. Each is a context manager: nothing of it is left when the block ends."""

import contextlib
import socket
import ssl
import threading

from servers import PATIENCE

GOOD_HEADER = b"HTTP/1.1 200 OK\r\n"
CHUNKED = GOOD_HEADER + b"Transfer-Encoding: chunked\r\n\r\n"
LAST_CHUNK = CHUNKED + b"2\r\n{}\r\n0\r\n"


def endless(beginning, piece):
    """Sends the beginning, then the piece again and again, until the phone is gone."""

    def answer(connection):
        connection.sendall(beginning)
        while True:
            connection.sendall(piece)

    return answer


def once(text):
    return lambda connection: connection.sendall(text)


HTTP = {
    "header without end": endless(GOOD_HEADER, b"a: b\r\n" * 1000),
    "header line without end": endless(GOOD_HEADER, b"a" * 10000),
    "status line without end": endless(b"HTTP/1.1 200 ", b"a" * 10000),
    "interim answers without end": endless(b"", b"HTTP/1.1 100 Continue\r\n\r\n" * 100),
    "trailers without end": endless(LAST_CHUNK, b"a: b\r\n" * 1000),
    "trailer line without end": endless(LAST_CHUNK, b"a" * 10000),
    "chunk extension without end": endless(CHUNKED + b"2;", b"a" * 10000),
    "body without end": endless(GOOD_HEADER + b"\r\n", b" " * 1000000),
    "body that breaks off": once(GOOD_HEADER + b"Content-Length: 9\r\n\r\n{}"),
}


def error(number):
    return lambda request: b"\0\5" + number.to_bytes(2, "big") + b"words\0"


TFTP = {
    **{f"error {number}": error(number) for number in (0, 1, 2, 3, 4, 5, 6, 7, 8, 99)},
    "packets of two bytes": lambda request: b"\0\3",
    "packets of no bytes": lambda request: b"",
}


def redirect(url):
    """What answers with a redirect; not among `HTTP`, for it needs the URL of another server."""
    return once(
        f"HTTP/1.1 307 Temporary Redirect\r\nLocation: {url}\r\nContent-Length: 0\r\n\r\n".encode()
    )


class HttpServer:
    """Reads a request from each connection, one after the other, and has it answered by a function
    of the connection; over HTTPS when it is given an `ssl.SSLContext`."""

    def __init__(self, answer, tls=None):
        self.answer = answer
        self.tls = tls
        self.requests = []  # first lines

    def __enter__(self):
        self.listener = socket.create_server(("127.0.0.1", 0))
        scheme = "https" if self.tls else "http"
        self.url = f"{scheme}://127.0.0.1:{self.listener.getsockname()[1]}"
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()
        return self

    def __exit__(self, *failure):
        self.listener.shutdown(socket.SHUT_RDWR)  # wakes the thread that waits in it
        self.thread.join()
        self.listener.close()

    def serve(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            connection.settimeout(PATIENCE)
            # The phone may go at any time, and need not take the certificate.
            with contextlib.suppress(OSError), contextlib.ExitStack() as stack:
                stack.enter_context(connection)
                if self.tls:
                    connection = stack.enter_context(
                        self.tls.wrap_socket(connection, server_side=True)
                    )
                self.read_request(connection)
                self.answer(connection)
                connection.shutdown(socket.SHUT_WR)

    def read_request(self, connection):
        with connection.makefile("rb") as incoming:
            self.requests.append(incoming.readline().decode().strip())
            length = 0
            while (line := incoming.readline().strip()) != b"":
                name, _, value = line.partition(b":")
                length = int(value) if name.lower() == b"content-length" else length
            incoming.read(length)


def tls_context(certificate, key):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(certificate, key)
    return context
