#!/usr/bin/env python3
"""The maker's web server as the tests of the update check need it, on the loopback address only.

Usage: https_server.py FOLDER
Makes certificates in FOLDER, starts three servers on free ports and, once they listen, writes
FOLDER/environment: one NAME=VALUE per line for the test program. Ends by itself when its standard input
closes or after ten minutes, whichever comes first.

    trusted    certificate for "localhost", issued by FOLDER/authority.der
    untrusted  certificate for "localhost" that nobody issued
    plain      HTTP without TLS: no test may reach it

The first part of the path of a request chooses what happens; see Answer.
"""

import http.server
import os
import socket
import ssl
import subprocess
import sys
import threading
import time

LIFETIME = 600  # seconds
SETUP_SIZE = 300_001  # odd, so that the halves differ
HALF = (SETUP_SIZE + 1) // 2
SETUP = bytes((7 * i + i // 251) & 0xFF for i in range(SETUP_SIZE))

seen = []  # what was asked for, for the tests to read back under /seen
seen_lock = threading.Lock()
ports = {}


class Answer(http.server.BaseHTTPRequestHandler):
    """Answers one request; the first part of its path names what is wrong with the answer."""

    protocol_version = "HTTP/1.1"
    timeout = 30

    def log_message(self, *arguments):
        pass

    def do_GET(self):
        words = self.path.strip("/").split("/")
        if words[0] == "seen":
            with seen_lock:
                text = "\n".join(seen)
                seen.clear()
            self.send_body(text.encode())
            return
        with seen_lock:
            kind = "plain" if self.server.is_plain else "secure"
            seen.append(f"{kind} {self.path} range={self.headers.get('Range', '-')} "
                        f"agent={self.headers.get('User-Agent', '-')}")
        handler = getattr(self, "answer_" + words[0], None)
        if handler is None:
            self.send_error(404)
        else:
            handler(words[1:])

    # --- helpers

    def send_body(self, body, status=200, headers=()):
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Length", str(len(body)))
        self.end_headers()
        self.wfile.write(body)

    def redirect(self, target):
        self.send_response(302)
        self.send_header("Location", target)
        self.send_header("Content-Length", "0")
        self.end_headers()

    def cut(self):
        """Ends the connection without the goodbye of TLS, as a lost line does."""
        self.wfile.flush()
        self.close_connection = True
        try:
            self.connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass

    def asked_start(self):
        """The first byte asked for; None for the whole."""
        value = self.headers.get("Range")
        if not value or not value.startswith("bytes="):
            return None
        return int(value[6:].split("-")[0])

    def send_setup(self, count=None, ranges=True, tag='"one"', pause=0.0, claimed=SETUP_SIZE,
                   content=SETUP):
        """The setup, or `count` bytes of what was asked for and then a cut; `pause` seconds per 4 KB."""
        start = self.asked_start() if ranges else None
        if start is None:
            self.send_response(200)
            if ranges:
                self.send_header("Accept-Ranges", "bytes")
            start = 0
        else:
            self.send_response(206)
            self.send_header("Content-Range", f"bytes {start}-{claimed - 1}/{claimed}")
        if tag:
            self.send_header("ETag", tag)
        self.send_header("Content-Length", str(claimed - start))
        self.end_headers()
        end = SETUP_SIZE if count is None else min(start + count, SETUP_SIZE)
        for position in range(start, end, 4096):
            self.wfile.write(content[position:min(position + 4096, end)])
            if pause:
                time.sleep(pause)
        if end < claimed:
            self.cut()

    # --- the information file

    def answer_ini(self, words):
        """/ini/<hex>/info/vardeko.info: the file whose bytes stand in the address."""
        body = bytes.fromhex(words[0])
        for name in ("trusted", "plain"):
            body = body.replace(b"{" + name.encode() + b"}", str(ports[name]).encode())
        self.send_body(body)

    def answer_html(self, words):
        self.send_body(b"<html><body>Bitte melden Sie sich an. [Vardeko]</body></html>",
                       headers=[("Content-Type", "text/html")])

    def answer_limit(self, words):
        """/limit/<size>/...: a valid file of just that size."""
        head = b"[Vardeko 7.0]\r\nBuild=7900\r\n;"
        self.send_body(head + b"x" * (int(words[0]) - len(head)))

    def answer_endless(self, words):
        """A body that never ends, as fast as it is taken, for five seconds at most."""
        self.send_response(200)
        self.send_header("Transfer-Encoding", "chunked")
        self.end_headers()
        end = time.monotonic() + 5
        while time.monotonic() < end:
            self.wfile.write(b"1000\r\n" + b"x" * 4096 + b"\r\n")
        self.cut()

    def answer_trickle(self, words):
        """A body of one byte every 50 ms: never slow enough for a limit on silence."""
        self.send_response(200)
        self.send_header("Content-Length", "60000")
        self.end_headers()
        for _ in range(200):
            self.wfile.write(b"x")
            time.sleep(0.05)
        self.cut()

    def answer_silent(self, words):
        """Takes the request and says nothing for ten seconds."""
        time.sleep(10)
        self.cut()

    def answer_to_http(self, words):
        self.redirect(f"http://localhost:{ports['plain']}/" + "/".join(words))

    def answer_to_https(self, words):
        self.redirect(f"https://localhost:{ports['trusted']}/" + "/".join(words))

    def answer_loop(self, words):
        self.redirect(self.path)

    def answer_failing(self, words):
        self.send_body(b"[Vardeko 7.0]\r\nBuild=9999\r\n", status=500)

    # --- the setup

    def answer_setup(self, words):
        self.send_setup()

    def answer_setup_without_ranges(self, words):
        self.send_setup(ranges=False)

    def answer_setup_cut(self, words):
        """Each connection ends after a quarter of the file, so half of it arrives."""
        self.send_setup(count=SETUP_SIZE // 4)

    def answer_setup_second_part_cut(self, words):
        second = self.asked_start() is not None
        self.send_setup(count=10_000 if second else None)

    def answer_setup_changed(self, words):
        """The second part belongs to another version of the file."""
        if self.asked_start() is None:
            self.send_setup()
        else:
            self.send_setup(tag='"two"', content=bytes(SETUP_SIZE))

    def answer_setup_wrong_range(self, words):
        """Answers the second part with the beginning of the file."""
        if self.asked_start() is None:
            self.send_setup()
        else:
            self.send_body(SETUP[:HALF], status=206, headers=[
                ("ETag", '"one"'), ("Content-Range", f"bytes 0-{HALF - 1}/{SETUP_SIZE}")])

    def answer_setup_short(self, words):
        """Promises more than it sends."""
        self.send_setup(claimed=SETUP_SIZE + 1000, ranges=False)

    def answer_setup_huge(self, words):
        self.send_response(200)
        self.send_header("Content-Length", str(1 << 60))
        self.end_headers()
        self.cut()

    def answer_setup_without_length(self, words):
        self.send_response(200)
        self.send_header("Connection", "close")
        self.end_headers()
        self.wfile.write(SETUP)
        self.close_connection = True

    def answer_setup_slow(self, words):
        self.send_setup(pause=0.05)


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, context, port=0, answer=Answer):
        super().__init__(("127.0.0.1", port), answer)
        self.context = context
        self.is_plain = context is None

    def finish_request(self, request, client_address):
        # The handshake happens on the connection's own thread, so that a client that refuses the
        # certificate holds nobody up.
        try:
            request.settimeout(30)
            if self.context is not None:
                request = self.context.wrap_socket(request, server_side=True)
            super().finish_request(request, client_address)
        except (OSError, ValueError):
            pass  # the client went away, which many tests do


def openssl(folder, *arguments):
    subprocess.run(["openssl", *arguments], cwd=folder, check=True, capture_output=True)


def make_certificates(folder, names="DNS:localhost"):
    key = ["-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-nodes", "-days", "2"]
    name = "subjectAltName=" + names
    openssl(folder, "req", "-x509", *key, "-subj", "/CN=Vardeko Test Authority", "-keyout", "authority.key",
            "-out", "authority.pem", "-addext", "keyUsage=critical,keyCertSign,cRLSign")
    openssl(folder, "x509", "-in", "authority.pem", "-outform", "DER", "-out", "authority.der")
    openssl(folder, "req", *key, "-subj", "/CN=localhost", "-keyout", "trusted.key", "-out", "trusted.csr")
    with open(os.path.join(folder, "trusted.ext"), "w") as file:
        file.write(name + "\nextendedKeyUsage=serverAuth\nbasicConstraints=CA:FALSE\n")
    openssl(folder, "x509", "-req", "-in", "trusted.csr", "-CA", "authority.pem", "-CAkey", "authority.key",
            "-CAcreateserial", "-days", "2", "-extfile", "trusted.ext", "-out", "trusted.pem")
    openssl(folder, "req", "-x509", *key, "-subj", "/CN=localhost", "-keyout", "untrusted.key",
            "-out", "untrusted.pem", "-addext", name)


def secure_context(folder, name):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(os.path.join(folder, name + ".pem"), os.path.join(folder, name + ".key"))
    return context


def main():
    folder = os.path.abspath(sys.argv[1])
    os.makedirs(folder, exist_ok=True)
    make_certificates(folder)
    contexts = {name: secure_context(folder, name) for name in ("trusted", "untrusted")}
    for name in ("trusted", "untrusted", "plain"):
        server = Server(contexts.get(name))
        ports[name] = server.server_address[1]
        threading.Thread(target=server.serve_forever, daemon=True).start()
    unfinished = os.path.join(folder, "environment.new")
    with open(unfinished, "w") as file:
        for name, port in ports.items():
            file.write(f"VARDEKO_TEST_{name.upper()}=localhost:{port}\n")
        file.write(f"VARDEKO_TEST_WRONG_NAME=127.0.0.1:{ports['trusted']}\n")
        file.write(f"VARDEKO_TEST_AUTHORITY=Z:{os.path.join(folder, 'authority.der')}\n")
    os.replace(unfinished, os.path.join(folder, "environment"))
    watcher = threading.Thread(target=sys.stdin.buffer.read, daemon=True)
    watcher.start()
    watcher.join(LIFETIME)


if __name__ == "__main__":
    main()
