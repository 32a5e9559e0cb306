#include "documents/backupfile.h"
#include "documents/documentcommands.h"
#include "history/historyfixture.h"
#include "platform/fake/fakepanels.h"

#include <QDate>
#include <QDir>
#include <QStandardPaths>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

// The document commands over the history objects, with real files in a temporary folder.
class DocumentCommandsTest : public HistoryFixture
{
protected:
    QString path(const QString &name) const { return dir.filePath(name); }
    static QStringList fileTexts(const QString &file)
    {
        qint32 counter = 0;
        return texts(BackupFile::decode(readAll(file), counter));
    }

    QTemporaryDir dir;
    FakePanels panels;
    DocumentCommands docs{nsac, document, capture, actions, notices, registries, defaults, panels};
};

TEST_F(DocumentCommandsTest, saveWritesEveryEntryBehindTheFilterAndSaveAsOnlyTheVisibleOnes)
{
    const QStringList all{u"apple"_s, u"banana"_s, u"cherry"_s};
    for (const QString &text : all)
        addEntry(text);
    // Save writes all, even behind a filter that hides all; Save As the visible ones, yet calls the history clean.
    for (const QString &filter : {u"AN"_s, u"zzz"_s}) {
        document.setMyPath(path(filter + u".qs_backup"_s));
        nsac.setFilterString(filter);
        docs.saveAllObject();
        EXPECT_EQ(fileTexts(path(filter + u".qs_backup"_s)), all) << filter.toStdString();
        EXPECT_EQ(nsac.filterString(), filter);
        panels.confirmNext(path(filter), dir.path());
        document.setEStatus(1);
        docs.saveas();
        EXPECT_EQ(document.eStatus(), 0);
    }
    EXPECT_EQ(fileTexts(path(u"AN"_s)), QStringList{u"banana"_s});

    // A write that fails still calls the history clean (and logs it).
    document.setMyPath(path(u"missing/folder.qs_backup"_s));
    document.setEStatus(1);
    docs.saveAllObject();
    EXPECT_EQ(document.eStatus(), 0);
    logged.clear();
}

// The alert and the panels are modal, and the tick must not run under them.
TEST_F(DocumentCommandsTest, panelsAndTheAlertOfAnEmptyHistoryOfferTheirFoldersAndNamesWhileTheTickStandsStill)
{
    recording.setAutomaticRec(true);
    panels.setWhileShown([this] {
        pasteboard.setText(u"copied meanwhile"_s);
        capture.MainTimer();
    });
    // Save of an empty history only alerts, with a file or without.
    for (const QString &current : {path(u"kept.qs_backup"_s), QString()}) {
        document.setMyPath(current);
        docs.saveAllObject();
    }
    const FakePanels::Alert alert = panels.alerts().value(1);
    EXPECT_EQ(QStringList({alert.windowTitle, alert.message, alert.informativeText, alert.button}).join(u'|'),
              u"Warning|Table is empty|No contents to save.|OK"_s);
    docs.open();
    EXPECT_EQ(nsac.arrangedCount(), 0);
    tick(2); // the second tick marks the history changed
    ASSERT_EQ(nsac.arrangedCount(), 1);

    // Cancelled, the panels change nothing, but Save enables Save As.
    docs.saveas();
    EXPECT_FALSE(docs.isSaveAsEnabled());
    docs.saveAllObject();
    EXPECT_TRUE(docs.isSaveAsEnabled());
    document.setMyPath(path(u"current.qs_backup"_s));
    docs.saveas();
    defaults.setObject(dir.path(), u"lastSavedDirectory"_s);
    docs.readLastSavedDirectory();
    document.setMyPath(QString());
    docs.saveAllObject();
    docs.saveas();
    docs.open();
    EXPECT_EQ(nsac.arrangedCount(), 1);
    EXPECT_EQ(document.eStatus(), 1);
    QStringList asked;
    for (const FakePanels::PanelRequest &request : panels.panels())
        asked.append(request.directory + u" | "_s + request.suggestedName);
    const QString untitled = u" | untitled%1.qs_backup"_s.arg(QDate::currentDate().toString(u"yyyy_MM_dd"_s));
    const QString home = QDir::homePath(), documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    EXPECT_EQ(asked, (QStringList{home + u" | yourPasteboard.qs_backup"_s, home + untitled, documents + untitled,
                                  path(u"current.qs_backup"_s) + u" | current.qs_backup"_s, dir.path() + untitled,
                                  dir.path() + untitled, dir.path() + u" | yourPasteboard.qs_backup"_s}));

    // Save appends the extension unless exactly there; Save As never does.
    const std::tuple<bool, QString, QString> cases[] = {
        {false, u"a.txt"_s, u"a.txt.qs_backup"_s}, {false, u"x.QS_BACKUP"_s, u"x.QS_BACKUP.qs_backup"_s},
        {false, u"b.qs_backup"_s, u"b.qs_backup"_s}, {true, u"a.txt"_s, u"a.txt"_s}};
    for (const auto &[saveAs, chosen, written] : cases) {
        document.setMyPath(QString());
        panels.confirmNext(path(chosen), u"folder of "_s + chosen);
        saveAs ? docs.saveas() : docs.saveAllObject();
        EXPECT_EQ((QStringList{document.myPath(), docs.lastSavedDirectory()}),
                  (QStringList{path(written), u"folder of "_s + chosen}));
    }
    EXPECT_EQ(QDir(dir.path()).entryList(QDir::Files, QDir::Name),
              (QStringList{u"a.txt"_s, u"a.txt.qs_backup"_s, u"b.qs_backup"_s, u"x.QS_BACKUP.qs_backup"_s}));
}

