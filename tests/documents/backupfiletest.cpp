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

// The expected bytes here, and the seeds makecorpus.py writes, follow the
// public descriptions of the formats, never the program's writers.

namespace {

using namespace Qt::StringLiterals;

// NSArchiver's archive of a string: streamer version 4, the signature, system version 1000 (0x81 + 2 bytes), the
// type "@", a new object of the new class NSString v1 (on a PowerPC Mac, big-endian, NSMutableString v1 over it)
// whose superclass is the new class NSObject v0 ending in nil, then the length and UTF-8 bytes as the type "+".
QByteArray archive(const QByteArray &length, const QByteArray &text, bool powerPc = false)
{
    const QByteArray head = powerPc ? "\x04\x0btypedstream\x81\x03\xe8\x84\x01@\x84\x84\x84\x0fNSMutableString\x01"_ba
                                    : "\x04\x0bstreamtyped\x81\xe8\x03\x84\x01@\x84"_ba;
    return head + "\x84\x84\x08NSString\x01\x84\x84\x08NSObject\x00\x85\x84\x01+"_ba + length + text + '\x86';
}

const QString plainText = u"public.utf8-plain-text"_s;

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

TEST(BackupFormat, HistoryIsWrittenByteForByteAsMacOsXWritesItAndReadBackNumberedOnFromTheCounter)
{
    const QString nonAscii = u"Grüße, 東京 ✓"_s, oddType = u"com.example.a&b<c>"_s;
    const QList<Entry> history = {
        textEntry(QString(4000, u'a')),
        makeEntry({u"public.tiff"_s, u"public.png"_s}, u""_s,
                  {{u"public.tiff"_s, QByteArray(51, '\0')}, {u"public.png"_s, "\x89PNG"}}),
        makeEntry({plainText, oddType}, nonAscii, {{plainText, nonAscii.toUtf8()}, {oddType, QByteArray()}}),
    };
    const QByteArray file = readAll(corpus.filePath(u"3-every-kind.qs_backup"_s));
    EXPECT_EQ(BackupFile::encode(history), file);

    qint32 counter = 7;
    const QList<Entry> loaded = BackupFile::decode(file, counter);
    EXPECT_EQ(BackupFile::encode(loaded), file);
    EXPECT_EQ(counter, 10);
    EXPECT_EQ(texts(loaded, &contents::indexCount), (QStringList{u"7"_s, u"8"_s, u"9"_s}));
    // The file does not hold the main type: it is the first type.
    EXPECT_EQ(texts(loaded, &contents::mainType), (QStringList{plainText, u"public.tiff"_s, plainText}));
}

TEST(TypedStream, LengthTakesOneTwoOrFourBytesAtTheLimitsOfASignedByteAndShortAndOnlyWhatMacsWroteIsRead)
{
    const std::pair<int, QByteArray> forms[] = {{127, "\x7f"_ba}, {128, "\x81\x80\x00"_ba}, {32767, "\x81\xff\x7f"_ba},
                                                {32768, "\x82\x00\x80\x00\x00"_ba}};
    for (const auto &[size, lengthBytes] : forms) {
        const QByteArray text(size, 'z');
        const QByteArray written = TypedStream::archiveString(QString::fromLatin1(text));
        EXPECT_EQ(written, archive(lengthBytes, text)) << size;
        EXPECT_EQ(TypedStream::unarchiveString(written), QString::fromLatin1(text)) << size;
    }

    const QByteArray twoHundred(200, 'p'), hello = archive("\x05", "hello");
    const auto replaced = [&](const char *from, const char *to) { return QByteArray(hello).replace(from, to); };
    const std::optional<QString> p200 = QString::fromLatin1(twoHundred);
    const std::tuple<const char *, QByteArray, std::optional<QString>> cases[] = {
        {"PowerPC, two-byte length", archive("\x81\x00\xc8"_ba, twoHundred, true), p200},
        {"PowerPC, four-byte length", archive("\x82\x00\x00\x00\xc8"_ba, twoHundred, true), p200},
        {"unknown signature", replaced("streamtyped", "streamtypex"), std::nullopt},
        {"not a string", replaced("\x08NSString", "\x08NSNumber"), std::nullopt},
        {"dangling shared string", replaced("\x84\x01+", "\x99"), std::nullopt},
    };
    for (const auto &[name, bytes, expected] : cases)
        EXPECT_EQ(TypedStream::unarchiveString(bytes), expected) << name;

    const QByteArray whole = TypedStream::archiveString(u"Grüße"_s);
    for (qsizetype size = 0; size < whole.size(); ++size)
        EXPECT_EQ(TypedStream::unarchiveString(whole.left(size)), std::nullopt) << "cut to " << size;
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

    const QList<Entry> history = {textEntry(u"first"_s), textEntry(u"second"_s)};
    ASSERT_TRUE(BackupFile::save(path, history));
    EXPECT_EQ(readAll(path), BackupFile::encode(history));
    EXPECT_EQ(QFileInfo(path).permissions(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);

    // The archive lengths of "first" and "second"; the reader reports the last one twice.
    qint32 counter = 0;
    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(BackupFile::openFile(path, counter));
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "cont_Data_size:55\ncont_Data_size:56\ncont_Data_size:56\n");

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
    QHash<QString, QList<Entry>> seeds;
    for (const QString &name : names) {
        qint32 counter = 0;
        const QList<Entry> entries = BackupFile::decode(readAll(corpus.filePath(name)), counter);
        EXPECT_EQ(entries.size(), name.section(u'-', 0, 0).toInt()) << name.toStdString();
        EXPECT_EQ(counter, entries.size()) << name.toStdString();
        seeds.insert(QFileInfo(name).baseName(), entries);
    }
    EXPECT_EQ(BackupFile::encode(seeds.value(u"1-binary-plists"_s)),
              BackupFile::encode({makeEntry({plainText}, u"binary"_s, {{plainText, "binary"}})}));
    // Unreadable property lists, or no types, still give an entry with "(null)" as its main type.
    const QList<Entry> garbled = seeds.value(u"1-unreadable-plists"_s) + seeds.value(u"1-empty-types"_s);
    EXPECT_EQ(texts(garbled, &contents::mainType), QStringList(2, u"(null)"_s));
    EXPECT_EQ(BackupFile::encode(garbled), BackupFile::encode({makeEntry({}, u"plain"_s), makeEntry({}, u"untyped"_s)}));
}
