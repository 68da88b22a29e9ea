#!/usr/bin/env python3
"""Adds colour range chunks to an ILBM picture that netpbm's ppmtoilbm wrote
(netpbm writes none). Usage:
  add-ranges.py IN.lbm OUT.lbm RANGE...
each RANGE one of
  crng:LOW:HIGH:RATE[:reverse][:off]     (rate 16384 = 60 steps per second)
  ccrt:LOW:HIGH:MICROSECONDS[:reverse][:off]
  drng:LOW:HIGH:RATE                     (one register cell per index)
The chunks go in front of BODY; the FORM size is made right."""
import struct
import sys


def chunk(cid, body):
    pad = b"\0" if len(body) % 2 else b""
    return cid + struct.pack(">I", len(body)) + body + pad


def range_chunk(text):
    kind, low, high, value, *flags = text.split(":")
    low, high, value = int(low), int(high), int(value)
    if kind == "crng":
        f = (0 if "off" in flags else 1) | (2 if "reverse" in flags else 0)
        return chunk(b"CRNG", struct.pack(">hhhBB", 0, value, f, low, high))
    if kind == "ccrt":
        d = 0 if "off" in flags else (-1 if "reverse" in flags else 1)
        return chunk(b"CCRT", struct.pack(">hBBIIh", d, low, high, value // 1000000,
                                          value % 1000000, 0))
    if kind == "drng":
        regs = b"".join(struct.pack("BB", c, c) for c in range(low, high + 1))
        return chunk(b"DRNG", struct.pack(">BBhhBB", low, high, value, 1, 0,
                                          high - low + 1) + regs)
    sys.exit("unknown range kind " + kind)


def main():
    data = open(sys.argv[1], "rb").read()
    assert data[:4] == b"FORM" and data[8:12] in (b"ILBM", b"PBM ")
    at = 12
    while data[at:at + 4] != b"BODY":
        size = struct.unpack(">I", data[at + 4:at + 8])[0]
        at += 8 + size + (size & 1)
    extra = b"".join(range_chunk(s) for s in sys.argv[3:])
    body = data[12:at] + extra + data[at:]
    open(sys.argv[2], "wb").write(b"FORM" + struct.pack(">I", len(body) + 4) + data[8:12] + body)


main()
