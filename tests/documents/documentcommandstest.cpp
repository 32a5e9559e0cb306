#include "documents/backupfile.h"
#include "documents/documentcommands.h"
#include "history/captureloop.h"
#include "history/historyactions.h"
#include "history/historylist.h"
#include "platform/fake/fakeimagefetcher.h"
#include "platform/fake/fakepanels.h"
#include "platform/fake/fakepasteboard.h"
#include "platform/fake/fakeworkspace.h"
#include "support/recordingrig.h"

#include <QDate>
#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>
#include <ostream>

using namespace Qt::StringLiterals;

inline void PrintTo(const QString &text, std::ostream *os)
{
    *os << '"' << text.toStdString() << '"';
}

namespace {

const QString untitled = u"untitled%1.qs_backup"_s.arg(QDate::currentDate().toString(u"yyyy_MM_dd"_s));

// The document commands over the history objects the controller wires, with
// fakes for the desktop and real files in a temporary folder.
class DocumentCommandsTest : public ::testing::Test, protected RecordingRig
{
protected:
    DocumentCommandsTest()
    {
        static DocumentCommandsTest *active = nullptr;
        active = this;
        previousHandler = qInstallMessageHandler([](QtMsgType, const QMessageLogContext &context, const QString &text) {
            active->logged.append(QString::fromUtf8(context.category) + u": "_s + text);
        });
        QObject::connect(&capture, &CaptureLoop::autoSaveDue, docs.get(), &DocumentCommands::autoSave);
    }
    ~DocumentCommandsTest() override { qInstallMessageHandler(previousHandler); }
    void TearDown() override { EXPECT_EQ(logged, expectedLog); }

    QString path(const QString &name) const { return dir.filePath(name); }
    static Entry entry(const QString &text)
    {
        auto entry = std::make_shared<contents>();
        entry->setContent(text);
        entry->setMainType(u"NSStringPboardType"_s);
        entry->setTypes({u"NSStringPboardType"_s});
        entry->setDatas({{u"NSStringPboardType"_s, text.toUtf8()}});
        return entry;
    }
    void add(const QStringList &texts)
    {
        for (const QString &text : texts) {
            const Entry added = entry(text);
            added->setIndexCount(QString::number(capture.getCounter()));
            capture.setCounter(capture.getCounter() + 1);
            nsac.addObject(added);
        }
    }
    using Field = const QString &(contents::*)() const;
    static QStringList texts(const QList<Entry> &entries, Field field = &contents::content)
    {
        QStringList values;
        for (const Entry &entry : entries)
            values.append(((*entry).*field)());
        return values;
    }
    // The display strings stored in a backup file; none for a missing file.
    static QStringList fileTexts(const QString &file)
    {
        QFile in(file);
        if (!in.open(QIODevice::ReadOnly))
            return {u"<missing>"_s};
        qint32 counter = 0;
        return texts(BackupFile::decode(in.readAll(), counter));
    }
    static void writeFile(const QString &file, const QStringList &contentTexts)
    {
        QList<Entry> entries;
        for (const QString &text : contentTexts)
            entries.append(entry(text));
        ASSERT_TRUE(BackupFile::save(file, entries));
    }
    void tick(int count = 1)
    {
        for (int i = 0; i < count; ++i) {
            capture.MainTimer();
            clock.advance(CaptureLoop::tickIntervalMs);
        }
    }

