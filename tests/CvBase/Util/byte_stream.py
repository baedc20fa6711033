"""Reads and writes the bytes of a stream with Python's struct module, for the tests.

    byte_stream.py encode big|little          values on standard input, a line each: their bytes on standard output
    byte_stream.py decode big|little KIND...  bytes on standard input: the values of these kinds, a line each

A line is a kind and a value: a number, or for texts and bytes their bytes in hexadecimal. "bytes:N" is the kind of N bytes
without a length.
"""

import struct
import sys

FORMATS = {
    "bool": "?", "char": "b", "uchar": "B", "short": "h", "ushort": "H", "int": "i", "uint": "I", "longlong": "q",
    "ulonglong": "Q", "long": "l", "ulong": "L", "float": "f", "double": "d",
}


def encode(order, lines):
    out = b""
    for line in lines:
        kind, value = line.rstrip("\n").split(" ")
        if kind == "text":
            out += struct.pack(order + "I", len(value) // 2) + bytes.fromhex(value)
        elif kind.startswith("bytes:"):
            out += bytes.fromhex(value)
        else:
            out += struct.pack(order + FORMATS[kind], float(value) if kind in ("float", "double") else int(value))
    return out


def decode(order, kinds, data):
    lines = []
    for kind in kinds:
        if kind == "text":
            size = struct.unpack_from(order + "I", data)[0]
            value, data = data[4:4 + size].hex(), data[4 + size:]
        elif kind.startswith("bytes:"):
            size = int(kind[len("bytes:"):])
            value, data = data[:size].hex(), data[size:]
        else:
            number = struct.unpack_from(order + FORMATS[kind], data)[0]
            value = "%.17g" % number if kind in ("float", "double") else "%d" % number
            data = data[struct.calcsize(order + FORMATS[kind]):]
        lines.append(kind + " " + value + "\n")
    if data:
        sys.exit("%d bytes are left over" % len(data))
    return "".join(lines)


ORDER = {"big": ">", "little": "<"}[sys.argv[2]]
if sys.argv[1] == "encode":
    sys.stdout.buffer.write(encode(ORDER, sys.stdin))
else:
    sys.stdout.write(decode(ORDER, sys.argv[3:], sys.stdin.buffer.read()))
