#include "documents/backupfile.h"
#include "documents/propertylist.h"
#include "documents/typedstream.h"

#include "backupbytes.h"

#include <gtest/gtest.h>

#include <cstring>

// The expected bytes here are assembled by hand from the public descriptions
// of the two formats, never by the program's writers.

namespace {

using namespace Qt::StringLiterals;

// NSArchiver's archive of one NSString on an Intel Mac, up to the length of
// the string's UTF-8 bytes: streamer version 4, "streamtyped", system version
// 1000 (0x81 + 2 bytes), the type "@", a new object of a new class NSString
// v1 whose superclass is the new class NSObject v0 ending in nil, then the
// object's bytes as the type "+".
const QByteArray intelStringArchiveHead = raw("\x04\x0bstreamtyped\x81\xe8\x03"
                                              "\x84\x01@\x84\x84\x84\x08NSString\x01"
                                              "\x84\x84\x08NSObject\x00\x85\x84\x01+");
const char endOfObject = '\x86';

QByteArray intelArchive(const QByteArray &lengthBytes, const QByteArray &utf8)
{
    return intelStringArchiveHead + lengthBytes + utf8 + endOfObject;
}

const QByteArray plistHead = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                             "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
                             "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
                             "<plist version=\"1.0\">\n";

QByteArray plist(const QByteArray &body)
{
    return plistHead + body + "</plist>\n";
}

} // namespace

