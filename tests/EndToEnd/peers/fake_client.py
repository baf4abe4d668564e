"""A client of a log server, which sends events as its arguments say.

Every argument after the port is one action, in order:

  event:LEVEL|MESSAGE|HANDLER|FILE|LINE|SECONDS|MICROSECONDS|THREAD   send an event
  large:SIZE       send an event with a message of so many letters x
  many:COUNT       send so many events in one go, with the messages 0, 1, 2, ...
  pieces:SIZE      send what follows in pieces of so many bytes
  bytes:HEX        send these bytes as they are
  flush            ask whether all was taken, and wait for the one byte that says so

Ends with exit code 1, and says why, when the server does not answer as it should.

Usage: fake_client.py PORT VERSION EXPECTED_VERSION ACTION...
"""

import socket
import struct
import sys


class Unexpected(Exception):
    pass


def with_length(text):
    return struct.pack(">i", len(text)) + text


def frame(level, message, handler, file, line, seconds, microseconds, thread):
    record = b"01" + struct.pack(">I", level)
    for text in (message, handler, file):
        record += with_length(text)
    record += struct.pack(">iiii", line, seconds, microseconds, thread)
    return b"\x01" + with_length(record)


def plain_frame(message):
    return frame(1, message, b"peer", b"fake_client.py", 1, 1709647629, 42, 7)


def event_frame(text):
    level, message, handler, file, line, seconds, microseconds, thread = text.split("|")
    return frame(
        int(level),
        message.encode(),
        handler.encode(),
        file.encode(),
        int(line),
        int(seconds),
        int(microseconds),
        int(thread),
    )


class Client:
    def __init__(self, port):
        self.connection = socket.create_connection(("127.0.0.1", port), timeout=60)
        self.connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        self.piece = 0

    def send(self, data):
        size = self.piece or len(data)
        for start in range(0, len(data), size):
            self.connection.sendall(data[start : start + size])

    def take(self, count):
        taken = b""
        while len(taken) < count:
            arrived = self.connection.recv(count - len(taken))
            if not arrived:
                raise Unexpected("the server closed")
            taken += arrived
        return taken

    def open(self, version, expected):
        self.send(struct.pack(">i", version))
        (answer,) = struct.unpack(">i", self.take(4))
        if answer != expected:
            raise Unexpected("version %d answered with %d" % (version, answer))

    def flush(self):
        self.send(b"\x02")
        self.take(1)

    def end(self):
        """Nothing may have come that was not asked for."""
        self.connection.setblocking(False)
        try:
            raise Unexpected("the server sent %r" % self.connection.recv(1))
        except BlockingIOError:
            self.connection.close()

    def do(self, action):
        name, _, text = action.partition(":")
        if name == "event":
            self.send(event_frame(text))
        elif name == "large":
            self.send(plain_frame(b"x" * int(text)))
        elif name == "many":
            self.send(b"".join(plain_frame(str(i).encode()) for i in range(int(text))))
        elif name == "pieces":
            self.piece = int(text)
        elif name == "bytes":
            self.send(bytes.fromhex(text))
        elif name == "flush":
            self.flush()
        else:
            raise Unexpected("unknown action " + action)


def main():
    client = Client(int(sys.argv[1]))
    client.open(int(sys.argv[2]), int(sys.argv[3]))
    for action in sys.argv[4:]:
        client.do(action)
    client.end()
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Unexpected as error:
        sys.exit("fake_client.py: " + str(error))