    QStringList logged;
    QStringList expectedLog;
    QtMessageHandler previousHandler = nullptr;
    QTemporaryDir dir;
    FakePasteboard pasteboard;
    FakeImageFetcher fetcher;
    FakeWorkspace workspace;
    FakePanels panels;
    HistoryList nsac;
    CaptureLoop capture{nsac, pasteboard, registries, dock, notices, eventTimer, recording, &fetcher};
    HistoryActions actions{nsac, pasteboard, capture, notices, eventTimer, recording, workspace};
    std::unique_ptr<DocumentCommands> docs = std::make_unique<DocumentCommands>(
        nsac, capture, actions, notices, registries, defaults, panels);
};

TEST_F(DocumentCommandsTest, saveWritesEveryEntryBehindTheFilterAndSaveAsOnlyTheVisibleOnes)
{
    add({u"apple"_s, u"banana"_s, u"cherry"_s});
    nsac.setFilterString(u"AN"_s);
    capture.setMyPath(path(u"all.qs_backup"_s));
    capture.setEStatus(1);

    docs->saveAllObject();
    EXPECT_EQ(fileTexts(path(u"all.qs_backup"_s)), (QStringList{u"apple"_s, u"banana"_s, u"cherry"_s}));
    EXPECT_EQ(nsac.filterString(), u"AN"_s);
    EXPECT_EQ(texts(nsac.arrangedObjects()), QStringList{u"banana"_s});
    EXPECT_EQ(capture.eStatus(), 0);
    EXPECT_TRUE(panels.panels().isEmpty());

    panels.confirmNext(path(u"visible.qs_backup"_s), dir.path());
    capture.setEStatus(1);
    docs->saveas();
    EXPECT_EQ(fileTexts(path(u"visible.qs_backup"_s)), QStringList{u"banana"_s});
    EXPECT_EQ(nsac.filterString(), u"AN"_s);
    EXPECT_EQ(capture.myPath(), path(u"visible.qs_backup"_s));
    EXPECT_EQ(capture.eStatus(), 0);

    // Save As over a filter that hides everything writes nothing, yet calls the history clean.
    nsac.setFilterString(u"zzz"_s);
    panels.confirmNext(path(u"none.qs_backup"_s), dir.path());
    capture.setEStatus(1);
    docs->saveas();
    EXPECT_FALSE(QFile::exists(path(u"none.qs_backup"_s)));
    EXPECT_EQ(capture.eStatus(), 0);
    EXPECT_TRUE(panels.alerts().isEmpty());
}

TEST_F(DocumentCommandsTest, saveOfAnEmptyHistoryAlertsWithoutPanelAndLeavesTheFile)
{
    const QString file = path(u"kept.qs_backup"_s);
    writeFile(file, {u"old"_s});

    for (const QString &current : {QString(), file}) {
        capture.setMyPath(current);
        capture.setEStatus(1);
        docs->saveAllObject();
        EXPECT_TRUE(panels.panels().isEmpty());
        EXPECT_EQ(capture.eStatus(), 1);
    }
    ASSERT_EQ(panels.alerts().size(), 2);
    const FakePanels::Alert &alert = panels.alerts().last();
    EXPECT_EQ((QStringList{alert.windowTitle, alert.message, alert.informativeText, alert.button}),
              (QStringList{u"Warning"_s, u"Table is empty"_s, u"No contents to save."_s, u"OK"_s}));
    EXPECT_EQ(fileTexts(file), QStringList{u"old"_s});
    EXPECT_FALSE(docs->isSaveAsEnabled());
}

struct NameCase
{
    bool saveAs;
    const char *chosen;
    const char *written;
};

void PrintTo(const NameCase &c, std::ostream *os)
{
    *os << (c.saveAs ? "Save As " : "Save ") << c.chosen;
}

class ChosenNameTest : public DocumentCommandsTest, public ::testing::WithParamInterface<NameCase>
{
};

TEST_P(ChosenNameTest, saveAppendsTheExtensionUnlessExactlyThereAndSaveAsNever)
{
    const NameCase &c = GetParam();
    add({u"text"_s});
    panels.confirmNext(path(QString::fromUtf8(c.chosen)), dir.path());
    c.saveAs ? docs->saveas() : docs->saveAllObject();

    EXPECT_EQ(capture.myPath(), path(QString::fromUtf8(c.written)));
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files), QStringList{QString::fromUtf8(c.written)});
    EXPECT_EQ(docs->lastSavedDirectory(), dir.path());
}

