#!/usr/bin/env python3
"""Writes the seed files of the backup reader's fuzz corpus into corpus/.

Each file is named "<entries it holds>-<what it is>.qs_backup"; the unit tests
check that the reader finds that many entries in it. The bytes are assembled
here from the format's description, apart from the program's own writer, and
the length words are little-endian, as on the machines that run the tests.
"""
import pathlib
import plistlib
import struct

HERE = pathlib.Path(__file__).resolve().parent / "corpus"


def ts_integer(value, order="<"):
    if -110 <= value <= 127:
        return struct.pack("b", value)
    if -32768 <= value <= 32767:
        return b"\x81" + struct.pack(order + "h", value)
    return b"\x82" + struct.pack(order + "i", value)


def archive(text, big_endian=False, mutable=False):
    order = ">" if big_endian else "<"
    utf8 = text.encode()
    out = b"\x04\x0b" + (b"typedstream" if big_endian else b"streamtyped") + ts_integer(1000, order)
    out += b"\x84\x01@\x84"
    if mutable:
        out += b"\x84\x84\x0fNSMutableString\x01"
    out += b"\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85"
    return out + b"\x84\x01+" + ts_integer(len(utf8), order) + utf8 + b"\x86"


def xml_strings(strings):
    # Python's plistlib writes XML property lists as Mac OS X does: tabs,
    # sorted keys, base64 in lines of 68 characters.
    return plistlib.dumps(strings, fmt=plistlib.FMT_XML)


def xml_datas(datas):
    return plistlib.dumps(datas, fmt=plistlib.FMT_XML)


def block(payload, order="<"):
    return struct.pack(order + "i", len(payload)) + payload


def record(content, types, datas, order="<"):
    return block(content, order) + block(types, order) + block(datas, order)


def text_record(text):
    data = text.encode()
    return record(archive(text), xml_strings(["public.utf8-plain-text", "NSStringPboardType"]),
                  xml_datas({"public.utf8-plain-text": data, "NSStringPboardType": data}))


def main():
    plain = "public.utf8-plain-text"
    # Sorted keys; 51 bytes make one full 68-character line; an empty text and
    # empty data; names with markup characters; a long text archived as its
    # 144-unit display string over 4000 bytes of data.
    every_kind = (text_record("Hello")
                  + record(archive(""), xml_strings(["public.tiff", "public.png"]),
                           xml_datas({"public.tiff": bytes(range(100)), "public.png": b"\xff" * 51}))
                  + record(archive(""), xml_strings([plain]), xml_datas({plain: b""}))
                  + record(archive("Grüße, 東京 ✓"), xml_strings([plain, "com.example.a&b<c>"]),
                           xml_datas({plain: "Grüße, 東京 ✓".encode(), "com.example.a&b<c>": b"x"}))
                  + record(archive("a" * 140 + " ..."), xml_strings([plain]), xml_datas({plain: b"a" * 4000})))
    binary = record(archive("binary"), plistlib.dumps(["public.utf8-plain-text"], fmt=plistlib.FMT_BINARY),
                    plistlib.dumps({"public.utf8-plain-text": b"binary"}, fmt=plistlib.FMT_BINARY))
    two = text_record("one") + text_record("two")
    third = text_record("three")
    content_end = 4 + len(archive("three"))
    types_end = content_end + 4 + len(xml_strings(["public.utf8-plain-text", "NSStringPboardType"]))
    files = {
        "0-empty": b"",
        "1-text": text_record("Hello"),
        "5-every-kind": every_kind,
        "1-binary-plists": binary,
        "1-mutable-string-powerpc-archive": record(archive("ppc", big_endian=True, mutable=True),
                                                  xml_strings(["public.utf8-plain-text"]), xml_datas({})),
        "1-long-display-string": text_record("x" * 140 + " ..."),
        "1-unreadable-plists": record(archive("plain"), b"garbage", b"<dict>"),
        "1-empty-types": record(archive("untyped"), xml_strings([]), xml_datas({})),
        "2-cut-after-content": two + third[:content_end],
        "2-cut-inside-types": two + third[:content_end + 10],
        "2-cut-inside-datas": two + third[:types_end + 6],
        "1-bad-archive": text_record("kept") + record(b"\x04\x0bstreamtyped\x81", b"", b"") + text_record("lost"),
        "0-big-endian": record(archive("ppc"), xml_strings(["public.utf8-plain-text"]), xml_datas({}), ">"),
    }
    # A record cut short anywhere is dropped; the ones before it stay.
    for cut in (1, 4, content_end - 1, content_end + 2, types_end, types_end + 3, types_end + 4, len(third) - 1):
        files[f"2-cut-at-{cut}"] = two + third[:cut]
    # A hostile length word in any block ends the load, and must not allocate what it announces.
    blocks = [third[:content_end], third[content_end:types_end], third[types_end:]]
    for word in (0x7fffffff, -1, -0x80000000):
        for i, name in enumerate(("content", "types", "datas")):
            hostile = blocks[:i] + [struct.pack("<i", word) + blocks[i][4:]] + blocks[i + 1:]
            files[f"2-length-{word & 0xffffffff:x}-for-{name}"] = two + b"".join(hostile)
    HERE.mkdir(exist_ok=True)
    for name, data in files.items():
        (HERE / (name + ".qs_backup")).write_bytes(data)


if __name__ == "__main__":
    main()