TEST_F(DocumentCommandsTest, openReplacesTheHistoryNumberedFromZeroAndTheFileOpenedBecomesTheDocument)
{
    const QString file = path(u"in.qs_backup"_s);
    ASSERT_TRUE(BackupFile::save(file, {textEntry(u"one"_s), textEntry(u"two"_s), textEntry(u"three"_s)}));
    document.setCounter(5);
    addEntry(u"five"_s);
    document.setEStatus(1);
    panels.confirmNext(file, dir.path());
    docs.open();
    EXPECT_EQ(arranged(), (QStringList{u"one"_s, u"two"_s, u"three"_s}));
    EXPECT_EQ(arranged(&contents::indexCount) << QString::number(document.getCounter()),
              (QStringList{u"0"_s, u"1"_s, u"2"_s, u"3"_s}));
    EXPECT_EQ((QStringList{document.myPath(), docs.lastSavedDirectory()}), (QStringList{file, dir.path()}));
    EXPECT_EQ(document.eStatus(), 0);
    EXPECT_TRUE(docs.isSaveAsEnabled());

    // Even a file that cannot be read becomes the document's, so that the next Save writes there; an
    // empty file is read, a missing one is not.
    ASSERT_TRUE(QFile(path(u"empty"_s)).open(QIODevice::WriteOnly));
    EXPECT_TRUE(docs.openFile(path(u"empty"_s)));
    EXPECT_FALSE(docs.openFile(path(u"absent"_s)));
    EXPECT_EQ(document.myPath(), path(u"absent"_s));
    EXPECT_TRUE(logged.size() == 1 && logged[0].contains(u"cannot read"_s)) << logged.join(u'\n').toStdString();
    logged.clear();

    // Handed over by the system, a file replaces a clean history without being written over.
    ASSERT_TRUE(BackupFile::save(file, {textEntry(u"on disk"_s)}));
    docs.applicationOpenFile(file);
    EXPECT_EQ(fileTexts(file) + arranged(), (QStringList{u"on disk"_s, u"on disk"_s}));
}

TEST_F(DocumentCommandsTest, autoSaveChecksOnceEveryHundredTicksAndSavesOnlyADirtyHistoryWithAFile)
{
    QObject::connect(&capture, &CaptureLoop::autoSaveDue, &docs, &DocumentCommands::autoSave);
    const QString file = path(u"auto.qs_backup"_s);
    registries.setAutoSave(true);
    addEntry(u"first"_s);
    tick(50); // the first tick checks, without a file
    EXPECT_TRUE(panels.panels().isEmpty());
    document.setMyPath(file);
    tick(50);
    EXPECT_FALSE(QFile::exists(file));
    tick();
    EXPECT_EQ(fileTexts(file), QStringList{u"first"_s});
    const auto notice = noticeService.sent().value(0);
    EXPECT_EQ(QStringList({notice.title, notice.description, notice.notificationName}).join(u'|'),
              u"Saved automatically|Auto save function had been enabled.|ChangePasteboardNotification"_s);
    tick(100); // a clean history is not saved
    EXPECT_EQ(noticeService.sent().size(), 1);
}

} // namespace
