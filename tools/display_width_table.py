#!/usr/bin/env python3
"""Writes display_width_table.h: the cells that characters occupy, as the C library's wcwidth has them.

Use: tools/display_width_table.py > tools/display_width_table.h     (glibc; tests/tools/linux compares all of Unicode)
"""
import ctypes
import locale
import sys

locale.setlocale(locale.LC_ALL, "C.UTF-8")
wcwidth = ctypes.CDLL(None).wcwidth

ranges = []  # [first, last, cells]; characters that wcwidth does not know belong to the range around them
for code_point in range(0x110000):
    cells = wcwidth(code_point)
    if cells < 0:
        continue
    if ranges and ranges[-1][2] == cells:
        ranges[-1][1] = code_point
    else:
        ranges.append([code_point, code_point, cells])

rows = ["{0x%X, 0x%X, %d}," % tuple(r) for r in ranges if r[2] != 1]
lines = []
for row in rows:
    if not lines or len(lines[-1]) + 1 + len(row) > 118:
        lines.append(" ")
    lines[-1] += " " + row
sys.stdout.write(
    "/// Characters that do not occupy one cell of a terminal; in order, without overlap. Made by display_width_table.py.\n"
    "#pragma once\n\n#include <cstdint>\n\nnamespace tarnfind {\n\n"
    "struct WidthRange {\n  char32_t first;\n  char32_t last;\n  std::uint8_t cells;\n};\n\n"
    "// clang-format off\ninline constexpr WidthRange kWidths[] = {\n"
    + "\n".join(lines) + "\n};\n// clang-format on\n\n}  // namespace tarnfind\n")
