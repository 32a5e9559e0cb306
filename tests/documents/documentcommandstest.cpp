#include "documents/backupfile.h"
#include "documents/documentcommands.h"
#include "history/historyfixture.h"
#include "platform/fake/fakepanels.h"

#include <QDate>
#include <QDir>
#include <QSignalSpy>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

const QString untitled = u"untitled%1.qs_backup"_s.arg(QDate::currentDate().toString(u"yyyy_MM_dd"_s));

// The document commands over the history objects, with real files in a
// temporary folder.
class DocumentCommandsTest : public HistoryFixture
{
protected:
    DocumentCommandsTest() { QObject::connect(&capture, &CaptureLoop::autoSaveDue, &docs, &DocumentCommands::autoSave); }

    QString path(const QString &name) const { return dir.filePath(name); }
    void add(const QStringList &texts)
    {
        for (const QString &text : texts)
            addEntry(text);
    }
    static bool writeFile(const QString &file, const QStringList &texts)
    {
        QList<Entry> entries;
        for (const QString &text : texts)
            entries.append(textEntry(text));
        return BackupFile::save(file, entries);
    }
    // The display strings stored in a backup file.
    static QStringList fileTexts(const QString &file)
    {
        qint32 counter = 0;
        return texts(BackupFile::decode(readAll(file), counter));
    }

    QTemporaryDir dir;
    FakePanels panels;
    DocumentCommands docs{nsac, capture, actions, notices, registries, defaults, panels};
};

TEST_F(DocumentCommandsTest, saveWritesEveryEntryBehindTheFilterAndSaveAsOnlyTheVisibleOnes)
{
    const QStringList all{u"apple"_s, u"banana"_s, u"cherry"_s};
    add(all);
    capture.setMyPath(path(u"all.qs_backup"_s));
    // Even a filter that hides every entry: Save writes them all and leaves the filter on.
    for (const QString &filter : {u"AN"_s, u"zzz"_s}) {
        QFile::remove(path(u"all.qs_backup"_s));
        nsac.setFilterString(filter);
        capture.setEStatus(1);
        docs.saveAllObject();
        EXPECT_EQ(fileTexts(path(u"all.qs_backup"_s)), all) << filter.toStdString();
        EXPECT_EQ(nsac.filterString(), filter);
        EXPECT_EQ(capture.eStatus(), 0);
    }
    EXPECT_EQ(arranged(), QStringList());
    EXPECT_TRUE(panels.panels().isEmpty() && panels.alerts().isEmpty());
    // A write that fails still calls the history clean, and says so in the log.
    capture.setMyPath(path(u"missing/folder.qs_backup"_s));
    capture.setEStatus(1);
    docs.saveAllObject();
    EXPECT_EQ(capture.eStatus(), 0);
    EXPECT_TRUE(!logged.isEmpty() && logged.last().startsWith(u"quillstash.documents: history marked as saved although"_s))
        << logged.join(u'\n').toStdString();
    logged.clear();

    // Save As writes the visible entries only, and with none visible writes
    // nothing, yet calls the history clean either way.
    for (const QString &filter : {u"AN"_s, u"zzz"_s}) {
        nsac.setFilterString(filter);
        panels.confirmNext(path(filter), dir.path());
        capture.setEStatus(1);
        docs.saveas();
        EXPECT_EQ(capture.eStatus(), 0);
    }
    EXPECT_EQ(fileTexts(path(u"AN"_s)), QStringList{u"banana"_s});
    EXPECT_FALSE(QFile::exists(path(u"zzz"_s)));
    EXPECT_TRUE(panels.alerts().isEmpty());
}

TEST_F(DocumentCommandsTest, saveOfAnEmptyHistoryAlertsWithoutPanelAndLeavesTheFile)
{
    const QString file = path(u"kept.qs_backup"_s);
    ASSERT_TRUE(writeFile(file, {u"old"_s}));
    for (const QString &current : {QString(), file}) {
        capture.setMyPath(current);
        capture.setEStatus(1);
        docs.saveAllObject();
        EXPECT_EQ(capture.eStatus(), 1);
    }
    EXPECT_TRUE(panels.panels().isEmpty());
    ASSERT_EQ(panels.alerts().size(), 2);
    const FakePanels::Alert &alert = panels.alerts().last();
    EXPECT_EQ((QStringList{alert.windowTitle, alert.message, alert.informativeText, alert.button}),
              (QStringList{u"Warning"_s, u"Table is empty"_s, u"No contents to save."_s, u"OK"_s}));
    EXPECT_EQ(fileTexts(file), QStringList{u"old"_s});
    EXPECT_FALSE(docs.isSaveAsEnabled());
}

TEST_F(DocumentCommandsTest, saveAppendsTheExtensionUnlessExactlyThereAndSaveAsNever)
{
    add({u"text"_s});
    const std::tuple<bool, QString, QString> cases[] = {{false, u"a.txt"_s, u"a.txt.qs_backup"_s},
                                                        {false, u"x.QS_BACKUP"_s, u"x.QS_BACKUP.qs_backup"_s},
                                                        {false, u"b.qs_backup"_s, u"b.qs_backup"_s},
                                                        {true, u"a.txt"_s, u"a.txt"_s}};
    for (const auto &[saveAs, chosen, written] : cases) {
        capture.setMyPath(QString());
        panels.confirmNext(path(chosen), dir.path());
        saveAs ? docs.saveas() : docs.saveAllObject();
        EXPECT_EQ(capture.myPath(), path(written)) << chosen.toStdString();
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files, QDir::Name),
              (QStringList{u"a.txt"_s, u"a.txt.qs_backup"_s, u"b.qs_backup"_s, u"x.QS_BACKUP.qs_backup"_s}));
    EXPECT_EQ(docs.lastSavedDirectory(), dir.path());
}

