"""A second reading of the finder's messages, written from the wire description alone, slow and obvious.

Each reader returns what the library must deliver, as plain Python values, or raises Failure with the library's text.
"""
import base64
import datetime
import math
import struct

NOT_ENOUGH = "read failed - not enough bytes in buffer"
STREAM = "RawStreamer - read failed"
VARIANT = "VariantException"
WRONG_IDENTIFIER = "Wrong value list identifier"
POINTER = "invalid pointer request"

FIXED_SIZES = {0: 1, 1: 1, 2: 1, 3: 1, 4: 2, 5: 2, 6: 4, 7: 4, 8: 8, 9: 4, 10: 8, 15: 8, 16: 8, 17: 8, 18: 16, 19: 4, 20: 8}
INTEGERS = {1: "<b", 2: "<B", 3: "<b", 4: "<h", 5: "<H", 6: "<I", 7: "<i", 8: "<q", 19: "<i", 20: "<Q"}


class Failure(Exception):
    """The library's exception, by its text."""


class Cursor:
    """Reads forward; a read beyond the end fails with the text of its owner."""

    def __init__(self, data, text):
        self.data, self.position, self.text = data, 0, text

    def left(self):
        return len(self.data) - self.position

    def take(self, count):
        if count > self.left():
            raise Failure(self.text)
        self.position += count
        return self.data[self.position - count:self.position]

    def number(self, form):
        return struct.unpack(form, self.take(struct.calcsize(form)))[0]


class Value:
    """A variant: its tag and its payload without a terminator."""

    def __init__(self, tag, payload):
        self.tag, self.payload = tag, payload

    def number(self):
        if self.tag == 0:
            return int(self.payload != b"\0")
        if self.tag == 9:
            return struct.unpack("<f", self.payload)[0]
        if self.tag == 10:
            return struct.unpack("<d", self.payload)[0]
        return struct.unpack(INTEGERS[self.tag], self.payload)[0] if self.tag in INTEGERS else None

    def text(self):
        """The narrow text form, as bytes."""
        tag, payload = self.tag, self.payload
        if tag == 3 or tag == 11:
            return payload
        if tag == 9 or tag == 10:
            return general(self.number(), 6 if tag == 9 else 15)
        if self.number() is not None:
            return str(self.number()).encode()
        if tag == 12:
            return utf8(wide(payload).split("\0")[0])
        if tag == 13:
            return b"binarydata %d " % len(payload) + base64_lines(payload)
        if tag == 14:
            return b"blobptr %d" % len(payload) + b"0" * 16
        if tag == 15:
            return file_time(payload)
        if tag == 16:
            return date_time(payload)
        if tag == 17:
            return b"<nullref/>"
        a, b, c = struct.unpack("<IHH", payload[:8])
        rest = payload[8:].hex()
        return f"{a:08x}-{b:04x}-{c:04x}-{rest[:4]}-{rest[4:]}".encode()

    def wide_text(self):
        if self.tag == 12:
            return wide(self.payload)
        text = self.text()
        return "" if text[:1] == b"\0" else text.decode("utf-8", "replace")

    def unsigned(self, bits):
        number = self.number()
        if number is None:
            limit = 32 if bits == 8 else 64
            return leading_integer(self.text(), limit) % (1 << bits)
        if isinstance(number, float):
            if bits == 64:
                return truncated_unsigned(number)
            return truncated(number, 32 if bits == 8 else 64) % (1 << bits)
        return number % (1 << bits)

    def boolean(self):
        number = self.number()
        if number is not None:
            return number != 0
        text = self.text()
        start = text.lstrip(b" \t\n\v\f\r")
        sign = start[:1] if start[:1] in (b"+", b"-") else b""
        digits = start[len(sign):]
        count = len(digits) - len(digits.lstrip(b"0123456789"))
        value = int(digits[:count] or b"2")
        if count == 0 or value > 1 or (sign == b"-" and value != 0):
            raise Failure("Failed to convert [" + text.decode("latin-1") + "] into [bool]")
        return value == 1


