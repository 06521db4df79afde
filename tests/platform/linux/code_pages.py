"""Prints what Python's codecs make of every byte, and of every pair of bytes, in the ANSI code pages: one line
"page code unit" each, code and unit hexadecimal. Code points of the private use area are left out: Python and Windows
put different characters there, or the page defines none."""

PAGES = [874, 932, 936, 949, 950, *range(1250, 1259)]
DOUBLE = {932, 936, 949, 950}


def mapped(page, code):
    if page == 936 and code == b"\x80":
        return "\u20ac"  # Windows has it, Python's codec has not
    if page == 950 and b"\xc6\xa1" <= code <= b"\xc8\xfe":
        return None  # for users on Windows, an extension in Python
    try:
        text = code.decode(f"cp{page}")
    except UnicodeDecodeError:
        return None
    return text if len(text) == 1 and not 0xE000 <= ord(text) < 0xF900 else None


for page in PAGES:
    codes = [bytes([a]) for a in range(256)]
    if page in DOUBLE:
        codes += [bytes([a, b]) for a in range(0x81, 0xFF) for b in range(1, 256)]
    for code in codes:
        text = mapped(page, code)
        if text:
            print(page, code.hex(), f"{ord(text):x}")
