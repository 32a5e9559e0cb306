#include "documents/backupfile.h"
#include "documents/propertylist.h"
#include "documents/typedstream.h"

#include "backupbytes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <sys/resource.h>

#include <csignal>
#include <cstdlib>

namespace {

using namespace Qt::StringLiterals;

const QString plainText = u"public.utf8-plain-text"_s;

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

    QStringList contents() const
    {
        QStringList texts;
        for (const Entry &e : entries)
            texts.append(e->content());
        return texts;
    }
};

Loaded load(const QByteArray &bytes, qint32 counter = 0)
{
    Loaded loaded;
    loaded.counter = counter;
    loaded.entries = BackupFile::decode(bytes, loaded.counter, [&](qint32 length) { loaded.reports.append(length); });
    return loaded;
}

QByteArray record(const QByteArray &content, const QByteArray &types, const QByteArray &datas)
{
    return block(content) + block(types) + block(datas);
}

QByteArray binaryPlist(plist_t root)
{
    char *bytes = nullptr;
    uint32_t length = 0;
    plist_to_bin(root, &bytes, &length);
    QByteArray result(bytes, length);
    plist_to_bin_free(bytes);
    plist_free(root);
    return result;
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

TEST(BackupFile, OneEntryIsThreeBlocksAndComesBackNumberedWithItsFirstTypeAsMainType)
{
    Entry entry = textEntry(u"Hello"_s);
    entry->setMainType(u"NSStringPboardType"_s);
    const QByteArray bytes = BackupFile::encode({entry});

    const QByteArray content = TypedStream::archiveString(u"Hello"_s);
    const QByteArray types = PropertyList::fromStringList(entry->types());
    const QByteArray datas = PropertyList::fromDatas(entry->datas());
    EXPECT_EQ(bytes, record(content, types, datas));

    const Loaded loaded = load(bytes);
    ASSERT_EQ(loaded.entries.size(), 1);
    const Entry &back = loaded.entries[0];
    EXPECT_EQ(back->indexCount(), u"0"_s);
    EXPECT_EQ(back->mainType(), plainText);
    EXPECT_EQ(back->types(), entry->types());
    EXPECT_EQ(back->datas(), entry->datas());
    EXPECT_EQ(back->content(), u"Hello"_s);
    EXPECT_EQ(back->typeImageIndex(), int(contents::IconText));
}

TEST(BackupFile, NRecordsReportNPlusOneLengthsAndContinueTheCounter)
{
    const QList<Entry> history = {textEntry(u"a"_s), textEntry(QString(300, u'b')), textEntry(u"c"_s)};
    const QByteArray bytes = BackupFile::encode(history);

    const Loaded loaded = load(bytes, 7);
    EXPECT_EQ(loaded.contents(), QStringList({u"a"_s, QString(140, u'b') + u" ..."_s, u"c"_s}));
    EXPECT_EQ(loaded.entries[2]->indexCount(), u"9"_s);
    EXPECT_EQ(loaded.counter, 10);
    const qint32 shortLength = qint32(TypedStream::archiveString(u"a"_s).size());
    const qint32 longLength = qint32(TypedStream::archiveString(history[1]->content()).size());
    EXPECT_EQ(loaded.reports, QList<qint32>({shortLength, longLength, shortLength, shortLength}));

    const Loaded empty = load(QByteArray());
    EXPECT_TRUE(empty.entries.isEmpty());
    EXPECT_EQ(empty.reports, QList<qint32>({0}));
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
        EXPECT_EQ(loaded.contents(), QStringList({u"one"_s, u"two"_s})) << "cut at " << cut;
        EXPECT_EQ(loaded.counter, 2);
    }
    EXPECT_EQ(load(two + third).entries.size(), 3);
}

TEST(BackupFile, LengthWordBeyondTheFileOrNegativeEndsTheLoad)
{
    const QByteArray first = BackupFile::encode({textEntry(u"kept"_s)});
    const QByteArray archive = TypedStream::archiveString(u"lost"_s);
    const QByteArray types = PropertyList::fromStringList({plainText});
    const QByteArray datas = PropertyList::fromDatas({});
    const QByteArray tail = block(types) + block(datas);
    for (const qint32 huge : {qint32(0x7fffffff), qint32(-1), qint32(-0x7fffffff - 1)}) {
        const QList<QByteArray> files = {
            first + lengthWord(huge) + archive + tail,
            first + block(archive) + lengthWord(huge) + types + block(datas),
            first + block(archive) + block(types) + lengthWord(huge) + datas,
        };
        for (const QByteArray &file : files) {
            const Loaded loaded = load(file);
            EXPECT_EQ(loaded.contents(), QStringList({u"kept"_s})) << huge;
        }
    }
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

    const Loaded badArchive =
        load(record(archive, types, datas) + record("not an archive", types, datas) + record(archive, types, datas));
    EXPECT_EQ(badArchive.contents(), QStringList({u"text"_s}));
}

