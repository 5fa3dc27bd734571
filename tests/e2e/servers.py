# SPDX-License-Identifier: Apache-2.0
"""The servers that the phone is run against. Each is a context manager: it is started with free
ports, and nothing of it is left when the block ends, however it ends."""

import contextlib
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import tempfile
import threading
import time

from events import parsed

PATIENCE = 60  # seconds until something that must happen counts as missing


def find_program(name):
    """The path of a system program, also when PATH lacks the administrator's folders."""
    path = shutil.which(name, path=os.environ.get("PATH", "") + ":/usr/local/sbin:/usr/sbin:/sbin")
    if path is None:
        raise FileNotFoundError(f"{name} is not installed; scripts/bootstrap installs it")
    return path


def wait_until(condition, what):
    """Waits for the condition, which is asked now and then; `what` names it when it stays away."""
    deadline = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > deadline:
            raise TimeoutError(f"{what}: not within {PATIENCE} s")
        time.sleep(0.02)


def free_port(kind=socket.SOCK_STREAM):
    """A port that the system picked and that was free a moment ago."""
    with socket.socket(socket.AF_INET, kind) as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


@contextlib.contextmanager
def running(command, log):
    """A child process with its output in the file `log`; it ends with the block."""
    with open(log, "wb") as output:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output, stderr=output)
    try:
        yield process
    finally:
        process.terminate()
        try:
            process.wait(PATIENCE)
        except subprocess.TimeoutExpired:
            process.kill()
            process.wait()


def started_on_free_port(stack, command_for, log, is_up, kind=socket.SOCK_STREAM):
    """Starts a server that cannot pick a port itself; another port when the picked one was taken.

    Answers the port. `command_for(port)` prepares and names the command; `is_up(port)` says when
    the server answers.
    """
    for _ in range(5):
        port = free_port(kind)
        attempt = contextlib.ExitStack()
        process = attempt.enter_context(running(command_for(port), log))
        try:
            wait_until(lambda: process.poll() is not None or is_up(port), f"{log.name} to start")
        except BaseException:
            attempt.close()
            raise
        if process.poll() is None:
            stack.enter_context(attempt)
            return port
        attempt.close()
    raise RuntimeError("the server does not start:\n" + log.read_text(errors="replace"))


def accepts_connections(port):
    with socket.socket() as client:
        return client.connect_ex(("127.0.0.1", port)) == 0


class Serve:
    """`headsetmgmt serve`, on a port that it picks unless one is wanted."""

    def __init__(self, program, documents, folder, port=0):
        self.program = program
        self.wanted_port = str(port)
        self.documents = documents
        self.log = folder / "serve.log"

    def __enter__(self):
        self.stack = contextlib.ExitStack()
        command = [self.program, "serve", "--json", "--documents", self.documents]
        command += ["--port", self.wanted_port]
        self.process = self.stack.enter_context(running(command, self.log))
        try:
            wait_until(lambda: self.events("listening") or self.process.poll() is not None, "serve")
            self.port = self.events("listening")[0]["port"]
            self.url = f"http://127.0.0.1:{self.port}"
        except BaseException:
            self.stack.close()
            raise
        return self

    def __exit__(self, *failure):
        self.stack.close()

    def events(self, kind):
        lines = self.log.read_text(encoding="utf-8").splitlines(keepends=True)
        events = [parsed("serve", line) for line in lines if line.endswith("\n")]
        return [event for event in events if event["event"] == kind]

    def stop(self):
        """Ends the server as an administrator does; its exit code."""
        self.process.send_signal(signal.SIGTERM)
        return self.process.wait(PATIENCE)

    @property
    def requests(self):
        return [f"{e['method']} {e['path']} {e['status']}" for e in self.events("request")]

    @property
    def reports(self):
        return [event["report"] for event in self.events("report")]


