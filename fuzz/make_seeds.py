#!/usr/bin/env python3
"""Makes the seed corpus below corpus/ from the recorded messages of tests/data. Use: make_seeds.py

Inputs that fuzzing has found stand beside the seeds; they are kept, with names that begin with what they showed.
"""
import base64
import glob
import json
import os
import random
import struct
import sys
import zlib

here = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, os.path.join(here, "..", "tests", "oracle"))
import compare  # noqa: E402
import decoder  # noqa: E402

data = os.path.join(here, "..", "tests", "data")


def write(target, name, content):
    folder = os.path.join(here, "corpus", target)
    os.makedirs(folder, exist_ok=True)
    with open(os.path.join(folder, name), "wb") as file:
        file.write(content)


def read(name):
    with open(os.path.join(data, name), "rb") as file:
        return file.read()


def capture(packet):
    """A recording of one packet."""
    size = 32 + len(packet) + -len(packet) % 4
    return (struct.pack("<IIIHHqI", 0x0A0D0D0A, 28, 0x1A2B3C4D, 1, 0, -1, 28) +
            struct.pack("<IIHHIHHIII", 1, 32, 147, 0, 0, 9, 1, 9, 0, 32) +
            struct.pack("<IIIIIII", 6, size, 0, 0, 5, len(packet), len(packet)) + packet.ljust(size - 32, b"\0") + struct.pack("<I", size))


