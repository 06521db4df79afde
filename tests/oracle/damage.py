#!/usr/bin/env python3
"""Every recorded reply and block of up to 1 KiB, damaged in one place, through the library and the second reading.

Use: damage.py PROBE [SAMPLES]      cut at every byte, every bit flipped, and at every byte a hostile number in place of
the 4 or 8 bytes that stand there; a length or a count is hit that way wherever it stands.
"""
import glob
import json
import os
import sys

import compare

HOSTILE_32 = [0, 1, 1 << 31, (1 << 32) - 1]
HOSTILE_64 = [1 << 61, 1 << 63, (1 << 64) - 1]


def damaged(message):
    for at in range(len(message)):
        yield message[:at]
    for at in range(len(message)):
        for bit in range(8):
            yield message[:at] + bytes([message[at] ^ 1 << bit]) + message[at + 1:]
    for size, numbers in ((4, HOSTILE_32), (8, HOSTILE_64)):
        for at in range(len(message) - size + 1):
            for number in numbers:
                yield message[:at] + number.to_bytes(size, "little") + message[at + size:]


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__.strip())
    here = os.path.dirname(os.path.abspath(__file__))
    folder = sys.argv[2] if len(sys.argv) > 2 else os.path.join(here, "..", "data")
    with open(os.path.join(folder, "expected.json"), encoding="utf-8") as file:
        expected = json.load(file)
    messages = []
    for path in sorted(glob.glob(os.path.join(folder, "[br]*.bin"))):
        name = os.path.basename(path)
        if name.startswith("request-") or os.path.getsize(path) > 1024:
            continue
        with open(path, "rb") as file:
            content = file.read()
        kind = "B" if name.startswith("block-") else "R"
        messages += [(kind, expected[name].get("messageType", 0), message) for message in damaged(content)]
    return compare.run(sys.argv[1], messages)


if __name__ == "__main__":
    sys.exit(main())
