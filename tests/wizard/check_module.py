#!/usr/bin/env python3
"""Checks what a built module offers, needs, and how it is protected.

Use: check_module.py MODULE --exports NAME,… [--imports MODULE,…] [--hardening PROTECTION,…] [--version-information]

All of its exported names; for a DLL, the modules that it may need, in small letters; the protections that the build promises
(cmake/Hardening.cmake).
"""
import argparse
import re
import struct
import subprocess
import sys


class Elf:
    """A shared library, as the binary utilities show it."""

    def __init__(self, path, data):
        self.data = data
        self.headers = self.run("readelf", "-lW", path)
        self.dynamic = self.run("readelf", "-dW", path)
        self.notes = self.run("readelf", "-nW", path)
        self.symbols = [line.split() for line in self.run("nm", "-D", path).splitlines()]

    @staticmethod
    def run(*command):
        return subprocess.run(command, capture_output=True, text=True, check=True).stdout

    def exports(self):
        return {symbol[-1] for symbol in self.symbols if len(symbol) == 3}

    def needs(self, pattern):
        return any(re.search(pattern, symbol[-1]) for symbol in self.symbols if len(symbol) == 2)

    def offset(self, address):
        for raw, start, size in re.findall(r"LOAD +0x(\w+) 0x(\w+) 0x\w+ 0x(\w+)", self.headers):
            if int(start, 16) <= address < int(start, 16) + int(size, 16):
                return address - int(start, 16) + int(raw, 16)
        raise ValueError(hex(address))

    def has_landing_pads(self):
        """Whether every exported function begins with endbr64."""
        functions = [self.offset(int(symbol[0], 16)) for symbol in self.symbols if len(symbol) == 3 and symbol[1] in "TW"]
        return all(self.data[at:at + 4] == b"\xf3\x0f\x1e\xfa" for at in functions)

    def has(self, protection):
        return {
            "stack-protector": lambda: self.needs("^__stack_chk_fail"),
            "fortify": lambda: self.needs("^__(?!stack).*_chk(@|$)"),
            "library-assertions": lambda: self.needs("glibcxx_assert_fail"),
            "control-flow": lambda: "SHSTK" in self.notes and self.has_landing_pads(),
            "read-only-relocations": lambda: "GNU_RELRO" in self.headers and "BIND_NOW" in self.dynamic,
            "no-executable-stack": lambda: re.search(r"GNU_STACK .* RW  ", self.headers),
            #  Apart from the code no segment is executable, and none is writable and executable.
            "separate-code": lambda: len(re.findall(r"LOAD .* R.E ", self.headers)) == 1 and "RWE" not in self.headers
                                     and re.search(r"LOAD +0x0+ .* R   ", self.headers),
        }[protection]()


class Pe:
    """As much of a 64-bit DLL as is asked for."""

    def __init__(self, _, data):
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

    def has_version_information(self):
        return self.directory(2) != 0

    def has(self, protection):
        flags = struct.unpack_from("<H", self.data, self.optional + 70)[0]
        return {
            #  The compiler's library says these when it ends the process; it is linked in only where it is called.
            "stack-protector": b"*** stack smashing detected ***" in self.data,
            "fortify": b"*** buffer overflow detected ***" in self.data,
            "library-assertions": b"Assertion '%s' failed" in self.data,
            "high-entropy": flags & 0x20,
            "movable-base": flags & 0x40,
            "no-executable-data": flags & 0x100,
        }[protection]


def names(text):
    return set(filter(None, text.split(",")))


def main():
    arguments = argparse.ArgumentParser()
    arguments.add_argument("module")
    arguments.add_argument("--exports", type=names, required=True)
    arguments.add_argument("--imports", type=names)
    arguments.add_argument("--hardening", type=names, default=set())
    arguments.add_argument("--version-information", action="store_true")
    asked = arguments.parse_args()
    with open(asked.module, "rb") as file:
        data = file.read()
    module = (Pe if data[:2] == b"MZ" else Elf)(asked.module, data)
    wrong = []
    if module.exports() != asked.exports:
        wrong.append(f"exports {sorted(module.exports())} in place of {sorted(asked.exports)}")
    if isinstance(module, Pe) and asked.imports and (foreign := module.imports() - asked.imports):
        wrong.append(f"needs {sorted(foreign)}")
    if isinstance(module, Pe) and asked.version_information and not module.has_version_information():
        wrong.append("has no version information")
    wrong += [f"lacks the protection {protection}" for protection in sorted(asked.hardening) if not module.has(protection)]
    for fault in wrong:
        print(f"{asked.module} {fault}")
    print(f"{len(module.exports())} exports; protections: {', '.join(sorted(asked.hardening)) or 'none promised'}")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
