#!/usr/bin/env python3
"""Checks what a built module offers and needs. Use: check_module.py MODULE NAMES [IMPORTS]

NAMES: the exported names, all of them, separated by commas. IMPORTS: for a DLL, the modules that it may need, in small
letters, the same way.
"""
import struct
import subprocess
import sys


def elf_exports(path):
    lines = subprocess.run(["nm", "-D", "--defined-only", path], capture_output=True, text=True, check=True).stdout.split("\n")
    return {line.split()[-1] for line in lines if line}


class Pe:
    """As much of a 64-bit DLL as is asked for."""

    def __init__(self, data):
        self.data = data
        self.pe = struct.unpack_from("<I", data, 0x3C)[0]
        sections, optional = struct.unpack_from("<H", data, self.pe + 6)[0], struct.unpack_from("<H", data, self.pe + 20)[0]
        self.optional = self.pe + 24
        self.sections = [struct.unpack_from("<IIII", data, self.optional + optional + 40 * i + 8) for i in range(sections)]

    def offset(self, address):
        for size, start, _, raw in self.sections:
            if start <= address < start + size:
                return address - start + raw
        raise ValueError(hex(address))

    def text(self, address):
        begin = self.offset(address)
        return self.data[begin:self.data.index(b"\0", begin)].decode()

    def directory(self, number):
        return struct.unpack_from("<I", self.data, self.optional + 112 + 8 * number)[0]

    def exports(self):
        table = self.offset(self.directory(0))
        count, _, names = struct.unpack_from("<III", self.data, table + 24)
        return {self.text(struct.unpack_from("<I", self.data, self.offset(names) + 4 * i)[0]) for i in range(count)}

    def imports(self):
        at, found = self.offset(self.directory(1)), set()
        while name := struct.unpack_from("<I", self.data, at + 12)[0]:
            found.add(self.text(name).lower())
            at += 20
        return found

    def protections(self):
        return struct.unpack_from("<H", self.data, self.optional + 70)[0]

    def has_resources(self):
        return self.directory(2) != 0


def main():
    path, names = sys.argv[1], set(sys.argv[2].split(","))
    with open(path, "rb") as file:
        data = file.read()
    wrong = []
    if data[:2] == b"MZ":
        module = Pe(data)
        exports = module.exports()
        if len(sys.argv) > 3 and (foreign := module.imports() - set(sys.argv[3].split(","))):
            wrong.append(f"needs {sorted(foreign)}")
        #  High-entropy addresses, a movable base, no executable data.
        if module.protections() & 0x160 != 0x160:
            wrong.append(f"is built with the protections {module.protections():#x}")
        if len(sys.argv) > 3 and not module.has_resources():
            wrong.append("has no version information")
    else:
        exports = elf_exports(path)
    if exports != names:
        wrong.append(f"exports {sorted(exports)} in place of {sorted(names)}")
    for fault in wrong:
        print(f"{path} {fault}")
    print(f"{len(exports)} exports")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