TEST(BackupFormat, GoldenBytesOfAHistory)
{
    QByteArray bytes100;
    for (int i = 0; i < 100; ++i)
        bytes100 += char(i);
    const QByteArray ff51(51, '\xff');
    const QByteArray longText(40000, 'a');
    const QString nonAscii = u"Grüße, 東京 ✓"_s;
    const QString oddType = u"com.example.a&b<c>"_s;

    const QList<Entry> history = {
        makeEntry(u"Hello"_s, {u"public.utf8-plain-text"_s, u"NSStringPboardType"_s},
                  {{u"public.utf8-plain-text"_s, "Hello"}, {u"NSStringPboardType"_s, "Hello"}}),
        makeEntry(u""_s, {u"public.tiff"_s, u"public.png"_s}, {{u"public.tiff"_s, bytes100}, {u"public.png"_s, ff51}}),
        makeEntry(u""_s, {u"public.utf8-plain-text"_s}, {{u"public.utf8-plain-text"_s, QByteArray()}}),
        makeEntry(nonAscii, {u"public.utf8-plain-text"_s, oddType},
                  {{u"public.utf8-plain-text"_s, nonAscii.toUtf8()}, {oddType, "x"}}),
        makeEntry(QString::fromLatin1(longText), {u"public.utf8-plain-text"_s}, {{u"public.utf8-plain-text"_s, longText}}),
        makeEntry(u"no types"_s, {}, {}),
    };

    QByteArray expected;
    // 1: text.
    expected += block(intelArchive("\x05", "Hello"));
    expected += block(plist("<array>\n\t<string>public.utf8-plain-text</string>\n"
                            "\t<string>NSStringPboardType</string>\n</array>\n"));
    expected += block(plist("<dict>\n"
                            "\t<key>NSStringPboardType</key>\n\t<data>\n\tSGVsbG8=\n\t</data>\n"
                            "\t<key>public.utf8-plain-text</key>\n\t<data>\n\tSGVsbG8=\n\t</data>\n"
                            "</dict>\n"));
    // 2: a picture; 51 bytes make exactly one full 68-character line.
    expected += block(intelArchive(QByteArray(1, '\0'), ""));
    expected += block(plist("<array>\n\t<string>public.tiff</string>\n\t<string>public.png</string>\n</array>\n"));
    expected += block(plist("<dict>\n"
                            "\t<key>public.png</key>\n\t<data>\n\t" + QByteArray(68, '/') + "\n\t</data>\n"
                            "\t<key>public.tiff</key>\n\t<data>\n"
                            "\tAAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEy\n"
                            "\tMzQ1Njc4OTo7PD0+P0BBQkNERUZHSElKS0xNTk9QUVJTVFVWV1hZWltcXV5fYGFiYw==\n"
                            "\t</data>\n</dict>\n"));
    // 3: an empty string with empty data.
    expected += block(intelArchive(QByteArray(1, '\0'), ""));
    expected += block(plist("<array>\n\t<string>public.utf8-plain-text</string>\n</array>\n"));
    expected += block(plist("<dict>\n\t<key>public.utf8-plain-text</key>\n\t<data>\n\t</data>\n</dict>\n"));
    // 4: non-ASCII text, 19 UTF-8 bytes; names with markup characters escaped.
    const QByteArray utf8 = "\x47\x72\xc3\xbc\xc3\x9f\x65\x2c\x20\xe6\x9d\xb1\xe4\xba\xac\x20\xe2\x9c\x93";
    expected += block(intelArchive("\x13", utf8));
    expected += block(plist("<array>\n\t<string>public.utf8-plain-text</string>\n"
                            "\t<string>com.example.a&amp;b&lt;c&gt;</string>\n</array>\n"));
    expected += block(plist("<dict>\n"
                            "\t<key>com.example.a&amp;b&lt;c&gt;</key>\n\t<data>\n\teA==\n\t</data>\n"
                            "\t<key>public.utf8-plain-text</key>\n\t<data>\n\tR3LDvMOfZSwg5p2x5LqsIOKckw==\n\t</data>\n"
                            "</dict>\n"));
    // 5: a long text is archived as its 144-unit display string (0x81 + 2
    // bytes); its 40000 bytes of data are 13333 groups of "YWFh", 17 to a
    // line, then "YQ==".
    expected += block(intelArchive("\x81\x90\x00"_ba, QByteArray(140, 'a') + " ..."));
    expected += block(plist("<array>\n\t<string>public.utf8-plain-text</string>\n</array>\n"));
    QByteArray lines;
    for (int line = 0; line < 13333 / 17; ++line)
        lines += '\t' + QByteArray("YWFh").repeated(17) + '\n';
    lines += '\t' + QByteArray("YWFh").repeated(13333 % 17) + "YQ==\n";
    expected += block(plist("<dict>\n\t<key>public.utf8-plain-text</key>\n\t<data>\n" + lines + "\t</data>\n</dict>\n"));
    // 6: no types at all.
    expected += block(intelArchive("\x08", "no types"));
    expected += block(plist("<array/>\n"));
    expected += block(plist("<dict/>\n"));

    EXPECT_EQ(BackupFile::encode(history), expected);
}

TEST(TypedStream, LengthTakesOneTwoOrFourBytesAtTheLimitsOfASignedByteAndShort)
{
    const std::pair<int, QByteArray> forms[] = {
        {0, raw("\x00")},
        {127, raw("\x7f")},
        {128, raw("\x81\x80\x00")},
        {32767, raw("\x81\xff\x7f")},
        {32768, raw("\x82\x00\x80\x00\x00")},
        {40000, raw("\x82\x40\x9c\x00\x00")},
    };
    for (const auto &[size, lengthBytes] : forms) {
        const QByteArray text(size, 'z');
        const QByteArray archive = TypedStream::archiveString(QString::fromLatin1(text));
        EXPECT_EQ(archive, intelArchive(lengthBytes, text)) << size;
        EXPECT_EQ(TypedStream::unarchiveString(archive), QString::fromLatin1(text)) << size;
    }
}

struct ArchiveCase
{
    const char *name;
    QByteArray archive;
    std::optional<QString> expected;
};

class TypedStreamRead : public ::testing::TestWithParam<ArchiveCase>
{
};

TEST_P(TypedStreamRead, ReadsWhatMacsWroteAndNothingElse)
{
    EXPECT_EQ(TypedStream::unarchiveString(GetParam().archive), GetParam().expected);
}

