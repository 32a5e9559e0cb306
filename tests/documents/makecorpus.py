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
    utf8 = text.encode()
    out = b"\x04\x0b" + (b"typedstream" if powerpc else b"streamtyped") + ts_integer(1000, order) + b"\x84\x01@\x84"
    if powerpc:
        out += b"\x84\x84\x0fNSMutableString\x01"
    out += b"\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85"
    return out + b"\x84\x01+" + ts_integer(len(utf8), order) + utf8 + b"\x86"


def xml(value):
    # plistlib writes as Mac OS X does: tabs, sorted keys, base64 in lines of 68 characters.
    return plistlib.dumps(value, fmt=plistlib.FMT_XML)


def record(content, types, datas):
    return b"".join(struct.pack("<i", len(block)) + block for block in (content, types, datas))


def entry(text, types, datas):
    return record(archive(text), xml(types), xml(datas))


def text_record(text):
    return entry(text, [PLAIN, STRING], {PLAIN: text.encode(), STRING: text.encode()})


odd = "com.example.a&b<c>"
# Sorted keys; a long text archived as its 144-unit display string over 4000 bytes of data; 51 bytes
# make one full line; an empty text; names with markup characters and empty data.
every_kind = (entry("a" * 140 + " ...", [PLAIN, STRING], {PLAIN: b"a" * 4000, STRING: b"a" * 4000})
              + entry("", ["public.tiff", "public.png"], {"public.tiff": bytes(51), "public.png": b"\x89PNG"})
              + entry("Grüße, 東京 ✓", [PLAIN, odd], {PLAIN: "Grüße, 東京 ✓".encode(), odd: b""}))
binary = record(archive("binary"), plistlib.dumps([PLAIN], fmt=plistlib.FMT_BINARY),
                plistlib.dumps({PLAIN: b"binary"}, fmt=plistlib.FMT_BINARY))
two = text_record("one") + text_record("two")
third = text_record("three")
content_end = 4 + len(archive("three"))
types_end = content_end + 4 + len(xml([PLAIN, STRING]))
files = {
    "0-empty": b"",
    "3-every-kind": every_kind,
    "1-binary-plists": binary,
    "1-mutable-string-powerpc-archive": record(archive("p" * 200, powerpc=True), xml([PLAIN]), xml({})),
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