def general(number, digits):
    if math.isnan(number) or math.isinf(number):
        raise NotImplementedError("not generated")
    sign = "-" if math.copysign(1, number) < 0 else ""
    mantissa, exponent = f"{abs(number):.{digits - 1}e}".split("e")
    exponent, figures = int(exponent), mantissa.replace(".", "")
    if exponent < -1 or exponent >= digits:
        rest = figures[1:].rstrip("0")
        return f"{sign}{figures[0]}.{rest}e{'-' if exponent < 0 else '+'}{abs(exponent):03d}".encode()
    if exponent < 0:
        return f"{sign}0.{'0' * (-exponent - 1)}{figures.rstrip('0')}".encode()
    return f"{sign}{figures[:exponent + 1]}.{figures[exponent + 1:].rstrip('0')}".encode()


def truncated(number, bits):
    """What the processor's conversion gives: the lowest value for everything out of range."""
    low = -(1 << (bits - 1))
    if math.isnan(number) or math.isinf(number) or not low <= int(number) < -low:
        return low
    return int(number)


def truncated_unsigned(number):
    if math.isnan(number) or math.isinf(number):
        return 1 << 63
    if number >= 2.0 ** 63:
        return truncated(number - 2.0 ** 63, 64) % (1 << 64) ^ (1 << 63) if number < 2.0 ** 64 else 1 << 63
    return truncated(number, 64) % (1 << 64)


def leading_integer(text, bits):
    text = text.lstrip(b" \t\n\v\f\r")
    negative = text[:1] == b"-"
    text = text[1:] if text[:1] in (b"+", b"-") else text
    count = len(text) - len(text.lstrip(b"0123456789"))
    value = int(text[:count] or b"0") * (-1 if negative else 1)
    return max(-(1 << (bits - 1)), min((1 << (bits - 1)) - 1, value))


