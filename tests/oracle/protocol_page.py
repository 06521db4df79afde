#!/usr/bin/env python3
"""Compares the bytes of docs/protocol.md with the messages that they were taken from. Use: protocol_page.py PAGE DATA

A block begins with the name of its message, and " list" where it shows the value list inside the message's text.
"""
import base64
import pathlib
import re
import sys

BLOCK = re.compile(r"^```text (\S+\.bin)( list)?\n(.*?)^```", re.M | re.S)
LINE = re.compile(r" *(?:\.\.\. (\d+) bytes|((?:[0-9A-F]{2} )*[0-9A-F]{2}))(?:  .*)?")


def list_inside(message):
    if message[:2] == b"\x0a\x84":
        return base64.b64decode(message[4:].decode("utf-16-le"))
    return base64.b64decode(message[5:-2].decode("utf-16-le"))


def main():
    page, data = (pathlib.Path(path) for path in sys.argv[1:])
    shown = set()
    for name, is_list, body in BLOCK.findall(page.read_text(encoding="utf-8")):
        message = (data / name).read_bytes()
        message = list_inside(message) if is_list else message
        position = 0
        for line in body.splitlines():
            match = LINE.fullmatch(line)
            if not match:
                sys.exit(f"{name}, byte {position}: no line of bytes: {line}")
            left_out = int(match[1]) if match[1] else 0
            stated = bytes.fromhex(match[2]) if match[2] else message[position:position + left_out]
            if message[position:position + len(stated)] != stated or left_out > len(stated):
                sys.exit(f"{name}, byte {position}: the page says {line}")
            position += len(stated)
        if position != len(message):
            sys.exit(f"{name}: the page ends at byte {position} of {len(message)}")
        shown.add(name)
    missing = {path.name for path in data.glob("request-*.bin")} | {f"block-{n}" for n in range(1, 9)}
    missing -= shown | {name[:7] for name in shown}
    if missing:
        sys.exit(f"not shown: {sorted(missing)}")
    print(f"{len(shown)} messages agree")


main()
