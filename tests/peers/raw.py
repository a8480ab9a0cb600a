"""Servers over TLS that answer as no good server does, byte by byte as written here.

    raw.py FOLDER    FOLDER/certificates holds NAME.pem and NAME.key

Listens on a free port of 127.0.0.1 for each certificate, writes "NAME PORT" lines to FOLDER/raw.ports, and to
FOLDER/raw.log a line for each request whose header arrived and, when a connection ends, how many bytes did.
The path chooses the answer. A connection takes one request.
"""

import base64
import json
import os
import socket
import ssl
import sys
import threading
import time

CERTIFICATES = ["server", "self-signed", "unknown-ca", "other-host", "expired"]
# Longer than the client is given for a check.
PATIENCE = 90

folder = sys.argv[1]
log_file = open(os.path.join(folder, "raw.log"), "a", buffering=1)


class Connection:
    """One that counts the bytes that arrive in it."""

    def __init__(self, stream):
        self.stream = stream
        self.received = 0

    def read(self):
        data = self.stream.recv(65536)
        self.received += len(data)
        return data

    def send(self, status, body=b"", headers=""):
        self.stream.sendall(f"HTTP/1.1 {status}\r\n{headers}\r\n".encode() + body)


def send_json(connection, status, answer, headers="Connection: close\r\n"):
    body = json.dumps(answer).encode()
    connection.send(status, body, f"Content-Length: {len(body)}\r\n{headers}")


def read_body(connection, head, body):
    length = int(head.get("content-length", 0))
    while len(body) < length:
        data = connection.read()
        if not data:
            break
        body += data
    return body


REFUSALS = {"401": "401 Unauthorized", "413": "413 Content Too Large"}
INTERIMS = {"100": "100 Continue", "102": "102 Processing", "103": "103 Early Hints"}


def echo(connection, head, body, _):
    whole = read_body(connection, head, body)
    send_json(connection, "200 OK", {"type": head["content-type"], "body": base64.b64encode(whole).decode()})


def refuse_and_close(connection, _head, _body, words):
    send_json(connection, REFUSALS[words[0]], {"status": "refused"})


def refuse_and_hold(connection, _head, _body, words):
    send_json(connection, REFUSALS[words[0]], {"status": "refused"}, "")
    time.sleep(PATIENCE)


def interim(connection, head, body, words):
    read_body(connection, head, body)
    connection.send(INTERIMS[words[0]])
    if words[1] == "apart":
        # Lets the client see it by itself; there is nothing to wait for.
        time.sleep(0.2)
    send_json(connection, "200 OK", {"status": "final"})


def end_by_alert(connection, head, body, _):
    read_body(connection, head, body)
    connection.send("200 OK", b"whole", "Connection: close\r\n")
    # Sends the alert, and returns the TCP connection, which stays open, when the other side's has come.
    plain = connection.stream.unwrap()
    plain.settimeout(PATIENCE)
    plain.recv(1)
    plain.close()


ANSWERS = {
    "echo": echo,
    "close": refuse_and_close,
    "hold": refuse_and_hold,
    "interim": interim,
    "alert": end_by_alert,
}


def answer_one(connection):
    start = b""
    while b"\r\n\r\n" not in start:
        data = connection.read()
        if not data:
            return
        start += data
    lines, body = start.split(b"\r\n\r\n", 1)
    request, *headers = lines.decode().split("\r\n")
    head = {name.lower(): value.strip() for name, _, value in (line.partition(":") for line in headers)}
    method, path, _ = request.split(" ")
    log_file.write(f"request {method} {path}\n")
    first, *words = path.partition("?")[0].strip("/").split("/")
    ANSWERS[first](connection, head, body, words)


def serve(name, context, accepted):
    connection = Connection(None)
    try:
        accepted.settimeout(PATIENCE)
        connection.stream = context.wrap_socket(accepted, server_side=True)
        answer_one(connection)
    except OSError as error:
        log_file.write(f"broken {name} {error}\n")
    finally:
        if connection.stream:
            connection.stream.close()
        accepted.close()
        log_file.write(f"ended {name} {connection.received}\n")


def accept_all(name, listener):
    context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
    context.load_cert_chain(*(os.path.join(folder, "certificates", name + suffix) for suffix in (".pem", ".key")))
    while True:
        accepted, _ = listener.accept()
        threading.Thread(target=serve, args=(name, context, accepted), daemon=True).start()


listeners = {name: socket.create_server(("127.0.0.1", 0)) for name in CERTIFICATES}
for each in listeners.items():
    threading.Thread(target=accept_all, args=each, daemon=True).start()
with open(os.path.join(folder, "raw.ports.new"), "w") as file:
    file.writelines(f"{name} {listener.getsockname()[1]}\n" for name, listener in listeners.items())
os.rename(file.name, os.path.join(folder, "raw.ports"))
threading.Event().wait()
