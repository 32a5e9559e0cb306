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

// Expected bytes here and in makecorpus.py follow the formats' public descriptions, not the program's writers.

namespace {

using namespace Qt::StringLiterals;

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

TEST(TypedStream, LengthTakesOneTwoOrFourBytesAtTheLimitsOfASignedByteAndShortAndACutArchiveIsNoString)
{
    const std::pair<int, QByteArray> forms[] = {{127, "\x7f"_ba}, {128, "\x81\x80\x00"_ba}, {32767, "\x81\xff\x7f"_ba},
                                                {32768, "\x82\x00\x80\x00\x00"_ba}};
    for (const auto &[size, lengthBytes] : forms) {
        const QByteArray text(size, 'z');
        const QByteArray written = TypedStream::archiveString(QString::fromLatin1(text));
        // The golden seed holds the bytes before these: the header and the class chain.
        EXPECT_TRUE(written.endsWith("\x85\x84\x01+"_ba + lengthBytes + text + '\x86')) << size;
        EXPECT_EQ(TypedStream::unarchiveString(written), QString::fromLatin1(text)) << size;
    }
    const QByteArray whole = TypedStream::archiveString(u"Grüße"_s);
    for (qsizetype size = 0; size < whole.size(); ++size)
        EXPECT_EQ(TypedStream::unarchiveString(whole.left(size)), std::nullopt) << "cut to " << size;
}

TEST(BackupFile, SavingReplacesTheFileWholeWithAPrivateOneOrNotAtAll)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"history.qs_backup"_s);
    QFile old(path);
    ASSERT_TRUE(old.open(QIODevice::WriteOnly)
                && old.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup | QFile::ReadOther));
    const QList<Entry> history = {textEntry(u"first"_s), textEntry(u"second"_s)};
    ASSERT_TRUE(BackupFile::save(path, history));
    EXPECT_EQ(readAll(path), BackupFile::encode(history));
    EXPECT_EQ(QFileInfo(path).permissions(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);

    // A full disk, as far as this process can tell, even for root.
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const auto restoreHandler = qScopeGuard([&] { std::signal(SIGXFSZ, oldHandler); });
    const auto fullDisk = lowered(RLIMIT_FSIZE, 64 * 1024);
    EXPECT_FALSE(BackupFile::save(path, {textEntry(QString(200 * 1024, u'x'))}));
    EXPECT_EQ(readAll(path), BackupFile::encode(history));
}

// Each seed is named "<entries it holds>-<what it is>"; among them files cut short anywhere, hostile length words
// (the reader must not allocate what they announce), damaged archives and property lists, and the golden file.
TEST(BackupFile, SeedsHoldTheEntriesTheirNamesPromiseAndAHistoryIsWrittenAsMacOsXWritesIt)
{
    const QStringList names = corpus.entryList({u"*.qs_backup"_s}, QDir::Files);
    ASSERT_GE(names.size(), 30);
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
    const QString nonAscii = u"Grüße, 東京 ✓"_s, oddType = u"com.example.a&b<c>"_s;
    const QList<Entry> history = {
        textEntry(QString(4000, u'a')),
        makeEntry({u"public.tiff"_s, u"public.png"_s}, u""_s,
                  {{u"public.tiff"_s, QByteArray(51, '\0')}, {u"public.png"_s, "\x89PNG"}}),
        makeEntry({plainText, oddType}, nonAscii, {{plainText, nonAscii.toUtf8()}, {oddType, QByteArray()}}),
    };
    const QByteArray golden = readAll(corpus.filePath(u"3-every-kind.qs_backup"_s));
    EXPECT_EQ(BackupFile::encode(history), golden);
    EXPECT_EQ(BackupFile::encode(seeds.value(u"3-every-kind"_s)), golden);
    // The file holds no main type: it is the first type, or "(null)" when the types are unreadable or none.
    const QList<Entry> odd = seeds.value(u"3-every-kind"_s) + seeds.value(u"1-unreadable-plists"_s)
        + seeds.value(u"1-empty-types"_s) + seeds.value(u"1-binary-plists"_s);
    EXPECT_EQ(texts(odd, &contents::mainType),
              (QStringList{plainText, u"public.tiff"_s, plainText, u"(null)"_s, u"(null)"_s, plainText}));
}

// The file keeps only the display string: an opened entry is searched in its text data when that cuts to it.
TEST(BackupFile, OpenedEntriesAreSearchedInTheirFullTextWhenTheirDataHoldsItAndKeepEqualBytesOnce)
{
    const QString longText = QString(150, u'a') + u" needle"_s;
    const Entry own = textEntry(longText);
    const Entry foreign = makeEntry({u"NSStringPboardType"_s}, longText, {{u"NSStringPboardType"_s, "other text"}});
    qint32 counter = 0;
    const QList<Entry> loaded = BackupFile::decode(BackupFile::encode({own, foreign}), counter);
    ASSERT_EQ(loaded.size(), 2);
    EXPECT_EQ(loaded[0]->contentOrig(), longText);
    EXPECT_EQ(loaded[1]->contentOrig(), QString(140, u'a') + u" ..."_s);
    const QByteArray plain = loaded[0]->datas().value(plainText), string = loaded[0]->datas().value(u"NSStringPboardType"_s);
    ASSERT_TRUE(plain == longText.toUtf8() && string == plain);
    EXPECT_EQ(plain.constData(), string.constData()) << "two buffers for the same text";
}

// Found by fuzzing: a binary plist dictionary whose key is not a key made libplist abort the program.
TEST(BackupFile, DataDictionaryWithAKeyThatIsNoKeyEndsTheLoadInsteadOfAborting)
{
    const QByteArray file = QByteArray::fromBase64(
        "OAAAAAQLc3RyZWFtdHlwZWSB6AOEAUCEhIQITlNTdHJpbmcBhIQITlNPYmplY3QAhYQBKwZiaW5hMXmGRQAAAGJwbGlzdDD/////AAAAAGJsaWMud"
        "XRmOC1wbGFpbi10ZXh0CAoAAAAAAD8BAQAAAAAAAAACAAAAAAAAAAAAAAAAAAAAI04AAABicGxpc3QwMNEBAl8QAAAAAAAAAAAAAAAAAAAAYWluLXR"
        "leHRGYmluYXJ5CAIkAAAAAAAAAQEAAAAAAAAAAwAAAAAAAAAAAAAAAAAAACs=");
    qint32 counter = 0;
    EXPECT_EQ(BackupFile::decode(file, counter).size(), 1);
}
