#!/usr/bin/env python3
"""Random messages and damaged ones, through the library and through the second reading, which must agree.

Use: compare.py PROBE [COUNT] [SEED]     PROBE may be several words, as for a program that needs a launcher.
"""
import base64
import json
import os
import random
import re
import shlex
import struct
import subprocess
import sys
import tempfile

import decoder


def text_record(text):
    return b"\x0b" + struct.pack("<I", len(text) + 1) + text + b"\0"


def wide_record(text):
    units = text.encode("utf-16-le", "surrogatepass")
    return b"\x0c" + struct.pack("<I", len(units) + 2) + units + b"\0\0"


class Generator:
    """Messages that are mostly well-formed, in every shape that the wire allows."""

    TEXTS = [b"", b"1", b"0", b"42", b"300", b"-7", b"  +12abc", b"99999999999999999999", b"00:40:8C:00:00:01", b"yes",
             "Küche €".encode(), "京-1".encode(), b"a\0b", b"\xff\xc3(", b"\xf0\x9f\x93\xb7", b"UNKNOWN", b"Axis IPC"]
    WIDE = ["", "Camera Küche", "42", "\0hidden", "00:40:8C:00:00:21", "京€", "1", "Axis IPC", "\u0081\u0150"]

    def __init__(self, seed):
        self.random = random.Random(seed)

    def payload(self, tag):
        r = self.random
        if tag in (9, 10):
            number = r.choice([0.0, -0.0, 1.0, 2.9, -2.9, 0.1, 0.05, 255.7, 1e6, 999999.5, 1e15, 1.5e15, 4e9, -4e9, 3.25e-7, 1e18])
            return struct.pack("<f" if tag == 9 else "<d", number)
        if tag == 15:
            return struct.pack("<Q", r.choice([0, 1, 133590000000000000, 1 << 63, r.randrange(1 << 61)]))
        if tag == 16:
            return struct.pack("<Q", r.choice([0, 13359000000000, r.randrange(1 << 47)]) | r.choice([0, 60, 65476, 30]) << 48)
        if tag == 17:
            return r.choice([bytes(8), bytes(8), struct.pack("<Q", 0x1234)])
        if tag == 0:
            return bytes([r.choice([0, 1, 1, 7])])
        if tag in decoder.FIXED_SIZES:
            size = decoder.FIXED_SIZES[tag]
            return r.choice([bytes(size), b"\xff" * size, b"\x01" + bytes(size - 1), r.randbytes(size)])
        return None

    def value(self, tag=None):
        r = self.random
        tag = r.randrange(21) if tag is None else tag
        payload = self.payload(tag)
        if payload is not None:
            return bytes([tag]) + payload
        if tag == 11:
            return text_record(r.choice(self.TEXTS))
        if tag == 12:
            return wide_record(r.choice(self.WIDE))
        data = r.choice([b"", r.randbytes(r.randrange(1, 90)), self.elements(0)])
        return bytes([tag]) + struct.pack("<I", len(data)) + data

    def list(self, entries, name=b""):
        packed = b"".join(key + value for key, value in entries)
        head = text_record(name) if self.random.random() < 0.9 else self.value(self.random.choice([2, 6, 10, 12, 18]))
        return b"VLIS" + head + struct.pack("<I", len(entries)) + packed

    def name(self, text):
        return text_record(text) if self.random.random() < 0.95 else wide_record(text.decode())

    def elements(self, depth=1):
        """A list block."""
        r = self.random
        count = r.randrange(4)
        items = [self.record(depth - 1) if depth else self.list([(self.name(r.choice([b"mac", b"mac", b"ip"])), self.value(
            r.choice([11, 11, 12, 6, None])))]) for _ in range(count)]
        marker = b"\xFFECB" if r.random() < 0.95 else b"\xFFECA"
        return marker + struct.pack("<I", count if r.random() < 0.95 else r.choice([0, count + 1, 1 << 31])) + b"".join(items)

    def record(self, depth=0):
        r = self.random
        usual = {"text": 11, "texts": 13, "flag": 0, 8: 2, 32: 6, 64: 8}
        entries = []
        for key, kind, _ in decoder.RECORD:
            for _ in range(r.choice([1, 1, 1, 1, 1, 1, 0, 2])):
                value = self.value(usual[kind] if r.random() < 0.85 else None)
                if kind == "texts" and r.random() < 0.8:
                    block = self.elements(0)
                    value = b"\x0d" + struct.pack("<I", len(block)) + block
                if kind == 64 and r.random() < 0.5:
                    value = b"\x08" + struct.pack("<Q", r.choice([0, 0x40, 0x41, 1 << 29, (1 << 64) - 1, 1 << 18]))
                entries.append((self.name(key.encode()), value))
        return self.list(entries)

    def cameras(self):
        block = self.elements(1)
        key = b"CAMERAINFOLIST" if self.random.random() < 0.95 else b"CAMERAINFO"
        command = [(self.name(b"CMD"), b"\x06" + struct.pack("<I", self.random.choice([3, 2, 1 << 31])))]
        return self.list(command * (self.random.random() < 0.3) + [(self.name(key), b"\x0d" + struct.pack("<I", len(block)) + block)])

    def reply(self):
        r = self.random
        text = base64.b64encode(self.cameras()).decode()
        if r.random() < 0.5:
            text = "\r\n".join(text[i:i + 76] for i in range(0, len(text), 76))
        if r.random() < 0.1:
            text = text[:r.randrange(len(text) + 1)] + r.choice(["=", "!", " ", "\0", "é"]) + text[-9:]
        return r.choice([wide_record(text)] * 8 + [text_record(text.encode("latin-1")), self.value(), b""])

    def block(self, message_type):
        r = self.random
        chunks = []
        for _ in range(r.randrange(6)):
            tag = r.choice([1, 2, 3, 4, 5, 5, 5, 6, 7, 8, 9, 10, 12, 99, {3: 1, 4: 2, 5: 3, 6: 4}.get(message_type, 7)])
            if tag in (5, 8, 9, 10):
                payload = self.value(12 if r.random() < 0.8 else r.choice([11, 6, 10, 15, 16, 18]))
            elif tag in (1, 2, 3, 4):
                payload = self.cameras()
            elif tag == 7:
                numbers = [r.randrange(1 << 64) for _ in range(r.randrange(4))]
                payload = struct.pack(f"<QQ{len(numbers)}Q", len(numbers), r.choice([8, 8, 8, 4]), *numbers)
            elif tag == 12:
                payload = b"\x03"
            else:
                payload = r.randbytes(r.randrange(50))
            length = 0 if tag == 12 and message_type == 7 else len(payload)
            chunks.append(struct.pack("<IQ", tag, length) + payload)
        return b"".join(chunks) + r.choice([b"", bytes(4), bytes(2)])

    def damaged(self, message):
        r = self.random
        message = bytearray(message)
        for _ in range(r.randrange(1, 4)):
            if not message:
                break
            at = r.randrange(len(message))
            how = r.randrange(4)
            if how == 0:
                message[at] ^= 1 << r.randrange(8)
            elif how == 1:
                del message[at:]
            elif how == 2:
                message[at:at + 4] = struct.pack("<I", r.choice([0, 1, 2, 21, 1 << 31, (1 << 32) - 1]))
            else:
                del message[at:at + r.randrange(1, 9)]
        return bytes(message)

    def message(self):
        r = self.random
        message_type = r.choice([*range(10), *range(1, 9), *range(1, 9)])
        kind = r.choice("RB")
        message = self.reply() if kind == "R" else self.block(message_type)
        return kind, message_type, self.damaged(message) if r.random() < 0.4 else message


