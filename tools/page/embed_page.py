#!/usr/bin/env python3
"""Puts the page's files into a C++ source: embed_page.py FOLDER OUTPUT"""
import base64
import hashlib
import os
import re
import sys

folder, output = sys.argv[1:]
FILES = [("kPageHtml", "page.html", "", "text/html; charset=utf-8"), ("kPageStyle", "page.css", "page.css", "text/css; charset=utf-8"),
         ("kPageScript", "page.js", "page.js", "text/javascript; charset=utf-8")]

source = '#include "tools/page/page_files.h"\n\nnamespace tarnfind {\n\n'
for variable, file_name, name, media_type in FILES:
    with open(os.path.join(folder, file_name), encoding="utf-8", newline="") as file:
        text = file.read()
    # In a report style and script stand inside the page, where these would end them.
    ending = {"page.css": r"</style", "page.js": r"</script|<!--|<script"}.get(file_name)
    if "\r" in text or (ending and re.search(ending, text, re.IGNORECASE)):
        sys.exit(f"{file_name}: a CR, or one of {ending}, may not stand in it")
    if file_name == "page.html":
        at = [text.find(f"\n{line}\n") for line in
              ('<link rel="stylesheet" href="page.css">', "<!-- lines -->", '<script src="page.js" defer></script>')]
        if -1 in at or at != sorted(at):
            sys.exit("page.html: the lines of style, lines and script must stand in this order, each alone")
    digest = base64.b64encode(hashlib.sha256(text.encode()).digest()).decode()
    # In pieces, because a compiler need not take a long literal.
    pieces = "\n    ".join(f'R"page({text[at:at + 8000]})page"' for at in range(0, len(text), 8000)) or '""'
    source += f'const PageFile {variable} = {{"{name}", "{media_type}",\n    {pieces},\n    "{digest}"}};\n'
with open(output, "w", encoding="utf-8", newline="\n") as file:
    file.write(source + "\n}  // namespace tarnfind\n")
