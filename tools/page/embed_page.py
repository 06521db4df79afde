#!/usr/bin/env python3
"""Puts the page's files into a C++ source: embed_page.py FOLDER OUTPUT SCRIPT …"""
import base64
import hashlib
import os
import re
import sys

folder, output, *scripts = sys.argv[1:]
# In a report style and scripts stand inside the page, where these would end them.
ENDINGS = {".css": "</style", ".js": "</script|<script|<!--", ".html": "$^"}
# In a report these lines of the page become what they name.
LINES = ['<link rel="stylesheet" href="page.css">', "<!-- lines -->"] + [f'<script src="{name}" defer></script>' for name in scripts]


def read(name):
    with open(os.path.join(folder, name), encoding="utf-8", newline="") as file:
        text = file.read()
    if "\r" in text or re.search(ENDINGS[os.path.splitext(name)[1]], text, re.IGNORECASE):
        sys.exit(f"{name}: neither CR nor {ENDINGS[os.path.splitext(name)[1]]} may stand in it")
    return text


def row(name, asked, media_type):
    text = read(name)
    digest = base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()
    # In pieces, because a compiler need not take a long literal.
    pieces = "\n    ".join(f'R"page({text[at:at + 8000]})page"' for at in range(0, len(text), 8000))
    return f'{{"{asked}", "{media_type}; charset=utf-8",\n    {pieces},\n    "{digest}"}}'


page = read("page.html")
places = [page.find(f"\n{line}\n") for line in LINES]
if -1 in places or places != sorted(places) or page.count("<script") != len(scripts):
    sys.exit(f"page.html: each of these must stand alone on a line, in this order: {LINES}")
with open(output, "w", encoding="utf-8", newline="\n") as file:
    file.write('#include "tools/page/page_files.h"\n\nnamespace tarnfind {\n\n'
               f'const PageFile kPageHtml = {row("page.html", "", "text/html")};\n'
               f'const PageFile kPageStyle = {row("page.css", "page.css", "text/css")};\n'
               "static const PageFile kScripts[] = {\n" + "".join(row(name, name, "text/javascript") + ",\n" for name in scripts) +
               "};\nconst std::span<const PageFile> kPageScripts = kScripts;\n\n}  // namespace tarnfind\n")