def wide(payload):
    """UTF-16 units as a str of code points below 0x10000 each (surrogates stay apart)."""
    return "".join(map(chr, struct.unpack(f"<{len(payload) // 2}H", payload[:len(payload) // 2 * 2])))


def utf8(units):
    joined = units.encode("utf-16-le", "surrogatepass").decode("utf-16-le", "surrogatepass")
    return "".join("\ufffd" if 0xD800 <= ord(c) < 0xE000 else c for c in joined).encode()


def ansi(units):
    """The system code page, 1252; C1 controls stand for the five bytes that it leaves undefined."""
    out = bytearray()
    for c in units:
        try:
            out += c.encode("cp1252")
        except UnicodeEncodeError:
            out += bytes([ord(c)]) if ord(c) in (0x81, 0x8D, 0x8F, 0x90, 0x9D) else b"?"
    return bytes(out)


def base64_lines(payload):
    text = base64.b64encode(payload)
    lines = [text[i:i + 76] for i in range(0, len(text), 76)]
    return b"".join(line + b"\r\n" if len(line) == 76 else line for line in lines)


def calendar(milliseconds):
    moment = datetime.datetime(1601, 1, 1) + datetime.timedelta(milliseconds=milliseconds)
    return f"{moment:%Y/%m/%d %H:%M:%S},{moment.microsecond // 1000:03d}".encode()


def file_time(payload):
    ticks = struct.unpack("<Q", payload)[0]
    if ticks >= 1 << 63:
        raise Failure(VARIANT)
    return calendar(ticks // 10000)


def date_time(payload):
    word = struct.unpack("<Q", payload)[0]
    bias = struct.unpack("<h", payload[6:])[0]
    local = (word & 0xFFFFFFFFFFFF) - bias * 60000
    if local < 0:
        raise Failure(VARIANT)
    sign = "+" if bias < 1 else "-"
    return calendar(local) + f" GMT{sign}{abs(bias) // 60:02d}:{abs(bias) % 60:02d}".encode()


def read_record(cursor, tag):
    """One variant record whose tag is read already."""
    if tag > 20:
        raise Failure(VARIANT)
    payload = cursor.take(FIXED_SIZES[tag] if tag in FIXED_SIZES else cursor.number("<I"))
    if tag == 11:
        if not payload:
            raise Failure(NOT_ENOUGH)
        payload = payload[:-1]
    if tag == 12:
        if len(payload) < 2:
            raise Failure(NOT_ENOUGH)
        payload = payload[:(len(payload) // 2 - 1) * 2]
    if tag == 17 and payload != bytes(8):
        raise Failure(POINTER)
    return Value(tag, payload)


def read_value(cursor):
    return read_record(cursor, cursor.number("<B"))


def read_list(cursor):
    """(name, [(name, value)]) of one value list in binary form."""
    if cursor.number("<I") != 0x53494C56:
        raise Failure(WRONG_IDENTIFIER)
    name = read_value(cursor).text()
    entries = []
    for _ in range(cursor.number("<I")):
        entry_name = read_value(cursor).text()
        entries.append((entry_name, read_value(cursor)))
    return name, entries


def find(entries, key):
    return next((value for name, value in entries if name == key), None)


def read_elements(entries, key):
    """The value lists of a list block; one after the other, so that what precedes a damaged one is seen to be read."""
    value = find(entries, key)
    if value is None or value.tag != 13 or len(value.payload) < 5 or value.payload[:4] != b"\xFFECB":
        return
    cursor = Cursor(value.payload, NOT_ENOUGH)
    cursor.take(4)
    for _ in range(cursor.number("<I")):
        yield read_list(cursor)[1]


SENTINEL = b"&!*KVMR*9%"
#  key, kind, default; in wire order
RECORD = [("LUN", "text", SENTINEL), ("LPD", "text", SENTINEL), ("CTT", 8, 2), ("MAC", "text", b""), ("NIP", "text", b""),
          ("NI2", "texts", None), ("IP", "text", b""), ("SIP", "text", b""), ("GIP", "text", b""), ("DHC", 8, 1),
          ("ICB", "flag", False), ("GCB", "flag", False), ("RBL", "flag", False), ("PCL", "flag", False), ("DCV", 32, 0),
          ("CVT", 64, 0), ("PLN", "texts", None), ("PDN", "text", b""), ("FVN", "text", b""), ("SER", "text", b""),
          ("MDL", "text", b"")]


def default_record():
    return {key: [] if kind == "texts" else default for key, kind, default in RECORD}


def read_camera(entries):
    record = default_record()
    for key, kind, _ in RECORD:
        name = key.encode()
        if kind == "texts":
            for element in read_elements(entries, name):
                value = find(element, b"mac")
                record[key].append(value.text() if value else b"")
            continue
        value = find(entries, name)
        if value is None:
            continue
        record[key] = value.text() if kind == "text" else value.boolean() if kind == "flag" else value.unsigned(kind)
    return record


def read_cameras(entries):
    return [read_camera(element) for element in read_elements(entries, b"CAMERAINFOLIST")]


VENDOR_TYPES = dict(zip([1 << bit for bit in range(23)],
                        [3, 5, 10, 4, 8, 9, 2, 7, 11, 12, 13, 14, 15, 16, 6, 17, 18, 19, 1, 20, 21, 22, 23]))
VENDOR_TYPES.update({1 << 29: 25, 1 << 30: 26, (1 << 64) - 1: 24})
PLUGIN_TYPES = {b"Sony IPC": 1, b"Axis IPC": 2, b"Summit IPC": 3, b"R2 IPC": 4, b"V1 IPC": 5, b"ONVIF IPC": 6,
                b"ArecontVision IPC": 7, b"R3 IPC": 8, b"Marten IPC": 9, b"R4 IPC": 25}


def shown(text):
    return text.split(b"\0")[0].decode("utf-8", "replace")


def camera_info(record):
    """What the getters of a camera object answer."""
    return {"type": VENDOR_TYPES.get(record["CVT"], 0), "mac": shown(record["MAC"]), "ip": shown(record["IP"]),
            "subnetMask": shown(record["SIP"]), "gateway": shown(record["GIP"]), "model": shown(record["MDL"]),
            "firmware": shown(record["FVN"]), "user": shown(record["LUN"]), "password": shown(record["LPD"]),
            "dhcp": record["DHC"] == 1, "plugin": shown(record["PLN"][0] if record["PLN"] else b"UNKNOWN"),
            "flag17": bool(record["DCV"] & 0x20000), "deviceFlags": record["DCV"], "vendorTypeMask": f"0x{record['CVT']:X}",
            "icb": record["ICB"], "gcb": record["GCB"], "ctt": record["CTT"], "vendor": shown(record["PDN"])}


def decode_base64(text):
    alphabet = b"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"
    values = []
    for c in text:
        if c in b"\r\n":
            continue
        if c not in alphabet:
            break
        values.append(alphabet.index(c))
    out = bytearray()
    for i in range(0, len(values), 4):
        group = values[i:i + 4]
        a, b, c, d = group + [0] * (4 - len(group))
        out += (a << 18 | b << 12 | c << 6 | d).to_bytes(3, "big")[:len(group) - 1]
    return bytes(out)


def decode_reply(data):
    """The cameras that ListFoundCameras hands over for a reply."""
    if not data:
        return []
    cursor = Cursor(data, STREAM)
    tag = cursor.number("<B")
    if tag > 20:
        raise Failure(VARIANT)
    payload = cursor.take(FIXED_SIZES[tag] if tag in FIXED_SIZES else cursor.number("<I"))
    if tag == 11:
        if not payload:
            raise Failure(STREAM)
        payload = payload[:-1]
    if tag == 12:
        if len(payload) < 2:
            raise Failure(STREAM)
        payload = payload[:(len(payload) // 2 - 1) * 2]
    if tag == 17 and payload != bytes(8):
        raise Failure(POINTER)
    units = wide(Value(tag, payload).wide_text().encode("utf-16-le", "surrogatepass"))
    if not units or units[0] == "\0":
        return []
    entries = read_list(Cursor(decode_base64(ansi(units)), NOT_ENOUGH))[1]
    return [camera_info(record) for record in read_cameras(entries)]


def read_wide_text(cursor):
    return read_value(cursor).wide_text()


def chunks(cursor):
    while cursor.left():
        tag = cursor.number("<I")
        if tag == 0:
            return
        yield tag, cursor.number("<Q")


def decode_block(message_type, data):
    """What reaches the wizard of a block, in order. Nothing where the block is damaged."""
    cursor = Cursor(data, NOT_ENOUGH)
    try:
        if message_type == 1:
            return picture(cursor)
        if message_type == 2:
            return values(cursor)
        if 3 <= message_type <= 8:
            return camera(cursor, message_type)
    except Failure:
        pass
    return []


def bstr(units):
    """A text for the wizard ends at its first NUL."""
    return utf8(wide(units.encode("utf-16-le", "surrogatepass")).split("\0")[0]).decode()


def picture(cursor):
    text, size = "", None
    for tag, length in chunks(cursor):
        if tag == 5:
            text = read_wide_text(cursor)
        else:
            cursor.take(length)
            size = length if tag == 6 else size
    return [{"picture": bstr(text), "bytes": size}] if text and size is not None else []


def values(cursor):
    text, numbers = "", []
    for tag, length in chunks(cursor):
        if tag == 5:
            text = read_wide_text(cursor)
            continue
        part = Cursor(cursor.take(length), NOT_ENOUGH)
        if tag == 7:
            count, size = part.number("<Q"), part.number("<Q")
            if size != 8:
                continue
            numbers += struct.unpack(f"<{count}Q", part.take(count * 8)) if count * 8 <= part.left() else part.take(count * 8)
    return [{"values": bstr(text), "numbers": [str(n) for n in numbers]}] if text and numbers else []


def camera(cursor, message_type):
    record_tag = {3: 1, 4: 2, 5: 3, 6: 4}.get(message_type)
    kind = {3: 3, 4: 1, 5: 0, 6: 2, 7: 3, 8: 4}[message_type]
    record = default_record()
    if message_type == 8:
        record["CVT"] = (1 << 64) - 1
    if message_type == 7:
        record.update(MAC=b"UNKNOWN", DCV=0x20000)
    for tag, length in chunks(cursor):
        if tag == 5:
            record["MAC"] = ansi(read_units(cursor))
        elif tag == 12:
            record["CTT"] = cursor.number("<B")
            if message_type == 7:
                cursor.take(length)
        elif tag == record_tag:
            found = read_cameras(read_list(cursor)[1])
            record = found[0] if found else default_record()
        elif message_type == 7 and tag in (8, 9):
            record["IP" if tag == 8 else "PDN"] = ansi(read_units(cursor))
        elif message_type == 7 and tag == 10:
            record["PLN"].append(ansi(read_units(cursor)))
        else:
            cursor.take(length)
    if message_type == 7:
        record.update(LUN=b"", LPD=b"", DHC=0, NI2=[b"0.0.0.0"], RBL=True, SIP=b"", FVN=b"", MDL=record["PDN"],
                      SER=record["PLN"][0] if record["PLN"] else b"")
    if not record["MAC"]:
        return []
    plugin = record["PLN"][0] if record["PLN"] else b""
    code = VENDOR_TYPES.get(record["CVT"], 0) if record["CVT"] else PLUGIN_TYPES.get(plugin, 0)
    return [{"camera": camera_info(record), "kind": kind, "type": code}]


def read_units(cursor):
    units = wide(read_wide_text(cursor).encode("utf-16-le", "surrogatepass"))
    return "" if units[:1] == "\0" else units