INSTANTIATE_TEST_SUITE_P(Names, ChosenNameTest,
                         ::testing::Values(NameCase{false, "a.txt", "a.txt.qs_backup"},
                                           NameCase{false, "x.QS_BACKUP", "x.QS_BACKUP.qs_backup"},
                                           NameCase{false, "plain", "plain.qs_backup"},
                                           NameCase{false, "b.qs_backup", "b.qs_backup"},
                                           NameCase{true, "a.txt", "a.txt"}));

TEST_F(DocumentCommandsTest, panelsOfferTheirFoldersAndNamesAndCancelledOnesChangeNothingButSaveAs)
{
    const QString home = QDir::homePath();
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    add({u"text"_s});
    capture.setEStatus(1);
    docs->saveas();
    docs->open();
    EXPECT_FALSE(docs->isSaveAsEnabled());
    docs->saveAllObject();
    EXPECT_TRUE(docs->isSaveAsEnabled());
    EXPECT_EQ((QStringList{capture.myPath(), docs->lastSavedDirectory()}), (QStringList{QString(), QString()}));
    EXPECT_EQ(capture.eStatus(), 1);
    EXPECT_EQ(texts(nsac.arrangedObjects()), QStringList{u"text"_s});
    EXPECT_TRUE(QDir(dir.path()).isEmpty());

    capture.setMyPath(path(u"current.qs_backup"_s));
    docs->saveas();

    defaults.setObject(dir.path(), u"lastSavedDirectory"_s);
    docs->readLastSavedDirectory();
    capture.setMyPath(QString());
    docs->saveAllObject();
    docs->saveas();
    docs->open();

    QStringList asked;
    for (const FakePanels::PanelRequest &request : panels.panels())
        asked.append((request.kind == FakePanels::Kind::Save ? u"save "_s : u"open "_s) + request.directory
                     + u" | "_s + request.suggestedName);
    const QString current = path(u"current.qs_backup"_s);
    EXPECT_EQ(asked, (QStringList{
                         u"save "_s + home + u" | "_s + untitled,
                         u"open "_s + home + u" | yourPasteboard.qs_backup"_s,
                         u"save "_s + documents + u" | "_s + untitled,
                         u"save "_s + current + u" | current.qs_backup"_s,
                         u"save "_s + dir.path() + u" | "_s + untitled,
                         u"save "_s + dir.path() + u" | "_s + untitled,
                         u"open "_s + dir.path() + u" | yourPasteboard.qs_backup"_s,
                     }));
}

TEST_F(DocumentCommandsTest, openReplacesTheHistoryNumberedFromZero)
{
    const QString file = path(u"in.qs_backup"_s);
    writeFile(file, {u"one"_s, u"two"_s, u"three"_s});
    capture.setCounter(5);
    add({u"five"_s, u"six"_s});
    capture.setEStatus(1);
    panels.confirmNext(file, dir.path());

    docs->open();
    EXPECT_EQ(texts(nsac.arrangedObjects()), (QStringList{u"one"_s, u"two"_s, u"three"_s}));
    EXPECT_EQ(texts(nsac.arrangedObjects(), &contents::indexCount), (QStringList{u"0"_s, u"1"_s, u"2"_s}));
    EXPECT_EQ(capture.getCounter(), 3);
    EXPECT_EQ(capture.myPath(), file);
    EXPECT_EQ(docs->lastSavedDirectory(), dir.path());
    EXPECT_EQ(capture.eStatus(), 0);
    EXPECT_TRUE(docs->isSaveAsEnabled());
}

class OpenFromSystemTest : public DocumentCommandsTest, public ::testing::WithParamInterface<bool>
{
};