namespace {

// A PowerPC Mac: "typedstream", big-endian integers, here a mutable string.
QByteArray powerPcMutableArchive(const QByteArray &lengthBytes, const QByteArray &utf8)
{
    return raw("\x04\x0btypedstream\x81\x03\xe8"
               "\x84\x01@\x84\x84\x84\x0fNSMutableString\x01"
               "\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85\x84\x01+")
        + lengthBytes + utf8 + endOfObject;
}

QByteArray replaced(QByteArray bytes, const QByteArray &from, const QByteArray &to)
{
    return bytes.replace(from, to);
}

const QByteArray twoHundred(200, 'p');
const QByteArray hello = intelArchive("\x05", "hello");

} // namespace

INSTANTIATE_TEST_SUITE_P(
    Archives, TypedStreamRead,
    ::testing::Values(
        ArchiveCase{"PowerPcTwoByteLength", powerPcMutableArchive("\x81\x00\xc8"_ba, twoHundred), QString::fromLatin1(twoHundred)},
        ArchiveCase{"PowerPcFourByteLength", powerPcMutableArchive("\x82\x00\x00\x00\xc8"_ba, twoHundred),
                    QString::fromLatin1(twoHundred)},
        ArchiveCase{"IntelMutableString", replaced(hello, "\x08NSString", "\x0fNSMutableString"), u"hello"_s},
        ArchiveCase{"WrongByteOrderForSignature", powerPcMutableArchive("\x81\xc8\x00"_ba, twoHundred), std::nullopt},
        ArchiveCase{"UnknownSignature", replaced(hello, "streamtyped", "streamtypex"), std::nullopt},
        ArchiveCase{"OldStreamerVersion", replaced(hello, "\x04\x0b", "\x03\x0b"), std::nullopt},
        ArchiveCase{"NotAString", replaced(hello, "\x08NSString", "\x08NSNumber"), std::nullopt},
        ArchiveCase{"RootClassAlone", replaced(hello, "\x08NSString\x01\x84\x84", ""), std::nullopt},
        ArchiveCase{"NilObject", intelStringArchiveHead.left(19) + '\x85', std::nullopt},
        ArchiveCase{"LengthBeyondTheArchive", intelArchive("\x82\xff\xff\xff\x7f"_ba, "hello"), std::nullopt},
        ArchiveCase{"DanglingSharedStringReference", replaced(hello, "\x84\x01+", "\x99"), std::nullopt}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(TypedStream, EveryTruncationOfAnArchiveGivesNoValue)
{
    const QByteArray archive = TypedStream::archiveString(u"Grüße"_s);
    ASSERT_EQ(TypedStream::unarchiveString(archive), u"Grüße"_s);
    for (qsizetype size = 0; size < archive.size(); ++size)
        EXPECT_EQ(TypedStream::unarchiveString(archive.left(size)), std::nullopt) << size;
}

TEST(PropertyList, WrongShapesReadAsNoValue)
{
    const QByteArray strings = PropertyList::fromStringList({u"a"_s});
    const QByteArray datas = PropertyList::fromDatas({{u"k"_s, "v"}});
    EXPECT_EQ(PropertyList::toStringList(strings), QStringList{u"a"_s});
    EXPECT_EQ(PropertyList::toDatas(datas), (contents::Datas{{u"k"_s, "v"}}));

    EXPECT_EQ(PropertyList::toStringList(datas), std::nullopt);
    EXPECT_EQ(PropertyList::toDatas(strings), std::nullopt);
    EXPECT_EQ(PropertyList::toStringList(plist("<array><string>a</string><integer>1</integer></array>")), std::nullopt);
    EXPECT_EQ(PropertyList::toDatas(plist("<dict><key>k</key><string>v</string></dict>")), std::nullopt);
    EXPECT_EQ(PropertyList::toStringList("not a property list"), std::nullopt);
    EXPECT_EQ(PropertyList::toDatas(QByteArray()), std::nullopt);
    EXPECT_EQ(PropertyList::toStringList(strings.left(strings.size() / 2)), std::nullopt);
}