TEST(BackupFile, BinaryPropertyListsAreRead)
{
    plist_t types = plist_new_array();
    plist_array_append_item(types, plist_new_string("public.tiff"));
    plist_t datas = plist_new_dict();
    plist_dict_set_item(datas, "public.tiff", plist_new_data("\x4d\x4d\x00\x2a", 4));

    const Loaded loaded = load(record(TypedStream::archiveString(u""_s), binaryPlist(types), binaryPlist(datas)));
    ASSERT_EQ(loaded.entries.size(), 1);
    EXPECT_EQ(loaded.entries[0]->types(), QStringList({u"public.tiff"_s}));
    EXPECT_EQ(loaded.entries[0]->datas(), (contents::Datas{{u"public.tiff"_s, raw("\x4d\x4d\x00\x2a")}}));
    EXPECT_EQ(loaded.entries[0]->typeImageIndex(), int(contents::IconImage));
}

TEST(BackupFile, FileFromTheOtherByteOrderIsMisread)
{
    if (QSysInfo::ByteOrder != QSysInfo::LittleEndian)
        GTEST_SKIP() << "written for a little-endian machine";
    QByteArray bigEndian;
    for (const QByteArray &payload : {TypedStream::archiveString(u"ppc"_s), PropertyList::fromStringList({plainText}),
                                      PropertyList::fromDatas({})}) {
        const qint32 length = qint32(payload.size());
        bigEndian += lengthWord(qToBigEndian(length)) + payload;
    }
    const Loaded loaded = load(bigEndian);
    EXPECT_TRUE(loaded.entries.isEmpty());
    EXPECT_EQ(loaded.reports, QList<qint32>({qbswap(qint32(TypedStream::archiveString(u"ppc"_s).size()))}));
}

TEST(BackupFile, SavingNothingLeavesTheFileAloneAndSavingSomethingReplacesItWithAPrivateOne)
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
    const QList<Entry> loaded = BackupFile::openFile(path, counter);
    const std::string printed = ::testing::internal::GetCapturedStdout();
    ASSERT_EQ(loaded.size(), 2);
    EXPECT_EQ(loaded[1]->content(), u"second"_s);
    const int first = int(TypedStream::archiveString(u"first"_s).size());
    const int second = int(TypedStream::archiveString(u"second"_s).size());
    EXPECT_EQ(printed, QStringLiteral("cont_Data_size:%1\ncont_Data_size:%2\ncont_Data_size:%2\n")
                           .arg(first)
                           .arg(second)
                           .toStdString());

    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(BackupFile::openFile(dir.filePath(u"missing"_s), counter).isEmpty());
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
}

TEST(BackupFile, FailedWriteLeavesTheOldFileWhole)
{
    QTemporaryDir dir;
    const QString path = dir.filePath(u"history.qs_backup"_s);
    const QList<Entry> small = {textEntry(u"small"_s)};
    ASSERT_TRUE(BackupFile::save(path, small));

    // A full disk, as far as this process can tell, even for root.
    rlimit previous{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &previous), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    rlimit limited = previous;
    limited.rlim_cur = 64 * 1024;
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &limited), 0);
    const auto restore = qScopeGuard([&] {
        setrlimit(RLIMIT_FSIZE, &previous);
        std::signal(SIGXFSZ, oldHandler);
    });

    const bool saved = BackupFile::save(path, {textEntry(QString(200 * 1024, u'x'))});
    EXPECT_FALSE(saved);
    EXPECT_EQ(readAll(path), BackupFile::encode(small));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList({u"history.qs_backup"_s}));
}

TEST(BackupFile, SeedCorpusHoldsTheEntriesItsNamesPromise)
{
    // The seeds are written by makecorpus.py, apart from this writer.
    const QDir corpus(QFileInfo(QString::fromUtf8(__FILE__)).absolutePath() + u"/corpus"_s);
    const QStringList names = corpus.entryList({u"*.qs_backup"_s}, QDir::Files);
    ASSERT_GE(names.size(), 10);
    for (const QString &name : names) {
        qint32 counter = 0;
        EXPECT_EQ(BackupFile::decode(readAll(corpus.filePath(name)), counter).size(), name.section(u'-', 0, 0).toInt())
            << name.toStdString();
    }
    EXPECT_EQ(readAll(corpus.filePath(u"1-text.qs_backup"_s)), BackupFile::encode({textEntry(u"Hello"_s)}));
}