class Authority:
    """A private certificate authority, made with openssl in the given folder."""

    def __init__(self, folder, name):
        self.folder = folder
        self.name = name
        self.certificate = folder / f"{name}.pem"
        self.key = folder / f"{name}.key"
        self.openssl(
            "req", "-x509", "-newkey", "rsa:2048", "-nodes", "-days", "2", "-subj", f"/CN={name}",
            "-addext", "keyUsage=critical,keyCertSign",
            "-keyout", self.key, "-out", self.certificate,
        )

    def issue(self, host, alternative_name):
        """A certificate, such as for ("server", "IP:127.0.0.1"): its file and its key's."""
        key = self.folder / f"{self.name}-{host}.key"
        request = self.folder / f"{self.name}-{host}.csr"
        extension = self.folder / f"{self.name}-{host}.ext"
        certificate = self.folder / f"{self.name}-{host}.pem"
        extension.write_text(f"subjectAltName={alternative_name}\n")
        self.openssl(
            "req", "-newkey", "rsa:2048", "-nodes", "-subj", f"/CN={host}",
            "-keyout", key, "-out", request,
        )
        self.openssl(
            "x509", "-req", "-in", request, "-CA", self.certificate, "-CAkey", self.key,
            "-CAcreateserial", "-days", "2", "-extfile", extension, "-out", certificate,
        )
        return certificate, key

    @staticmethod
    def openssl(*arguments):
        subprocess.run(
            [find_program("openssl"), *arguments], check=True, capture_output=True, timeout=PATIENCE
        )


NGINX_CONFIGURATION = """
daemon off;
master_process off;
pid {folder}/nginx.pid;
error_log {folder}/nginx-error.log info;
events {{}}
http {{
    log_format request '$request_method $request_uri $status';
    access_log {folder}/nginx-access.log request;
    client_body_temp_path {folder}/body;
    proxy_temp_path {folder}/proxy;
    fastcgi_temp_path {folder}/fastcgi;
    uwsgi_temp_path {folder}/uwsgi;
    scgi_temp_path {folder}/scgi;
    server {{
        listen 127.0.0.1:{port} {tls};
        root {documents};
        location = /inventory {{ return 204; }}
        location /trailer/ {{ alias {documents}/; add_trailer X-Checksum 1; }}
        location = /inventory-trailer {{ return 200 taken; add_trailer X-Checksum 1; }}
    }}
}}
"""


class Nginx:
    """nginx with a folder of documents; over HTTPS when it is given a certificate and its key."""

    def __init__(self, documents, folder, certificate=None, key=None):
        self.documents = documents
        self.folder = folder
        self.tls = f"ssl; ssl_certificate {certificate}; ssl_certificate_key {key}"
        self.scheme = "https"
        if certificate is None:
            self.tls = ""
            self.scheme = "http"

    def __enter__(self):
        self.stack = contextlib.ExitStack()
        port = started_on_free_port(
            self.stack, self.command, self.folder / "nginx.log", accepts_connections
        )
        self.url = f"{self.scheme}://127.0.0.1:{port}"
        return self

    def __exit__(self, *failure):
        self.stack.close()

    def command(self, port):
        configuration = self.folder / "nginx.conf"
        configuration.write_text(
            NGINX_CONFIGURATION.format(
                folder=self.folder, documents=self.documents, port=port, tls=self.tls
            )
        )
        return [find_program("nginx"), "-p", self.folder, "-c", configuration]

    @property
    def requests(self):
        return (self.folder / "nginx-access.log").read_text().splitlines()


class Atftpd:
    """A TFTP server with copies of the documents, for it gives up the rights of its user."""

    def __init__(self, documents, folder):
        self.documents = documents
        self.log = folder / "atftpd.log"

    def __enter__(self):
        self.stack = contextlib.ExitStack()
        try:
            self.root = pathlib.Path(self.stack.enter_context(tempfile.TemporaryDirectory()))
            self.root.chmod(0o755)
            for document in self.documents.iterdir():
                shutil.copyfile(document, self.root / document.name)
                (self.root / document.name).chmod(0o644)
            port = started_on_free_port(
                self.stack, self.command, self.log, self.answers, socket.SOCK_DGRAM
            )
        except BaseException:
            self.stack.close()
            raise
        self.url = f"tftp://127.0.0.1:{port}"
        return self

    def __exit__(self, *failure):
        self.stack.close()

    def command(self, port):
        options = ["--daemon", "--no-fork", "--logfile", "-", "--bind-address", "127.0.0.1"]
        return [find_program("atftpd"), *options, "--port", str(port), self.root]

    @staticmethod
    def answers(port):
        """Asks for a file that is not there: any answer will do."""
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as client:
            client.settimeout(0.2)
            client.sendto(b"\0\1no-such-file\0octet\0", ("127.0.0.1", port))
            try:
                return bool(client.recv(600))
            except socket.timeout:
                return False


