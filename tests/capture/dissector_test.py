#!/usr/bin/env python3
"""Compares what tshark shows of recorded samples, by the dissector, with what tarnfind decodes.

Use: dissector_test.py "TARNFIND COMMAND" DISSECTOR SAMPLES. Exit code 77 where there is no tshark.
"""
import glob
import json
import os
import shlex
import shutil
import struct
import subprocess
import sys
import tempfile
import xml.etree.ElementTree

SECTION = (struct.pack("<IIIHHqI", 0x0A0D0D0A, 28, 0x1A2B3C4D, 1, 0, -1, 28) +
           struct.pack("<IIHHII", 1, 20, 147, 0, 0, 20))
TYPES = ["vtBool", "vtChar", "vtUChar", "vtSChar", "vtShort", "vtUShort", "vtUInt", "vtInt", "vtInt64", "vtFloat",
         "vtDouble", "vtString", "vtWString", "vtBinaryData", "vtBlobPtr", "vtFileTime", "vtDateTime",
         "vtReferencePointer", "vtGuid", "vtLong", "vtUInt64"]


def part(kind, payload):
    return struct.pack("<IQ", kind, len(payload)) + payload


def frame(name, message, message_type):
    is_block = name.startswith("block")
    body = part(1, struct.pack("<Q", 2)) + part(4 if is_block else 3 if name.startswith("reply") else 2, message)
    return struct.pack("<BBBBBBHIIQQQQ", 1, 48, int(is_block), 4, int(is_block), 1, 0, 7, message_type, 0, 9, len(body), 0) + body


def packets(frame_bytes):
    """As the recorder writes a frame: in pieces of the largest packet that tshark takes."""
    header, body = frame_bytes[:48], frame_bytes[48:]
    most = 262144 - 48
    for at in range(0, len(body), most):
        packet = header[:40] + struct.pack("<Q", at) + body[at:at + most]
        size = 32 + len(packet) + -len(packet) % 4
        yield struct.pack("<IIIIIII", 6, size, 0, 0, 0, len(packet), len(packet)) + packet.ljust(size - 32, b"\0") + struct.pack("<I", size)


def as_text(value):
    return ("true" if value else "false") if isinstance(value, bool) else str(value)


def told_by_json(node, told):
    """Entries with their types and values, chunks, and where damage is, in their order."""
    if "name" in node and (node["type"] in TYPES or node["type"] == "entry"):
        told.append(("entry", node["name"]))
        if node["type"] in TYPES:
            told.append(("type", node["type"]))
        if "value" in node:
            told.append(("value", as_text(node["value"])))
    if node["type"] in ("chunk", "end"):
        told.append(("chunk", str(node.get("value", 0))))
    for item in node.get("items", []):
        told_by_json(item, told)
    if "damage" in node:
        told.append(("damage", node["damage"]["offset"]))


def told_by_tshark(packet):
    kinds = {"tarn.entry.name": "entry", "tarn.entry.type": "type", "tarn.entry.value": "value", "tarn.chunk": "chunk",
             "tarn.damage": "damage"}
    for field in packet.iter("field"):
        kind = kinds.get(field.get("name"))
        if kind is None:
            continue
        show = field.get("show")
        yield kind, TYPES[int(show)] if kind == "type" else int(show.split()[1][:-1]) if kind == "damage" else show


def main():
    decode, dissector, samples = shlex.split(sys.argv[1]), sys.argv[2], sys.argv[3]
    if not shutil.which("tshark"):
        print("tshark is not installed (Debian package tshark); the dissector is not tested")
        return 77
    with open(os.path.join(samples, "expected.json"), encoding="utf-8") as file:
        expected = json.load(file)
    names = sorted(os.path.basename(path) for path in glob.glob(os.path.join(samples, "*.bin")))
    wrong = 0
    with tempfile.TemporaryDirectory() as folder:
        capture = os.path.join(folder, "samples.pcapng")
        frames, last_packets, count = [], [], 0
        with open(capture, "wb") as file:
            file.write(SECTION)
            for name in names:
                with open(os.path.join(samples, name), "rb") as sample:
                    frames.append(frame(name, sample.read(), expected[name].get("messageType", 0)))
                for packet in packets(frames[-1]):
                    file.write(packet)
                    count += 1
                last_packets.append(count)
        result = subprocess.run(["tshark", "-X", "lua_script:" + dissector, "-r", capture, "-T", "pdml"], capture_output=True)
        if b"Lua" in result.stderr or result.returncode != 0:
            print(result.stderr.decode())
            return 1
        shown = list(xml.etree.ElementTree.fromstring(result.stdout).iter("packet"))
        for name, frame_bytes, packet in zip(names, frames, last_packets):
            answer = subprocess.run(decode + ["decode", "--as", "frame", "--json"], input=frame_bytes, capture_output=True, check=True)
            ours = []
            told_by_json(json.loads(answer.stdout), ours)
            theirs = list(told_by_tshark(shown[packet - 1]))
            if sorted(map(str, ours)) != sorted(map(str, theirs)):
                wrong += 1
                at = next((i for i, pair in enumerate(zip(ours, theirs)) if pair[0] != pair[1]), min(len(ours), len(theirs)))
                print(f"{name}: {len(ours)} fields here, {len(theirs)} in tshark; first difference: {ours[at:at + 2]}, {theirs[at:at + 2]}")
            dropped = any(field.get("name") == "tarn.dropped" for field in shown[packet - 1].iter("field"))
            if name.startswith("block") and dropped != (expected[name]["delivered"] == []):
                wrong += 1
                print(f"{name}: dropped is {dropped}, delivered is {expected[name]['delivered']}")
    print(f"{len(names)} samples, {wrong} differences")
    return 1 if wrong or not names else 0


if __name__ == "__main__":
    sys.exit(main())
