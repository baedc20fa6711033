"""Writes or reads the bytes of a stream with Python's struct module, for the tests.

    byte_stream.py ORDER KINDS < VALUES > BYTES
    byte_stream.py ORDER KINDS --read < BYTES > VALUES

ORDER is "<" or ">", KINDS a letter for each value: struct's own, or "t" for a text. Values stand in a line each, texts in
hexadecimal.
"""

import struct
import sys

ORDER, KINDS = sys.argv[1:3]


def write(kind, value):
    if kind == "t":
        return write("I", len(value) // 2) + bytes.fromhex(value)
    return struct.pack(ORDER + kind, float(value) if kind in "fd" else int(value))


def read(kind, data):
    if kind == "t":
        return data.read(read("I", data)).hex()
    return struct.unpack(ORDER + kind, data.read(struct.calcsize(ORDER + kind)))[0]


if len(sys.argv) == 3:
    for kind, value in zip(KINDS, sys.stdin):
        sys.stdout.buffer.write(write(kind, value.strip()))
else:
    for kind in KINDS:
        print({"f": "%.17g", "d": "%.17g", "t": "%s"}.get(kind, "%d") % read(kind, sys.stdin.buffer))
    sys.exit(sys.stdin.buffer.read(1) and "bytes are left over" or 0)