TEST_F(DocumentCommandsTest, panelsOfferTheirFoldersAndNamesAndCancelledOnesChangeNothingButSaveAs)
{
    add({u"text"_s});
    capture.setEStatus(1);
    docs.saveas();
    docs.open();
    EXPECT_FALSE(docs.isSaveAsEnabled());
    docs.saveAllObject();
    EXPECT_TRUE(docs.isSaveAsEnabled());
    EXPECT_EQ((QStringList{capture.myPath(), docs.lastSavedDirectory()}), (QStringList{QString(), QString()}));
    EXPECT_EQ(capture.eStatus(), 1);
    EXPECT_EQ(nsac.arrangedCount(), 1);
    EXPECT_TRUE(QDir(dir.path()).isEmpty());

    const QString current = path(u"current.qs_backup"_s);
    capture.setMyPath(current);
    docs.saveas();
    defaults.setObject(dir.path(), u"lastSavedDirectory"_s);
    docs.readLastSavedDirectory();
    capture.setMyPath(QString());
    docs.saveAllObject();
    docs.saveas();
    docs.open();

    QStringList asked;
    for (const FakePanels::PanelRequest &request : panels.panels())
        asked.append(request.directory + u" | "_s + request.suggestedName);
    const QString home = QDir::homePath(), documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    const QString yours = u" | yourPasteboard.qs_backup"_s, inDir = dir.path() + u" | "_s + untitled;
    EXPECT_EQ(asked, (QStringList{home + u" | "_s + untitled, home + yours, documents + u" | "_s + untitled,
                                  current + u" | current.qs_backup"_s, inDir, inDir, dir.path() + yours}));
}

TEST_F(DocumentCommandsTest, openReplacesADirtyHistoryNumberedFromZero)
{
    const QString file = path(u"in.qs_backup"_s);
    ASSERT_TRUE(writeFile(file, {u"one"_s, u"two"_s, u"three"_s}));
    capture.setCounter(5);
    add({u"five"_s, u"six"_s});
    capture.setEStatus(1);
    panels.confirmNext(file, dir.path());
    docs.open();
    EXPECT_EQ(arranged(), (QStringList{u"one"_s, u"two"_s, u"three"_s}));
    EXPECT_EQ(arranged(&contents::indexCount), (QStringList{u"0"_s, u"1"_s, u"2"_s}));
    EXPECT_EQ(capture.getCounter(), 3);
    EXPECT_EQ((QStringList{capture.myPath(), docs.lastSavedDirectory()}), (QStringList{file, dir.path()}));
    EXPECT_EQ(capture.eStatus(), 0);
    EXPECT_TRUE(docs.isSaveAsEnabled());
}

TEST_F(DocumentCommandsTest, openFromTheSystemWritesADirtyHistoryIntoTheFileBeforeItLoads)
{
    const QString file = path(u"handed.qs_backup"_s);
    QSignalSpy shown(&docs, &DocumentCommands::showWindowRequested);
    add({u"a"_s, u"b"_s});
    for (const bool dirty : {true, false}) { // the clean run starts from the history the dirty one loaded
        ASSERT_TRUE(writeFile(file, {u"on disk"_s}));
        capture.setEStatus(dirty ? 1 : 0);
        EXPECT_TRUE(docs.applicationOpenFile(file));
        const QStringList expected = dirty ? QStringList{u"a"_s, u"b"_s} : QStringList{u"on disk"_s};
        EXPECT_EQ(fileTexts(file), expected) << dirty;
        EXPECT_EQ(arranged(), expected) << dirty;
        EXPECT_EQ(arranged(&contents::indexCount).first(), u"0"_s);
        EXPECT_EQ(capture.eStatus(), 0);
    }
    EXPECT_EQ(shown.count(), 2);
    EXPECT_TRUE(panels.panels().isEmpty());
    EXPECT_EQ((QStringList{capture.myPath(), docs.lastSavedDirectory()}), (QStringList{file, QString()}));
}

// Either way the path becomes the document's, so that the next Save writes there.
TEST_F(DocumentCommandsTest, openFileTellsAnUnreadableFileFromAnEmptyOne)
{
    ASSERT_TRUE(QFile(path(u"empty"_s)).open(QIODevice::WriteOnly));
    ::testing::internal::CaptureStdout();
    EXPECT_TRUE(docs.openFile(path(u"empty"_s)));
    ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(capture.myPath(), path(u"empty"_s));
    EXPECT_FALSE(docs.openFile(path(u"absent"_s)));
    EXPECT_EQ(capture.myPath(), path(u"absent"_s));
    EXPECT_EQ(nsac.arrangedCount(), 0);
    EXPECT_TRUE(docs.isSaveAsEnabled());
    EXPECT_EQ(logged.size(), 1);
    EXPECT_TRUE(logged.value(0).contains(u"cannot read"_s)) << logged.value(0).toStdString();
    logged.clear();
}

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
    const auto &notice = noticeService.sent().first();
    EXPECT_EQ((QStringList{notice.title, notice.description, notice.notificationName}),
              (QStringList{u"Saved automatically"_s, u"Auto save function had been enabled."_s,
                           u"ChangePasteboardNotification"_s}));
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
    docs.saveAllObject(); // the alert
    docs.open();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    EXPECT_FALSE(capture.isPaused());
    tick();
    EXPECT_EQ(nsac.arrangedCount(), 1);
}

} // namespace
