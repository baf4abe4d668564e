"""A log server for one client, which writes down what it receives.

Prints its port and serves one connection. When that has ended, it prints one line for each thing that
came. It ends with exit code 1, and says why, as soon as a byte is not as it should be.

Usage: fake_server.py [PIECE]   (the most bytes that it takes at once)
"""

import socket
import struct
import sys


class Unexpected(Exception):
    pass


class Peer:
    """The bytes of a connection, in the amounts that are asked for."""

    def __init__(self, connection, piece):
        self.connection = connection
        self.piece = piece

    def take(self, count):
        taken = bytearray()
        while len(taken) < count:
            arrived = self.connection.recv(min(self.piece, count - len(taken)))
            if not arrived:
                raise Unexpected("ended %d bytes too early" % (count - len(taken)))
            taken += arrived
        return bytes(taken)

    def take_type(self):
        """The byte that begins a frame or a request, or nothing at the end."""
        return self.connection.recv(1)


def read_record(record):
    """The fields of an event's record, which must fill it exactly."""
    if record[0:2] != b"01":
        raise Unexpected("mark %r" % record[0:2])
    position = 2
    (level,) = struct.unpack_from(">I", record, position)
    position += 4
    texts = []
    for _ in ("message", "handler", "file"):
        (length,) = struct.unpack_from(">i", record, position)
        position += 4
        if length < 0 or position + length > len(record):
            raise Unexpected("length %d at %d" % (length, position - 4))
        texts.append(record[position : position + length])
        position += length
    line, seconds, microseconds, thread = struct.unpack_from(">iiii", record, position)
    if position + 16 != len(record):
        raise Unexpected("%d bytes after the record" % (len(record) - position - 16))
    return [level] + texts + [line, seconds, microseconds, thread]


def shown(field):
    """A long text by its length and its characters."""
    if isinstance(field, int):
        return str(field)
    if len(field) > 100:
        return "%d*%s" % (len(field), "".join(sorted(set(field.decode("latin-1")))))
    return field.decode("latin-1")


def serve(connection, piece):
    """The bytes that arrived on the connection, in lines."""
    lines = []
    peer = Peer(connection, piece)
    version = peer.take(4)
    if version != b"\x00\x00\x00\x01":
        raise Unexpected("version %r" % version)
    connection.sendall(b"\x00\x00\x00\x01")
    while True:
        kind = peer.take_type()
        if not kind:
            return lines
        if kind == b"\x01":
            (length,) = struct.unpack(">i", peer.take(4))
            if length < 34:
                raise Unexpected("record of %d bytes" % length)
            record = read_record(peer.take(length))
            lines.append("|".join(shown(field) for field in record))
        elif kind == b"\x02":
            connection.sendall(b"!")
            lines.append("flush")
        else:
            raise Unexpected("byte %r between frames" % kind)


def main():
    piece = int(sys.argv[1]) if len(sys.argv) > 1 else 65536
    with socket.create_server(("127.0.0.1", 0)) as listener:
        listener.settimeout(60)
        print(listener.getsockname()[1], flush=True)
        connection, _ = listener.accept()
    with connection:
        connection.settimeout(60)
        lines = serve(connection, piece)
    sys.stdout.reconfigure(encoding="utf-8")
    for line in lines:
        print(line)
    return 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except Unexpected as error:
        sys.exit("fake_server.py: " + str(error))
