#include "documents/documentcommands.h"

#include "documents/backupfile.h"
#include "history/captureloop.h"
#include "history/documentstate.h"
#include "history/historyactions.h"
#include "history/historylist.h"
#include "history/tickpause.h"
#include "platform/panels.h"
#include "platform/userdefaults.h"
#include "recording/notices.h"
#include "settings/applicationregistries.h"

#include <QDate>
#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QScopeGuard>
#include <QStandardPaths>

namespace {

Q_LOGGING_CATEGORY(lcDocuments, "quillstash.documents", QtInfoMsg)

const QString lastSavedDirectoryKey = QStringLiteral("lastSavedDirectory");
const QString openSuggestedName = QStringLiteral("yourPasteboard.qs_backup");

QString untitledName()
{
    return QStringLiteral("untitled") + QDate::currentDate().toString(QStringLiteral("yyyy_MM_dd"))
        + QStringLiteral(".") + DocumentCommands::extension;
}

QString documentsFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
}

} // namespace

DocumentCommands::DocumentCommands(HistoryList &nsac, DocumentState &document, CaptureLoop &capture,
                                   HistoryActions &actions, Notices &notices, ApplicationRegistries &registries,
                                   UserDefaults &defaults, Panels &panels, QObject *parent)
    : QObject(parent)
    , m_nsac(nsac)
    , m_document(document)
    , m_capture(capture)
    , m_actions(actions)
    , m_notices(notices)
    , m_registries(registries)
    , m_defaults(defaults)
    , m_panels(panels)
{
}

void DocumentCommands::saveAllObject()
{
    // Save keeps every entry, whatever the search field hides; the field is
    // left as the user had it.
    const QString filter = m_nsac.filterString();
    m_nsac.setFilterString(QString());
    const auto restoreFilter = qScopeGuard([this, &filter] { m_nsac.setFilterString(filter); });

    if (m_nsac.arrangedCount() == 0) {
        const TickPause pause(m_capture);
        m_panels.runAlert(QStringLiteral("Warning"), QStringLiteral("Table is empty"),
                          QStringLiteral("No contents to save."), QStringLiteral("OK"));
        return;
    }

    if (!m_document.myPath().isEmpty()) {
        save(m_document.myPath());
    } else {
        std::optional<Panels::Choice> choice;
        {
            const TickPause pause(m_capture);
            const QString folder = mLastSavedDirectory.isEmpty() ? documentsFolder() : mLastSavedDirectory;
            choice = m_panels.runSavePanel(folder, untitledName());
        }
        if (choice) {
            QString path = choice->filename;
            mLastSavedDirectory = choice->directory;
            if (QFileInfo(path).suffix() != extension)
                path += QStringLiteral(".") + extension;
            m_document.setMyPath(path);
            save(path);
        }
    }
    enableSaveAs();
}

void DocumentCommands::saveas()
{
    std::optional<Panels::Choice> choice;
    {
        const TickPause pause(m_capture);
        const QString folder = mLastSavedDirectory.isEmpty() ? QDir::homePath() : mLastSavedDirectory;
        const QString &current = m_document.myPath();
        if (current.isEmpty())
            choice = m_panels.runSavePanel(folder, untitledName());
        else
            choice = m_panels.runSavePanel(current, QFileInfo(current).fileName());
    }
    if (!choice)
        return;
    m_document.setMyPath(choice->filename);
    mLastSavedDirectory = choice->directory;
    save(choice->filename);
    m_document.setEStatus(0);
}

void DocumentCommands::open()
{
    std::optional<Panels::Choice> choice;
    {
        const TickPause pause(m_capture);
        const QString folder = mLastSavedDirectory.isEmpty() ? QDir::homePath() : mLastSavedDirectory;
        choice = m_panels.runOpenPanel(folder, openSuggestedName);
    }
    if (!choice)
        return;
    m_actions.removeAllObject();
    m_document.setCounter(0);
    openFile(choice->filename);
    mLastSavedDirectory = choice->directory;
    m_document.setEStatus(0);
}

bool DocumentCommands::applicationOpenFile(const QString &path)
{
    // The path becomes current before the dirty history is saved, so that
    // the history goes into the very file being opened.
    m_document.setMyPath(path);
    if (m_document.eStatus() == 1)
        saveAllObject();
    Q_EMIT showWindowRequested();
    m_actions.removeAllObject();
    m_document.setCounter(0);
    if (path.isEmpty())
        return false;
    openFile(path);
    m_document.setEStatus(0);
    return true;
}

void DocumentCommands::autoSave()
{
    if (!m_registries.isAutoSave())
        return;
    if (autosaveCounter % autoSaveEveryTicks == 0 && !m_document.myPath().isEmpty() && m_document.eStatus() == 1) {
        saveAllObject();
        m_notices.messageGrowl(QStringLiteral("Saved automatically"),
                               QStringLiteral("Auto save function had been enabled."),
                               Notices::ChangePasteboardNotification);
    }
    autosaveCounter = (autosaveCounter + 1) % autoSaveEveryTicks;
}

void DocumentCommands::save(const QString &path)
{
    const QList<Entry> &entries = m_nsac.arrangedObjects();
    if (entries.isEmpty())
        return;
    // The history counts as saved even when the write failed, as it always
    // has; the old file is still whole then, and the log says why.
    if (!BackupFile::save(path, entries))
        qCWarning(lcDocuments) << "history marked as saved although" << path << "could not be written";
    m_document.setEStatus(0);
}

bool DocumentCommands::openFile(const QString &path)
{
    qint32 counter = m_document.getCounter();
    const std::optional<QList<Entry>> entries = BackupFile::openFile(path, counter);
    m_document.setCounter(counter);
    if (entries)
        m_nsac.addObjects(*entries);
    // The path becomes the document's even when it could not be read, so
    // that the next Save writes the history there.
    m_document.setMyPath(path);
    enableSaveAs();
    return entries.has_value();
}

void DocumentCommands::readLastSavedDirectory()
{
    mLastSavedDirectory = m_defaults.stringForKey(lastSavedDirectoryKey);
}

void DocumentCommands::writeLastSavedDirectory()
{
    if (mLastSavedDirectory.isEmpty())
        return;
    m_defaults.setObject(mLastSavedDirectory, lastSavedDirectoryKey);
    m_defaults.synchronize();
}

void DocumentCommands::enableSaveAs()
{
    if (m_saveAsEnabled)
        return;
    m_saveAsEnabled = true;
    Q_EMIT saveAsEnabledChanged(true);
}
