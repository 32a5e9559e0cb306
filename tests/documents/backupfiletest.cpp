#include "documents/backupfile.h"
#include "documents/typedstream.h"
#include "support/entries.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/resource.h>
#include <unistd.h>

#include <csignal>

// The expected bytes here, and the seed files makecorpus.py writes, are
// assembled from the public descriptions of the formats, never by the
// program's writers.

namespace {

using namespace Qt::StringLiterals;

// Bytes written as a literal, NULs included.
template<qsizetype N>
QByteArray raw(const char (&literal)[N]) { return QByteArray(literal, N - 1); }

// NSArchiver's archive of one NSString on an Intel Mac, up to the length of the string's UTF-8 bytes: streamer
// version 4, "streamtyped", system version 1000 (0x81 + 2 bytes), the type "@", a new object of a new class
// NSString v1 whose superclass is the new class NSObject v0 ending in nil, then the object's bytes as the type "+".
QByteArray intelArchive(const QByteArray &length, const QByteArray &text)
{
    return raw("\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\x84\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85\x84\x01+")
        + length + text + '\x86';
}

// A PowerPC Mac: "typedstream", big-endian integers, here a mutable string.
QByteArray powerPcMutableArchive(const QByteArray &lengthBytes, const QByteArray &utf8)
{
    return raw("\x04\x0btypedstream\x81\x03\xe8\x84\x01@\x84\x84\x84\x0fNSMutableString\x01"
               "\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85\x84\x01+")
        + lengthBytes + utf8 + '\x86';
}

const QString plainText = u"public.utf8-plain-text"_s;

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

// Lowers a limit of this process until the result goes out of scope.
auto lowered(int resource, rlim_t value)
{
    rlimit previous{};
    EXPECT_EQ(getrlimit(resource, &previous), 0);
    const rlimit limited{value, previous.rlim_max};
    EXPECT_EQ(setrlimit(resource, &limited), 0);
    return qScopeGuard([=] { setrlimit(resource, &previous); });
}

const QDir corpus(QFileInfo(QString::fromUtf8(__FILE__)).absolutePath() + u"/corpus"_s);

} // namespace

TEST(BackupFormat, HistoryIsWrittenByteForByteAsMacOsXWritesIt)
{
    QByteArray bytes100;
    for (int i = 0; i < 100; ++i)
        bytes100 += char(i);
    const QString nonAscii = u"Grüße, 東京 ✓"_s, oddType = u"com.example.a&b<c>"_s;
    const QList<Entry> history = {
        textEntry(u"Hello"_s),
        makeEntry({u"public.tiff"_s, u"public.png"_s}, u""_s,
                  {{u"public.tiff"_s, bytes100}, {u"public.png"_s, QByteArray(51, '\xff')}}),
        makeEntry({plainText}, u""_s, {{plainText, QByteArray()}}),
        makeEntry({plainText, oddType}, nonAscii, {{plainText, nonAscii.toUtf8()}, {oddType, "x"}}),
        makeEntry({plainText}, QString(4000, u'a'), {{plainText, QByteArray(4000, 'a')}}),
    };
    EXPECT_EQ(BackupFile::encode(history), readAll(corpus.filePath(u"5-every-kind.qs_backup"_s)));
    EXPECT_EQ(readAll(corpus.filePath(u"1-text.qs_backup"_s)), BackupFile::encode({textEntry(u"Hello"_s)}));
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

// Each seed is named "<entries it holds>-<what it is>": among them are files
// cut short anywhere, hostile length words, which must not make the reader
// allocate the sizes they announce, and binary property lists.
TEST(BackupFile, SeedCorpusHoldsTheEntriesItsNamesPromise)
{
    const QStringList names = corpus.entryList({u"*.qs_backup"_s}, QDir::Files);
    ASSERT_GE(names.size(), 25);
    // Address space for what this process holds now, but none for a buffer of a size a hostile word announces.
    const rlim_t held = rlim_t(readAll(u"/proc/self/statm"_s).split(' ').first().toLongLong()) * getpagesize();
    const auto noRoom = lowered(RLIMIT_AS, held + (256 << 20));
    for (const QString &name : names) {
        const Loaded loaded = load(readAll(corpus.filePath(name)));
        EXPECT_EQ(loaded.entries.size(), name.section(u'-', 0, 0).toInt()) << name.toStdString();
        EXPECT_EQ(loaded.counter, loaded.entries.size()) << name.toStdString();
    }
    const auto seed = [](const char *name) {
        return load(readAll(corpus.filePath(QString::fromLatin1(name) + u".qs_backup"_s))).entries;
    };
    const QList<Entry> binary = seed("1-binary-plists");
    ASSERT_EQ(binary.size(), 1);
    EXPECT_EQ(binary[0]->types(), QStringList{plainText});
    EXPECT_EQ(binary[0]->datas(), (contents::Datas{{plainText, "binary"}}));
    // Unreadable property lists, or no types, still give an entry with "(null)" as its main type.
    for (const char *name : {"1-unreadable-plists", "1-empty-types"}) {
        const QList<Entry> garbled = seed(name);
        ASSERT_EQ(garbled.size(), 1) << name;
        EXPECT_EQ(garbled[0]->mainType(), u"(null)"_s);
        EXPECT_TRUE(garbled[0]->types().isEmpty() && garbled[0]->datas().isEmpty()) << name;
    }
}
