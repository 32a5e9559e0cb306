#!/usr/bin/env python3
"""Reads the property lists of a backup file with Python's plistlib.

Walks the records by their 4-byte length words (little-endian, as written on
this machine), skips each content block and parses the types and datas blocks.
Prints one line: the seconds taken, the file's size, the records read and the
throughput over the whole file in MB/s (10^6 bytes per second)."""

import plistlib
import struct
import sys
import time


def read(path):
    with open(path, "rb") as f:
        data = f.read()
    start = time.perf_counter()
    offset, records = 0, 0
    while offset + 4 <= len(data):
        blocks = []
        for _ in range(3):
            (length,) = struct.unpack_from("<i", data, offset)
            offset += 4
            blocks.append(data[offset:offset + length])
            offset += length
        if offset > len(data):
            break
        plistlib.loads(blocks[1])
        plistlib.loads(blocks[2])
        records += 1
    seconds = time.perf_counter() - start
    return seconds, len(data), records


if __name__ == "__main__":
    seconds, size, records = read(sys.argv[1])
    print(f"seconds={seconds:.3f} bytes={size} records={records} mbps={size / seconds / 1e6:.1f}")