def expected(kind, message_type, message):
    if kind == "B":
        return {"delivered": decoder.decode_block(message_type, message)}
    try:
        return {"cameras": decoder.decode_reply(message)}
    except decoder.Failure as failure:
        return {"text": str(failure)}


def comparable(result):
    """Without what differs from run to run: the text that a failed conversion repeats, and the address of a blob."""
    if "text" in result:
        return result["text"].split("[")[0]
    return json.loads(re.sub(r'blobptr (\d+?)[0-9A-F]{16}"', r'blobptr \1"', json.dumps(result)))


def run(probe, messages):
    """Plays the messages, prints where the two readings differ, and returns the exit code."""
    wanted, played, left_out = [], [], 0
    for message in messages:
        try:
            wanted.append(expected(*message))
            played.append(message)
        except (NotImplementedError, OverflowError):  # not a number, or a year that this calendar lacks
            left_out += 1
    with tempfile.TemporaryDirectory() as folder:
        paths = [os.path.join(folder, name) for name in ("input", "output")]
        with open(paths[0], "wb") as file:
            for kind, message_type, message in played:
                file.write(kind.encode() + struct.pack("<II", message_type, len(message)) + message)
        subprocess.run(shlex.split(probe) + paths, check=True)
        with open(paths[1], encoding="utf-8") as file:
            found = [json.loads(line) for line in file]
    differences = [i for i in range(len(played)) if i >= len(found) or comparable(found[i]) != comparable(wanted[i])]
    for i in differences[:5]:
        kind, message_type, message = played[i]
        print(f"message {i}: kind {kind}, type {message_type}: {message.hex()}")
        print(f"  library        {json.dumps(found[i]) if i < len(found) else 'nothing'}")
        print(f"  second reading {json.dumps(wanted[i])}")
    delivered = sum(1 for result in wanted if result.get("cameras") or result.get("delivered"))
    print(f"{len(played) - len(differences)} agree ({delivered} with something delivered), {len(differences)} differ, "
          f"{left_out} left out")
    return 1 if differences else 0


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__.strip())
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 3000
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else random.randrange(1 << 32)
    print(f"seed {seed}, {count} messages", flush=True)
    generator = Generator(seed)
    return run(sys.argv[1], [generator.message() for _ in range(count)])


if __name__ == "__main__":
    sys.exit(main())
