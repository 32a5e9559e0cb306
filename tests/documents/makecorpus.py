#!/usr/bin/env python3
"""Writes the backup reader's fuzz seeds into corpus/ as "<entries it holds>-<what it is>.qs_backup", which the unit
tests check. The bytes follow the format's description, not the program's writer, with little-endian length words."""
import pathlib
import plistlib
import struct

PLAIN = "public.utf8-plain-text"
STRING = "NSStringPboardType"


def ts_integer(value, order="<"):
    # No number here needs more than two bytes.
    return struct.pack("b", value) if value <= 127 else b"\x81" + struct.pack(order + "h", value)


def archive(text, powerpc=False):
    # A PowerPC Mac writes big-endian under its own signature; here it archives a mutable string.
    order = ">" if powerpc else "<"
    out = b"\x04\x0b" + (b"typedstream" if powerpc else b"streamtyped") + ts_integer(1000, order) + b"\x84\x01@\x84"
    out += b"\x84\x84\x0fNSMutableString\x01" if powerpc else b""
    out += b"\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85"
    return out + b"\x84\x01+" + ts_integer(len(text.encode()), order) + text.encode() + b"\x86"


def record(content, types, datas):
    return b"".join(struct.pack("<i", len(block)) + block for block in (content, types, datas))


def entry(text, types, datas, fmt=plistlib.FMT_XML):
    # plistlib's XML is Mac OS X's: tabs, sorted keys, base64 in lines of 68 characters.
    return record(archive(text), plistlib.dumps(types, fmt=fmt), plistlib.dumps(datas, fmt=fmt))


def text_record(text):
    return entry(text, [PLAIN, STRING], {PLAIN: text.encode(), STRING: text.encode()})


odd, words = "com.example.a&b<c>", "Grüße, 東京 ✓"
# A long text archived as its 144-unit display string over 4000 bytes of data; 51 bytes make one full base64 line.
every_kind = (entry("a" * 140 + " ...", [PLAIN, STRING], {PLAIN: b"a" * 4000, STRING: b"a" * 4000})
              + entry("", ["public.tiff", "public.png"], {"public.tiff": bytes(51), "public.png": b"\x89PNG"})
              + entry(words, [PLAIN, odd], {PLAIN: words.encode(), odd: b""}))
two, third = text_record("one") + text_record("two"), text_record("three")
content_end = 4 + len(archive("three"))
types_end = content_end + 4 + len(plistlib.dumps([PLAIN, STRING]))
files = {
    "0-empty": b"",
    "3-every-kind": every_kind,
    "1-binary-plists": entry("binary", [PLAIN], {PLAIN: b"binary"}, plistlib.FMT_BINARY),
    "1-mutable-string-powerpc-archive": record(archive("p" * 200, powerpc=True), *map(plistlib.dumps, ([PLAIN], {}))),
    "1-unreadable-plists": record(archive("plain"), b"garbage", b"<dict>"),
    "1-empty-types": entry("untyped", [], {}),
}
# An archive cut short, under an unknown signature, of another class or naming a string never stored ends the load.
arc = archive("x")
for name, bad in (("cut", arc[:14]), ("signature", arc.replace(b"streamtyped", b"streamtypex")),
                  ("class", arc.replace(b"NSString", b"NSNumber")), ("reference", arc.replace(b"\x84\x01+", b"\x99"))):
    files[f"1-bad-archive-{name}"] = text_record("kept") + record(bad, b"", b"") + text_record("lost")
# A record cut short anywhere, in or between its blocks, is dropped; the ones before it stay.
for cut in (1, 4, content_end - 1, content_end, content_end + 2, content_end + 10,
            types_end, types_end + 3, types_end + 4, types_end + 6, len(third) - 1):
    files[f"2-cut-at-{cut}"] = two + third[:cut]
# A hostile length word in any block ends the load, and must not allocate what it announces.
blocks = [third[:content_end], third[content_end:types_end], third[types_end:]]
for word in (0x7fffffff, -1, -0x80000000):
    for i, name in enumerate(("content", "types", "datas")):
        hostile = blocks[:i] + [struct.pack("<i", word) + blocks[i][4:]] + blocks[i + 1:]
        files[f"2-length-{word & 0xffffffff:x}-for-{name}"] = two + b"".join(hostile)
here = pathlib.Path(__file__).resolve().parent / "corpus"
here.mkdir(exist_ok=True)
for name, data in files.items():
    (here / (name + ".qs_backup")).write_bytes(data)