class TftpServer:
    """Answers each packet with the one that a function of it returns, or with none for `None`."""

    def __init__(self, answer):
        self.answer = answer

    def __enter__(self):
        self.socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        self.socket.bind(("127.0.0.1", 0))
        self.url = f"tftp://127.0.0.1:{self.socket.getsockname()[1]}"
        self.thread = threading.Thread(target=self.serve)
        self.thread.start()
        return self

    def __exit__(self, *failure):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM) as last:
            last.sendto(b"end", self.socket.getsockname())
        self.thread.join()
        self.socket.close()

    def serve(self):
        while True:
            request, client = self.socket.recvfrom(600)
            if request == b"end":
                return
            packet = self.answer(request)
            if packet is not None:
                self.socket.sendto(packet, client)


class Scripted:
    """An HTTP server that answers as the case wants it, byte for byte, and closes after each answer.

    `answers` has one entry for each fetch, the last for all further ones; `report_answers` likewise
    for the reports. An entry is a list of steps:

    - a text is sent; SERVER in it is the server's own URL
    - {"document": name} sends a document with a correct header
    - {"repeat": text, "times": n, "every": seconds} sends the text n times
    - {"wait for": line} waits until the test calls `heard` with that line
    - {"pause": seconds} does nothing
    - "stall" waits until the phone is gone
    """

    def __init__(self, documents, answers, report_answers=None):
        self.documents = documents
        self.answers = answers
        self.report_answers = report_answers or [["HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n"]]
        self.requests = []
        self.reports = []
        self.changed = threading.Condition()
        self.lines = []
        self.connections = set()
        self.threads = []
        self.is_closing = False

    def __enter__(self):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.url = f"http://127.0.0.1:{self.listener.getsockname()[1]}"
        self.acceptor = threading.Thread(target=self.accept)
        self.acceptor.start()
        return self

    def __exit__(self, *failure):
        with self.changed:
            self.is_closing = True
            self.changed.notify_all()
            connections = list(self.connections)
        for connection in [self.listener, *connections]:
            # Wakes the threads that wait in them.
            with contextlib.suppress(OSError):
                connection.shutdown(socket.SHUT_RDWR)
        self.acceptor.join()
        for thread in self.threads:
            thread.join()
        self.listener.close()

    def heard(self, line):
        """The phone has said this line."""
        with self.changed:
            self.lines.append(line)
            self.changed.notify_all()

    def accept(self):
        while True:
            try:
                connection, _ = self.listener.accept()
            except OSError:
                return
            connection.settimeout(PATIENCE)
            with self.changed:
                if self.is_closing:
                    connection.close()
                    return
                self.connections.add(connection)
                thread = threading.Thread(target=self.converse, args=[connection])
                self.threads.append(thread)
                thread.start()

    def converse(self, connection):
        with connection, contextlib.suppress(OSError, ValueError):
            with connection.makefile("rb") as incoming:
                self.answer_one(connection, incoming)
                connection.shutdown(socket.SHUT_WR)
        with self.changed:
            self.connections.discard(connection)

    def answer_one(self, connection, incoming):
        first = incoming.readline().decode().split()
        length = 0
        while (line := incoming.readline().strip()) != b"":
            name, _, value = line.partition(b":")
            length = int(value) if name.lower() == b"content-length" else length
        body = incoming.read(length)
        answers = self.answers if first[0] == "GET" else self.report_answers
        with self.changed:
            earlier = sum(request.startswith(first[0] + " ") for request in self.requests)
            self.requests.append(f"{first[0]} {first[1]}")
            if first[0] == "POST":
                self.reports.append(json.loads(body))
            self.changed.notify_all()
        for step in answers[min(earlier, len(answers) - 1)]:
            self.take(step, connection, incoming)

    def take(self, step, connection, incoming):
        if step == "stall":
            incoming.read(1)
        elif isinstance(step, str):
            connection.sendall(step.replace("SERVER", self.url).encode())
        elif "document" in step:
            document = (self.documents / step["document"]).read_bytes()
            header = f"HTTP/1.1 200 OK\r\nContent-Length: {len(document)}\r\n\r\n"
            connection.sendall(header.encode() + document)
        elif "repeat" in step:
            for _ in range(step["times"]):
                connection.sendall(step["repeat"].encode())
                time.sleep(step.get("every", 0))
        elif "pause" in step:
            time.sleep(step["pause"])
        else:
            with self.changed:
                self.changed.wait_for(
                    lambda: step["wait for"] in self.lines or self.is_closing, PATIENCE
                )

    def wait_for_request(self):
        """Waits until a request has arrived."""
        with self.changed:
            if not self.changed.wait_for(lambda: self.requests, PATIENCE):
                raise TimeoutError("no request arrived")