def jpeg(width, height, scans):
    """A grey picture; both tables have the one code "0". More than one scan: progressive."""
    def segment(marker, content):
        return bytes([0xFF, marker]) + struct.pack(">H", len(content) + 2) + content
    one_code, blocks = b"\1" + bytes(16), (width + 7) // 8 * ((height + 7) // 8)
    data = bytes((blocks * (2 if scans == 1 else 1) + 7) // 8)
    spectra = [b"\0\x3f\0"] if scans == 1 else [b"\0\0\0"] + [b"\1\x3f\0"] * (scans - 1)
    return (b"\xff\xd8" + segment(0xDB, b"\0" + b"\x10" * 64) +
            segment(0xC0 if scans == 1 else 0xC2, struct.pack(">BHH", 8, height, width) + b"\1\1\x11\0") +
            segment(0xC4, b"\0" + one_code) + segment(0xC4, b"\x10" + one_code) +
            b"".join(segment(0xDA, b"\1\1\0" + spectrum) + data for spectrum in spectra) + b"\xff\xd9")


def png(width, height, kind, pixel_bytes):
    def chunk(name, content):
        return struct.pack(">I", len(content)) + name + content + struct.pack(">I", zlib.crc32(name + content))
    rows = b"".join(bytes([y % 5]) + bytes(range(width * pixel_bytes)) for y in range(height))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, kind, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def main():
    generator = compare.Generator(1)
    bmp = struct.pack("<2sIIIIiiHHIIIIII", b"BM", 86, 0, 54, 40, 3, 2, 1, 24, 0, 24, 0, 0, 0, 0) + bytes(range(24))
    for name, picture in {"jpeg": jpeg(24, 16, 1), "progressive": jpeg(8, 8, 3), "png-grey": png(5, 4, 0, 1),
                          "png-colour": png(4, 6, 2, 3), "png-alpha": png(3, 5, 6, 4), "bmp": bmp}.items():
        for shown in (0, 1):
            write("camera_picture", f"seed-{name}-{shown}", bytes([shown]) + picture)
    with open(os.path.join(data, "expected.json"), encoding="utf-8") as file:
        expected = json.load(file)
    small = [os.path.basename(p) for p in sorted(glob.glob(os.path.join(data, "*.bin"))) if os.path.getsize(p) < 5000]

    for name in small:
        message = read(name)
        form = ["request", "reply", "block"].index(name.split("-")[0])
        type = expected[name]["messageType"] if form == 2 else 0
        write("decode", f"seed-{name}", bytes([form, type]) + message)
        part = struct.pack("<IQ", 2 + form, len(message)) + message
        write("capture_reader", f"seed-{name}", capture(struct.pack(
            "<BBBBBBHIIQQQQ", 1, 48, form // 2, 4, form // 2, 1, 0, 7, type, 1500, 9, len(part), 0) + part))
        if name.startswith("block-"):
            write("finder_block", f"seed-{name}", bytes([expected[name]["messageType"], 0]) + message)
        elif name.startswith("reply-"):
            write("variant_stream", f"seed-{name}", message)
            write("value_list_text", f"seed-{name}", message[5:])
            write("value_list_read", f"seed-{name}", b"\0" + decoder.decode_base64(message[5:].replace(b"\0", b"")))
            size = -(-len(message) // 16)
            if size < 256:
                # reply; list; install
                write("conversation", f"seed-{name}", bytes([0, 9, size]) + message.ljust(size * 16, b"\0") + bytes([2, 1, 0]))
        else:
            write("value_list_text", f"seed-{name}", message[4:])
    block = read("block-3-camera.bin")
    size = -(-len(block) // 8)
    write("conversation", "seed-block-3", bytes([0, 0, 10, 3, size]) + block.ljust(size * 8, b"\0") + bytes([7, 10, 3, 0, 6, 0, 1]))
    write("conversation", "seed-failures", bytes([0, 0xC2, 1, 0x42, 1, 0xC0, 0x40, 0xC6]))
    reply = read("reply-list-0.bin")
    size = -(-len(reply) // 16)
    # reply; for several n: the n-th allocation fails; list
    write("conversation", "seed-failing-allocations",
          bytes([0, 9, size]) + reply.ljust(size * 16, b"\0") + b"".join(bytes([8, 2 * n, 2, 1]) for n in range(1, 100, 8)))

    for i in range(12):
        write("record_list", f"seed-{i}", generator.elements(1))
        write("value_list_read", f"seed-{i}", bytes([i]) + generator.list([(generator.name(b"n"), generator.value()) for _ in range(i)]))
        write("finder_block", f"seed-failing-{3 * i}", bytes([3, 3 * i]) + read("block-3-camera.bin"))
        write("finder_block", f"seed-type{i % 9}-{i}", bytes([i % 9, i]) + generator.block(i % 9))
    random.seed(1)
    for tag in range(21):
        write("wide_string", f"seed-{tag}", generator.value(tag))
        write("variant_stream", f"seed-{tag}", generator.value(tag))
    texts = [b"1", b"true", b"-42", b"4294967295", b"99999999999999999999", b"1e308", b"nan", b"3.25e-7", b"K\xc3\xbcche",
             b"binarydata 3 QUJD", b"blobptr 3 4096", b"2024/05/01 10:20:30,123", b"2024-05-01 10:20:30.123 UTC+02:00",
             b"{6f9619ff-8b86-d011-b42d-00cf4fc964ff}", b"6F9619FF-8B86-D011-B42D-00CF4FC964FF"]
    for i, text in enumerate(texts):
        for tag in (0, 3, 6, 8, 9, 10, 12, 13, 14, 15, 16, 18):
            if (i + tag) % 3 == 0:
                write("variant_text", f"seed-{tag}-{i}", bytes([tag]) + text)
        write("date_time", f"seed-{i}", text.decode("utf-8").encode("utf-16-le"))
        write("guid", f"seed-{i}", text)
    for i, size in enumerate([0, 1, 2, 3, 56, 57, 58, 200]):
        text = base64.b64encode(bytes(range(size)))
        write("base64", f"seed-{i}", b"\r\n".join(text[at:at + 76] for at in range(0, len(text), 76)))
    for i, text in enumerate(["Load result: {0} of {1}", "{0,5}|{0,-5}|{0,600}", "a}}b{{c}}", "ab{{c", "x{0", "a}b", "{10}{1,}"]):
        write("text_format", f"seed-{i}", bytes([i]) + text.encode("utf-16-le"))
    wide = "utf-16-le"
    values = [(1, "10\0".encode(wide)), (1, "\t \n-2147483648".encode(wide)), (1, "+2147483648\0".encode(wide)), (1, b" 42\0 behind"),
              (1, "00000000000000000007".encode(wide) + b"0"), (1, "12 \0".encode(wide)), (2, "%HOME%\0".encode(wide)), (2, b"  5%\0"),
              (2, " 99999999999\0".encode(wide)), (3, b"\1\0\0\x80"), (4, b"\xff\xff\xff\xff"), (5, b"\0\0\1\2"), (7, "3\0\0".encode(wide)),
              (8, struct.pack("<q", -2**31)), (8, struct.pack("<q", 2**31)), (9, b"\1\0\0\0")]
    for i, (kind, content) in enumerate(values):
        write("registry_value", f"seed-{i}", bytes([kind]) + content)


    write("encode", "seed-list", json.dumps({"type": "list", "name": "", "items": [
        {"type": "vtUInt", "name": "CMD", "value": 6}, {"type": "vtString", "name": "GetInfoByIp", "value": "10.0.0.5"},
        {"type": "vtBinaryData", "name": "PLN", "items": [{"type": "list", "items": []}]},
        {"type": "vtGuid", "name": "g", "value": "00" * 16}, {"type": "vtDouble", "name": "d", "value": 0.5}]}).encode())
    write("encode", "seed-block", json.dumps({"type": "block", "items": [
        {"type": "chunk", "value": 5, "length": 9, "items": [{"type": "vtWString", "value": "A"}]},
        {"type": "chunk", "value": 7, "items": [{"type": "values", "value": [1, 2]}]}, {"type": "end"}]}).encode())


if __name__ == "__main__":
    main()
