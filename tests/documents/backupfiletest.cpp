#include "documents/backupfile.h"
#include "documents/propertylist.h"
#include "documents/typedstream.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

// The expected bytes here are assembled by hand from the public descriptions
// of the formats, never by the program's writers.

namespace {

using namespace Qt::StringLiterals;

// Bytes written as a literal, NULs included.
template<qsizetype N>
QByteArray raw(const char (&literal)[N]) { return QByteArray(literal, N - 1); }
// A length word as this machine holds a 32-bit integer in memory.
QByteArray lengthWord(qint32 length) { return QByteArray(reinterpret_cast<const char *>(&length), sizeof length); }
QByteArray block(const QByteArray &payload) { return lengthWord(qint32(payload.size())) + payload; }

// NSArchiver's archive of one NSString on an Intel Mac, up to the length of the string's UTF-8 bytes: streamer
// version 4, "streamtyped", system version 1000 (0x81 + 2 bytes), the type "@", a new object of a new class
// NSString v1 whose superclass is the new class NSObject v0 ending in nil, then the object's bytes as the type "+".
const QByteArray intelHead = raw("\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\x84\x84\x84\x08NSString\x01"
                                 "\x84\x84\x08NSObject\x00\x85\x84\x01+");
const char endOfObject = '\x86';

QByteArray intelArchive(const QByteArray &length, const QByteArray &text)
{
    return intelHead + length + text + endOfObject;
}

// A PowerPC Mac: "typedstream", big-endian integers, here a mutable string.
QByteArray powerPcMutableArchive(const QByteArray &lengthBytes, const QByteArray &utf8)
{
    return raw("\x04\x0btypedstream\x81\x03\xe8\x84\x01@\x84\x84\x84\x0fNSMutableString\x01"
               "\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85\x84\x01+")
        + lengthBytes + utf8 + endOfObject;
}

QByteArray plist(const QByteArray &body)
{
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">\n"
           + body + "</plist>\n";
}

QByteArray stringArray(const QByteArray &strings) { return plist("<array>\n" + strings + "</array>\n"); }
QByteArray dataDict(const QByteArray &items) { return plist("<dict>\n" + items + "</dict>\n"); }

QByteArray dataItem(const QByteArray &key, const QByteArray &base64Lines)
{
    return "\t<key>" + key + "</key>\n\t<data>\n" + base64Lines + "\t</data>\n";
}

const QString plainText = u"public.utf8-plain-text"_s;

Entry makeEntry(const QString &text, const QStringList &types, const contents::Datas &datas)
{
    auto entry = std::make_shared<contents>();
    entry->setContent(text);
    entry->setTypes(types);
    entry->setDatas(datas);
    return entry;
}

QStringList texts(const QList<Entry> &entries, const QString &(contents::*field)() const = &contents::content)
{
    QStringList values;
    for (const Entry &entry : entries)
        values.append(((*entry).*field)());
    return values;
}

Entry textEntry(const QString &text)
{
    return makeEntry(text, {plainText, u"NSStringPboardType"_s},
                     {{plainText, text.toUtf8()}, {u"NSStringPboardType"_s, text.toUtf8()}});
}

struct Loaded
{
    QList<Entry> entries;
    QList<qint32> reports;
    qint32 counter = 0;
};

Loaded load(const QByteArray &bytes, qint32 counter = 0)
{
    Loaded loaded{{}, {}, counter};
    loaded.entries = BackupFile::decode(bytes, loaded.counter, [&](qint32 length) { loaded.reports.append(length); });
    return loaded;
}

QByteArray record(const QByteArray &content, const QByteArray &types, const QByteArray &datas)
{
    return block(content) + block(types) + block(datas);
}

// Lowers a limit of this process until the result goes out of scope.
auto lowered(int resource, rlim_t value)
{
    rlimit previous{};
    EXPECT_EQ(getrlimit(resource, &previous), 0);
    const rlimit limited{value, previous.rlim_max};
    EXPECT_EQ(setrlimit(resource, &limited), 0);
    return qScopeGuard([=] { setrlimit(resource, &previous); });
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(BackupFormat, GoldenBytesOfAHistory)
{
    QByteArray bytes100;
    for (int i = 0; i < 100; ++i)
        bytes100 += char(i);
    const QByteArray longText(40000, 'a');
    const QString nonAscii = u"Grüße, 東京 ✓"_s, oddType = u"com.example.a&b<c>"_s;

    const QList<Entry> history = {
        makeEntry(u"Hello"_s, {plainText, u"NSStringPboardType"_s},
                  {{plainText, "Hello"}, {u"NSStringPboardType"_s, "Hello"}}),
        makeEntry(u""_s, {u"public.tiff"_s, u"public.png"_s},
                  {{u"public.tiff"_s, bytes100}, {u"public.png"_s, QByteArray(51, '\xff')}}),
        makeEntry(u""_s, {plainText}, {{plainText, QByteArray()}}),
        makeEntry(nonAscii, {plainText, oddType}, {{plainText, nonAscii.toUtf8()}, {oddType, "x"}}),
        makeEntry(QString::fromLatin1(longText), {plainText}, {{plainText, longText}}),
    };
    const QByteArray plainString = "\t<string>public.utf8-plain-text</string>\n";
    const QByteArray plainArray = stringArray(plainString);

    // 1: text; the dictionary's keys come sorted.
    QByteArray expected = block(intelArchive("\x05", "Hello"))
        + block(stringArray(plainString + "\t<string>NSStringPboardType</string>\n"))
        + block(dataDict(dataItem("NSStringPboardType", "\tSGVsbG8=\n")
                         + dataItem("public.utf8-plain-text", "\tSGVsbG8=\n")));
    // 2: a picture; 51 bytes make exactly one full 68-character line.
    expected += block(intelArchive(QByteArray(1, '\0'), ""))
        + block(stringArray("\t<string>public.tiff</string>\n\t<string>public.png</string>\n"))
        + block(dataDict(dataItem("public.png", '\t' + QByteArray(68, '/') + '\n')
                         + dataItem("public.tiff",
                                    "\tAAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEy\n"
                                    "\tMzQ1Njc4OTo7PD0+P0BBQkNERUZHSElKS0xNTk9QUVJTVFVWV1hZWltcXV5fYGFiYw==\n")));
    // 3: an empty string with empty data.
    expected += block(intelArchive(QByteArray(1, '\0'), "")) + block(plainArray)
        + block(dataDict(dataItem("public.utf8-plain-text", "")));
    // 4: non-ASCII text, 19 UTF-8 bytes; names with markup characters escaped.
    expected += block(intelArchive("\x13", "Gr\xc3\xbc\xc3\x9f" "e, \xe6\x9d\xb1\xe4\xba\xac \xe2\x9c\x93"))
        + block(stringArray(plainString + "\t<string>com.example.a&amp;b&lt;c&gt;</string>\n"))
        + block(dataDict(dataItem("com.example.a&amp;b&lt;c&gt;", "\teA==\n")
                         + dataItem("public.utf8-plain-text", "\tR3LDvMOfZSwg5p2x5LqsIOKckw==\n")));
    // 5: a long text is archived as its 144-unit display string (0x81 + 2
    // bytes); its 40000 bytes of data are 13333 groups of "YWFh", 17 to a
    // line, then "YQ==".
    QByteArray lines = ('\t' + QByteArray("YWFh").repeated(17) + '\n').repeated(13333 / 17);
    lines += '\t' + QByteArray("YWFh").repeated(13333 % 17) + "YQ==\n";
    expected += block(intelArchive("\x81\x90\x00"_ba, QByteArray(140, 'a') + " ...")) + block(plainArray)
        + block(dataDict(dataItem("public.utf8-plain-text", lines)));

    EXPECT_EQ(BackupFile::encode(history), expected);
}

TEST(TypedStream, LengthTakesOneTwoOrFourBytesAtTheLimitsOfASignedByteAndShort)
{
    const std::pair<int, QByteArray> forms[] = {
        {0, raw("\x00")},          {127, raw("\x7f")},         {128, raw("\x81\x80\x00")},
        {32767, raw("\x81\xff\x7f")}, {32768, raw("\x82\x00\x80\x00\x00")},
    };
    for (const auto &[size, lengthBytes] : forms) {
        const QByteArray text(size, 'z');
        const QByteArray archive = TypedStream::archiveString(QString::fromLatin1(text));
        EXPECT_EQ(archive, intelArchive(lengthBytes, text)) << size;
        EXPECT_EQ(TypedStream::unarchiveString(archive), QString::fromLatin1(text)) << size;
    }
}

TEST(TypedStream, ReadsWhatMacsWroteAndNothingElse)
{
    const QByteArray twoHundred(200, 'p'), hello = intelArchive("\x05", "hello");
    const auto replaced = [&](const char *from, const char *to) { return QByteArray(hello).replace(from, to); };
    const std::optional<QString> p200 = QString::fromLatin1(twoHundred);
    const std::tuple<const char *, QByteArray, std::optional<QString>> cases[] = {
        {"PowerPC, two-byte length", powerPcMutableArchive("\x81\x00\xc8"_ba, twoHundred), p200},
        {"PowerPC, four-byte length", powerPcMutableArchive("\x82\x00\x00\x00\xc8"_ba, twoHundred), p200},
        {"Intel mutable string", replaced("\x08NSString", "\x0fNSMutableString"), u"hello"_s},
        {"wrong byte order for the signature", powerPcMutableArchive("\x81\xc8\x00"_ba, twoHundred), std::nullopt},
        {"unknown signature", replaced("streamtyped", "streamtypex"), std::nullopt},
        {"not a string", replaced("\x08NSString", "\x08NSNumber"), std::nullopt},
        {"length beyond the archive", intelArchive("\x82\xff\xff\xff\x7f"_ba, "hello"), std::nullopt},
        {"dangling shared string", replaced("\x84\x01+", "\x99"), std::nullopt},
    };
    for (const auto &[name, archive, expected] : cases)
        EXPECT_EQ(TypedStream::unarchiveString(archive), expected) << name;

    const QByteArray archive = TypedStream::archiveString(u"Grüße"_s);
    for (qsizetype size = 0; size < archive.size(); ++size)
        EXPECT_EQ(TypedStream::unarchiveString(archive.left(size)), std::nullopt) << "cut to " << size;
}

TEST(BackupFile, NRecordsReportNPlusOneLengthsAndComeBackNumberedWithTheirFirstTypeAsMainType)
{
    const QList<Entry> history = {textEntry(u"a"_s), textEntry(QString(300, u'b')), textEntry(u"c"_s)};
    history[0]->setMainType(u"NSStringPboardType"_s);

    const Loaded loaded = load(BackupFile::encode(history), 7);
    EXPECT_EQ(texts(loaded.entries), QStringList({u"a"_s, QString(140, u'b') + u" ..."_s, u"c"_s}));
    EXPECT_EQ(texts(loaded.entries, &contents::indexCount), QStringList({u"7"_s, u"8"_s, u"9"_s}));
    EXPECT_EQ(texts(loaded.entries, &contents::mainType), QStringList(3, plainText));
    EXPECT_EQ(loaded.entries[0]->types(), history[0]->types());
    EXPECT_EQ(loaded.entries[0]->datas(), history[0]->datas());
    EXPECT_EQ(loaded.counter, 10);
    const qint32 shortLength = qint32(TypedStream::archiveString(u"a"_s).size());
    const qint32 longLength = qint32(TypedStream::archiveString(history[1]->content()).size());
    EXPECT_EQ(loaded.reports, QList<qint32>({shortLength, longLength, shortLength, shortLength}));

    EXPECT_TRUE(load(QByteArray()).entries.isEmpty());
}

TEST(BackupFile, RecordCutShortAnywhereIsDroppedAndTheEarlierOnesStay)
{
    const QByteArray two = BackupFile::encode({textEntry(u"one"_s), textEntry(u"two"_s)});
    const QByteArray third = BackupFile::encode({textEntry(u"three"_s)});
    const qsizetype contentEnd = 4 + TypedStream::archiveString(u"three"_s).size();
    const qsizetype typesEnd = contentEnd + 4 + PropertyList::fromStringList(textEntry(u"x"_s)->types()).size();

    for (const qsizetype cut : {qsizetype(1), qsizetype(4), contentEnd - 1, contentEnd, contentEnd + 2, contentEnd + 10,
                                typesEnd, typesEnd + 3, typesEnd + 4, third.size() - 1}) {
        const Loaded loaded = load(two + third.left(cut));
        EXPECT_EQ(texts(loaded.entries), QStringList({u"one"_s, u"two"_s})) << "cut at " << cut;
        EXPECT_EQ(loaded.counter, 2);
    }
    EXPECT_EQ(load(two + third).entries.size(), 3);
}

TEST(BackupFile, HostileOrForeignLengthWordsEndTheLoadWithoutAllocating)
{
    const QByteArray first = BackupFile::encode({textEntry(u"kept"_s)});
    const QByteArray archive = TypedStream::archiveString(u"lost"_s);
    const QByteArray types = PropertyList::fromStringList({plainText});
    const QByteArray datas = PropertyList::fromDatas({});
    // Address space for what this process holds now, but none for a buffer of a size a hostile word announces.
    const rlim_t held = rlim_t(readAll(u"/proc/self/statm"_s).split(' ').first().toLongLong()) * getpagesize();
    const auto noRoom = lowered(RLIMIT_AS, held + (256 << 20));
    for (const qint32 huge : {qint32(0x7fffffff), qint32(-1), qint32(-0x7fffffff - 1)})
        for (const QByteArray &file : {first + lengthWord(huge) + archive + block(types) + block(datas),
                                       first + block(archive) + lengthWord(huge) + types + block(datas),
                                       first + block(archive) + block(types) + lengthWord(huge) + datas})
            EXPECT_EQ(texts(load(file).entries), QStringList({u"kept"_s})) << huge;

    // A file from the other byte order: its first length word reads byte-reversed, far beyond the file.
    const qint32 reversed = qbswap(qint32(archive.size()));
    const Loaded foreign = load(lengthWord(reversed) + archive + block(types) + block(datas));
    EXPECT_TRUE(foreign.entries.isEmpty());
    EXPECT_EQ(foreign.reports, QList<qint32>({reversed}));
}

TEST(BackupFile, UnreadablePropertyListsStillGiveAnEntryButABadArchiveEndsTheLoad)
{
    const QByteArray archive = TypedStream::archiveString(u"text"_s);
    const QByteArray types = PropertyList::fromStringList({plainText});
    const QByteArray datas = PropertyList::fromDatas({{plainText, "text"}});

    const Loaded garbled = load(record(archive, "garbage", "<dict>"));
    ASSERT_EQ(garbled.entries.size(), 1);
    EXPECT_EQ(garbled.entries[0]->mainType(), u"(null)"_s);
    EXPECT_TRUE(garbled.entries[0]->types().isEmpty());
    EXPECT_TRUE(garbled.entries[0]->datas().isEmpty());
    EXPECT_EQ(load(record(archive, PropertyList::fromStringList({}), datas)).entries[0]->mainType(), u"(null)"_s);

    const QByteArray good = record(archive, types, datas);
    EXPECT_EQ(texts(load(good + record("not an archive", types, datas) + good).entries), QStringList({u"text"_s}));
}

TEST(BackupFile, BinaryPropertyListsAreRead)
{
    // Offset table entries of one byte; the trailer counts the objects and places that table.
    const auto trailer = [](char objects, char offsetTable) {
        return QByteArray(6, '\0') + "\x01\x01" + QByteArray(7, '\0') + objects + QByteArray(15, '\0') + offsetTable;
    };
    const QByteArray types = raw("bplist00\xa1\x01\x5bpublic.tiff\x08\x0a") + trailer(2, 0x16);
    const QByteArray datas = raw("bplist00\xd1\x01\x02\x5bpublic.tiff\x44MM\x00*\x08\x0b\x17") + trailer(3, 0x1c);
    const Loaded loaded = load(record(TypedStream::archiveString(u""_s), types, datas));
    ASSERT_EQ(loaded.entries.size(), 1);
    EXPECT_EQ(loaded.entries[0]->types(), QStringList({u"public.tiff"_s}));
    EXPECT_EQ(loaded.entries[0]->datas(), (contents::Datas{{u"public.tiff"_s, raw("MM\x00*")}}));
}

TEST(BackupFile, SavingNothingLeavesTheFileAloneAndSavingReplacesItWholeWithAPrivateOneOrNotAtAll)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"history.qs_backup"_s);
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly));
    old.write("old bytes");
    old.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther);
    old.close();
    EXPECT_TRUE(BackupFile::save(path, {}));
    EXPECT_EQ(readAll(path), "old bytes");
    EXPECT_TRUE(BackupFile::save(dir.filePath(u"new"_s), {}));
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(u"new"_s)));

    const QList<Entry> history = {textEntry(u"first"_s), textEntry(u"second"_s)};
    ASSERT_TRUE(BackupFile::save(path, history));
    EXPECT_EQ(readAll(path), BackupFile::encode(history));
    EXPECT_EQ(QFileInfo(path).permissions(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({u"history.qs_backup"_s}));

    qint32 counter = 0;
    ::testing::internal::CaptureStdout();
    const QList<Entry> loaded = BackupFile::openFile(path, counter).value_or(QList<Entry>());
    const std::string printed = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(loaded.size(), 2);
    EXPECT_EQ(printed, QStringLiteral("cont_Data_size:%1\ncont_Data_size:%2\ncont_Data_size:%2\n")
                           .arg(TypedStream::archiveString(u"first"_s).size())
                           .arg(TypedStream::archiveString(u"second"_s).size())
                           .toStdString());

    // A full disk, as far as this process can tell, even for root.
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const auto restoreHandler = qScopeGuard([&] { std::signal(SIGXFSZ, oldHandler); });
    const auto fullDisk = lowered(RLIMIT_FSIZE, 64 * 1024);
    EXPECT_FALSE(BackupFile::save(path, {textEntry(QString(200 * 1024, u'x'))}));
    EXPECT_EQ(readAll(path), BackupFile::encode(history));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({u"history.qs_backup"_s}));
}

TEST(BackupFile, SeedCorpusHoldsTheEntriesItsNamesPromise)
{
    // The seeds are written by makecorpus.py, apart from this writer.
    const QDir corpus(QFileInfo(QString::fromUtf8(__FILE__)).absolutePath() + u"/corpus"_s);
    const QStringList names = corpus.entryList({u"*.qs_backup"_s}, QDir::Files);
    ASSERT_GE(names.size(), 10);
    for (const QString &name : names)
        EXPECT_EQ(load(readAll(corpus.filePath(name))).entries.size(), name.section(u'-', 0, 0).toInt())
            << name.toStdString();
    EXPECT_EQ(readAll(corpus.filePath(u"1-text.qs_backup"_s)), BackupFile::encode({textEntry(u"Hello"_s)}));
}