TEST_P(OpenFromSystemTest, aDirtyHistoryIsWrittenIntoTheFileBeforeItLoads)
{
    const bool dirty = GetParam();
    const QString file = path(u"handed.qs_backup"_s);
    writeFile(file, {u"on disk"_s});
    add({u"a"_s, u"b"_s});
    capture.setEStatus(dirty ? 1 : 0);
    QSignalSpy shown(docs.get(), &DocumentCommands::showWindowRequested);

    EXPECT_TRUE(docs->applicationOpenFile(file));
    const QStringList expected = dirty ? QStringList{u"a"_s, u"b"_s} : QStringList{u"on disk"_s};
    EXPECT_EQ(fileTexts(file), expected);
    EXPECT_EQ(texts(nsac.arrangedObjects()), expected);
    EXPECT_EQ(texts(nsac.arrangedObjects(), &contents::indexCount).first(), u"0"_s);
    EXPECT_EQ(shown.count(), 1);
    EXPECT_TRUE(panels.panels().isEmpty());
    EXPECT_EQ(capture.myPath(), file);
    EXPECT_EQ(capture.eStatus(), 0);
    EXPECT_EQ(docs->lastSavedDirectory(), QString());
}

INSTANTIATE_TEST_SUITE_P(DirtyOrClean, OpenFromSystemTest, ::testing::Bool());

TEST_F(DocumentCommandsTest, autoSaveChecksOnceEveryHundredTicksWhileOnAndOnlyWithAFile)
{
    const QString file = path(u"auto.qs_backup"_s);
    registries.setAutoSave(true);
    add({u"first"_s});
    tick(250);
    EXPECT_FALSE(QFile::exists(file));
    EXPECT_TRUE(panels.panels().isEmpty());

    capture.setMyPath(file);
    add({u"second"_s});
    tick(50); // the count stands at 50 and wraps to 0 at the 51st tick
    EXPECT_FALSE(QFile::exists(file));
    tick();
    EXPECT_EQ(fileTexts(file), (QStringList{u"first"_s, u"second"_s}));
    ASSERT_EQ(noticeService.sent().size(), 1);
    EXPECT_EQ(noticeService.sent().first().title, u"Saved automatically"_s);
    EXPECT_EQ(noticeService.sent().first().description, u"Auto save function had been enabled."_s);
    EXPECT_EQ(noticeService.sent().first().notificationName, u"ChangePasteboardNotification"_s);
    EXPECT_TRUE(sounds().isEmpty());

    // Off, the count stands still: back on, the next check is where it left off.
    tick(30);
    registries.setAutoSave(false);
    add({u"third"_s});
    tick(537);
    registries.setAutoSave(true);
    tick(69);
    EXPECT_EQ(fileTexts(file).size(), 2);
    tick();
    EXPECT_EQ(fileTexts(file).size(), 3);
    EXPECT_EQ(noticeService.sent().size(), 2);
}

TEST_F(DocumentCommandsTest, theTickStandsStillWhilePanelsAreUp)
{
    recording.setAutomaticRec(true);
    panels.setWhileShown([this] {
        pasteboard.setText(u"copied meanwhile"_s);
        capture.MainTimer();
    });
    docs->saveAllObject(); // the alert
    docs->open();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    EXPECT_FALSE(capture.isPaused());
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 1);
}

TEST_F(DocumentCommandsTest, aFailedWriteStillMarksCleanButSaysSo)
{
    add({u"text"_s});
    const QString file = path(u"missing/folder.qs_backup"_s);
    capture.setMyPath(file);
    capture.setEStatus(1);
    docs->saveAllObject();
    EXPECT_EQ(capture.eStatus(), 0);
    EXPECT_EQ(logged.filter(u"quillstash.documents: "_s).size(), 1);
    expectedLog = logged;
}

TEST_F(DocumentCommandsTest, lastSavedDirectoryIsStoredOnlyOnceSet)
{
    docs->writeLastSavedDirectory();
    EXPECT_FALSE(defaults.values().contains(u"lastSavedDirectory"_s));

    add({u"text"_s});
    panels.confirmNext(path(u"s.qs_backup"_s), dir.path());
    docs->saveAllObject();
    docs->writeLastSavedDirectory();
    EXPECT_EQ(defaults.stringForKey(u"lastSavedDirectory"_s), dir.path());
}

} // namespace
